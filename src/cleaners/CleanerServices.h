#pragma once

#include <QStringList>

class BrowserCatalogue;
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
};
