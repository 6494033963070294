#include "core/AppDelegate.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/CookieCleaner.h"
#include "cleaners/PluginCleaner.h"
#include "core/CloudSync.h"
#include "core/RemovalQueue.h"
#include "core/RemovalRun.h"
#include "core/StartAtLoginController.h"
#include "platform/CloudKeyValueStore.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/FolderWatch.h"
#include "platform/PropertyList.h"
#include "platform/RealHomeDirectory.h"
#include "platform/SettingsKeys.h"
#include "platform/SystemLog.h"
#include "platform/SystemVersion.h"
#include "platform/UserDefaults.h"
#include "platform/UserNotificationCenter.h"
#include "platform/Workspace.h"
#include "sandbox/AppSandboxFileAccess.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/HelperScripts.h"
#include "sandbox/Sandbox.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QTimer>

namespace {

const QString kApplicationsFolder = QStringLiteral("/Applications");
constexpr int kApplicationsFolderLatencyMs = 3000;

// The shipped defaults name the five browsers the settings always had; every other row of the browser
// table starts with the choices of the browser whose family it belongs to.
QVariantMap withEveryBrowsersSettings(QVariantMap registration)
{
    QVariantMap settings = registration.value(SettingsKeys::settings).toMap();
    for (const BrowserTable::Browser& browser : BrowserTable::all()) {
        const QString from = BrowserTable::settingsTemplate(browser);
        if (from == browser.name)
            continue;
        for (const QString& category : SettingsKeys::categories) {
            const QString key = SettingsKeys::settingsKey(from, category);
            if (settings.contains(key))
                settings.insert(SettingsKeys::settingsKey(browser.name, category), settings.value(key));
        }
    }
    registration.insert(SettingsKeys::settings, settings);
    return registration;
}

} // namespace

const QString AppDelegate::loginHelperID = QStringLiteral("com.tovanex.Corvella6Helper");
const QString AppDelegate::terminateLoginHelperNotification = QStringLiteral("terminateCorvellaLoginHelper");

void AppDelegate::initialize(UserDefaults& defaults, const QString& defaultsResource)
{
    QFile resource(defaultsResource);
    if (resource.open(QIODevice::ReadOnly)) {
        const auto registration = PropertyList::parse(resource.readAll());
        if (registration && registration->typeId() == QMetaType::QVariantMap)
            defaults.registerDefaults(withEveryBrowsersSettings(registration->toMap()));
    }
    // Registered as well as stored, so the home folder is known even when the settings cannot be saved.
    defaults.registerDefaults({{SettingsKeys::userFolder, RealHomeDirectory()}});
    defaults.setObject(RealHomeDirectory(), SettingsKeys::userFolder);
    defaults.synchronize();
    AppSandboxFileAccessPersist(defaults).removeRecordsBelowGrants();
}

AppDelegate::AppDelegate(const AppServices& services, QObject* parent)
    : QObject(parent), m_defaults(services.defaults), m_log(services.log), m_services(services),
      m_cloudSync(std::make_unique<CloudSync>(services.defaults, services.cloudStore, services.log))
{}

AppDelegate::~AppDelegate()
{
    applicationWillTerminate();
    m_removalQueue.reset(); // its runs use this object
}

void AppDelegate::applicationWillFinishLaunching()
{
    m_openedFromLogin = startupCheck();
    m_watchingApplicationsFolder = false;
}

