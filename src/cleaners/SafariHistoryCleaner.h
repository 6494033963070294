#pragma once

#include "cleaners/CleanerServices.h"

#include <QString>

class HelperScripts;

// Safari's history group. History keeps the user's pinned top sites and pinned tabs; search engines
// have nothing to remove.
class SafariHistoryCleaner
{
public:
    SafariHistoryCleaner(const CleanerServices& services, HelperScripts& scripts);

    void clearSafariHistoryOfType(const QString& ofType);
    // The last session without its history: the file goes unless tabs are pinned; then only the first
    // window stays, without its tab states, so the pinned tabs open again.
    void clearSafariLastSessionData();

private:
    // Top sites reduced to those pinned (a real boolean true), in their order, every other key kept;
    // written every time, so a missing file becomes one with no top sites.
    void keepPinnedTopSites();

    CleanerServices m_services;
    HelperScripts& m_scripts;
};
