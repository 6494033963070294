#include "core/RemovalQueue.h"

RemovalQueue::RemovalQueue()
{
    m_pool.setMaxThreadCount(1);
}

RemovalQueue::~RemovalQueue()
{
    cancelAllOperations();
    m_pool.waitForDone();
}

void RemovalQueue::addOperation(const std::function<void()>& operation)
{
    // Set again on every queueing, as the count is what guarantees one run at a time.
    m_pool.setMaxThreadCount(1);
    m_pool.start(operation);
}

void RemovalQueue::cancelAllOperations()
{
    m_pool.clear();
}

bool RemovalQueue::waitUntilAllOperationsAreFinished(int timeoutMs)
{
    return m_pool.waitForDone(timeoutMs);
}