void AppDelegate::applicationDidFinishLaunching()
{
    // Relaunching open applications at login is a macOS session feature; Linux sessions have none to turn
    // off.
    checkDock();
    showMenuBarItem(m_defaults.boolForKey(SettingsKeys::showInMenu));
    emit infoLabelNeedsUpdate();
    updateBrowserContentArray();
    firstRunCheck();
    installScriptsForSafari();
    checkEnabledBrowsers();
    // The entry follows the setting at every start, off too: the setting may have been switched off
    // while the agent was not running (by another program, or another computer through sync), and an
    // entry left behind would go on starting Corvella at login against the user's choice.
    initLoginController();
    updateLogin();
    if (!(m_openedFromLogin && m_defaults.boolForKey(SettingsKeys::hideOnLaunch)))
        emit windowRequested();
    m_launchObservations << connect(
        &m_services.notifications, &UserNotificationCenter::didActivateNotification,
        &m_services.notifications, &UserNotificationCenter::removeDeliveredNotification);
    startObservingSettings();
    m_launched = true;
    m_launchObservations << connect(&m_services.workspace, &Workspace::didTerminateApplication, this,
                                    &AppDelegate::appTerminated);
    m_launchObservations << connect(&m_services.folderWatch, &FolderWatch::foldersChanged,
                                    &m_services.catalogue, &BrowserCatalogue::browsersChanged);
    m_launchObservations << connect(&m_services.catalogue, &BrowserCatalogue::browserContentArrayChanged,
                                    this, &AppDelegate::updateBrowserContentArray);
    terminateLoginHelper(); // the helper that started this agent at login may go
    m_editingBrowserSettings = false;
    checkiCloudSync();
    if (m_defaults.arrayForKey(SettingsKeys::enabledBrowsers).contains(BrowserCatalogue::safariID))
        checkMojaveFileAccess();
}

void AppDelegate::applicationDidBecomeActive()
{
    m_openedFromLogin = false;
}

