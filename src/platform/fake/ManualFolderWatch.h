#pragma once

#include "platform/FolderWatch.h"

// A folder watch whose changes the test sends; it remembers how it was started.
class ManualFolderWatch final : public FolderWatch
{
    Q_OBJECT
public:
    void start(const QStringList& paths, int latencyMs) override
    {
        watchedPaths = paths;
        latency = latencyMs;
        ++starts;
        m_watching = true;
    }
    void stop() override { m_watching = false; }
    bool isWatching() const override { return m_watching; }
    void change() { emit foldersChanged(); }

    QStringList watchedPaths;
    int latency = 0;
    int starts = 0;

private:
    bool m_watching = false;
};
