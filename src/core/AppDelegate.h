#pragma once

#include "core/SettingsController.h"

#include <QDateTime>
#include <QObject>
#include <QVariant>

#include <atomic>
#include <memory>

class BrowserCatalogue;
class Cleaners;
class CloudKeyValueStore;
class CloudSync;
class DistributedNotificationCenter;
class FolderWatch;
class HelperScripts;
class LoginItems;
class OpenPanel;
class RemovalQueue;
class Sandbox;
class SecurityScopedBookmarks;
class StartAtLoginController;
class SystemLog;
class SystemVersion;
class UserDefaults;
class UserNotificationCenter;
class Workspace;

// The platform services and parts the controller works with.
struct AppServices
{
    UserDefaults& defaults;
    SystemLog& log;
    Workspace& workspace;
    FolderWatch& folderWatch;
    UserNotificationCenter& notifications;
    SecurityScopedBookmarks& bookmarks;
    OpenPanel& panel;
    BrowserCatalogue& catalogue;
    Cleaners& cleaners;
    HelperScripts& scripts;
    Sandbox& sandbox;
    SystemVersion& systemVersion;
    LoginItems& loginItems;
    DistributedNotificationCenter& distributedNotifications;
    CloudKeyValueStore& cloudStore;
    // The lock shared with corvella-clean; empty: none.
    QString runLockPath;
};

// The application controller, without widgets: start-up, the settings mirror and its reactions,
// the watch on installed applications, and the two removal runs each quit of an activated browser
// sets off. Where the desktop must show something it emits a signal the UI connects to.
class AppDelegate : public QObject
{
    Q_OBJECT
public:
    // Before the controller exists: registers the shipped defaults, records the real home folder
    // under "userFolder" and synchronises. A missing or unreadable defaults resource registers nothing.
    static void initialize(UserDefaults& defaults,
                           const QString& defaultsResource = QStringLiteral(":/Defaults.plist"));

    explicit AppDelegate(const AppServices& services, QObject* parent = nullptr);
    // Stops observing, stops the folder watch, drops runs not yet started and lets the running one finish.
    ~AppDelegate() override;

    // Start-up, in its fixed order.
    void applicationWillFinishLaunching();
    void applicationDidFinishLaunching();
    void applicationDidBecomeActive();
    // The orderly way out (SIGTERM, SIGINT, quit): what the destructor does, callable earlier.
    void applicationWillTerminate();

    // The settings observations set up at launch and removed on the way out.
    void startObservingSettings();
    void stopObservingSettings();

    // "~/x" becomes the real home folder followed by "/x"; any other path is returned as it is.
    QString checkForUserDirectory(const QString& path) const;
    void toggleRunStatus();
    // Rebuilds the settings mirror from "settings": the true entries only, replacing the old mirror.
    void defaultsChanged();
    // Protection can never be on while no browser is activated.
    void checkEnabledButton();
    void observeValueForKeyPath(const QString& keyPath, const QVariant& oldValue, const QVariant& newValue);
    // Stores one category choice in "settings"; the mirror follows through defaultsChanged().
    void setCategorySelected(const QString& browser, const QString& category, bool selected);
    // Shows or hides the status item; hiding it brings the window icon back ("hideDock" off), so the
    // agent never ends up with neither.
    void showMenuBarItem(bool show);

    // True when the login helper runs, so this launch came from login.
    bool startupCheck();
    // The first launch opens the popover instead of watching the applications folder.
    void firstRunCheck();
    // With no browser activated, asks the user to activate one.
    void checkEnabledBrowsers();
    // Watches the applications folders for browsers being installed or removed; needs the grant
    // of the home folder, and tries again on the next call when it is refused.
    void watchApplicationsFolder();
    void stopObserving();
    // A terminated application: two removal runs for an activated browser while protection is on.
    void appTerminated(const QVariantMap& userInfo);
    // Queues one removal run of the browser and returns at once.
    void clearData(const QString& browser, bool andNotify);
    void displayNotificationWithTitle(const QString& title, const QString& andText);
    // Installs the helper scripts while Safari is activated (each only when missing).
    void installScriptsForSafari();
    // A URL handed over by the desktop: "com.tovanex.corvella.scripts://openscriptsfolder" (in any
    // case) shows the scripts folder; false for any other text.
    bool handleURLEvent(const QString& url);
    // Settings sync follows "iCloudSync" once the store says whether there is anything to sync with: with
    // no synced folder it is switched back off and the user is told (checkiCloudAlert).
    void checkiCloudSync();
    void checkiCloudAlert();
    // The alert closed; with its box ticked, the user does not want to hear of it again.
    void iCloudAlertClosed(bool suppressed);
    CloudSync& cloudSync() { return *m_cloudSync; }