void AppDelegate::applicationWillTerminate()
{
    if (m_terminated)
        return;
    m_terminated = true;
    m_stopping = true; // a run still waiting for the lock gives up
    stopObservingSettings();
    m_cloudSync->stop();
    for (const auto& connection : std::as_const(m_launchObservations))
        disconnect(connection);
    m_launchObservations.clear();
    stopObserving();
    // A run that has started finishes, so no browser file is left half done; later ones are dropped.
    if (m_removalQueue) {
        m_removalQueue->cancelAllOperations();
        // Events keep flowing meanwhile: the running run may be waiting for the main thread (a panel).
        while (!m_removalQueue->waitUntilAllOperationsAreFinished(50))
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
}

void AppDelegate::startObservingSettings()
{
    stopObservingSettings();
    m_observations << connect(&m_defaults, &UserDefaults::defaultsChanged, this,
                              &AppDelegate::defaultsChanged);
    m_observations << connect(&m_defaults, &UserDefaults::valueChanged, this,
                              &AppDelegate::observeValueForKeyPath);
    defaultsChanged();
}

void AppDelegate::stopObservingSettings()
{
    for (const auto& connection : std::as_const(m_observations))
        disconnect(connection);
    m_observations.clear();
}

QString AppDelegate::checkForUserDirectory(const QString& path) const
{
    if (!path.startsWith(QLatin1Char('~')))
        return path;
    return m_defaults.stringForKey(SettingsKeys::userFolder).value_or(QString()) + path.mid(1);
}

void AppDelegate::toggleRunStatus()
{
    m_defaults.setBool(!m_defaults.boolForKey(SettingsKeys::isRunning), SettingsKeys::isRunning);
    m_defaults.synchronize();
}

void AppDelegate::defaultsChanged()
{
    m_settingsController.setContent(
        SettingsController::selectedEntries(m_defaults.dictionaryForKey(SettingsKeys::settings)));
    emit settingsChanged();
}

bool AppDelegate::isActivated(const QString& browser) const
{
    return m_services.catalogue.checkIfBrowserEnabled(browser);
}

QStringList AppDelegate::activatedBrowsers() const
{
    return m_services.catalogue.enabledBrowserKeys();
}

bool AppDelegate::isRunning() const
{
    return m_defaults.boolForKey(SettingsKeys::isRunning);
}

void AppDelegate::checkEnabledButton()
{
    if (m_defaults.arrayForKey(SettingsKeys::enabledBrowsers).isEmpty()) {
        m_defaults.setBool(false, SettingsKeys::isRunning);
        m_isValid = false;
    } else {
        m_isValid = true;
    }
    emit mainSwitchEnabledChanged(m_isValid);
}

void AppDelegate::observeValueForKeyPath(const QString& keyPath, const QVariant&, const QVariant&)
{
    if (keyPath == SettingsKeys::iCloudSync || keyPath == SettingsKeys::syncFolder)
        checkiCloudSync();
    if (keyPath == SettingsKeys::showInMenu)
        updateMenu();
    if (keyPath == SettingsKeys::hideDock)
        checkDock();
    if (keyPath == SettingsKeys::isRunning || keyPath == SettingsKeys::lastCleaned)
        checkRunStatus();
    if (keyPath == SettingsKeys::loginStart) {
        updateLogin();
        QTimer::singleShot(1000, this, &AppDelegate::terminateLoginHelper);
    }
    if (keyPath.startsWith(AppSandboxFileAccessPersist::keyPrefix))
        grantsChanged();
    if (keyPath == SettingsKeys::enabledBrowsers) {
        installScriptsForSafari();
        // Activation may come from outside the window (another program, the settings file edited): the
        // main switch, the tray menu and the tiles follow it as they follow the window's own clicks.
        QMetaObject::invokeMethod(this, &AppDelegate::followActivation, Qt::QueuedConnection);
    }
}

void AppDelegate::checkiCloudSync()
{
    const bool wanted = m_defaults.boolForKey(SettingsKeys::iCloudSync);
    m_services.cloudStore.accountStatus(
        [self = QPointer(this), wanted](CloudKeyValueStore::AccountStatus status) {
            if (!self || self->m_terminated)
                return;
            if (status == CloudKeyValueStore::AccountStatus::NoAccount) {
                self->m_cloudSync->stop();
                if (wanted) {
                    self->m_defaults.setBool(false, SettingsKeys::iCloudSync);
                    self->m_defaults.synchronize();
                    self->checkiCloudAlert();
                }
            } else if (wanted) {
                self->m_cloudSync->start();
            } else {
                self->m_cloudSync->stop();
            }
        });
}

void AppDelegate::checkiCloudAlert()
{
    m_log.log(QStringLiteral("Corvella Sync: settings sync was turned off: no synced folder is chosen"));
    emit iCloudAlertRequested();
}

void AppDelegate::iCloudAlertClosed(bool suppressed)
{
    if (!suppressed)
        return;
    m_defaults.setBool(true, SettingsKeys::hideiCloudAlert);
    m_defaults.synchronize();
}

bool AppDelegate::hasHomeAccess()
{
    return AppSandboxFileAccess::fileAccess({m_defaults, m_services.bookmarks, m_services.panel})
        .hasPermissionForFilePath(checkForUserDirectory(QStringLiteral("~")));
}

void AppDelegate::requestHomeAccess()
{
    if (m_services.sandbox.hasAccess() && !m_watchingApplicationsFolder) // asks when there is no grant
        watchApplicationsFolder();
    checkRunStatus();
}

// Access granted while the agent runs (from corvella-clean, say): finish the start-up steps that
// needed it, and tell the user again should it be lost later. The window and the tray say either way.
void AppDelegate::grantsChanged()
{
    checkRunStatus();
    if (!hasHomeAccess())
        return;
    m_toldAccessIsMissing = false;
    if (m_launched && !m_watchingApplicationsFolder)
        watchApplicationsFolder();
}

// Safari has no search engines to remove; the plug-ins' data only exists once their folders do (on
// Linux, Silverlight never; Flash Player's folder only where it was once installed).
bool AppDelegate::offersCategory(const QString& browser, const QString& category)
{
    if (category == QLatin1String("searchEngines"))
        return browser != BrowserCatalogue::safari;
    const QString folder = category == QLatin1String("flash")         ? PluginCleaner::flashFolder
                           : category == QLatin1String("silverlight") ? PluginCleaner::silverlightFolder
                                                                      : QString();
    return folder.isEmpty() || (hasHomeAccess() && m_services.sandbox.fileExists(folder));
}

void AppDelegate::setCategorySelected(const QString& browser, const QString& category, bool selected)
{
    QVariantMap settings = m_defaults.dictionaryForKey(SettingsKeys::settings);
    settings.insert(SettingsKeys::settingsKey(browser, category), selected);
    m_defaults.setObject(settings, SettingsKeys::settings);
}

void AppDelegate::showMenuBarItem(bool show)
{
    if (!show && m_defaults.boolForKey(SettingsKeys::hideDock)) {
        m_defaults.setBool(false, SettingsKeys::hideDock);
        m_defaults.synchronize();
    }
    emit statusItemVisibilityChanged(show);
}

void AppDelegate::updateMenu()
{
    showMenuBarItem(m_defaults.boolForKey(SettingsKeys::showInMenu));
}

void AppDelegate::checkDock()
{
    emit dockPolicyChanged(m_defaults.boolForKey(SettingsKeys::hideDock));
}

// Always posted, even on the main thread, so the display follows the settings write that caused it.
void AppDelegate::checkRunStatus()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            emit infoLabelNeedsUpdate();
            updateMenu();
        },
        Qt::QueuedConnection);
}

