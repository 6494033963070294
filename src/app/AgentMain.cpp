// corvella: the agent. Protects the activated browsers while it runs; one per user.

#include "app/HeadlessOpenPanel.h"
#include "app/SingleInstance.h"
#include "catalogue/BrowserCatalogue.h"
#include "catalogue/BrowserTable.h"
#include "cleaners/BrowserCleaners.h"
#include "core/AppDelegate.h"
#include "core/RunLock.h"
#include "platform/RealHomeDirectory.h"
#include "platform/SettingsKeys.h"
#include "platform/SystemLog.h"
#include "platform/SystemVersion.h"
#include "platform/Translations.h"
#include "platform/UserDefaults.h"
#include "platform/linux/DBusDistributedNotificationCenter.h"
#include "platform/linux/FreedesktopNotificationCenter.h"
#include "platform/linux/InodeBookmarks.h"
#include "platform/linux/InotifyFolderWatch.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/PlistFileDefaultsBackend.h"
#include "platform/linux/SyncFolderKeyValueStore.h"
#include "platform/linux/UnixSignalWatcher.h"
#include "platform/linux/XdgAutostartLoginItems.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"
#include "ui/DesktopFace.h"
#include "ui/FileDialogOpenPanel.h"

#include <QApplication>
#include <QFileInfo>
#include <QSystemTrayIcon>

#include <csignal>
#include <cstdio>
#include <optional>

namespace {

// The context of the agent's terminal messages in the translations.
struct AgentMain
{
    Q_DECLARE_TR_FUNCTIONS(AgentMain)
};

void print(const QString& text)
{
    std::fputs(qPrintable(text + QLatin1Char('\n')), stderr);
}

// Answers the exit status when the arguments were options the agent answers itself.
std::optional<int> answerOptions(const QStringList& arguments)
{
    if (arguments.size() < 2 || !arguments.at(1).startsWith(QLatin1Char('-')))
        return std::nullopt;
    const QString& option = arguments.at(1);
    if (option == QLatin1String("--version")) {
        std::fputs("corvella " CORVELLA_VERSION "\n", stdout);
        return 0;
    }
    if (option == QLatin1String("--help") || option == QLatin1String("-h")) {
        std::fputs(
            qPrintable(
                AgentMain::tr("usage: corvella [URL]\n"
                              "       corvella --help | --version\n\n"
                              "Starts Corvella, which removes the data you chose for a browser when the "
                              "browser quits.\n"
                              "It lives in the tray; started again, it shows the running agent's window.\n"
                              "A URL (com.tovanex.corvella.scripts:) is handed to the running agent.\n\n"
                              "See corvella(1); for the command line, corvella-clean(1).") +
                QLatin1Char('\n')),
            stdout);
        return 0;
    }
    print(QStringLiteral("corvella: ") +
          AgentMain::tr("unknown option \"%1\"; accepted: --help, --version").arg(option));
    return 2;
}

// Without a display there is no tray to live in; the agent still protects, on Qt's offscreen platform.
bool chooseHeadless()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        return false;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return true;
}

// The user's configuration folder: "$XDG_CONFIG_HOME" when set to a full path, else ~/.config.
QString configFolder(const QString& home)
{
    const QString configured = qEnvironmentVariable("XDG_CONFIG_HOME");
    return configured.startsWith(QLatin1Char('/')) ? configured : home + QStringLiteral("/.config");
}

QString protectionSummary(UserDefaults& defaults, const BrowserCatalogue& catalogue)
{
    const QStringList activated = catalogue.enabledBrowserKeys();
    if (activated.isEmpty())
        return AgentMain::tr("no browser is activated yet");
    return (defaults.boolForKey(SettingsKeys::isRunning) ? AgentMain::tr("protection is on for %1")
                                                         : AgentMain::tr("protection is off for %1"))
        .arg(activated.join(QStringLiteral(", ")));
}

} // namespace

