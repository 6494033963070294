#pragma once

#include <QString>
#include <QStringList>

// The keys of the agent's settings in the user defaults.
namespace SettingsKeys {

inline const QString isRunning = QStringLiteral("isRunning");
inline const QString enabledBrowsers = QStringLiteral("enabledBrowsers");
inline const QString settings = QStringLiteral("settings");
inline const QString showInMenu = QStringLiteral("showInMenu");
inline const QString hideDock = QStringLiteral("hideDock");
inline const QString loginStart = QStringLiteral("loginStart");
inline const QString hideOnLaunch = QStringLiteral("hideOnLaunch");
inline const QString iCloudSync = QStringLiteral("iCloudSync");
inline const QString displayNotifications = QStringLiteral("displayNotifications");
inline const QString firstRun = QStringLiteral("firstRun");
inline const QString userFolder = QStringLiteral("userFolder");
inline const QString hideiCloudAlert = QStringLiteral("hideiCloudAlert");
inline const QString secureDeleteData = QStringLiteral("secureDeleteData");
// The folder the user syncs between machines, which holds the shared settings; local to this machine.
inline const QString syncFolder = QStringLiteral("syncFolder");
// Which path layout maps the browsers' reference paths: "macOS" or "Linux"; absent: the platform's.
inline const QString browserLayout = QStringLiteral("browserLayout");
// Also remove each category where today's browsers keep it.
inline const QString cleanCurrentLayouts = QStringLiteral("cleanCurrentLayouts");

// The sites whose cookies and site data stay: an array of host names, normalised; shared between machines.
inline const QString keptSites = QStringLiteral("keptSites");
// Also keep the sites the user told a browser to always allow cookies for (default true).
inline const QString keepBrowserExceptions = QStringLiteral("keepBrowserExceptions");

// When each browser was last cleaned: a map of browser key to date; local to this machine.
inline const QString lastCleaned = QStringLiteral("lastCleaned");

// The update keys: stored here, read by an updater where the platform has one, and shared between machines.
inline const QString scheduledCheckInterval = QStringLiteral("SUScheduledCheckInterval");
inline const QString automaticallyUpdate = QStringLiteral("SUAutomaticallyUpdate");
inline const QString enableAutomaticChecks = QStringLiteral("SUEnableAutomaticChecks");

// The data categories, in the order a removal run takes them.
inline const QStringList categories{
    QStringLiteral("cookies"),     QStringLiteral("databases"),    QStringLiteral("flash"),
    QStringLiteral("silverlight"), QStringLiteral("cache"),        QStringLiteral("history"),
    QStringLiteral("favicons"),    QStringLiteral("webpage"),      QStringLiteral("forms"),
    QStringLiteral("downloads"),   QStringLiteral("websitePrefs"), QStringLiteral("searchEngines")};

// "Safari:cookies": the entry of the "settings" dictionary for one browser and category.
inline QString settingsKey(const QString& browser, const QString& category)
{
    return browser + QLatin1Char(':') + category;
}

} // namespace SettingsKeys
