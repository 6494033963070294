#pragma once

#include "platform/Workspace.h"
#include "platform/linux/KnownApplications.h"

#include <QElapsedTimer>
#include <QFileSystemWatcher>
#include <QHash>
#include <QMutex>
#include <QTimer>

#include <map>
#include <memory>

class QSocketNotifier;

// Finds the main process of each known application running for this user and reports its exit
// the moment it happens (a pidfd per process, woken by the kernel). New processes are looked for
// when a browser's lock-file folder changes and, as a fallback, every two seconds; each look only
// examines processes it has not settled on yet, so an idle agent costs next to nothing.
class ProcessWatcher : public QObject
{
    Q_OBJECT
public:
    // The applications to watch for, and folders where browsers create their lock files as they start.
    ProcessWatcher(const QList<KnownApplication>& applications, const QStringList& lockFolders,
                   QObject* parent = nullptr);
    ~ProcessWatcher() override;

    // The processes watched now. Safe from any thread.
    QList<RunningApplication> running() const;
    void scan();
    // The main processes of known applications running for this user at this moment, found by
    // looking at every process now (whatever the watcher has settled on). Safe from any thread.
    static QList<RunningApplication> lookNow(const QList<KnownApplication>& applications);

    static constexpr int kFallbackIntervalMs = 2000;

    // What is read from /proc: whether a command line ("cmdline", NUL-separated, or one string as
    // Chromium rewrites its children's) is a browser's helper process rather than the application;
    // the parent's pid in a "stat" line, 0 when it has none.
    static bool isHelperCommandLine(QByteArray commandLine);
    static int parentInStat(const QByteArray& stat);

signals:
    void applicationTerminated(const RunningApplication& application);

private:
    struct Watched
    {
        RunningApplication application;
        int pidfd = -1;
        std::unique_ptr<QSocketNotifier> notifier;
    };

    void examine(int pid);
    void exited(int pid);
    void watchLockFolders();

    QList<KnownApplication> m_applications;
    QStringList m_lockFolders;
    QHash<int, qint64> m_seen; // pid -> when it was first examined
    std::map<int, Watched> m_watched;
    QList<RunningApplication> m_running;
    mutable QMutex m_runningMutex;
    QElapsedTimer m_clock;
    bool m_firstScan = true;
    QTimer m_fallback;
    QTimer m_soon;
    QFileSystemWatcher m_triggers;
};
