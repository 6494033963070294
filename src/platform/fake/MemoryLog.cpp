#include "platform/fake/MemoryLog.h"

void MemoryLog::log(const QString& line)
{
    QMutexLocker lock(&m_mutex);
    m_lines.append(line);
}

QStringList MemoryLog::lines() const
{
    QMutexLocker lock(&m_mutex);
    return m_lines;
}

void MemoryLog::clear()
{
    QMutexLocker lock(&m_mutex);
    m_lines.clear();
}
