#include "core/AppDelegate.h"

#include "platform/PropertyList.h"
#include "platform/RealHomeDirectory.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"

#include <QFile>

void AppDelegate::initialize(UserDefaults& defaults, const QString& defaultsResource)
{
    QFile resource(defaultsResource);
    if (resource.open(QIODevice::ReadOnly)) {
        const auto registration = PropertyList::parse(resource.readAll());
        if (registration && registration->typeId() == QMetaType::QVariantMap)
            defaults.registerDefaults(registration->toMap());
    }
    defaults.setObject(RealHomeDirectory(), SettingsKeys::userFolder);
    defaults.synchronize();
}

AppDelegate::AppDelegate(const AppServices& services, QObject* parent)
    : QObject(parent), m_defaults(services.defaults), m_log(services.log)
{}

AppDelegate::~AppDelegate()
{
    stopObservingSettings();
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
    if (keyPath == SettingsKeys::showInMenu)
        updateMenu();
    if (keyPath == SettingsKeys::hideDock)
        checkDock();
    if (keyPath == SettingsKeys::isRunning)
        checkRunStatus();
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