int main(int argc, char* argv[])
{
    const bool noDisplay = chooseHeadless();
    QApplication app(argc, argv);
    // Qt's offscreen and minimal platforms show nothing to anyone: a window or a panel there would
    // wait for a click that never comes.
    const QString platform = QGuiApplication::platformName();
    const bool headless =
        noDisplay || platform == QLatin1String("offscreen") || platform == QLatin1String("minimal");
    QApplication::setApplicationName(QStringLiteral("Corvella"));
    QApplication::setApplicationVersion(QStringLiteral(CORVELLA_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    installTranslations();
    if (const std::optional<int> status = answerOptions(QApplication::arguments()))
        return *status;

    SyslogLog log;
    const QString home = RealHomeDirectory();
    const QString settingsFile = UserDefaults::filePathForHome(home);

    SingleInstance instance(SingleInstance::defaultFolder());
    // The desktop may hand over a URL; anything else asks the running agent to show itself.
    const QStringList arguments = QApplication::arguments();
    const QByteArray request =
        arguments.size() > 1 ? arguments.at(1).toUtf8() : QByteArrayLiteral("activate");
    const SingleInstance::Claim claim = instance.claim(request);
    if (claim == SingleInstance::Claim::Refused) {
        print(
            QStringLiteral("corvella: ") +
            AgentMain::tr("%1 is not a private folder of yours (a folder you own with mode 0700), so another "
                          "user could pose as the agent there. Remove it, or start Corvella in a desktop "
                          "session (XDG_RUNTIME_DIR).")
                .arg(instance.folder()));
        return 1;
    }
    if (claim == SingleInstance::Claim::HandedOver) {
        if (instance.runningPid() > 0)
            print(QStringLiteral("corvella: ") +
                  AgentMain::tr("the agent is already running (pid %1); handed over to it.")
                      .arg(instance.runningPid()));
        else
            print(QStringLiteral("corvella: ") +
                  AgentMain::tr("the agent is already running; handed over to it."));
        return 0;
    }

    UserDefaults defaults(std::make_unique<PlistFileDefaultsBackend>(settingsFile), log);
    AppDelegate::initialize(defaults);

    InodeBookmarks bookmarks;
    HeadlessOpenPanel headlessPanel(log);
    FileDialogOpenPanel dialogPanel;
    OpenPanel& panel = headless ? static_cast<OpenPanel&>(headlessPanel) : dialogPanel;
    Sandbox sandbox({defaults, bookmarks, panel, log});
    const WorkspaceLocations locations = BrowserTable::workspaceLocations(home);
    LinuxWorkspace workspace(locations);
    InotifyFolderWatch folderWatch(locations.applicationFolders);
    FreedesktopNotificationCenter notifications(log);
    BrowserCatalogue catalogue(workspace, defaults, sandbox);
    BrowserCleaners cleaners({sandbox, catalogue, defaults, log});
    HelperScripts scripts(sandbox, log);
    RunningSystemVersion systemVersion;
    XdgAutostartLoginItems loginItems(configFolder(home), log);
    DBusDistributedNotificationCenter distributedNotifications;
    SyncFolderKeyValueStore cloudStore(defaults, log, home);
    AppDelegate delegate({defaults, log, workspace, folderWatch, notifications, bookmarks, panel, catalogue,
                          cleaners, scripts, sandbox, systemVersion, loginItems, distributedNotifications,
                          cloudStore, RunLock::pathForHome(home)});

    // A quit asked for while the launch still runs (from a panel's own event loop, say) would be lost
    // on the main loop, which has not started yet: remember it.
    bool quitRequested = false;
    const auto quit = [&quitRequested] {
        quitRequested = true;
        QApplication::quit();
    };
    std::unique_ptr<DesktopFace> face;
    if (!headless) {
        face = std::make_unique<DesktopFace>(delegate, workspace, QSystemTrayIcon::isSystemTrayAvailable());
        QObject::connect(face.get(), &DesktopFace::quitRequested, &app, quit);
    }

    UnixSignalWatcher unixSignals({SIGTERM, SIGINT, SIGHUP});
    QObject::connect(&unixSignals, &UnixSignalWatcher::signalReceived, &app, quit);
    QObject::connect(&instance, &SingleInstance::requestReceived, &delegate,
                     [&delegate](const QByteArray& request) {
                         if (!delegate.handleURLEvent(QString::fromUtf8(request)))
                             emit delegate.windowRequested();
                     });

    delegate.applicationWillFinishLaunching();
    delegate.applicationDidFinishLaunching();
    if (headless)
        print(QStringLiteral("corvella: ") +
              AgentMain::tr("no display (Qt platform \"%1\"): running headless, without a status item.")
                  .arg(platform));
    print(QStringLiteral("corvella: ") + (delegate.openedFromLogin()
                                              ? AgentMain::tr("running (started at login); %1. Settings: %2")
                                              : AgentMain::tr("running; %1. Settings: %2"))
                                             .arg(protectionSummary(defaults, catalogue), settingsFile));

    // Started by the desktop to open a URL, with no agent running yet.
    if (arguments.size() > 1)
        delegate.handleURLEvent(arguments.at(1));
    const int status = quitRequested ? 0 : QApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}
