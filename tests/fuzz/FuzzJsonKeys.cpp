// Chromium's "Preferences" and "Local State" are rewritten without some keys. Whatever the text,
// the rewrite answers JSON or nothing, and rewriting its own output changes nothing more.
#include "sandbox/JsonKeys.h"

#include <QJsonDocument>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QList<QStringList> keyPaths = {
        {QStringLiteral("net")},
        {QStringLiteral("dns_prefetching")},
        {QStringLiteral("partition")},
        {QStringLiteral("profile"), QStringLiteral("content_settings")}};
    const auto text = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const std::optional<QByteArray> rewritten = JsonKeys::without(text, keyPaths);
    if (!rewritten)
        return 0;
    QJsonParseError error;
    if (!QJsonDocument::fromJson(*rewritten, &error).isObject())
        std::abort(); // a browser would throw away a file that is not a JSON object
    if (JsonKeys::without(*rewritten, keyPaths) != rewritten)
        std::abort();
    return 0;
}
