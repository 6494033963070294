// corvella: the agent. Protects the activated browsers while it runs; one per user.

#include "app/HeadlessOpenPanel.h"
#include "app/SingleInstance.h"
#include "cleaners/BrowserCleaners.h"
#include "core/AppDelegate.h"
#include "core/BrowserCatalogue.h"
#include "core/RunLock.h"
#include "platform/RealHomeDirectory.h"
#include "platform/SettingsKeys.h"
#include "platform/SystemLog.h"
#include "platform/SystemVersion.h"
#include "platform/UserDefaults.h"
#include "platform/linux/FreedesktopNotificationCenter.h"
#include "platform/linux/InodeBookmarks.h"
#include "platform/linux/InotifyFolderWatch.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/PlistFileDefaultsBackend.h"
#include "platform/linux/UnixSignalWatcher.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"
#include "ui/DesktopFace.h"
#include "ui/FileDialogOpenPanel.h"

#include <QApplication>
#include <QFileInfo>
#include <QSystemTrayIcon>

#include <csignal>
#include <cstdio>

namespace {

// Without a display there is no tray to live in; the agent still protects, on Qt's offscreen platform.
bool chooseHeadless()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
        qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        return false;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return true;
}

QString protectionSummary(UserDefaults& defaults)
{
    QStringList activated;
    for (const QVariant& id : defaults.arrayForKey(SettingsKeys::enabledBrowsers))
        activated.append(BrowserCatalogue::browserForID(id.toString()));
    activated.removeAll(QString());
    if (activated.isEmpty())
        return QStringLiteral("no browser is activated yet");
    return QStringLiteral("protection is %1 for %2")
        .arg(defaults.boolForKey(SettingsKeys::isRunning) ? QStringLiteral("on") : QStringLiteral("off"),
             activated.join(QStringLiteral(", ")));
}

} // namespace

int main(int argc, char* argv[])
{
    const bool headless = chooseHeadless();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Corvella"));
    QApplication::setApplicationVersion(QStringLiteral(CORVELLA_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);

    SyslogLog log;
    const QString home = RealHomeDirectory();
    const QString settingsFile = UserDefaults::filePathForHome(home);

    SingleInstance instance(SingleInstance::defaultFolder());
    // The desktop may hand over a URL; anything else asks the running agent to show itself.
    const QStringList arguments = QApplication::arguments();
    const QByteArray request =
        arguments.size() > 1 ? arguments.at(1).toUtf8() : QByteArrayLiteral("activate");
    if (!instance.claim(request)) {
        if (instance.runningPid() > 0)
            std::fprintf(stderr, "corvella: the agent is already running (pid %lld); handed over to it.\n",
                         static_cast<long long>(instance.runningPid()));
        else
            std::fprintf(stderr, "corvella: the agent is already running; handed over to it.\n");
        return 0;
    }

    UserDefaults defaults(std::make_unique<PlistFileDefaultsBackend>(settingsFile), log);
    AppDelegate::initialize(defaults);

    InodeBookmarks bookmarks;
    HeadlessOpenPanel headlessPanel(log);
    FileDialogOpenPanel dialogPanel;
    OpenPanel& panel = headless ? static_cast<OpenPanel&>(headlessPanel) : dialogPanel;
    Sandbox sandbox({defaults, bookmarks, panel, log});
    const WorkspaceLocations locations = WorkspaceLocations::forHome(home);
    LinuxWorkspace workspace(locations);
    InotifyFolderWatch folderWatch(locations.applicationFolders);
    FreedesktopNotificationCenter notifications(log);
    BrowserCatalogue catalogue(workspace, defaults, sandbox);
    BrowserCleaners cleaners({sandbox, catalogue, defaults, log});
    HelperScripts scripts(sandbox, log);
    RunningSystemVersion systemVersion;
    AppDelegate delegate({defaults, log, workspace, folderWatch, notifications, bookmarks, panel, catalogue,
                          cleaners, scripts, sandbox, systemVersion, RunLock::pathForHome(home)});

    std::unique_ptr<DesktopFace> face;
    if (!headless) {
        face = std::make_unique<DesktopFace>(delegate, workspace, QSystemTrayIcon::isSystemTrayAvailable());
        QObject::connect(face.get(), &DesktopFace::quitRequested, &app, &QApplication::quit);
    }

    UnixSignalWatcher unixSignals({SIGTERM, SIGINT, SIGHUP});
    QObject::connect(&unixSignals, &UnixSignalWatcher::signalReceived, &app, [] { QApplication::quit(); });
    QObject::connect(&instance, &SingleInstance::requestReceived, &delegate,
                     [&delegate](const QByteArray& request) {
                         if (!delegate.handleURLEvent(QString::fromUtf8(request)))
                             emit delegate.windowRequested();
                     });

    delegate.applicationWillFinishLaunching();
    delegate.applicationDidFinishLaunching();
    if (headless)
        std::fprintf(stderr, "corvella: no display found: running headless, without a status item.\n");
    std::fprintf(stderr, "corvella: running; %s. Settings: %s\n", qPrintable(protectionSummary(defaults)),
                 qPrintable(settingsFile));

    // Started by the desktop to open a URL, with no agent running yet.
    if (arguments.size() > 1)
        delegate.handleURLEvent(arguments.at(1));
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}
