#pragma once

#include <QList>
#include <QString>
#include <QStringList>

struct KnownApplication;
struct WorkspaceLocations;

// Every browser Corvella knows, one row each: what it is called, its family (whose files the
// cleaners know), where each of its installs keeps its data, and how it shows up on the system.
// Adding a browser is adding a row.
namespace BrowserTable {

enum class Family
{
    Safari,
    Chromium, // a data root holding "Local State" and profile folders, a cache root beside it
    Firefox,  // a profiles root holding profiles.ini and profile folders, a cache root beside it
};

// One install's folders (deb or rpm, a Flatpak, a Snap), below the home folder. A "*" component stands
// for each revision of a Snap (every revision keeps its own copy of the data); data roots are tried in
// order, and each one that exists and has its family's shape is an install of its own.
struct Install
{
    QStringList dataRoots;
    QString cacheRoot;
    QStringList desktopEntries = {};
    QStringList commands = {};
    // The main process's executable: a file name, or the end of its path ("chrome-beta/chrome") where
    // several browsers share one name.
    QStringList executables = {};
    QString snapName = {}; // a Snap's executables live below /snap/<name>/
};

struct Browser
{
    QString name;       // the settings prefix and the corvella-clean argument
    QString identifier; // reverse-DNS, as the settings' "enabledBrowsers" holds it
    Family family;
    // The folders as the cleaners name them on the macOS layout ("~/Library/...").
    QString referenceDataRoot;
    QString referenceCacheRoot;
    QString icon; // the icon theme's name, when no desktop entry names one
    QList<Install> installs;
    // Opera keeps one profile, in its data root itself.
    bool singleProfile = false;
};

// In tile order.
const QList<Browser>& all();
const Browser* find(const QString& name);
const Browser* forIdentifier(const QString& identifier);
// The browser whose family's files the cleaners read for this one: "Chromium" for any Chromium-family
// browser but Google Chrome and Opera (which have rows of their own in the settings), "Firefox" for the
// Firefox family.
QString settingsTemplate(const Browser& browser);

// What the Linux workspace looks for: every install's desktop entries, commands and executables.
QList<KnownApplication> knownApplications();
// Where a Linux system keeps what the workspace looks at, for this home folder: the XDG folders, the
// known applications, and every place a browser's lock files appear.
WorkspaceLocations workspaceLocations(const QString& home);

} // namespace BrowserTable
