#include "sandbox/JsonKeys.h"

#include <QStringDecoder>

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// The text parsed, changed and written again compactly; no value for text that is not UTF-8.
std::optional<QByteArray> rewritten(const QByteArray& text, const std::function<void(Json& root)>& change)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = utf8.decode(text); // decoding is what finds the error
    if (utf8.hasError())
        return std::nullopt;
    // Parsed without exceptions; an ordered object keeps the keys where the browser put them, and
    // integers stay 64-bit integers.
    Json root = Json::parse(text.cbegin(), text.cend(), nullptr, false);
    if (!root.is_object())
        root = Json::object();
    change(root);
    return QByteArray::fromStdString(root.dump(-1, ' ', false, Json::error_handler_t::replace));
}

// The objects at the path from `object`, "*" standing for every member.
void objectsAt(Json& object, const QStringList& path, qsizetype from, QList<Json*>& found)
{
    if (!object.is_object())
        return;
    if (from == path.size()) {
        found.append(&object);
        return;
    }
    if (path.at(from) == QLatin1String("*")) {
        for (auto& [key, child] : object.items())
            objectsAt(child, path, from + 1, found);
        return;
    }
    const auto child = object.find(path.at(from).toStdString());
    if (child != object.end())
        objectsAt(*child, path, from + 1, found);
}

} // namespace

namespace JsonKeys {

std::optional<QByteArray> withoutMembers(const QByteArray& text, const QList<QStringList>& objectPaths,
                                         const std::function<bool(const QString& key)>& removes)
{
    return rewritten(text, [&](Json& root) {
        for (const QStringList& path : objectPaths) {
            QList<Json*> objects;
            objectsAt(root, path, 0, objects);
            for (Json* object : std::as_const(objects)) {
                for (auto member = object->begin(); member != object->end();) {
                    if (removes(QString::fromStdString(member.key())))
                        member = object->erase(member);
                    else
                        ++member;
                }
            }
        }
    });
}

std::optional<QByteArray> without(const QByteArray& text, const QList<QStringList>& keyPaths)
{
    return rewritten(text, [&](Json& root) {
        for (const QStringList& path : keyPaths) {
            Json* object = &root;
            for (qsizetype i = 0; object && i < path.size(); ++i) {
                const std::string key = path.at(i).toStdString();
                if (i == path.size() - 1) {
                    object->erase(key);
                    break;
                }
                const auto child = object->find(key);
                object = child != object->end() && child->is_object() ? &*child : nullptr;
            }
        }
    });
}

} // namespace JsonKeys
