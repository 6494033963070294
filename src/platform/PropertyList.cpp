#include "platform/PropertyList.h"

#include <QDateTime>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <plist/plist.h>

#include <algorithm>
#include <memory>
#include <vector>

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
        // To the second, as an XML property list holds dates: what is read can be written unchanged.
        int32_t sec = 0, usec = 0;
        plist_get_date_val(node, &sec, &usec);
        return QVariant(QDateTime::fromSecsSinceEpoch(static_cast<qint64>(sec) + kPlistEpochOffset, Qt::UTC));
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

// XML property lists are read and written here rather than by libplist: its XML side keeps dates as
// 32-bit seconds and unsigned integers as signed ones, and refuses a byte-order mark or UTF-16,
// all of which other property-list tools write.
std::optional<QVariant> readXmlValue(QXmlStreamReader& xml, int depth);

std::optional<QVariant> readXmlDict(QXmlStreamReader& xml, int depth)
{
    QVariantMap map;
    while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("key"))
            return std::nullopt;
        const QString key = xml.readElementText();
        if (xml.hasError() || !xml.readNextStartElement())
            return std::nullopt;
        auto value = readXmlValue(xml, depth + 1);
        if (!value)
            return std::nullopt;
        map.insert(key, *value);
    }
    return QVariant(map);
}

std::optional<QVariant> readXmlValue(QXmlStreamReader& xml, int depth)
{
    if (depth > PropertyList::kMaxDepth)
        return std::nullopt;
    const QStringView name = xml.name();
    if (name == QLatin1String("dict"))
        return readXmlDict(xml, depth);
    if (name == QLatin1String("array")) {
        QVariantList list;
        while (xml.readNextStartElement()) {
            auto item = readXmlValue(xml, depth + 1);
            if (!item)
                return std::nullopt;
            list.append(*item);
        }
        return QVariant(list);
    }
    if (name == QLatin1String("true") || name == QLatin1String("false")) {
        const bool value = name == QLatin1String("true");
        xml.skipCurrentElement();
        return QVariant(value);
    }
    const QString content = xml.readElementText();
    if (xml.hasError())
        return std::nullopt;
    if (name == QLatin1String("string"))
        return QVariant(content); // every space of a string is its own (a folder may end in one)
    const QString text = content.trimmed();
    if (name == QLatin1String("integer")) {
        bool ok = false;
        const qint64 value = text.toLongLong(&ok);
        if (ok)
            return QVariant(value);
        const quint64 large = text.toULongLong(&ok); // 2^63 and above
        return ok ? std::optional(QVariant(large)) : std::nullopt;
    }
    if (name == QLatin1String("real")) {
        bool ok = false;
        const double value = text.toDouble(&ok);
        return ok ? std::optional(QVariant(value)) : std::nullopt;
    }
    if (name == QLatin1String("date")) {
        // A fraction of a second (which other writers may add) is dropped, as it could not be written.
        const QDateTime date = QDateTime::fromString(text, Qt::ISODate);
        return date.isValid()
                   ? std::optional(QVariant(QDateTime::fromSecsSinceEpoch(date.toSecsSinceEpoch(), Qt::UTC)))
                   : std::nullopt;
    }
    if (name == QLatin1String("data")) {
        QByteArray base64 = text.toLatin1();
        base64.replace(' ', "").replace('\n', "").replace('\t', "").replace('\r', "");
        auto decoded = QByteArray::fromBase64Encoding(base64);
        return decoded ? std::optional(QVariant(*decoded)) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<QVariant> parseXml(const QByteArray& bytes)
{
    QXmlStreamReader xml(bytes); // finds the encoding from a byte-order mark or the declaration
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("plist") || !xml.readNextStartElement())
        return std::nullopt;
    auto value = readXmlValue(xml, 1);
    if (!value)
        return std::nullopt;
    // Nothing but the end of the plist element and of the document may follow.
    if (xml.readNextStartElement())
        return std::nullopt;
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        return std::nullopt;
    return value;
}

// Every integer type but unsigned 64-bit fits a qint64.
bool isSignedInteger(int typeId)
{
    return typeId == QMetaType::Int || typeId == QMetaType::UInt || typeId == QMetaType::Long ||
           typeId == QMetaType::LongLong || typeId == QMetaType::Short || typeId == QMetaType::UShort;
}

// XML 1.0 has no way to write most control characters, U+FFFE, U+FFFF or half a surrogate pair, not
// even as a character reference; the writer would drop them, changing a stored key or value unseen.
bool xmlCanHold(const QString& text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r')
            return false;
        if (c == 0xFFFE || c == 0xFFFF)
            return false;
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() &&
            QChar::isLowSurrogate(text.at(i + 1).unicode()))
            ++i;
        else if (QChar::isSurrogate(c))
            return false;
    }
    return true;
}

// A text element; a carriage return goes as a character reference, since an XML reader turns a
// written one into a line feed.
void writeText(QXmlStreamWriter& xml, const QString& element, const QString& text)
{
    xml.writeStartElement(element);
    const QStringList parts = text.split(u'\r');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (i > 0)
            xml.writeEntityReference(QStringLiteral("#13"));
        xml.writeCharacters(parts.at(i));
    }
    xml.writeEndElement();
}

