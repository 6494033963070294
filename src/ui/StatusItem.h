#pragma once

#include <QAction>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

// The tray item (StatusNotifierItem with its exported menu where the desktop has one, else XEmbed):
// a monochrome shield in the panel's text colour, filled while protection is on, and a menu whose
// first entry switches protection, or asks for a browser to be activated while none is.
class StatusItem : public QObject
{
    Q_OBJECT
public:
    explicit StatusItem(QObject* parent = nullptr);
    ~StatusItem() override;

    // Shows the item as the state is, or removes it.
    void showMenuBarItem(bool show, bool isRunning, bool anyBrowserActivated, bool hasAccess = true);
    bool isShown() const { return m_trayIcon != nullptr; }
    QMenu* menu() { return &m_sysMenuBar; }
    QAction* runStateItem() { return m_runStateItem; }
    // In the menu only while the home folder is not granted.
    QAction* grantAccessItem() { return m_grantAccessItem; }

    // The tray's picture, painted in the colour given (the panel's text colour).
    static QIcon image(bool isRunning, const QColor& colour);

signals:
    void toggleRunStatus();
    void grantAccess();
    void openAndCheckBrowsers();
    void openWindow();
    void openPreferences();
    void quitFromSysMenu();

private:
    QMenu m_sysMenuBar;
    QAction* m_runStateItem;
    QAction* m_grantAccessItem;
    std::unique_ptr<QSystemTrayIcon> m_trayIcon;
    bool m_anyBrowserActivated = false;
};
