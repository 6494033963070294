#pragma once

#include <QByteArray>

#include <optional>

// Firefox's compressed JSON files (sessionstore.jsonlz4, search.json.mozlz4): "mozLz40\0", the JSON's
// size (32 bits, little-endian), then the JSON as one LZ4 block.
namespace MozLz4 {

// The file's JSON; no value when it is not one (wrong magic, a size over 64 MiB, a damaged block).
std::optional<QByteArray> decompress(const QByteArray& mozlz4);
QByteArray compress(const QByteArray& json);

} // namespace MozLz4