bool writeXmlValue(QXmlStreamWriter& xml, const QVariant& value)
{
    if (isSignedInteger(value.typeId())) {
        xml.writeTextElement(QStringLiteral("integer"), QString::number(value.toLongLong()));
        return true;
    }
    switch (value.typeId()) {
    case QMetaType::Bool:
        xml.writeEmptyElement(value.toBool() ? QStringLiteral("true") : QStringLiteral("false"));
        return true;
    case QMetaType::ULongLong:
        xml.writeTextElement(QStringLiteral("integer"), QString::number(value.toULongLong()));
        return true;
    case QMetaType::Double:
    case QMetaType::Float:
        xml.writeTextElement(QStringLiteral("real"), QString::number(value.toDouble(), 'g', 17));
        return true;
    case QMetaType::QString:
        if (!xmlCanHold(value.toString()))
            return false;
        writeText(xml, QStringLiteral("string"), value.toString());
        return true;
    case QMetaType::QByteArray:
        xml.writeTextElement(QStringLiteral("data"), QString::fromLatin1(value.toByteArray().toBase64()));
        return true;
    case QMetaType::QDateTime:
        xml.writeTextElement(QStringLiteral("date"),
                             value.toDateTime().toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ")));
        return true;
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        xml.writeStartElement(QStringLiteral("array"));
        for (const QVariant& item : value.toList()) {
            if (!writeXmlValue(xml, item))
                return false;
        }
        xml.writeEndElement();
        return true;
    }
    case QMetaType::QVariantMap: {
        xml.writeStartElement(QStringLiteral("dict"));
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            if (!xmlCanHold(it.key()))
                return false;
            writeText(xml, QStringLiteral("key"), it.key());
            if (!writeXmlValue(xml, it.value()))
                return false;
        }
        xml.writeEndElement();
        return true;
    }
    default:
        return false;
    }
}

