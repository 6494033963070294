#pragma once

#include <QByteArray>
#include <QString>

// What the agent reads from other programs' desktop entries (freedesktop.org Desktop Entry files).
namespace DesktopEntry {

// The "Icon" key of the main group ("[Desktop Entry]"): a theme icon name or an absolute path;
// empty when there is none or it is no UTF-8. Localised keys ("Icon[de]") and other groups are not read.
QString iconName(const QByteArray& contents);

} // namespace DesktopEntry
