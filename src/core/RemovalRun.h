#pragma once

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>

class BrowserCatalogue;
class Cleaners;
class SystemLog;

// The services one removal run works with.
struct RemovalRunServices
{
    Cleaners& cleaners;
    BrowserCatalogue& catalogue;
    SystemLog& log;
    // The lock that keeps runs of the agent and of corvella-clean apart; empty: none.
    QString lockPath;
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

// The whole run: waits for the shared lock, skips the run when the browser is running again
// (editing a running browser's files corrupts them), takes the choices at that moment, and runs
// the loop. The labels, or no value when the run was skipped.
std::optional<QStringList> perform(const QString& browser, const std::function<QVariantMap()>& choices,
                                   const RemovalRunServices& services);

} // namespace RemovalRun