// A big-endian unsigned number of `size` bytes.
quint64 bigEndian(const uchar* bytes, int size)
{
    quint64 value = 0;
    for (int i = 0; i < size; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

// The object table of a binary property list, as far as the checks below need it: no value when the
// trailer cannot be followed (libplist then refuses the file itself).
struct BinaryTable
{
    const uchar* data;
    quint64 size;
    int offsetSize;
    int refSize;
    quint64 objects;
    quint64 top;
    quint64 table;

    static std::optional<BinaryTable> of(const QByteArray& bytes)
    {
        const auto* data = reinterpret_cast<const uchar*>(bytes.constData());
        const quint64 size = quint64(bytes.size());
        if (size < 8 + 32)
            return std::nullopt;
        const uchar* trailer = data + size - 32;
        BinaryTable t{data,
                      size,
                      trailer[6],
                      trailer[7],
                      bigEndian(trailer + 8, 8),
                      bigEndian(trailer + 16, 8),
                      bigEndian(trailer + 24, 8)};
        if (t.offsetSize < 1 || t.offsetSize > 8 || t.refSize < 1 || t.refSize > 8 || t.table >= size ||
            t.objects > (size - t.table) / quint64(t.offsetSize) || t.top >= t.objects)
            return std::nullopt;
        return t;
    }

    // The object's kind (its marker's high half), its count or length, and where its contents start;
    // no value when it lies outside the file.
    struct Object
    {
        int kind;
        quint64 count;
        quint64 contents;
    };
    std::optional<Object> object(quint64 index) const
    {
        quint64 at = bigEndian(data + table + index * quint64(offsetSize), offsetSize);
        if (at >= size)
            return std::nullopt;
        Object o{data[at] >> 4, quint64(data[at] & 0x0F), at + 1};
        if (o.count == 0x0F && o.kind != 0 && o.kind != 1 && o.kind != 2 && o.kind != 3) {
            // The count follows as an integer object.
            if (o.contents >= size || (data[o.contents] >> 4) != 1)
                return std::nullopt;
            const int countSize = 1 << (data[o.contents] & 0x0F);
            if (countSize > 8 || o.contents + 1 + quint64(countSize) > size)
                return std::nullopt;
            o.count = bigEndian(data + o.contents + 1, countSize);
            o.contents += 1 + quint64(countSize);
        }
        return o;
    }
};

// Whether a binary property list holds a text (key or string) with a NUL character. libplist stops
// the whole program on such a key (an assertion in its getter), so such a file is refused before
// libplist reads it.
bool binaryHasNulInText(const QByteArray& bytes)
{
    const std::optional<BinaryTable> t = BinaryTable::of(bytes);
    for (quint64 i = 0; t && i < t->objects; ++i) {
        const auto text = t->object(i);
        if (!text || text->kind < 5 || text->kind > 7) // 5: ASCII, 6: UTF-16, 7: UTF-8
            continue;
        const int unit = text->kind == 6 ? 2 : 1;
        const quint64 at = text->contents;
        const quint64 end = text->count > (t->size - at) / unit ? t->size : at + text->count * unit;
        for (quint64 j = at; j + unit <= end; j += unit) {
            if (t->data[j] == 0 && (unit == 1 || t->data[j + 1] == 0))
                return true;
        }
    }
    return false;
}

// Whether no chain of arrays and dictionaries in a binary property list is deeper than `limit` (a loop
// is endless, so too deep). libplist and our reader descend by recursion: a file nested deeper (60,000
// levels fit in a few hundred kilobytes) would overflow the stack and stop the whole program.
bool binaryDepthWithin(const QByteArray& bytes, int limit)
{
    const std::optional<BinaryTable> t = BinaryTable::of(bytes);
    if (!t)
        return true;
    // The objects an array, set or dictionary refers to (a dictionary's keys, then its values).
    const auto children = [&t](quint64 index) {
        std::vector<quint64> refs;
        const auto o = t->object(index);
        if (!o || o->kind < 0xA || o->kind > 0xD) // array, ordered set, set, dictionary
            return refs;
        const quint64 count = o->kind == 0xD ? std::min(o->count, t->size) * 2 : o->count;
        if (o->contents > t->size || count > (t->size - o->contents) / quint64(t->refSize))
            return refs;
        for (quint64 i = 0; i < count; ++i) {
            const quint64 ref = bigEndian(t->data + o->contents + i * quint64(t->refSize), t->refSize);
            if (ref < t->objects)
                refs.push_back(ref);
        }
        return refs;
    };
    // Depth-first with an explicit stack; each object's height is worked out once.
    std::vector<int> height(t->objects, -1); // -1 not seen, -2 on the current path
    std::vector<std::pair<quint64, std::vector<quint64>>> path;
    path.push_back({t->top, children(t->top)});
    height[t->top] = -2;
    while (!path.empty()) {
        if (int(path.size()) > limit)
            return false;
        auto& [object, refs] = path.back();
        if (refs.empty()) {
            int deepest = 0;
            for (const quint64 child : children(object))
                deepest = std::max(deepest, height[child]);
            height[object] = deepest + 1;
            path.pop_back();
            continue;
        }
        const quint64 next = refs.back();
        refs.pop_back();
        if (height[next] == -2)
            return false; // a loop
        if (height[next] >= 0) {
            if (int(path.size()) + height[next] > limit)
                return false;
            continue;
        }
        height[next] = -2;
        path.push_back({next, children(next)});
    }
    return true;
}

} // namespace

namespace PropertyList {

std::optional<QVariant> parse(const QByteArray& bytes)
{
    if (bytes.isEmpty() || bytes.size() > std::numeric_limits<uint32_t>::max())
        return std::nullopt;
    if (!bytes.startsWith("bplist"))
        return parseXml(bytes);
    if (binaryHasNulInText(bytes) || !binaryDepthWithin(bytes, kMaxDepth))
        return std::nullopt;
    plist_t raw = nullptr;
    plist_from_bin(bytes.constData(), static_cast<uint32_t>(bytes.size()), &raw);
    if (!raw)
        return std::nullopt;
    PlistPtr root(raw);
    return fromNode(root.get());
}

std::optional<QByteArray> toXml(const QVariant& value)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(-1); // one tab, as property-list tools write them
    xml.writeStartDocument();
    xml.writeDTD(QStringLiteral("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">"));
    xml.writeStartElement(QStringLiteral("plist"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    if (!writeXmlValue(xml, value))
        return std::nullopt;
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}

std::optional<QVariant> normalized(const QVariant& value)
{
    if (isSignedInteger(value.typeId()))
        return QVariant(value.toLongLong());
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Double:
    case QMetaType::QByteArray:
        return value;
    case QMetaType::QString:
        return xmlCanHold(value.toString()) ? std::optional(value) : std::nullopt;
    case QMetaType::Float:
        return QVariant(value.toDouble());
    case QMetaType::ULongLong:
        if (value.toULongLong() > quint64(std::numeric_limits<qint64>::max()))
            return value;
        return QVariant(value.toLongLong());
    case QMetaType::QDateTime: {
        // Stored to the second, in UTC.
        const QDateTime date = value.toDateTime();
        if (!date.isValid())
            return std::nullopt;
        return QVariant(QDateTime::fromSecsSinceEpoch(date.toSecsSinceEpoch(), Qt::UTC));
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        QVariantList list;
        for (const QVariant& item : value.toList()) {
            auto normal = normalized(item);
            if (!normal)
                return std::nullopt;
            list.append(*normal);
        }
        return QVariant(list);
    }
    case QMetaType::QVariantMap: {
        QVariantMap map;
        const QVariantMap source = value.toMap();
        for (auto it = source.cbegin(); it != source.cend(); ++it) {
            auto normal = normalized(it.value());
            if (!normal || !xmlCanHold(it.key()))
                return std::nullopt;
            map.insert(it.key(), *normal);
        }
        return QVariant(map);
    }
    default:
        return std::nullopt;
    }
}

} // namespace PropertyList
