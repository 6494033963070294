#pragma once

#include <QThreadPool>

#include <functional>

// Runs removal operations on a worker thread, one at a time, in the order they were added.
class RemovalQueue
{
public:
    RemovalQueue();
    // Drops the operations that have not started and waits for the one that runs.
    ~RemovalQueue();

    void addOperation(const std::function<void()>& operation);
    void cancelAllOperations();
    // For shutdown and tests; false when the time ran out first.
    bool waitUntilAllOperationsAreFinished(int timeoutMs = -1);

private:
    QThreadPool m_pool;
};
