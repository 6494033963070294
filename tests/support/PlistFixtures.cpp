#include "support/PlistFixtures.h"

#include "platform/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <plist/plist.h>

namespace PlistFixtures {

QByteArray binary(const QVariant& value)
{
    const QByteArray xml = PropertyList::toXml(value).value_or(QByteArray());
    plist_t root = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &root);
    char* bin = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bin, &length);
    QByteArray result(bin, static_cast<qsizetype>(length));
    plist_to_bin_free(bin);
    plist_free(root);
    return result;
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace PlistFixtures
