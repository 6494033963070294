#pragma once

#include "core/RunLock.h"

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>

class BrowserCatalogue;
class Cleaners;
class RunStop;
class SystemLog;

// The services one removal run works with.
struct RemovalRunServices
{
    Cleaners& cleaners;
    BrowserCatalogue& catalogue;
    SystemLog& log;
    // The lock that keeps runs of the agent and of corvella-clean apart; empty: none.
    QString lockPath;
    RunLock::Wait lockWait = {};
    // Whether the user granted access to the home folder (asked without a panel); empty: granted.
    std::function<bool()> hasAccess = {};
    // A preview changes nothing and may look at a running browser's files.
    bool refuseRunningBrowser = true;
    // The file layer's stop, armed for the run: a browser that starts again stops it; null: none.
    RunStop* stop = nullptr;
};

// How a run ended.
struct RunOutcome
{
    enum Status
    {
        Done,
        BrowserRunning, // nothing was touched: editing a running browser's files corrupts them
        BrowserStarted, // the browser started during the run: from then on nothing more was touched
        NoAccess,       // nothing was touched: the user has not granted the home folder
        LockNotTaken,   // another run held the lock until the wait was given up
    };
    Status status = Done;
    QStringList labels; // the categories processed, when done (or begun, when stopped)
};

// One removal run for one browser: the selected categories, in their fixed order, each handed to
// its cleaner. The agent and corvella-clean run exactly this.
namespace RemovalRun {

// The notification's label of a category key ("Cookies" for "cookies").
QString labelFor(const QString& category);

// Calls the cleaner of each category selected in the choices (entries "<browser>:<category>"
// that are the boolean true), in run order; the labels of the categories processed.
QStringList performCategoryLoop(const QString& browser, const QVariantMap& choices, Cleaners& cleaners);

// "Cookies, Cache removed from Safari", or the text for a run with nothing selected.
QString notificationText(const QString& browser, const QStringList& labels);

// The whole run: waits for the shared lock, does nothing without access to the home folder or
// while the browser runs, takes the choices at that moment, and runs the loop, which stops
// changing anything the moment the browser starts again.
RunOutcome perform(const QString& browser, const std::function<QVariantMap()>& choices,
                   const RemovalRunServices& services);

} // namespace RemovalRun
