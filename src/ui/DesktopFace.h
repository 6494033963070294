#pragma once

#include "ui/IconTransformer.h"

#include <QObject>
#include <QPointer>

#include <memory>

class AppDelegate;
class BrowserPopover;
class GeneralPopover;
class MainWindow;
class PreferencesWindowController;
class QMessageBox;
class StatusItem;
class WarningController;
class Workspace;

// The agent's face: tray item, main window, tiles and popovers, driven only by the controller's
// signals and public operations. Without a tray to live in (a desktop with none, or the item
// switched off) the window stays reachable: it is shown and kept in the task bar.
class DesktopFace : public QObject
{
    Q_OBJECT
public:
    // trayAvailable: whether the desktop shows tray items (a seam for tests).
    DesktopFace(AppDelegate& delegate, Workspace& workspace, bool trayAvailable, QObject* parent = nullptr);
    ~DesktopFace() override;

    MainWindow& mainWindow() { return *m_mainWindow; }
    BrowserPopover& browserPopover() { return *m_browserPopover; }
    GeneralPopover& generalPopover() { return *m_generalPopover; }
    StatusItem& statusItem() { return *m_statusItem; }
    // The file-access warning while it is open; none once closed.
    WarningController* warningController() const;
    // Made on first use and kept.
    PreferencesWindowController& preferencesWindowController();
    void showPreferences();
    // The alert that settings sync needs a synced folder, while it is open.
    QMessageBox* syncAlert() const;

signals:
    void quitRequested();
    // Shows the preferences pane named under "tab".
    void changePrefsTab(const QVariantMap& userInfo);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void closePopovers();
    void showMenuBarItem(bool show);
    void quit();
    void openFileWarningView();
    void checkiCloudAlert();

    AppDelegate& m_delegate;
    IconTransformer m_icons;
    bool m_trayAvailable;
    bool m_hideDock = false;
    std::unique_ptr<MainWindow> m_mainWindow;
    std::unique_ptr<BrowserPopover> m_browserPopover;
    std::unique_ptr<GeneralPopover> m_generalPopover;
    std::unique_ptr<StatusItem> m_statusItem;
    QPointer<WarningController> m_warningController;
    std::unique_ptr<PreferencesWindowController> m_preferencesWindowController;
    QPointer<QMessageBox> m_syncAlert;
};
