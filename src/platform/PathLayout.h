#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// Maps the reference paths the cleaners speak in ("~/Library/Preferences/Macromedia/...", already
// expanded to the home folder) to where this system keeps the same data. The browsers' folders are
// not here: the browser table gives them for each install, as this system's paths already.
namespace PathLayout {

inline const QString macOS = QStringLiteral("macOS");
inline const QString linux_ = QStringLiteral("Linux");

// The layout used when the settings name none.
QString platformDefault();
// Whether the layout is the reference one itself (macOS), where a path is its own native path.
bool isReferenceLayout(const QString& layout);

// The native path, or no value when the layout has no counterpart: the operation then finds
// nothing. Paths outside "<home>/Library" are native already. An unknown layout name means the
// platform's.
std::optional<QString> nativePath(const QString& layout, const QString& home, const QString& path);

// The shared folders (Flash Player's, Corvella's scripts) on this layout, as paths below the home
// folder would name them. A user may link any of them elsewhere.
QStringList roots(const QString& layout, const QString& home);

} // namespace PathLayout
