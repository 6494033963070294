#include "app/SingleInstance.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>

SingleInstance::SingleInstance(const QString& folder, QObject* parent)
    : QObject(parent), m_folder(folder), m_lock(QDir(folder).filePath(QStringLiteral("agent.lock")))
{}

bool SingleInstance::claim(const QByteArray& request)
{
    QDir().mkpath(m_folder);
    const QString socketPath = QDir(m_folder).filePath(QStringLiteral("agent.socket"));
    // A lock left by an agent that died is taken over (QLockFile checks the pid).
    if (!m_lock.tryLock(0)) {
        QString host, application;
        m_lock.getLockInfo(&m_runningPid, &host, &application);
        QLocalSocket socket;
        socket.connectToServer(socketPath);
        if (socket.waitForConnected(1000)) {
            socket.write(request + '\n');
            socket.waitForBytesWritten(1000);
            socket.disconnectFromServer();
        }
        return false;
    }
    QLocalServer::removeServer(socketPath); // left behind by an agent that died
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    m_server->listen(socketPath);
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server->nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                while (socket->canReadLine())
                    emit requestReceived(socket->readLine().trimmed());
            });
        }
    });
    return true;
}
