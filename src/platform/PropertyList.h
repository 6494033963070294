#pragma once

#include <QByteArray>
#include <QVariant>

#include <optional>

// Conversion between property lists (binary or XML) and Qt values.
// Dictionaries become QVariantMap, arrays QVariantList, integers qint64, reals double,
// booleans bool, strings QString, data QByteArray, dates QDateTime (UTC).
namespace PropertyList {

// Arrays and dictionaries nested deeper than this are refused: no settings or browser file comes near,
// and reading them would exhaust the stack.
constexpr int kMaxDepth = 512;

// The top-level value of a binary or XML property list; no value when the bytes are not one, or nest
// deeper than kMaxDepth.
std::optional<QVariant> parse(const QByteArray& bytes);

// The value as an XML property list; no value when it holds something a property list cannot, or
// text XML cannot carry (most control characters): writing it would change it unseen.
std::optional<QByteArray> toXml(const QVariant& value);

// The value as it reads back from a property list (qint64 for every integer, QVariantList for
// string lists, ...), so stored and reloaded values compare equal; no value when it cannot be stored.
std::optional<QVariant> normalized(const QVariant& value);

} // namespace PropertyList
