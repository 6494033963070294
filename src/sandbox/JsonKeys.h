#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <functional>
#include <optional>

// Browsers' JSON settings files ("Preferences") with some keys taken out.
namespace JsonKeys {

// The text without the keys, each given as its path through nested objects ({"profile",
// "content_settings"}); a path that meets something other than an object is left alone. Every other
// key keeps its place and every integer its exact value; the result is compact. A text that is not a
// JSON object gives "{}" (the browser then starts that file afresh). A text that is not UTF-8 gives no
// value: it is no JSON a browser wrote, and guessing could lose the user's settings.
std::optional<QByteArray> without(const QByteArray& text, const QList<QStringList>& keyPaths);
// The same, without the members that `removes` picks of the objects at the paths; "*" in a path stands
// for every member there ({"profile", "content_settings", "exceptions", "*"}: each exception list).
std::optional<QByteArray> withoutMembers(const QByteArray& text, const QList<QStringList>& objectPaths,
                                         const std::function<bool(const QString& key)>& removes);

} // namespace JsonKeys
