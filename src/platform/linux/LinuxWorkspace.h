#pragma once

#include "platform/Workspace.h"
#include "platform/linux/KnownApplications.h"

#include <QStringList>

class ProcessWatcher;

// Where a Linux system keeps what the workspace looks at.
struct WorkspaceLocations
{
    QStringList applicationFolders;       // desktop entries: XDG, Flatpak and Snap exports
    QStringList commandFolders;           // the PATH, plus where Snap and Flatpak put their commands
    QStringList lockFolders;              // where browsers create their lock files as they start
    QList<KnownApplication> applications; // what is looked for: the browsers and the login helper

    // The system's folders for this home folder, and the login helper; the browsers' lock folders
    // and applications come from the browser table.
    static WorkspaceLocations forHome(const QString& home);
};

// Installed means a desktop entry or command of the application exists; running and quitting
// come from the process watcher.
class LinuxWorkspace final : public Workspace
{
    Q_OBJECT
public:
    explicit LinuxWorkspace(const WorkspaceLocations& locations, QObject* parent = nullptr);
    ~LinuxWorkspace() override;

    std::optional<QString> absolutePathForAppBundleWithIdentifier(const QString& bundleIdentifier) override;
    QList<RunningApplication> runningApplications() override;
    // Through the file manager's D-Bus interface (org.freedesktop.FileManager1); without one, the
    // items' folder is opened with the desktop's default handler.
    void activateFileViewerSelectingURLs(const QList<QUrl>& urls) override;

private:
    WorkspaceLocations m_locations;
    ProcessWatcher* m_watcher;
};
