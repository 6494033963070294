#pragma once

#include "platform/SecurityScopedBookmarks.h"

#include <QMap>
#include <QMutex>

// A grant record holds the path with its device and inode numbers: it resolves while something
// exists at the path, and is stale once that is no longer the same file-system object.
// A record can only be made inside an access the user granted (a path chosen in the panel, or one
// below a record that resolved), so recording never stands in for the user's consent.
class InodeBookmarks final : public SecurityScopedBookmarks
{
public:
    std::optional<QByteArray> create(const QString& path) override;
    Resolution resolve(const QByteArray& data) override;
    bool startAccessing(const QString& path) override;
    void stopAccessing(const QString& path) override;

private:
    bool isAccessible(const QString& path) const;

    mutable QMutex m_mutex;
    QMap<QString, int> m_accessing; // path -> open scopes
};
