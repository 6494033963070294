#pragma once

#include <QString>

class SystemLog;

// Holds the advisory lock that keeps removal runs of the agent and of corvella-clean from
// overlapping, waiting for it while another process holds it. Released on destruction, and by
// the system if the process dies.
class RunLock
{
public:
    // The lock beside the settings in the defaults folder of a home folder.
    static QString pathForHome(const QString& home);

    // An empty path takes no lock. A lock file that cannot be opened is logged and the run goes
    // on: the lock only orders runs, it guards no data of its own.
    RunLock(const QString& path, SystemLog& log);
    ~RunLock();
    RunLock(const RunLock&) = delete;
    RunLock& operator=(const RunLock&) = delete;

    bool isHeld() const { return m_fd >= 0; }

private:
    int m_fd = -1;
};
