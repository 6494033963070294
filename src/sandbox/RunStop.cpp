#include "sandbox/RunStop.h"

void RunStop::arm(std::function<bool()> browserRuns, qint64 lookIntervalMs)
{
    QMutexLocker lock(&m_mutex);
    m_browserRuns = std::move(browserRuns);
    m_lookIntervalMs = lookIntervalMs;
    m_stopped = false;
    m_sinceLook.start();
}

bool RunStop::disarm()
{
    QMutexLocker lock(&m_mutex);
    m_browserRuns = {};
    return std::exchange(m_stopped, false);
}

bool RunStop::stopped()
{
    QMutexLocker lock(&m_mutex);
    if (m_stopped || !m_browserRuns)
        return m_stopped;
    if (m_sinceLook.elapsed() >= m_lookIntervalMs) {
        m_sinceLook.start();
        m_stopped = m_browserRuns();
    }
    return m_stopped;
}

bool RunStop::armed()
{
    QMutexLocker lock(&m_mutex);
    return bool(m_browserRuns);
}
