#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>

// The history group of Google Chrome, Chromium and Opera, in every profile. Databases are emptied,
// not deleted: "History" keeps its download rows when only history goes, "Web Data" keeps the
// search engines that came with the browser and everything outside its form tables.
class ChromeHistoryCleaner
{
public:
    explicit ChromeHistoryCleaner(const CleanerServices& services);

    void clearChromeHistory(const QString& browser, const QString& ofType);

private:
    void clearProfile(const QString& profile, const QString& ofType);

    CleanerServices m_services;
};
