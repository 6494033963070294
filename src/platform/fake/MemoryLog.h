#pragma once

#include "platform/SystemLog.h"

#include <QMutex>
#include <QStringList>

// Keeps every line, so tests can assert what was logged (and that nothing was).
class MemoryLog final : public SystemLog
{
public:
    void log(const QString& line) override;
    QStringList lines() const;
    void clear();

private:
    mutable QMutex m_mutex;
    QStringList m_lines;
};
