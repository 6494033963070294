#pragma once

#include "cleaners/CleanerServices.h"

#include <QStringList>

// The profile folders the cleaners visit, as reference paths ("~/Library/Application Support/...").
// Names that come from browser data pass the file layer's unsafe-name check first.
namespace Profiles {

// The install the cleaners work on for the browser: the services' own, else the reference roots.
BrowserInstall install(const CleanerServices& services, const QString& browser);
QString dataRoot(const CleanerServices& services, const QString& browser);
QString cacheRoot(const CleanerServices& services, const QString& browser);

// A Chromium-family browser: the data root plus each profile of "Local State"; Opera: its data root,
// its only profile; any other browser: none.
QStringList chromiumFamily(const CleanerServices& services, const QString& browser);
// The profile keys of a Chromium-family browser: "Local State"'s folder names (those safe to use), or
// Opera's single "" (its data root and cache root are the profile's folders).
QStringList chromiumFamilyKeys(const CleanerServices& services, const QString& browser);
// A root followed by a profile key ("" names the root itself).
QString profileFolder(const QString& root, const QString& key);
// Every entry of a Firefox-family profiles folder, folder or not, in listing order.
QStringList firefox(const CleanerServices& services, const QString& browser);
// The profiles it lists by a full path inside the home folder (profiles.ini "IsRelative=0"); such a
// profile keeps its cache in its own folder.
QStringList firefoxElsewhere(const CleanerServices& services, const QString& browser);
// The entries of the profiles folder that are folders; plain files and links are no profiles.
QStringList firefoxFolders(const CleanerServices& services, const QString& browser);

} // namespace Profiles
