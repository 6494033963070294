#pragma once

#include <QByteArray>
#include <QUrl>

#include <optional>

class UserDefaults;

// Grant records in the user defaults, under "bd_" followed by the file URL. A record of a folder
// serves every path below it, the root folder's included; the nearest recorded ancestor wins.
// Records exist only for folders the user chose: none names anything below such a folder.
class AppSandboxFileAccessPersist
{
public:
    explicit AppSandboxFileAccessPersist(UserDefaults& defaults) : m_defaults(defaults) {}

    static inline const QString keyPrefix = QStringLiteral("bd_");

    static QString keyForBookmarkDataForURL(const QUrl& url);
    // Removes the records that lie below another record's folder, as earlier versions wrote one for
    // every file they touched (a list of the sites a user visited); true when none is left.
    bool removeRecordsBelowGrants();
    std::optional<QByteArray> bookmarkDataForURL(const QUrl& url) const;
    // False when the record could not be saved.
    bool setBookmarkData(const QByteArray& data, const QUrl& forURL);
    void clearBookmarkDataForURL(const QUrl& url);

private:
    UserDefaults& m_defaults;
};
