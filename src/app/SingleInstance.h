#pragma once

#include <QLockFile>
#include <QObject>

class QLocalServer;

// One agent per user: the first start holds a lock in the user's runtime folder and listens there
// (where deleting the settings cannot remove them); a later start hands its request (a URL, or
// "show yourself") to the first, learns its pid, and exits.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    // "$XDG_RUNTIME_DIR/corvella", or "/tmp/corvella-<uid>" without a session's runtime folder.
    static QString defaultFolder();

    explicit SingleInstance(const QString& folder, QObject* parent = nullptr);

    // True when this process is the agent. Otherwise the request went to the running agent
    // (when it could be delivered) and runningPid() names it (0 when it did not answer).
    bool claim(const QByteArray& request);
    qint64 runningPid() const { return m_runningPid; }

signals:
    void requestReceived(const QByteArray& request);

private:
    QString m_folder;
    QLockFile m_lock;
    QLocalServer* m_server = nullptr;
    qint64 m_runningPid = 0;
};
