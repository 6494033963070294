#include "sandbox/AppSandboxFileAccess.h"

#include "platform/OpenPanel.h"
#include "platform/SecurityScopedBookmarks.h"
#include "sandbox/AppSandboxFileAccessOpenSavePanelDelegate.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/FileUrl.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QThread>

namespace {

const char kSource[] = "sandbox/AppSandboxFileAccess";

QString applicationName()
{
    const QString name = QCoreApplication::applicationName();
    return name.isEmpty() ? QStringLiteral("Corvella") : name;
}

// Stops an access scope however the block it guards ends.
class AccessScope
{
public:
    AccessScope(SecurityScopedBookmarks& bookmarks, const QString& path)
        : m_bookmarks(bookmarks), m_path(path)
    {
        m_bookmarks.startAccessing(m_path);
    }
    ~AccessScope() { m_bookmarks.stopAccessing(m_path); }
    AccessScope(const AccessScope&) = delete;
    AccessScope& operator=(const AccessScope&) = delete;

private:
    SecurityScopedBookmarks& m_bookmarks;
    QString m_path;
};

} // namespace

AppSandboxFileAccess::AppSandboxFileAccess(const FileAccessServices& services)
    : m_services(services), m_title(QCoreApplication::translate("AppSandboxFileAccess", "Allow Access")),
      m_message(
          QCoreApplication::translate("AppSandboxFileAccess",
                                      "%1 needs to access this path to continue. Click Allow to continue.")
              .arg(applicationName())),
      m_prompt(QCoreApplication::translate("AppSandboxFileAccess", "Allow"))
{}

std::optional<QByteArray> AppSandboxFileAccess::persistPermissionPath(const QString& path)
{
    assertParameter(!path.isEmpty(), "path", kSource);
    return persistPermissionURL(FileUrl::forPath(path));
}

std::optional<QByteArray> AppSandboxFileAccess::persistPermissionURL(const QUrl& url)
{
    assertParameter(!url.isEmpty(), "url", kSource);
    auto data = m_services.bookmarks.create(FileUrl::path(url));
    // A record that could not be saved is no record: the user will be asked again.
    if (!data || !AppSandboxFileAccessPersist(m_services.defaults).setBookmarkData(*data, url))
        return std::nullopt;
    return data;
}

// The path as given, "." and ".." removed but links kept: a home folder that is a link is granted
// under its own name, so re-pointing the link to a migrated copy renews that grant.
QUrl AppSandboxFileAccess::asTheUserKnowsIt(const QUrl& url)
{
    return FileUrl::forPath(QDir::cleanPath(FileUrl::path(url)));
}

std::optional<QByteArray> AppSandboxFileAccess::recordFor(const QUrl& url) const
{
    const AppSandboxFileAccessPersist persist(m_services.defaults);
    if (auto bookmark = persist.bookmarkDataForURL(asTheUserKnowsIt(url)))
        return bookmark;
    return persist.bookmarkDataForURL(FileUrl::standardizedResolvingSymlinks(url));
}

bool AppSandboxFileAccess::hasPermissionForFilePath(const QString& path)
{
    if (path.isEmpty())
        return false;
    const std::optional<QByteArray> bookmark = recordFor(FileUrl::forPath(path));
    return bookmark && m_services.bookmarks.resolve(*bookmark).path.has_value();
}

bool AppSandboxFileAccess::accessFilePath(const QString& path, bool persistPermission, const Block& block)
{
    assertParameter(!path.isEmpty(), "path", kSource);
    return accessFileURL(FileUrl::forPath(path), persistPermission, block);
}

bool AppSandboxFileAccess::accessFileURL(const QUrl& fileURL, bool persistPermission, const Block& block)
{
    assertParameter(!fileURL.isEmpty(), "fileURL", kSource);
    assertParameter(bool(block), "block", kSource);
    return requestAccessPermissionsForFileURL(
        fileURL, persistPermission, [&](const QUrl& permitted, const std::optional<QByteArray>&) {
            AccessScope scope(m_services.bookmarks, FileUrl::path(permitted));
            block();
        });
}

