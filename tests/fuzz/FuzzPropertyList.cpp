// Property lists come from outside: Safari's files and the settings file anyone can edit. Whatever the
// bytes, parsing answers a value or none, and a value it answers can be written and read back.
#include "platform/PropertyList.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const std::optional<QVariant> value = PropertyList::parse(bytes);
    if (!value)
        return 0;
    if (const std::optional<QByteArray> xml = PropertyList::toXml(*value)) {
        const std::optional<QVariant> again = PropertyList::parse(*xml);
        if (!again || PropertyList::toXml(*again) != xml)
            std::abort(); // what we write must read back as itself
    }
    return 0;
}
