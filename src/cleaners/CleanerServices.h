#pragma once

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
};