bool AppDelegate::startupCheck()
{
    const QList<RunningApplication> running = m_services.workspace.runningApplications();
    return std::any_of(running.cbegin(), running.cend(), [](const RunningApplication& application) {
        return application.bundleIdentifier == loginHelperID;
    });
}

void AppDelegate::firstRunCheck()
{
    if (!m_defaults.objectForKey(SettingsKeys::firstRun)) {
        m_defaults.setBool(false, SettingsKeys::firstRun);
        m_defaults.synchronize();
        QTimer::singleShot(1000, this, &AppDelegate::popoverRequested);
        return;
    }
    watchApplicationsFolder();
}

void AppDelegate::checkEnabledBrowsers()
{
    if (m_defaults.arrayForKey(SettingsKeys::enabledBrowsers).isEmpty())
        QTimer::singleShot(1000, this, &AppDelegate::browserPopoverRequested);
}

void AppDelegate::watchApplicationsFolder()
{
    if (m_watchingApplicationsFolder)
        return;
    AppSandboxFileAccess access =
        AppSandboxFileAccess::fileAccess({m_defaults, m_services.bookmarks, m_services.panel});
    const QString home = checkForUserDirectory(QStringLiteral("~"));
    m_watchingApplicationsFolder = access.accessFileURLandKeepAlive(QUrl::fromLocalFile(home), true, [this] {
        if (!m_services.folderWatch.isWatching())
            m_services.folderWatch.start({kApplicationsFolder}, kApplicationsFolderLatencyMs);
    });
    if (!m_watchingApplicationsFolder) {
        m_log.log(QStringLiteral("Corvella Sandbox has denied access to %1").arg(kApplicationsFolder));
        checkRunStatus(); // the request was cancelled: the window and the tray say so at once
    }
}

void AppDelegate::stopObserving()
{
    if (!m_services.folderWatch.isWatching())
        return;
    m_services.folderWatch.stop();
}

void AppDelegate::appTerminated(const QVariantMap& userInfo)
{
    if (!m_defaults.boolForKey(SettingsKeys::isRunning))
        return;
    const std::optional<QString> browser = BrowserCatalogue::browserForTerminatedApplication(userInfo);
    if (!browser || !m_services.catalogue.checkIfBrowserEnabled(*browser))
        return;
    // Read once, at the quit: switching notifications off in the next seconds does not reach these runs.
    const bool notify = m_defaults.boolForKey(SettingsKeys::displayNotifications);
    QTimer::singleShot(m_silentRunDelayMs, Qt::PreciseTimer, this,
                       [this, key = *browser] { clearData(key, false); });
    QTimer::singleShot(m_notifyingRunDelayMs, Qt::PreciseTimer, this,
                       [this, key = *browser, notify] { clearData(key, notify); });
}

