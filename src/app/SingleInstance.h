#pragma once

#include <QLockFile>
#include <QObject>

class QLocalServer;

// One agent per user: the first start holds a lock in the user's runtime folder and listens there
// (where deleting the settings cannot remove them); a later start hands its request (a URL, or
// "show yourself") to the first, learns its pid, and exits. The folder must be a private folder of
// this user: one in /tmp that another user made first would receive the hand-over in the agent's place.
class SingleInstance : public QObject
{
    Q_OBJECT
public:
    // A request or an answer longer than this is no request: the peer is dropped.
    static constexpr qint64 kMaxLine = 64 * 1024;

    // "$XDG_RUNTIME_DIR/corvella", or "/tmp/corvella-<uid>" without a session's runtime folder.
    static QString defaultFolder();

    explicit SingleInstance(const QString& folder, QObject* parent = nullptr);

    enum class Claim
    {
        Agent,      // this process is the agent
        HandedOver, // the request went to the running agent (when it could be delivered)
        Refused     // the folder is not a folder of this user with mode 0700: nothing was done
    };
    Claim claim(const QByteArray& request);
    // The running agent's pid after a hand-over; 0 when it did not answer in time.
    qint64 runningPid() const { return m_runningPid; }
    QString folder() const { return m_folder; }

signals:
    void requestReceived(const QByteArray& request);

private:
    bool folderIsPrivate() const;

    QString m_folder;
    QLockFile m_lock;
    QLocalServer* m_server = nullptr;
    qint64 m_runningPid = 0;
};
