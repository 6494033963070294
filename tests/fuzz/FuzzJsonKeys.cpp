// Chromium's "Preferences" and "Local State" are rewritten without some keys. Whatever the text,
// the rewrite answers JSON or nothing, and rewriting its own output changes nothing more; so does the
// rewrite without some members of nested objects.
#include "sandbox/JsonKeys.h"

#include <QJsonDocument>

#include <cstdint>
#include <cstdlib>

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QList<QStringList> keyPaths = {
        {u"net"_s}, {u"dns_prefetching"_s}, {u"partition"_s}, {u"profile"_s, u"content_settings"_s}};
    const auto text = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const std::optional<QByteArray> rewritten = JsonKeys::without(text, keyPaths);
    if (!rewritten)
        return 0;
    QJsonParseError error;
    if (!QJsonDocument::fromJson(*rewritten, &error).isObject())
        std::abort(); // a browser would throw away a file that is not a JSON object
    if (JsonKeys::without(*rewritten, keyPaths) != rewritten)
        std::abort();
    // The sites' entries of the per-site settings, as a clean that keeps some sites takes them out.
    const QList<QStringList> perSite = {{u"partition"_s, u"per_host_zoom_levels"_s, u"*"_s}, {u"*"_s}};
    const auto removes = [](const QString& key) { return key.contains(QLatin1Char('a')); };
    const std::optional<QByteArray> members = JsonKeys::withoutMembers(text, perSite, removes);
    if (!members || !QJsonDocument::fromJson(*members).isObject() ||
        JsonKeys::withoutMembers(*members, perSite, removes) != members)
        std::abort();
    return 0;
}
