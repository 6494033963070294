#pragma once

#include <QMutex>
#include <QStringList>

// What a run could not do (refused, kept, not written), collected for corvella-clean to report
// after its usual line. The log has each line too.
class ProblemReport
{
public:
    void add(const QString& line)
    {
        QMutexLocker lock(&m_mutex);
        m_lines.append(line);
    }
    QStringList lines() const
    {
        QMutexLocker lock(&m_mutex);
        return m_lines;
    }

private:
    mutable QMutex m_mutex;
    QStringList m_lines;
};
