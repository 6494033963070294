#include "app/SingleInstance.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>

#include <sys/stat.h>
#include <unistd.h>

namespace {
// An agent starting at the same moment may not listen yet; it is given this long.
constexpr int kHandOverMs = 3000;
} // namespace

QString SingleInstance::defaultFolder()
{
    // Without a session's runtime folder (a headless start), a private folder of this user in /tmp.
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(runtime).isDir())
        return runtime + QStringLiteral("/corvella");
    return QDir::tempPath() + QStringLiteral("/corvella-") + QString::number(::getuid());
}

SingleInstance::SingleInstance(const QString& folder, QObject* parent)
    : QObject(parent), m_folder(folder), m_lock(QDir(folder).filePath(QStringLiteral("agent.lock")))
{}

bool SingleInstance::claim(const QByteArray& request)
{
    if (QDir().mkpath(m_folder))
        QFile::setPermissions(m_folder,
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    const QString socketPath = QDir(m_folder).filePath(QStringLiteral("agent.socket"));
    // A lock left by an agent that died is taken over (QLockFile checks the pid).
    if (!m_lock.tryLock(0)) {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < kHandOverMs) {
            QLocalSocket socket;
            socket.connectToServer(socketPath);
            if (socket.waitForConnected(500)) {
                socket.write(request + '\n');
                socket.waitForBytesWritten(1000);
                // The agent answers with its pid.
                while (!socket.canReadLine() && socket.waitForReadyRead(1000)) {
                }
                m_runningPid = socket.readLine().trimmed().toLongLong();
                socket.disconnectFromServer();
                return false;
            }
            QThread::msleep(100);
        }
        QString host, application;
        m_lock.getLockInfo(&m_runningPid, &host, &application);
        return false;
    }
    QLocalServer::removeServer(socketPath); // left behind by an agent that died
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    m_server->listen(socketPath);
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server->nextPendingConnection()) {
            socket->write(QByteArray::number(QCoreApplication::applicationPid()) + '\n');
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                while (socket->canReadLine())
                    emit requestReceived(socket->readLine().trimmed());
            });
        }
    });
    return true;
}
