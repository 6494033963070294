#include "sandbox/AppSandboxFileAccessPersist.h"

#include "platform/UserDefaults.h"
#include "sandbox/FileUrl.h"

namespace {
const char kSource[] = "sandbox/AppSandboxFileAccess";
}

QString AppSandboxFileAccessPersist::keyForBookmarkDataForURL(const QUrl& url)
{
    return QStringLiteral("bd_%1").arg(url.toString(QUrl::FullyEncoded));
}

std::optional<QByteArray> AppSandboxFileAccessPersist::bookmarkDataForURL(const QUrl& url) const
{
    assertParameter(!url.isEmpty(), "url", kSource);
    for (QUrl candidate = url;; candidate = FileUrl::parent(candidate)) {
        if (auto data = m_defaults.dataForKey(keyForBookmarkDataForURL(candidate)))
            return data;
        if (FileUrl::path(candidate).size() < 2) // the root folder was the last to look at
            return std::nullopt;
    }
}

bool AppSandboxFileAccessPersist::setBookmarkData(const QByteArray& data, const QUrl& forURL)
{
    assertParameter(!forURL.isEmpty(), "url", kSource);
    return m_defaults.setObject(data, keyForBookmarkDataForURL(forURL));
}

bool AppSandboxFileAccessPersist::removeRecordsBelowGrants()
{
    // Each record's own key is removed: one made again from the path would lack the "/" of a folder
    // that no longer exists, and would miss the record.
    QMap<QString, QString> folders; // key -> path
    const QVariantMap all = m_defaults.dictionaryRepresentation();
    for (auto it = all.keyBegin(); it != all.keyEnd(); ++it) {
        if (it->startsWith(keyPrefix))
            folders.insert(*it, FileUrl::path(QUrl(it->mid(keyPrefix.size()))));
    }
    QStringList below;
    for (auto record = folders.cbegin(); record != folders.cend(); ++record) {
        const QString& path = record.value();
        const bool covered = std::any_of(folders.cbegin(), folders.cend(), [&path](const QString& folder) {
            const QString prefix = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
            return folder != path && path.startsWith(prefix);
        });
        if (covered)
            below.append(record.key());
    }
    return below.isEmpty() || m_defaults.removeObjectsForKeys(below);
}

void AppSandboxFileAccessPersist::clearBookmarkDataForURL(const QUrl& url)
{
    assertParameter(!url.isEmpty(), "url", kSource);
    m_defaults.removeObjectForKey(keyForBookmarkDataForURL(url));
}
