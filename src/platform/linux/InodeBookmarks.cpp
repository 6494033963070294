#include "platform/linux/InodeBookmarks.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>

namespace {

std::optional<struct stat> statOf(const QString& path)
{
    struct stat st
    {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return std::nullopt;
    return st;
}

} // namespace

std::optional<QByteArray> InodeBookmarks::create(const QString& path)
{
    const auto st = statOf(path);
    if (!st)
        return std::nullopt;
    QJsonObject record{{QStringLiteral("path"), path},
                       {QStringLiteral("device"), QString::number(st->st_dev)},
                       {QStringLiteral("inode"), QString::number(st->st_ino)}};
    return QJsonDocument(record).toJson(QJsonDocument::Compact);
}

SecurityScopedBookmarks::Resolution InodeBookmarks::resolve(const QByteArray& data)
{
    const QJsonObject record = QJsonDocument::fromJson(data).object();
    const QString path = record.value(QStringLiteral("path")).toString();
    // A record that cannot be read or leads nowhere is stale: it is cleared and the user asked again.
    if (path.isEmpty())
        return {std::nullopt, true};
    const auto st = statOf(path);
    if (!st)
        return {std::nullopt, true};
    const bool same = record.value(QStringLiteral("device")).toString() == QString::number(st->st_dev) &&
                      record.value(QStringLiteral("inode")).toString() == QString::number(st->st_ino);
    return {path, !same};
}
