#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

class OpenPanel;
class SecurityScopedBookmarks;
class UserDefaults;

// The platform services the permission layer works with.
struct FileAccessServices
{
    UserDefaults& defaults;
    SecurityScopedBookmarks& bookmarks;
    OpenPanel& panel;
};

// Obtains access to a path: from a stored grant record of the path or a folder above it, or by
// asking the user once with a panel restricted to the path and its ancestors, then remembering.
class AppSandboxFileAccess
{
public:
    using Block = std::function<void()>;
    using PermittedBlock =
        std::function<void(const QUrl& permittedURL, const std::optional<QByteArray>& bookmark)>;

    explicit AppSandboxFileAccess(const FileAccessServices& services);
    static AppSandboxFileAccess fileAccess(const FileAccessServices& services)
    {
        return AppSandboxFileAccess(services);
    }

    QString title() const { return m_title; }
    void setTitle(const QString& title) { m_title = title; }
    QString message() const { return m_message; }
    void setMessage(const QString& message) { m_message = message; }
    QString prompt() const { return m_prompt; }
    void setPrompt(const QString& prompt) { m_prompt = prompt; }

    std::optional<QByteArray> persistPermissionPath(const QString& path);
    std::optional<QByteArray> persistPermissionURL(const QUrl& url);

    // Whether a grant record covers the path and still leads somewhere; never asks.
    bool hasPermissionForFilePath(const QString& path);

    // True when access was obtained and the block ran inside it.
    bool accessFilePath(const QString& path, bool persistPermission, const Block& block);
    bool accessFileURL(const QUrl& fileURL, bool persistPermission, const Block& block);
    // Like accessFileURL, but the access stays open (the folder watch lives on it).
    bool accessFileURLandKeepAlive(const QUrl& fileURL, bool persistPermission, const Block& block);
    void removeAccessFileURL(const QUrl& fileURL, bool persistPermission, const Block& block);

    // True when a permitted URL was found or granted and the block ran with it.
    bool requestAccessPermissionsForFilePath(const QString& filePath, bool persistPermission,
                                             const PermittedBlock& block);
    bool requestAccessPermissionsForFileURL(const QUrl& fileURL, bool persistPermission,
                                            const PermittedBlock& block);
    // The item the user chose, or no value when the panel was cancelled.
    std::optional<QUrl> askPermissionForURL(const QUrl& url);

    // The older argument orders.
    bool accessFilePath(const QString& path, const Block& block, bool persistPermission)
    {
        return accessFilePath(path, persistPermission, block);
    }
    bool accessFileURL(const QUrl& fileURL, const Block& block, bool persistPermission)
    {
        return accessFileURL(fileURL, persistPermission, block);
    }

private:
    static QUrl asTheUserKnowsIt(const QUrl& url);
    // The record that covers the URL as given, else as its links resolve.
    std::optional<QByteArray> recordFor(const QUrl& url) const;

    FileAccessServices m_services;
    QString m_title;
    QString m_message;
    QString m_prompt;
};
