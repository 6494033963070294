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
    if (!isAccessible(path))
        return std::nullopt;
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
    // So is one whose folder is not the one the user chose (another folder now has its path, or the
    // record was made up): a path alone grants nothing.
    if (path.isEmpty())
        return {std::nullopt, true};
    const auto st = statOf(path);
    if (!st)
        return {std::nullopt, true};
    const bool same = record.value(QStringLiteral("device")).toString() == QString::number(st->st_dev) &&
                      record.value(QStringLiteral("inode")).toString() == QString::number(st->st_ino);
    return same ? Resolution{path, false} : Resolution{std::nullopt, true};
}

bool InodeBookmarks::startAccessing(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    ++m_accessing[path];
    return true;
}

void InodeBookmarks::stopAccessing(const QString& path)
{
    QMutexLocker lock(&m_mutex);
    const auto it = m_accessing.find(path);
    if (it != m_accessing.end() && --*it <= 0)
        m_accessing.erase(it);
}

bool InodeBookmarks::isAccessible(const QString& path) const
{
    QMutexLocker lock(&m_mutex);
    for (auto it = m_accessing.cbegin(); it != m_accessing.cend(); ++it) {
        const QString& scope = it.key();
        if (path == scope ||
            path.startsWith(scope.endsWith(QLatin1Char('/')) ? scope : scope + QLatin1Char('/')))
            return true;
    }
    return false;
}
