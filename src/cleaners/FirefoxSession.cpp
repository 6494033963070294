#include "cleaners/FirefoxSession.h"

#include "cleaners/MozLz4.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

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

std::optional<QByteArray> withOnlyPinnedTabs(const QByteArray& mozlz4, bool keepCookies)
{
    const std::optional<QByteArray> json = MozLz4::decompress(mozlz4);
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
    return MozLz4::compress(QJsonDocument(kept).toJson(QJsonDocument::Compact));
}

} // namespace FirefoxSession
