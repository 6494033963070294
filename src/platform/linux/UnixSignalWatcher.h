#pragma once

#include <QObject>

class QSocketNotifier;

// Turns termination signals into a Qt signal on the main thread, so the agent can leave in order
// (a signal handler itself may do almost nothing). One watcher per process.
class UnixSignalWatcher : public QObject
{
    Q_OBJECT
public:
    explicit UnixSignalWatcher(std::initializer_list<int> signalNumbers, QObject* parent = nullptr);
    ~UnixSignalWatcher() override;

signals:
    void signalReceived(int signalNumber);

private:
    QSocketNotifier* m_notifier = nullptr;
};
