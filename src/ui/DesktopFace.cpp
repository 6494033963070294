#include "ui/DesktopFace.h"

#include "core/AppDelegate.h"
#include "ui/BringToFront.h"
#include "ui/BrowserCollection.h"
#include "ui/BrowserPopover.h"
#include "ui/GeneralPopover.h"
#include "ui/HoverButton.h"
#include "ui/KeptSitesPane.h"
#include "ui/MainWindow.h"
#include "ui/PreferencesPanes.h"
#include "ui/PreferencesWindowController.h"
#include "ui/StatusItem.h"
#include "ui/ToggleSwitch.h"
#include "ui/WarningController.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>

DesktopFace::DesktopFace(AppDelegate& delegate, Workspace& workspace, bool trayAvailable, QObject* parent)
    : QObject(parent), m_delegate(delegate), m_icons(workspace), m_trayAvailable(trayAvailable),
      m_mainWindow(std::make_unique<MainWindow>(m_icons)),
      m_browserPopover(std::make_unique<BrowserPopover>(delegate, m_icons)),
      m_generalPopover(std::make_unique<GeneralPopover>()), m_statusItem(std::make_unique<StatusItem>())
{
    MainWindow& window = *m_mainWindow;
    BrowserCollection* tiles = window.collectionView();
    connect(&delegate, &AppDelegate::statusItemVisibilityChanged, this, &DesktopFace::showMenuBarItem);
    connect(&delegate, &AppDelegate::dockPolicyChanged, this, [this](bool hideDock) {
        m_hideDock = hideDock;
        m_mainWindow->setShownInTaskBar(!hideDock || !m_statusItem->isShown());
    });
    connect(&delegate, &AppDelegate::infoLabelNeedsUpdate, this,
            [this] { m_mainWindow->updateInfoLabel(m_delegate.isRunning(), m_delegate.hasHomeAccess()); });
    // Queued: the request's dialog runs its own event loop, which must not start inside the press.
    connect(&window, &MainWindow::grantAccessRequested, &delegate, &AppDelegate::requestHomeAccess,
            Qt::QueuedConnection);
    connect(&delegate, &AppDelegate::mainSwitchEnabledChanged, window.enabledButton(),
            &ToggleSwitch::setEnabled);
    connect(&delegate, &AppDelegate::browserTilesChanged, tiles, &BrowserCollection::reloadData);
    connect(&delegate, &AppDelegate::windowRequested, &window, &MainWindow::openWindow);
    connect(&delegate, &AppDelegate::popoverRequested, this,
            [this] { m_generalPopover->togglePopover(m_mainWindow->infoButton()); });
    connect(&delegate, &AppDelegate::fileAccessWarningRequested, this, &DesktopFace::openFileWarningView);
    // One panel at a time on the first start: the about panel already says to point at a browser.
    connect(&delegate, &AppDelegate::browserPopoverRequested, this, [this] {
        if (m_mainWindow->isVisible() && !m_generalPopover->isVisible())
            m_browserPopover->showBrowserPopover(std::nullopt, m_mainWindow->collectionView());
    });

    connect(window.enabledButton(), &ToggleSwitch::clicked, &delegate, [this] {
        m_delegate.toggleRunStatus();
        m_mainWindow->updateInfoLabel(m_delegate.isRunning());
    });
    connect(window.infoButton(), &HoverButton::clicked, this,
            [this] { m_generalPopover->togglePopover(m_mainWindow->infoButton()); });
    connect(tiles, &BrowserCollection::tileClicked, &delegate, &AppDelegate::enableBrowser);
    connect(tiles, &BrowserCollection::popoverRequested, this, [this](const QVariantMap& request) {
        m_browserPopover->showBrowserPopover(request, m_mainWindow->collectionView());
    });
    qApp->installEventFilter(this);
    // Another program took the keyboard: the popovers go, as a menu would.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive)
            closePopovers();
    });
    connect(m_generalPopover.get(), &GeneralPopover::quitRequested, this, &DesktopFace::quit);
    connect(m_generalPopover.get(), &GeneralPopover::preferencesRequested, this, [this] {
        m_generalPopover->close();
        showPreferences();
    });
    connect(m_browserPopover.get(), &BrowserPopover::keptSitesRequested, this, [this] {
        m_browserPopover->hideBrowserPopover();
        showPreferences();
        emit changePrefsTab({{QStringLiteral("tab"), KeptSitesPreferencesViewController::paneIdentifier()}});
    });
    connect(&window, &MainWindow::preferencesRequested, this, &DesktopFace::showPreferences);
    connect(&delegate, &AppDelegate::iCloudAlertRequested, this, &DesktopFace::checkiCloudAlert);

    StatusItem& item = *m_statusItem;
    connect(&item, &StatusItem::toggleRunStatus, &delegate, &AppDelegate::toggleRunStatus);
    connect(&item, &StatusItem::grantAccess, &delegate, &AppDelegate::requestHomeAccess,
            Qt::QueuedConnection);
    connect(&item, &StatusItem::openWindow, &window, &MainWindow::openWindow);
    connect(&item, &StatusItem::openAndCheckBrowsers, this, [this] {
        m_mainWindow->openWindow();
        m_delegate.checkEnabledBrowsers();
    });
    connect(&item, &StatusItem::openPreferences, this, &DesktopFace::showPreferences);
    connect(&item, &StatusItem::quitFromSysMenu, this, &DesktopFace::quitRequested);
}

