#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Records that prove a grant of access to a path, and access scopes started and stopped around
// each use. On Linux there is no sandbox to open: the record is the user's consent, kept until the
// folder it names is no longer the one the user chose.
class SecurityScopedBookmarks
{
public:
    struct Resolution
    {
        std::optional<QString> path; // where the record leads; no value when it leads nowhere
        bool stale = false;          // the record no longer matches and should be made anew
    };

    virtual ~SecurityScopedBookmarks() = default;
    // No value when the platform refuses (nothing exists at the path).
    virtual std::optional<QByteArray> create(const QString& path) = 0;
    virtual Resolution resolve(const QByteArray& data) = 0;
    virtual bool startAccessing(const QString& path) = 0;
    virtual void stopAccessing(const QString& path) = 0;
};
