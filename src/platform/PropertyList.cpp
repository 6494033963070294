#include "platform/PropertyList.h"

#include <QDateTime>

#include <plist/plist.h>

#include <memory>

namespace {

// Property-list dates count seconds from 2001-01-01 UTC.
const qint64 kPlistEpochOffset = 978307200;

struct PlistFree
{
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<std::remove_pointer_t<plist_t>, PlistFree>;

std::optional<QVariant> fromNode(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t v = 0;
        plist_get_bool_val(node, &v);
        return QVariant(v != 0);
    }
    case PLIST_UINT: {
        uint64_t v = 0;
        plist_get_uint_val(node, &v);
        // Negative integers are stored in two's complement; read them back signed.
        return QVariant(static_cast<qint64>(v));
    }
    case PLIST_REAL: {
        double v = 0;
        plist_get_real_val(node, &v);
        return QVariant(v);
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char* s = plist_get_string_ptr(node, &length);
        return QVariant(QString::fromUtf8(s, static_cast<qsizetype>(length)));
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char* d = plist_get_data_ptr(node, &length);
        return QVariant(QByteArray(d, static_cast<qsizetype>(length)));
    }
    case PLIST_DATE: {
        int32_t sec = 0, usec = 0;
        plist_get_date_val(node, &sec, &usec);
        const qint64 ms = (static_cast<qint64>(sec) + kPlistEpochOffset) * 1000 + usec / 1000;
        return QVariant(QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC));
    }
    case PLIST_UID: {
        uint64_t v = 0;
        plist_get_uid_val(node, &v);
        return QVariant(static_cast<qint64>(v));
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t n = plist_array_get_size(node);
        list.reserve(n);
        for (uint32_t i = 0; i < n; ++i) {
            auto item = fromNode(plist_array_get_item(node, i));
            if (!item)
                return std::nullopt;
            list.append(*item);
        }
        return QVariant(list);
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(node, &it);
        for (;;) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, it, &key, &value);
            if (!key)
                break;
            const QString k = QString::fromUtf8(key);
            free(key);
            auto item = value ? fromNode(value) : std::nullopt;
            if (!item) {
                free(it);
                return std::nullopt;
            }
            map.insert(k, *item);
        }
        free(it);
        return QVariant(map);
    }
    default:
        return std::nullopt;
    }
}

plist_t toNode(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return plist_new_uint(static_cast<uint64_t>(value.toLongLong()));
    case QMetaType::Double:
    case QMetaType::Float:
        return plist_new_real(value.toDouble());
    case QMetaType::QString: {
        const QByteArray utf8 = value.toString().toUtf8();
        return plist_new_string(utf8.constData());
    }
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), static_cast<uint64_t>(bytes.size()));
    }
    case QMetaType::QDateTime: {
        const qint64 ms = value.toDateTime().toMSecsSinceEpoch() - kPlistEpochOffset * 1000;
        const qint64 sec = ms >= 0 ? ms / 1000 : (ms - 999) / 1000;
        return plist_new_date(static_cast<int32_t>(sec), static_cast<int32_t>((ms - sec * 1000) * 1000));
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        plist_t array = plist_new_array();
        for (const QVariant& item : value.toList()) {
            plist_t node = toNode(item);
            if (!node) {
                plist_free(array);
                return nullptr;
            }
            plist_array_append_item(array, node);
        }
        return array;
    }
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            plist_t node = toNode(it.value());
            if (!node) {
                plist_free(dict);
                return nullptr;
            }
            plist_dict_set_item(dict, it.key().toUtf8().constData(), node);
        }
        return dict;
    }
    default:
        return nullptr;
    }
}

} // namespace

namespace PropertyList {

std::optional<QVariant> parse(const QByteArray& bytes)
{
    if (bytes.isEmpty() || bytes.size() > std::numeric_limits<uint32_t>::max())
        return std::nullopt;
    plist_t raw = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &raw);
    if (!raw)
        return std::nullopt;
    PlistPtr root(raw);
    return fromNode(root.get());
}

std::optional<QByteArray> toXml(const QVariant& value)
{
    PlistPtr root(toNode(value));
    if (!root)
        return std::nullopt;
    char* xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    if (!xml)
        return std::nullopt;
    QByteArray result(xml, static_cast<qsizetype>(length));
    plist_to_xml_free(xml);
    return result;
}

std::optional<QVariant> normalized(const QVariant& value)
{
    PlistPtr root(toNode(value));
    if (!root)
        return std::nullopt;
    return fromNode(root.get());
}

} // namespace PropertyList