void DesktopFace::closePopovers()
{
    if (m_browserPopover->isVisible())
        m_browserPopover->hideBrowserPopover();
    if (m_generalPopover->isVisible())
        m_generalPopover->close();
}

// The popovers are panels of the window, not windows of their own: a press anywhere else closes
// them (a press on a tile goes to the tile, which shows its popover; one on the info button toggles
// its popover), as does the window going away or a dialog opening, which they must never cover.
bool DesktopFace::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::MouseButtonPress && type != QEvent::Show && type != QEvent::Hide)
        return false; // every event of the application passes here: the others at once
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget)
        return false;
    switch (type) {
    case QEvent::MouseButtonPress: {
        const QWidget* window = widget->window();
        const bool onTile = widget->parentWidget() == m_mainWindow->collectionView();
        if (m_browserPopover->isVisible() && window != m_browserPopover.get() && !onTile)
            m_browserPopover->hideBrowserPopover();
        if (m_generalPopover->isVisible() && window != m_generalPopover.get() &&
            widget != m_mainWindow->infoButton())
            m_generalPopover->close();
        break;
    }
    case QEvent::Show:
        if (widget->isWindow() && widget->isModal())
            closePopovers();
        break;
    case QEvent::Hide:
        if (widget == m_mainWindow.get())
            closePopovers();
        break;
    default:
        break;
    }
    return false;
}

DesktopFace::~DesktopFace()
{
    // The window hides as it goes, after the popovers have gone: nothing may close them then.
    qApp->removeEventFilter(this);
    disconnect(qApp, nullptr, this, nullptr);
    delete m_warningController.data();
    delete m_syncAlert.data();
}

PreferencesWindowController& DesktopFace::preferencesWindowController()
{
    if (!m_preferencesWindowController) {
        UserDefaults& defaults = m_delegate.defaults();
        m_preferencesWindowController = std::make_unique<PreferencesWindowController>(
            defaults,
            QList<PreferencesPane*>{
                nullptr,
                new GeneralPreferencesViewController(defaults,
                                                     m_delegate.checkForUserDirectory(QStringLiteral("~"))),
                new KeptSitesPreferencesViewController(defaults,
                                                       [this] { return m_delegate.sitesWithCookies(); }),
                new DisplayPreferencesViewController(defaults), new UpdatePreferencesViewController(defaults),
                new AboutPreferencesViewController, nullptr});
        connect(this, &DesktopFace::changePrefsTab, m_preferencesWindowController.get(),
                &PreferencesWindowController::changeTabs);
    }
    return *m_preferencesWindowController;
}