void AppDelegate::clearData(const QString& browser, bool andNotify)
{
    if (m_terminated)
        return;
    if (!m_removalQueue)
        m_removalQueue = std::make_unique<RemovalQueue>();
    m_removalQueue->addOperation([this, browser, andNotify] {
        // Protection may have been switched off, or the browser deactivated, since the quit.
        if (!m_defaults.boolForKey(SettingsKeys::isRunning) ||
            !m_services.catalogue.checkIfBrowserEnabled(browser))
            return;
        RemovalRunServices run{m_services.cleaners, m_services.catalogue, m_log, m_services.runLockPath};
        run.stop = &m_services.sandbox.runStop();
        run.lockWait.stop = [this] { return m_stopping.load(); };
        run.hasAccess = [this] { return hasHomeAccess(); };
        const RunOutcome outcome = RemovalRun::perform(
            browser, [this] { return m_settingsController.content(); }, run);
        if (outcome.status == RunOutcome::NoAccess) {
            tellAccessIsMissing(browser);
        } else if (outcome.status == RunOutcome::Done) {
            recordCleaned(browser);
            if (andNotify)
                displayNotificationWithTitle(QStringLiteral("Corvella"),
                                             RemovalRun::notificationText(browser, outcome.labels));
        }
    });
}

// Shown in the popover and the tray's tooltip: the date only, never what was removed or from which site.
void AppDelegate::recordCleaned(const QString& browser)
{
    QVariantMap cleaned = m_defaults.dictionaryForKey(SettingsKeys::lastCleaned);
    cleaned.insert(browser, QDateTime::currentDateTime());
    m_defaults.setObject(cleaned, SettingsKeys::lastCleaned);
}

QStringList AppDelegate::sitesWithCookies()
{
    if (!hasHomeAccess())
        return {};
    QStringList sites;
    for (const QString& browser : activatedBrowsers()) {
        for (const BrowserInstall& install : BrowserCatalogue::installsOf(m_services.sandbox, browser)) {
            const CleanerServices services{
                m_services.sandbox, m_services.catalogue, m_defaults, m_log, {}, install};
            for (const QString& site : KeptCookies::sitesWithCookies(services, browser)) {
                if (!sites.contains(site))
                    sites.append(site);
            }
        }
    }
    return sites;
}

std::optional<QDateTime> AppDelegate::lastCleaned(const QString& browser) const
{
    const QVariant when = m_defaults.dictionaryForKey(SettingsKeys::lastCleaned).value(browser);
    if (when.typeId() != QMetaType::QDateTime || !when.toDateTime().isValid())
        return std::nullopt;
    return when.toDateTime();
}

// Once per agent session (until access is granted): every quit would otherwise repeat it.
void AppDelegate::tellAccessIsMissing(const QString& browser)
{
    if (m_toldAccessIsMissing.exchange(true))
        return;
    displayNotificationWithTitle(
        QStringLiteral("Corvella"),
        tr("Corvella has no access to your home folder, so nothing was removed from %1. Open Corvella and "
           "click \"Grant Access…\" (or run \"corvella-clean --allow-home-access --list\").")
            .arg(browser));
}

void AppDelegate::installScriptsForSafari()
{
    if (m_defaults.arrayForKey(SettingsKeys::enabledBrowsers).contains(BrowserCatalogue::safariID))
        m_services.scripts.installAll();
}

bool AppDelegate::handleURLEvent(const QString& url)
{
    if (url.toLower() != QLatin1String("com.tovanex.corvella.scripts://openscriptsfolder"))
        return false;
    if (const std::optional<QString> folder = m_services.scripts.folder())
        m_services.workspace.activateFileViewerSelectingURLs({QUrl::fromLocalFile(*folder)});
    return true;
}

void AppDelegate::displayNotificationWithTitle(const QString& title, const QString& andText)
{
    m_services.notifications.deliver({title, andText});
}

void AppDelegate::updateBrowserContentArray()
{
    checkEnabledButton();
    updateMenu();
    m_browserTiles = m_services.catalogue.browserContentArray();
    emit browserTilesChanged(m_browserTiles);
}

