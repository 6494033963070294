#pragma once

#include <QByteArray>
#include <QUrl>

#include <optional>

class UserDefaults;

// Grant records in the user defaults, under "bd_" followed by the file URL. A record of a folder
// serves every path below it; the nearest recorded ancestor wins, the root folder never does.
class AppSandboxFileAccessPersist
{
public:
    explicit AppSandboxFileAccessPersist(UserDefaults& defaults) : m_defaults(defaults) {}

    static QString keyForBookmarkDataForURL(const QUrl& url);
    std::optional<QByteArray> bookmarkDataForURL(const QUrl& url) const;
    void setBookmarkData(const QByteArray& data, const QUrl& forURL);
    void clearBookmarkDataForURL(const QUrl& url);

private:
    UserDefaults& m_defaults;
};
