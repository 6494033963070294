#pragma once

#include <QElapsedTimer>
#include <QMutex>

#include <functional>

// Stops a removal run from touching a browser's files once the browser has started again: every copy
// of a file layer shares one, a run arms it with a look at the browser, and each change the file
// layer is about to make asks it first. A look reads /proc, so it is taken at most every
// kLookIntervalMs (or the interval the run armed it with); once the browser was seen, the run stays
// stopped until it disarms.
class RunStop
{
public:
    static constexpr qint64 kLookIntervalMs = 50;

    void arm(std::function<bool()> browserRuns, qint64 lookIntervalMs = kLookIntervalMs);
    // Whether the run was stopped.
    bool disarm();
    bool stopped();
    bool armed();

private:
    QMutex m_mutex;
    std::function<bool()> m_browserRuns;
    QElapsedTimer m_sinceLook;
    qint64 m_lookIntervalMs = kLookIntervalMs;
    bool m_stopped = false;
};