bool AppSandboxFileAccess::accessFileURLandKeepAlive(const QUrl& fileURL, bool persistPermission,
                                                     const Block& block)
{
    assertParameter(!fileURL.isEmpty(), "fileURL", kSource);
    assertParameter(bool(block), "block", kSource);
    return requestAccessPermissionsForFileURL(
        fileURL, persistPermission, [&](const QUrl& permitted, const std::optional<QByteArray>&) {
            m_services.bookmarks.startAccessing(FileUrl::path(permitted));
            block();
        });
}

void AppSandboxFileAccess::removeAccessFileURL(const QUrl& fileURL, bool persistPermission,
                                               const Block& block)
{
    assertParameter(!fileURL.isEmpty(), "fileURL", kSource);
    assertParameter(bool(block), "block", kSource);
    requestAccessPermissionsForFileURL(fileURL, persistPermission,
                                       [&](const QUrl& permitted, const std::optional<QByteArray>&) {
                                           m_services.bookmarks.stopAccessing(FileUrl::path(permitted));
                                           block();
                                       });
}

bool AppSandboxFileAccess::requestAccessPermissionsForFilePath(const QString& filePath,
                                                               bool persistPermission,
                                                               const PermittedBlock& block)
{
    assertParameter(!filePath.isEmpty(), "filePath", kSource);
    return requestAccessPermissionsForFileURL(FileUrl::forPath(filePath), persistPermission, block);
}

bool AppSandboxFileAccess::requestAccessPermissionsForFileURL(const QUrl& fileURL, bool persistPermission,
                                                              const PermittedBlock& block)
{
    assertParameter(!fileURL.isEmpty(), "fileURL", kSource);
    assertParameter(bool(block), "block", kSource);

    const QUrl url = asTheUserKnowsIt(fileURL);
    AppSandboxFileAccessPersist persist(m_services.defaults);
    std::optional<QByteArray> bookmark = recordFor(fileURL);

    if (bookmark) {
        const auto resolution = m_services.bookmarks.resolve(*bookmark);
        if (resolution.stale) {
            // The record of the requested URL goes, even when the grant was found on an ancestor.
            persist.clearBookmarkDataForURL(url);
            bookmark.reset();
            if (resolution.path) {
                const QUrl resolved = FileUrl::forPath(*resolution.path);
                // A record that still leads somewhere opens access there, so it can be made anew.
                const AccessScope resolvedScope(m_services.bookmarks, *resolution.path);
                if (auto fresh = persistPermissionURL(resolved)) {
                    block(resolved, fresh);
                    return true;
                }
            }
        } else if (resolution.path) {
            block(FileUrl::forPath(*resolution.path), bookmark);
            return true;
        }
    }

    const auto chosen = askPermissionForURL(url);
    if (!chosen)
        return false;
    if (persistPermission && !bookmark) {
        // What the user chose in the panel is accessible now, so its record can be made.
        const AccessScope chosenScope(m_services.bookmarks, chosen->toLocalFile());
        bookmark = persistPermissionURL(FileUrl::forPath(chosen->toLocalFile()));
    }
    block(*chosen, bookmark);
    return true;
}

std::optional<QUrl> AppSandboxFileAccess::askPermissionForURL(const QUrl& url)
{
    assertParameter(!url.isEmpty(), "url", kSource);
    const AppSandboxFileAccessOpenSavePanelDelegate delegate(url);

    QString directory = FileUrl::path(url);
    while (directory.size() >= 2 && !QFileInfo::exists(directory))
        directory = FileUrl::path(FileUrl::parent(QUrl::fromLocalFile(directory)));

    OpenPanelRequest request;
    request.title = m_title;
    request.message = m_message;
    request.prompt = m_prompt;
    request.directory = directory;
    request.shouldEnable = [delegate](const QUrl& item) { return delegate.panelShouldEnableURL(item); };

    std::optional<QUrl> chosen;
    auto run = [&] { chosen = m_services.panel.runModal(request); };
    QCoreApplication* app = QCoreApplication::instance();
    // The panel belongs to the main thread; a worker waits for the user's answer.
    if (app && QThread::currentThread() != app->thread())
        QMetaObject::invokeMethod(app, run, Qt::BlockingQueuedConnection);
    else
        run();
    return chosen;
}
