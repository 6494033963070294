#pragma once

#include <QCoreApplication>
#include <QStringList>
#include <QTextStream>

#include <functional>
#include <optional>

class BrowserCatalogue;
class OpenPanel;
class Sandbox;
class SecurityScopedBookmarks;
class SystemLog;
class UserDefaults;
class Workspace;

// What corvella-clean works with; tests give it a temporary home and fakes.
struct CleanServices
{
    UserDefaults& defaults;
    SystemLog& log;
    SecurityScopedBookmarks& bookmarks;
    Workspace& workspace;
    QTextStream& out;
    QTextStream& err;
    // Asks a yes/no question on the terminal; no value when there is no terminal to ask on.
    std::function<std::optional<bool>(const QString& question)> ask;
    // The lock shared with the agent's runs; empty: none.
    QString lockPath;
    // How long a run waits for another one (of the agent, or a second corvella-clean) to finish.
    int lockTimeoutMs = 120000;
};

// corvella-clean: one removal run from the command line, with the agent's loop, cleaners and order.
//   corvella-clean [--preview] [--layout macOS|Linux] [--allow-home-access] BROWSER [CATEGORY ...]
//   corvella-clean [--allow-home-access] --list
//   corvella-clean --help | --version
class CleanCommand
{
    Q_DECLARE_TR_FUNCTIONS(CleanCommand)

public:
    enum ExitCode
    {
        Success = 0,
        BadUsage = 2,
        NoHomeAccess = 3,
        BrowserRunning = 4,
        NotWritten = 5, // the output or the grant of access could not be written
        LockBusy = 6    // another removal run held the lock past the wait
    };

    explicit CleanCommand(const CleanServices& services);

    // The arguments without the program name; answers the exit code.
    int run(const QStringList& arguments);

private:
    struct Options
    {
        bool list = false;
        bool preview = false;
        bool allowHomeAccess = false;
        std::optional<QString> layout;
        QStringList keep; // sites kept for this run, normalised
        QString browser;
        QStringList categories;
    };

    std::optional<Options> parse(const QStringList& arguments);
    int usageError(const QString& message);
    int list(Sandbox& sandbox, BrowserCatalogue& catalogue);
    bool grantWasSaved(const QString& home, OpenPanel& panel);
    int clean(const Options& options, Sandbox& sandbox, BrowserCatalogue& catalogue);
    int finish(int code);

    CleanServices m_services;
};
