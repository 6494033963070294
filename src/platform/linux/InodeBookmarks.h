#pragma once

#include "platform/SecurityScopedBookmarks.h"

// A grant record holds the path with its device and inode numbers: it resolves while something
// exists at the path, and is stale once that is no longer the same file-system object.
class InodeBookmarks final : public SecurityScopedBookmarks
{
public:
    std::optional<QByteArray> create(const QString& path) override;
    Resolution resolve(const QByteArray& data) override;
    bool startAccessing(const QString&) override { return true; }
    void stopAccessing(const QString&) override {}
};
