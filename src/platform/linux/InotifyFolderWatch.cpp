#include "platform/linux/InotifyFolderWatch.h"

#include <QFileInfo>

InotifyFolderWatch::InotifyFolderWatch(const QStringList& applicationFolders, QObject* parent)
    : FolderWatch(parent), m_applicationFolders(applicationFolders)
{
    m_latency.setSingleShot(true);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        if (!m_latency.isActive())
            m_latency.start();
    });
    connect(&m_latency, &QTimer::timeout, this, &FolderWatch::foldersChanged);
}

void InotifyFolderWatch::start(const QStringList& paths, int latencyMs)
{
    stop();
    QStringList folders;
    for (const QString& path : paths)
        folders += path == QLatin1String("/Applications") ? m_applicationFolders : QStringList{path};
    folders.removeIf([](const QString& folder) { return !QFileInfo(folder).isDir(); });
    if (!folders.isEmpty())
        m_watcher.addPaths(folders);
    m_latency.setInterval(latencyMs);
    m_watching = true;
}

void InotifyFolderWatch::stop()
{
    if (!m_watcher.directories().isEmpty())
        m_watcher.removePaths(m_watcher.directories());
    m_latency.stop();
    m_watching = false;
}
