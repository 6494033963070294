#pragma once

#include <QAction>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

// The tray item (StatusNotifierItem with its exported menu where the desktop has one, else XEmbed):
// a shield, filled while protection is on, that stays visible on light and dark panels, and a menu whose
// first entry switches protection, or asks for a browser to be activated while none is.
class StatusItem : public QObject
{
    Q_OBJECT
public:
    explicit StatusItem(QObject* parent = nullptr);
    ~StatusItem() override;

    // Shows the item as the state is, or removes it.
    // lastCleaned: a line per activated browser for the tooltip.
    void showMenuBarItem(bool show, bool isRunning, bool anyBrowserActivated, bool hasAccess = true,
                         const QStringList& lastCleaned = {});
    QString toolTip() const { return m_trayIcon ? m_trayIcon->toolTip() : QString(); }
    bool isShown() const { return m_trayIcon != nullptr; }
    QMenu* menu() { return &m_sysMenuBar; }
    QAction* runStateItem() { return m_runStateItem; }
    // In the menu only while the home folder is not granted.
    QAction* grantAccessItem() { return m_grantAccessItem; }

    // The shield painted in one colour (for a dialog, in its text colour).
    static QIcon image(bool isRunning, const QColor& colour);
    // What the tray shows: the installed symbolic icon where the theme has it, else a light shield
    // with a dark rim.
    static QIcon trayImage(bool isRunning);
    static QString symbolicName(bool isRunning);

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
