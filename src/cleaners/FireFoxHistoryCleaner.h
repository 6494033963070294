#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>

// Firefox's history group, in every profile folder. Bookmarked places keep their row (only their
// visit statistics go), so bookmarks survive a history clean.
class FireFoxHistoryCleaner
{
public:
    explicit FireFoxHistoryCleaner(const CleanerServices& services);

    void clearFireFoxHistoryOfType(const QString& ofType, const QString& browser);

private:
    void clearProfile(const QString& profile, const QString& ofType);
    // The places titled like a downloaded file, with every annotation, when there were downloads.
    void clearDownloads(const QString& profile);

    CleanerServices m_services;
};
