#include "cleaners/MozLz4.h"

#include <QByteArray>

#include <lz4.h>

namespace {

const QByteArray kMagic("mozLz40\0", 8);
constexpr qint64 kMaxJsonBytes = 64 * 1024 * 1024;

} // namespace

namespace MozLz4 {

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
    out.append(block.constData(), written);
    return out;
}

} // namespace MozLz4