void AppDelegate::followActivation()
{
    checkEnabledButton();
    updateMenu();
    const QStringList tiles = m_services.catalogue.browserContentArray();
    if (tiles != m_browserTiles) {
        m_browserTiles = tiles;
        emit browserTilesChanged(m_browserTiles);
    }
}

void AppDelegate::enableBrowser(const QString& tileName)
{
    const QString identifier = BrowserCatalogue::browserIDFor(tileName);
    if (identifier.isEmpty())
        return;
    if (identifier == BrowserCatalogue::safariID && !checkMojaveFileAccess())
        return;
    QVariantList enabled = m_defaults.arrayForKey(SettingsKeys::enabledBrowsers);
    if (enabled.contains(identifier)) {
        if (m_editingBrowserSettings) {
            disableBrowser();
            return;
        }
    } else {
        enabled.append(identifier);
    }
    saveEnabledBrowsers(enabled);
    m_editingBrowserSettings = true;
    // The home folder's request may open a dialog with its own event loop: not inside the press that
    // got here, which would then not return until the dialog closed (a screen reader's press waits
    // for its answer).
    QTimer::singleShot(0, this, [this] {
        watchApplicationsFolder();
        checkEnabledBrowsers();
    });
}

void AppDelegate::disableBrowser()
{
    QString identifier = BrowserCatalogue::browserIDFor(m_currentBrowser);
    if (identifier.isEmpty())
        identifier = BrowserCatalogue::safariID;
    QVariantList enabled = m_defaults.arrayForKey(SettingsKeys::enabledBrowsers);
    enabled.removeAll(identifier);
    saveEnabledBrowsers(enabled);
    m_editingBrowserSettings = false;
}

void AppDelegate::saveEnabledBrowsers(const QVariantList& identifiers)
{
    m_defaults.setObject(identifiers, SettingsKeys::enabledBrowsers);
    m_defaults.synchronize();
    updateBrowserContentArray();
}

void AppDelegate::disableSafari()
{
    m_currentBrowser = BrowserCatalogue::safari;
    disableBrowser();
}

bool AppDelegate::checkMojaveFileAccess()
{
    const SystemVersion& system = m_services.systemVersion;
    if (system.name() == QLatin1String("macOS") && system.version() < QVersionNumber(10, 14))
        return true;
    const std::optional<QByteArray> bookmarks =
        m_services.sandbox.dataWithContentsOfFile(QStringLiteral("~/Library/Safari/Bookmarks.plist"));
    if (bookmarks && !bookmarks->isEmpty())
        return true;
    emit fileAccessWarningRequested();
    disableSafari();
    return false;
}

void AppDelegate::initLoginController()
{
    m_loginController = std::make_unique<StartAtLoginController>(m_services.loginItems);
    // The helper is installed in libexec, at the same place relative to the agent in the build tree.
    m_loginController->setBundle(
        loginHelperID, QUrl::fromLocalFile(QDir::cleanPath(
                           QCoreApplication::applicationDirPath() +
                           QStringLiteral("/" CORVELLA_HELPER_FROM_AGENT "/corvella-login-helper"))));
}

void AppDelegate::updateLogin()
{
    if (!m_loginController)
        initLoginController();
    m_loginController->setStartAtLogin(m_defaults.boolForKey(SettingsKeys::loginStart));
}

void AppDelegate::terminateLoginHelper()
{
    m_services.distributedNotifications.postNotificationName(terminateLoginHelperNotification,
                                                             UserDefaults::kDomain);
}

void AppDelegate::popoverIsClosing()
{
    m_editingBrowserSettings = false;
    m_currentBrowser.clear();
}

void AppDelegate::setRunDelays(int silentMs, int notifyingMs)
{
    m_silentRunDelayMs = silentMs;
    m_notifyingRunDelayMs = notifyingMs;
}

bool AppDelegate::waitForRuns(int timeoutMs)
{
    return !m_removalQueue || m_removalQueue->waitUntilAllOperationsAreFinished(timeoutMs);
}
