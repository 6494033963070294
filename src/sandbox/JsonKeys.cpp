#include "sandbox/JsonKeys.h"

#include <QStringDecoder>

#include <nlohmann/json.hpp>

namespace JsonKeys {

std::optional<QByteArray> without(const QByteArray& text, const QList<QStringList>& keyPaths)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = utf8.decode(text); // decoding is what finds the error
    if (utf8.hasError())
        return std::nullopt;
    // Parsed without exceptions; an ordered object keeps the keys where the browser put them, and
    // integers stay 64-bit integers.
    nlohmann::ordered_json root = nlohmann::ordered_json::parse(text.cbegin(), text.cend(), nullptr, false);
    if (!root.is_object())
        root = nlohmann::ordered_json::object();
    for (const QStringList& path : keyPaths) {
        nlohmann::ordered_json* object = &root;
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
    return QByteArray::fromStdString(
        root.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

} // namespace JsonKeys
