#include "platform/linux/LinuxWorkspace.h"

#include "platform/linux/KnownApplications.h"
#include "platform/linux/ProcessWatcher.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace {

QStringList environmentList(const char* name, const QStringList& fallback)
{
    const QString value = qEnvironmentVariable(name);
    QStringList list = value.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    return list.isEmpty() ? fallback : list;
}

} // namespace

WorkspaceLocations WorkspaceLocations::forHome(const QString& home)
{
    WorkspaceLocations locations;
    const QString dataHome = qEnvironmentVariable("XDG_DATA_HOME", home + QStringLiteral("/.local/share"));
    QStringList dataFolders{dataHome};
    dataFolders +=
        environmentList("XDG_DATA_DIRS", {QStringLiteral("/usr/local/share"), QStringLiteral("/usr/share")});
    dataFolders += {home + QStringLiteral("/.local/share/flatpak/exports/share"),
                    QStringLiteral("/var/lib/flatpak/exports/share")};
    for (const QString& folder : std::as_const(dataFolders))
        locations.applicationFolders.append(QDir::cleanPath(folder + QStringLiteral("/applications")));
    locations.applicationFolders.append(QStringLiteral("/var/lib/snapd/desktop/applications"));
    locations.applicationFolders.removeDuplicates();

    locations.commandFolders =
        environmentList("PATH", {QStringLiteral("/usr/local/bin"), QStringLiteral("/usr/bin")});
    locations.commandFolders += {QStringLiteral("/snap/bin"), QStringLiteral("/var/lib/flatpak/exports/bin")};
    locations.commandFolders.removeDuplicates();

    locations.applications.append(KnownApplications::loginHelper());
    return locations;
}

LinuxWorkspace::LinuxWorkspace(const WorkspaceLocations& locations, QObject* parent)
    : Workspace(parent), m_locations(locations),
      m_watcher(new ProcessWatcher(locations.applications, locations.lockFolders, this))
{
    connect(m_watcher, &ProcessWatcher::applicationTerminated, this, [this](const RunningApplication& app) {
        emit didTerminateApplication(
            {{applicationNameKey, app.name}, {bundleIdentifierKey, app.bundleIdentifier}});
    });
}

LinuxWorkspace::~LinuxWorkspace() = default;

std::optional<QString> LinuxWorkspace::absolutePathForAppBundleWithIdentifier(const QString& bundleIdentifier)
{
    const KnownApplication* application =
        KnownApplications::forBundleIdentifier(m_locations.applications, bundleIdentifier);
    if (!application)
        return std::nullopt;
    for (const QString& folder : std::as_const(m_locations.applicationFolders)) {
        for (const QString& entry : application->desktopEntries) {
            const QFileInfo info(folder + QLatin1Char('/') + entry);
            if (info.isFile())
                return info.absoluteFilePath();
        }
    }
    for (const QString& folder : std::as_const(m_locations.commandFolders)) {
        for (const QString& command : application->commands) {
            const QFileInfo info(folder + QLatin1Char('/') + command);
            if (info.isFile() && info.isExecutable())
                return info.absoluteFilePath();
        }
    }
    return std::nullopt;
}

// Asked before every run, so it looks at the processes as they are now: a browser the watcher has
// not come to yet (it started a moment ago, or runs without a lock file) still counts.
QList<RunningApplication> LinuxWorkspace::runningApplications()
{
    return ProcessWatcher::lookNow(m_locations.applications);
}

void LinuxWorkspace::activateFileViewerSelectingURLs(const QList<QUrl>& urls)
{
    if (urls.isEmpty())
        return;
    QStringList uris;
    for (const QUrl& url : urls)
        uris.append(url.toString(QUrl::FullyEncoded));
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << uris << QString();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 3000);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return;
    const QString folder = QFileInfo(urls.first().toLocalFile()).absolutePath();
    QProcess::startDetached(QStringLiteral("xdg-open"), {folder});
}