    // Recomputes the tiles and everything that follows the activated browsers.
    void updateBrowserContentArray();

    // A click on a tile: activates its browser and opens its settings; a click on an activated tile
    // whose settings are open deactivates it instead.
    void enableBrowser(const QString& tileName);
    // Deactivates the browser the popover shows (anything but the Chromium family and Firefox counts
    // as Safari) and ends settings mode.
    void disableBrowser();
    void disableSafari();
    // Whether Safari's own files can be read (there is nothing to test on macOS before 10.14). When
    // they cannot, asks for the warning window and deactivates Safari.
    bool checkMojaveFileAccess();
    // The browser popover closes: settings mode ends and no browser is current.
    void popoverIsClosing();
    // The browser whose settings the popover shows; empty when none.
    QString currentBrowser() const { return m_currentBrowser; }
    // When a run last finished for the browser; none before the first.
    std::optional<QDateTime> lastCleaned(const QString& browser) const;
    // The sites that hold cookies now in the activated browsers (none without access to the home folder).
    QStringList sitesWithCookies();
    // Whether the browser's popover offers the category: not where its data cannot exist.
    bool offersCategory(const QString& browser, const QString& category);
    void setCurrentBrowser(const QString& browser) { m_currentBrowser = browser; }
    bool editingBrowserSettings() const { return m_editingBrowserSettings; }

    // The delays of the silent and of the notifying run after a quit (a seam for tests).
    void setRunDelays(int silentMs, int notifyingMs);
    // For shutdown and tests: waits until every queued run has finished.
    bool waitForRuns(int timeoutMs = -1);

    SettingsController& settingsController() { return m_settingsController; }
    UserDefaults& defaults() const { return m_defaults; }
    bool isValid() const { return m_isValid; }
    bool isActivated(const QString& browser) const;
    QStringList activatedBrowsers() const;
    bool openedFromLogin() const { return m_openedFromLogin; }
    // The registration of the login helper; none until start at login was first wanted.
    StartAtLoginController* loginController() const { return m_loginController.get(); }
    // The login helper's name, and what the agent posts when the helper may quit.
    static const QString loginHelperID;
    static const QString terminateLoginHelperNotification;
    bool watchingApplicationsFolder() const { return m_watchingApplicationsFolder; }
    QStringList browserTiles() const { return m_browserTiles; }

    bool isRunning() const;
    // Whether the user granted the home folder (asks nothing).
    bool hasHomeAccess();
    // Asks for the home folder again (after the request was cancelled, or a grant went stale).
    void requestHomeAccess();

signals:
    // The settings changed (on disk or from here): the category toggles show them again.
    void settingsChanged();
    void statusItemVisibilityChanged(bool visible);
    void dockPolicyChanged(bool hideDock);
    void infoLabelNeedsUpdate();
    void mainSwitchEnabledChanged(bool enabled);
    void browserTilesChanged(const QStringList& tiles);
    void popoverRequested();
    void browserPopoverRequested();
    void windowRequested();
    // Safari's files cannot be read: the warning window explains what the user can do.
    void fileAccessWarningRequested();
    // Sync was on but there is no synced folder: the alert asks the user to choose one.
    void iCloudAlertRequested();

private:
    void updateMenu();
    void followActivation();
    void checkDock();
    void recordCleaned(const QString& browser);
    void tellAccessIsMissing(const QString& browser);
    void grantsChanged();
    void checkRunStatus();
    void saveEnabledBrowsers(const QVariantList& identifiers);
    void initLoginController();
    void updateLogin();
    void terminateLoginHelper();

    UserDefaults& m_defaults;
    SystemLog& m_log;
    AppServices m_services;
    SettingsController m_settingsController;
    std::unique_ptr<RemovalQueue> m_removalQueue;
    std::unique_ptr<StartAtLoginController> m_loginController;
    std::unique_ptr<CloudSync> m_cloudSync;
    bool m_isValid = false;
    bool m_openedFromLogin = false;
    bool m_watchingApplicationsFolder = false;
    bool m_editingBrowserSettings = false;
    QString m_currentBrowser;
    bool m_terminated = false;
    bool m_launched = false;
    std::atomic<bool> m_stopping = false;
    std::atomic<bool> m_toldAccessIsMissing = false;
    int m_silentRunDelayMs = 2000;
    int m_notifyingRunDelayMs = 8000;
    QStringList m_browserTiles;
    QList<QMetaObject::Connection> m_observations;
    QList<QMetaObject::Connection> m_launchObservations;
};
