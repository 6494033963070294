#include "sandbox/FileUrl.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <stdexcept>

namespace FileUrl {

QUrl forPath(const QString& path)
{
    QString clean = QDir::cleanPath(path);
    if (clean != QLatin1String("/") && QFileInfo(clean).isDir())
        clean += QLatin1Char('/');
    return QUrl::fromLocalFile(clean);
}

QString path(const QUrl& url)
{
    QString local = url.toLocalFile();
    while (local.size() > 1 && local.endsWith(QLatin1Char('/')))
        local.chop(1);
    return local;
}

QUrl parent(const QUrl& url)
{
    const QString p = path(url);
    const qsizetype slash = p.lastIndexOf(QLatin1Char('/'));
    if (slash <= 0)
        return QUrl::fromLocalFile(QStringLiteral("/"));
    return QUrl::fromLocalFile(p.left(slash + 1));
}

QUrl standardizedResolvingSymlinks(const QUrl& url)
{
    const QString clean = QDir::cleanPath(path(url));
    // Resolve the longest part that exists; the rest cannot hold links yet.
    QString existing = clean;
    QString rest;
    while (existing.size() > 1 && !QFileInfo::exists(existing)) {
        const qsizetype slash = existing.lastIndexOf(QLatin1Char('/'));
        rest.prepend(existing.mid(slash));
        existing = slash > 0 ? existing.left(slash) : QStringLiteral("/");
    }
    QString resolved = QFileInfo(existing).canonicalFilePath();
    if (resolved.isEmpty())
        resolved = existing;
    if (resolved == QLatin1String("/") && !rest.isEmpty())
        resolved.clear();
    return forPath(resolved + rest);
}

QStringList pathComponents(const QUrl& url)
{
    QStringList components{QStringLiteral("/")};
    components += path(url).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return components;
}

} // namespace FileUrl

void assertParameter(bool satisfied, const char* name, const char* sourceFile)
{
    if (satisfied)
        return;
    const std::string message = std::string("Invalid parameter not satisfying: ") + name;
    std::fprintf(stderr, "*** Assertion failure in %s: %s\n", sourceFile, message.c_str());
    throw std::invalid_argument(message);
}
