#pragma once

#include <QList>
#include <QString>

#include <optional>

// Maps the reference paths the cleaners speak in ("~/Library/Application Support/Chromium/...",
// already expanded to the home folder) to where this system keeps the same data.
namespace PathLayout {

inline const QString macOS = QStringLiteral("macOS");
inline const QString linux_ = QStringLiteral("Linux");

// How a browser was installed on Linux: each way keeps its data in folders of its own
// (Flatpak below "~/.var/app/<id>", Snap below "~/snap/<name>").
enum class Install
{
    Native,
    Flatpak,
    Snap,
};

// The layout used when the settings name none.
QString platformDefault();

// The native path, or no value when the layout (or the install) has no counterpart: the operation
// then finds nothing. Paths outside "<home>/Library" are native already, and so are the folders that
// every install shares (Flash Player's, Corvella's scripts). An unknown layout name means the platform's.
std::optional<QString> nativePath(const QString& layout, const QString& home, const QString& path,
                                  Install install = Install::Native);

// The installs whose folder for the reference root (a browser's data root, say) exists, the native
// one always first; only the native one on the macOS layout.
QList<Install> installs(const QString& layout, const QString& home, const QString& referenceRoot);

// The browsers' data and cache roots of every install (and Corvella's scripts folder) on this layout,
// as paths below the home folder would name them: "<home>/.cache/chromium", ... A user may link any
// of them elsewhere.
QStringList roots(const QString& layout, const QString& home);

} // namespace PathLayout
