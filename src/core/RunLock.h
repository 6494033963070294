#pragma once

#include <QString>

#include <functional>

class SystemLog;

// The advisory lock that keeps removal runs of the agent and of corvella-clean from overlapping.
// Released on destruction, and by the system if the process dies.
class RunLock
{
public:
    // How long to wait while another process holds the lock.
    struct Wait
    {
        // Asked while waiting; true gives up at once (the agent is on its way out).
        std::function<bool()> stop;
        // Called once, when the lock turns out to be held by someone else.
        std::function<void()> waiting;
        // Gives up after this long; negative: waits until the lock is free or stop() says so.
        int timeoutMs = -1;
    };

    // The lock beside the settings in the defaults folder of a home folder.
    static QString pathForHome(const QString& home);

    // Takes the lock, waiting as the wait says. An empty path takes no lock and counts as held. A
    // lock file that cannot be opened is logged and counts as held: the lock only orders runs, it
    // guards no data of its own.
    RunLock(const QString& path, SystemLog& log, const Wait& wait);
    RunLock(const QString& path, SystemLog& log);
    ~RunLock();
    RunLock(const RunLock&) = delete;
    RunLock& operator=(const RunLock&) = delete;

    // False when the wait was given up (stopped or timed out).
    bool isHeld() const { return m_held; }

private:
    int m_fd = -1;
    bool m_held = true;
};
