#pragma once

#include "catalogue/BrowserCatalogue.h"

#include <QStringList>

#include <optional>

class Sandbox;
class SystemLog;
class UserDefaults;

// The services the cleaners work with.
struct CleanerServices
{
    Sandbox& sandbox;
    BrowserCatalogue& catalogue;
    UserDefaults& defaults;
    SystemLog& log;
    // Sites kept for this run beside the user's ("corvella-clean --keep").
    QStringList keptForThisRun = {};
    // The browser install these cleaners work on; without one, the browser's reference roots.
    std::optional<BrowserInstall> install = {};
};
