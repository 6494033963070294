#pragma once

#include "platform/FolderWatch.h"

#include <QFileSystemWatcher>
#include <QTimer>

// Watches folders through inotify. Changes are gathered for the latency period and reported once.
// "/Applications" stands for the folders where this system keeps its desktop entries.
class InotifyFolderWatch final : public FolderWatch
{
    Q_OBJECT
public:
    explicit InotifyFolderWatch(const QStringList& applicationFolders, QObject* parent = nullptr);

    void start(const QStringList& paths, int latencyMs) override;
    void stop() override;
    bool isWatching() const override { return m_watching; }

private:
    QStringList m_applicationFolders;
    QFileSystemWatcher m_watcher;
    QTimer m_latency;
    bool m_watching = false;
};
