#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>

// Flash and Silverlight data. Chrome and Chromium keep plug-in data per profile ("Pepper Data");
// every other browser shares the system-wide Flash Player folder. Silverlight keeps one folder for
// every browser. (The plug-in caches belong to the cache category.)
class PluginCleaner
{
public:
    // The shared plug-in folders, as reference paths.
    static inline const QString flashFolder = QStringLiteral("~/Library/Preferences/Macromedia/Flash Player");
    static inline const QString silverlightFolder =
        QStringLiteral("~/Library/Application Support/Microsoft/Silverlight");

    explicit PluginCleaner(const CleanerServices& services);

    void removeFlash(const QString& browser);
    void clearChromeFlash(const QString& browser);
    void removeSilverlight();

private:
    CleanerServices m_services;
};
