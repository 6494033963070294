#include "cleaners/FirefoxSearchEngines.h"

#include "cleaners/MozLz4.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

bool comesWithFirefoxOrAnAddOn(const QJsonObject& engine)
{
    const QString loadPath = engine.value(QLatin1String("_loadPath")).toString();
    return engine.value(QLatin1String("_isAppProvided")).toBool() ||
           engine.value(QLatin1String("_isConfigEngine")).toBool() ||
           loadPath.startsWith(QLatin1String("[app]")) || loadPath.startsWith(QLatin1String("[addon]"));
}

} // namespace

namespace FirefoxSearchEngines {

Result withoutSitesEngines(const QByteArray& mozlz4)
{
    const std::optional<QByteArray> json = MozLz4::decompress(mozlz4);
    const QJsonDocument document = json ? QJsonDocument::fromJson(*json) : QJsonDocument();
    QJsonObject search = document.object();
    if (!document.isObject() || !search.value(QLatin1String("engines")).isArray())
        return {Outcome::Unreadable, {}};
    QJsonArray kept;
    QStringList removedIds, removedNames;
    for (const QJsonValue& value : search.value(QLatin1String("engines")).toArray()) {
        const QJsonObject engine = value.toObject();
        if (comesWithFirefoxOrAnAddOn(engine)) {
            kept.append(engine);
        } else {
            removedIds.append(engine.value(QLatin1String("id")).toString());
            removedNames.append(engine.value(QLatin1String("_name")).toString());
        }
    }
    if (removedIds.isEmpty())
        return {Outcome::Unchanged, {}};
    search.insert(QLatin1String("engines"), kept);
    // A default that was one of them goes too (with the hash that guards it): Firefox takes its own.
    QJsonObject meta = search.value(QLatin1String("metaData")).toObject();
    const auto forget = [&meta](const char* key, const char* hash, const QStringList& removed) {
        if (meta.contains(QLatin1String(key)) &&
            removed.contains(meta.value(QLatin1String(key)).toString())) {
            meta.remove(QLatin1String(key));
            meta.remove(QLatin1String(hash));
        }
    };
    forget("defaultEngineId", "defaultEngineIdHash", removedIds);
    forget("privateDefaultEngineId", "privateDefaultEngineIdHash", removedIds);
    forget("current", "hash", removedNames);
    forget("private", "privateHash", removedNames);
    search.insert(QLatin1String("metaData"), meta);
    return {Outcome::Rewritten, MozLz4::compress(QJsonDocument(search).toJson(QJsonDocument::Compact))};
}

} // namespace FirefoxSearchEngines
