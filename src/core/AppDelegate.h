#pragma once

#include "core/SettingsController.h"

#include <QObject>
#include <QVariant>

class SystemLog;
class UserDefaults;

// The platform services the controller works with.
struct AppServices
{
    UserDefaults& defaults;
    SystemLog& log;
};

// The application controller, without widgets: it owns the settings mirror and reacts to
// settings changes. Where the desktop must show something it emits a signal the UI connects to.
class AppDelegate : public QObject
{
    Q_OBJECT
public:
    // Before the controller exists: registers the shipped defaults, records the real home folder
    // under "userFolder" and synchronises. A missing or unreadable defaults resource registers nothing.
    static void initialize(UserDefaults& defaults,
                           const QString& defaultsResource = QStringLiteral(":/Defaults.plist"));

    explicit AppDelegate(const AppServices& services, QObject* parent = nullptr);
    ~AppDelegate() override;

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

    SettingsController& settingsController() { return m_settingsController; }
    bool isValid() const { return m_isValid; }

signals:
    void statusItemVisibilityChanged(bool visible);
    void dockPolicyChanged(bool hideDock);
    void infoLabelNeedsUpdate();
    void mainSwitchEnabledChanged(bool enabled);

private:
    void updateMenu();
    void checkDock();
    void checkRunStatus();

    UserDefaults& m_defaults;
    SystemLog& m_log;
    SettingsController m_settingsController;
    bool m_isValid = false;
    QList<QMetaObject::Connection> m_observations;
};
