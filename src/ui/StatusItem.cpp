#include "ui/StatusItem.h"

#include <QPainter>
#include <QPalette>

#include <algorithm>

StatusItem::StatusItem(QObject* parent)
    : QObject(parent), m_runStateItem(m_sysMenuBar.addAction(QString())),
      m_grantAccessItem(new QAction(tr("Grant Access to the Home Folder…"), this))
{
    connect(m_grantAccessItem, &QAction::triggered, this, &StatusItem::grantAccess);
    m_sysMenuBar.setAccessibleName(tr("Corvella"));
    connect(m_runStateItem, &QAction::triggered, this, [this] {
        if (m_anyBrowserActivated)
            emit toggleRunStatus();
        else
            emit openAndCheckBrowsers();
    });
    m_sysMenuBar.addAction(tr("Open Corvella"), this, &StatusItem::openWindow);
    m_sysMenuBar.addAction(tr("Preferences…"), this, &StatusItem::openPreferences);
    m_sysMenuBar.addSeparator();
    m_sysMenuBar.addAction(tr("Quit Corvella"), this, &StatusItem::quitFromSysMenu);
}

StatusItem::~StatusItem() = default;

QIcon StatusItem::image(bool isRunning, const QColor& colour)
{
    const QIcon shape(isRunning ? QStringLiteral(":/icons/menu_running.svg")
                                : QStringLiteral(":/icons/menu.svg"));
    QIcon painted;
    for (const int size : {16, 22, 24, 32, 44, 48, 64}) {
        QPixmap pixmap = shape.pixmap(size, size);
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(pixmap.rect(), colour);
        painter.end();
        painted.addPixmap(pixmap);
    }
    painted.setIsMask(true); // a panel that recolours symbolic icons may do so
    return painted;
}

QString StatusItem::symbolicName(bool isRunning)
{
    return isRunning ? QStringLiteral("com.tovanex.Corvella6-running-symbolic")
                     : QStringLiteral("com.tovanex.Corvella6-symbolic");
}

// The panel's colours are not known: a tray host that recolours symbolic icons gets the installed
// one by name; any other gets a light shield with a dark rim, which stands out on light and dark
// panels alike.
QIcon StatusItem::trayImage(bool isRunning)
{
    if (const QString name = symbolicName(isRunning); QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    const QIcon light = image(isRunning, QColor(0xf4, 0xf4, 0xf4));
    const QIcon dark = image(isRunning, QColor(0x1a, 0x1a, 0x1a));
    QIcon rimmed;
    for (const int size : {16, 22, 24, 32, 44, 48, 64}) {
        const int rim = std::max(1, size / 22);
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        const int inner = size - 2 * rim;
        const QPixmap outline = dark.pixmap(inner, inner);
        for (const int dx : {0, rim, 2 * rim})
            for (const int dy : {0, rim, 2 * rim})
                painter.drawPixmap(dx, dy, outline);
        painter.drawPixmap(rim, rim, light.pixmap(inner, inner));
        painter.end();
        rimmed.addPixmap(pixmap);
    }
    return rimmed;
}

void StatusItem::showMenuBarItem(bool show, bool isRunning, bool anyBrowserActivated, bool hasAccess,
                                 const QStringList& lastCleaned)
{
    m_anyBrowserActivated = anyBrowserActivated;
    // In the menu only while needed (a hidden entry would still be exported to the panel), after the
    // run-state entry, which stays first.
    const bool listed = m_sysMenuBar.actions().contains(m_grantAccessItem);
    if (!hasAccess && !listed)
        m_sysMenuBar.insertAction(m_sysMenuBar.actions().value(1), m_grantAccessItem);
    else if (hasAccess && listed)
        m_sysMenuBar.removeAction(m_grantAccessItem);
    m_runStateItem->setText(!anyBrowserActivated ? tr("Please activate a Browser")
                            : isRunning          ? tr("Disable Corvella")
                                                 : tr("Enable Corvella"));
    if (!show) {
        m_trayIcon.reset();
        return;
    }
    if (!m_trayIcon) {
        m_trayIcon = std::make_unique<QSystemTrayIcon>();
        m_trayIcon->setContextMenu(&m_sysMenuBar);
        connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this,
                [this](QSystemTrayIcon::ActivationReason reason) {
                    if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                        emit openWindow();
                });
    }
    m_trayIcon->setIcon(trayImage(isRunning));
    const QString state = !hasAccess  ? tr("Corvella has no access to your home folder")
                          : isRunning ? tr("Corvella is Enabled")
                                      : tr("Corvella is Disabled");
    m_trayIcon->setToolTip((QStringList{state} + lastCleaned).join(QLatin1Char('\n')));
    m_trayIcon->show();
}
