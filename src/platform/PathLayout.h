#pragma once

#include <QString>

#include <optional>

// Maps the reference paths the cleaners speak in ("~/Library/Application Support/Chromium/...",
// already expanded to the home folder) to where this system keeps the same data.
namespace PathLayout {

inline const QString macOS = QStringLiteral("macOS");
inline const QString linux_ = QStringLiteral("Linux");

// The layout used when the settings name none.
QString platformDefault();

// The native path, or no value when the layout has no counterpart (the operation then finds nothing).
// Paths outside "<home>/Library" are native already. An unknown layout name means the platform's.
std::optional<QString> nativePath(const QString& layout, const QString& home, const QString& path);

// The browsers' data and cache roots (and Corvella's scripts folder) on this layout, as paths below
// the home folder would name them: "<home>/.cache/chromium", ... A user may link any of them elsewhere.
QStringList roots(const QString& layout, const QString& home);

} // namespace PathLayout