void DesktopFace::showPreferences()
{
    PreferencesWindowController& window = preferencesWindowController();
    bringToFront(window);
}

// Sync was switched on with nowhere to sync to: say what is needed, and offer to choose the folder.
void DesktopFace::checkiCloudAlert()
{
    if (m_syncAlert)
        return;
    auto* alert = new QMessageBox;
    m_syncAlert = alert;
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowTitle(tr("Corvella"));
    alert->setIconPixmap(
        StatusItem::image(false, alert->palette().color(QPalette::WindowText)).pixmap(64, 64));
    alert->setText(tr("Please choose a synced folder"));
    alert->setInformativeText(
        tr("To share your settings across all your computers, choose a folder that you "
           "already sync between them (with Syncthing, Nextcloud or a network share) in "
           "Corvella's General preferences."));
    alert->setCheckBox(new QCheckBox(tr("Do not show this message again"), alert));
    QPushButton* choose = alert->addButton(tr("Choose Folder…"), QMessageBox::ActionRole);
    alert->addButton(QMessageBox::Ok);
    alert->setDefaultButton(QMessageBox::Ok);
    alert->setWindowModality(Qt::ApplicationModal);
    connect(alert, &QMessageBox::finished, this, [this, alert, choose] {
        m_delegate.iCloudAlertClosed(alert->checkBox()->isChecked());
        if (alert->clickedButton() != choose)
            return;
        showPreferences();
        PreferencesWindowController& window = preferencesWindowController();
        emit changePrefsTab({{QStringLiteral("tab"), GeneralPreferencesViewController::paneIdentifier()}});
        if (auto* general = qobject_cast<GeneralPreferencesViewController*>(window.selectedViewController()))
            QMetaObject::invokeMethod(general, &GeneralPreferencesViewController::chooseSyncFolder,
                                      Qt::QueuedConnection);
    });
    QApplication::setActiveWindow(alert);
    bringToFront(*alert);
}

QMessageBox* DesktopFace::syncAlert() const
{
    return m_syncAlert.data();
}

void DesktopFace::openFileWarningView()
{
    if (!m_warningController) {
        m_warningController = new WarningController;
        connect(m_warningController, &WarningController::releaseFileAccessWindow, this,
                [this] { m_warningController.clear(); });
        connect(m_warningController, &WarningController::quitCorvella, this, &DesktopFace::quitRequested);
    }
    bringToFront(*m_warningController);
}

void DesktopFace::showMenuBarItem(bool show)
{
    QStringList lastCleaned;
    for (const QString& browser : m_delegate.activatedBrowsers())
        lastCleaned.append(
            tr("%1: %2").arg(browser, BrowserPopover::lastCleanedText(m_delegate.lastCleaned(browser))));
    m_statusItem->showMenuBarItem(show && m_trayAvailable, m_delegate.isRunning(), m_delegate.isValid(),
                                  m_delegate.hasHomeAccess(), lastCleaned);
    // The agent is never out of reach: without a tray item the window is in the task bar and shown.
    if (!m_statusItem->isShown()) {
        m_mainWindow->setShownInTaskBar(true);
        if (!m_mainWindow->isVisible())
            m_mainWindow->openWindow();
    } else {
        m_mainWindow->setShownInTaskBar(!m_hideDock);
    }
}

// The window's quit: with the agent kept out of the task bar it only hides, and goes on protecting
// from the tray; otherwise it ends the agent.
void DesktopFace::quit()
{
    m_generalPopover->close();
    if (m_hideDock && m_statusItem->isShown()) {
        m_mainWindow->hide();
        return;
    }
    emit quitRequested();
}

WarningController* DesktopFace::warningController() const
{
    return m_warningController.data();
}
