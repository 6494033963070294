#pragma once

#include <QStringList>
#include <QUrl>

// File URLs as the permission layer keys and compares them: a folder's URL ends with "/", so a
// record of a folder and the lookups of its ancestors use the same text.
namespace FileUrl {

// The file URL of an absolute path; with a trailing "/" when the path names an existing folder.
QUrl forPath(const QString& path);
// The path of a file URL, without a trailing "/" (except for the root folder).
QString path(const QUrl& url);
// The URL of the folder that holds the item ("/" for the root folder).
QUrl parent(const QUrl& url);
// "." and ".." removed and the links in the part of the path that exists resolved.
QUrl standardizedResolvingSymlinks(const QUrl& url);
// "/", then each component: /home/ann/ gives "/", "home", "ann".
QStringList pathComponents(const QUrl& url);

} // namespace FileUrl

// Reports a missing argument, a programming error: "Invalid parameter not satisfying: <name>".
void assertParameter(bool satisfied, const char* name, const char* sourceFile);
