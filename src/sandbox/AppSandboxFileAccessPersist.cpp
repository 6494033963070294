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
    for (QUrl candidate = url; FileUrl::path(candidate).size() >= 2; candidate = FileUrl::parent(candidate)) {
        if (auto data = m_defaults.dataForKey(keyForBookmarkDataForURL(candidate)))
            return data;
    }
    return std::nullopt;
}

void AppSandboxFileAccessPersist::setBookmarkData(const QByteArray& data, const QUrl& forURL)
{
    assertParameter(!forURL.isEmpty(), "url", kSource);
    m_defaults.setObject(data, keyForBookmarkDataForURL(forURL));
}

void AppSandboxFileAccessPersist::clearBookmarkDataForURL(const QUrl& url)
{
    assertParameter(!url.isEmpty(), "url", kSource);
    m_defaults.removeObjectForKey(keyForBookmarkDataForURL(url));
}
