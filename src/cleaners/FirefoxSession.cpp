#include "cleaners/FirefoxSession.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

#include <lz4.h>

namespace {

const QByteArray kMagic("mozLz40\0", 8);
constexpr qint64 kMaxJsonBytes = 64 * 1024 * 1024;

// A pinned tab at its current page: the one history entry it shows, without what was typed into it or
// the frames inside it.
QJsonObject pinnedTab(const QJsonObject& tab)
{
    const QJsonArray entries = tab.value(QLatin1String("entries")).toArray();
    const qsizetype index =
        std::clamp<qsizetype>(tab.value(QLatin1String("index")).toInt(1), 1, entries.size());
    QJsonObject entry = entries.isEmpty() ? QJsonObject() : entries.at(index - 1).toObject();
    for (const char* key : {"children", "formdata", "scroll", "presState"})
        entry.remove(QLatin1String(key));
    QJsonObject kept;
    kept.insert(QLatin1String("entries"), entries.isEmpty() ? QJsonArray() : QJsonArray{entry});
    kept.insert(QLatin1String("index"), entries.isEmpty() ? 0 : 1);
    kept.insert(QLatin1String("pinned"), true);
    kept.insert(QLatin1String("hidden"), false);
    kept.insert(QLatin1String("attributes"), QJsonObject());
    for (const char* key : {"userContextId", "lastAccessed"}) {
        if (tab.contains(QLatin1String(key)))
            kept.insert(QLatin1String(key), tab.value(QLatin1String(key)));
    }
    return kept;
}

} // namespace

namespace FirefoxSession {

std::optional<QByteArray> decompress(const QByteArray& mozlz4)
{
    if (!mozlz4.startsWith(kMagic) || mozlz4.size() < 12)
        return std::nullopt;
    const auto* size = reinterpret_cast<const uchar*>(mozlz4.constData() + 8);
    const qint64 length =
        qint64(size[0]) | qint64(size[1]) << 8 | qint64(size[2]) << 16 | qint64(size[3]) << 24;
    if (length <= 0 || length > kMaxJsonBytes)
        return std::nullopt;
    QByteArray json(qsizetype(length), Qt::Uninitialized);
    const int got =
        LZ4_decompress_safe(mozlz4.constData() + 12, json.data(), int(mozlz4.size() - 12), int(length));
    if (got != length)
        return std::nullopt;
    return json;
}

QByteArray compress(const QByteArray& json)
{
    QByteArray out = kMagic;
    const auto length = quint32(json.size());
    for (int shift = 0; shift < 32; shift += 8)
        out.append(char((length >> shift) & 0xFF));
    QByteArray block(LZ4_compressBound(int(json.size())), Qt::Uninitialized);
    const int written =
        LZ4_compress_default(json.constData(), block.data(), int(json.size()), int(block.size()));
    return out + block.left(written);
}

std::optional<QByteArray> withOnlyPinnedTabs(const QByteArray& mozlz4, bool keepCookies)
{
    const std::optional<QByteArray> json = decompress(mozlz4);
    const QJsonObject session = json ? QJsonDocument::fromJson(*json).object() : QJsonObject();
    QJsonArray windows;
    for (const QJsonValue& value : session.value(QLatin1String("windows")).toArray()) {
        const QJsonObject window = value.toObject();
        QJsonArray tabs;
        for (const QJsonValue& tab : window.value(QLatin1String("tabs")).toArray()) {
            if (tab.toObject().value(QLatin1String("pinned")).toBool())
                tabs.append(pinnedTab(tab.toObject()));
        }
        if (tabs.isEmpty())
            continue;
        QJsonObject kept;
        kept.insert(QLatin1String("tabs"), tabs);
        kept.insert(QLatin1String("selected"), 1);
        kept.insert(QLatin1String("_closedTabs"), QJsonArray());
        for (const char* key : {"width", "height", "screenX", "screenY", "sizemode",
                                "sizemodeBeforeMinimized", "workspaceID", "zIndex"}) {
            if (window.contains(QLatin1String(key)))
                kept.insert(QLatin1String(key), window.value(QLatin1String(key)));
        }
        windows.append(kept);
    }
    if (windows.isEmpty())
        return std::nullopt;
    QJsonObject kept;
    kept.insert(QLatin1String("windows"), windows);
    kept.insert(QLatin1String("selectedWindow"), 1);
    kept.insert(QLatin1String("_closedWindows"), QJsonArray());
    for (const char* key : {"version", "session", "global"}) {
        if (session.contains(QLatin1String(key)))
            kept.insert(QLatin1String(key), session.value(QLatin1String(key)));
    }
    if (keepCookies && session.contains(QLatin1String("cookies")))
        kept.insert(QLatin1String("cookies"), session.value(QLatin1String("cookies")));
    return compress(QJsonDocument(kept).toJson(QJsonDocument::Compact));
}

} // namespace FirefoxSession
