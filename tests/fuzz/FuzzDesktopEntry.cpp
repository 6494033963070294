// The browsers' desktop entries belong to their packages (or to the user, who may edit them). Whatever
// they hold, the icon name read is one line's value without its spaces, and only the main group
// decides it: another group added after it changes nothing.
#include "platform/linux/DesktopEntry.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto input = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString icon = DesktopEntry::iconName(input);
    if (icon.contains(QLatin1Char('\n')) || icon != icon.trimmed() || !input.contains(icon.toUtf8()))
        std::abort();
    if (DesktopEntry::iconName(input + "\n[Desktop Action new-window]\nIcon=other\n") != icon)
        std::abort();
    return 0;
}
