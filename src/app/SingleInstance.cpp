#include "app/SingleInstance.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

namespace {
// An agent starting at the same moment may not listen yet; it is given this long.
constexpr int kHandOverMs = 3000;
// How long a peer may take to answer, or to send its request.
constexpr int kLineMs = 3000;
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

bool SingleInstance::folderIsPrivate() const
{
    // Made private from the start (a folder made and then narrowed could be entered in between); one
    // that exists is used only when it is this user's own folder, not a link, with no access for others.
    ::mkdir(QFile::encodeName(m_folder).constData(), 0700);
    struct stat st
    {};
    return ::lstat(QFile::encodeName(m_folder).constData(), &st) == 0 && S_ISDIR(st.st_mode) &&
           st.st_uid == ::getuid() && (st.st_mode & 07777) == 0700;
}

SingleInstance::Claim SingleInstance::claim(const QByteArray& request)
{
    if (!folderIsPrivate())
        return Claim::Refused;
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
                // The agent answers with its pid: one short line, soon.
                QElapsedTimer answer;
                answer.start();
                while (!socket.canReadLine() && socket.bytesAvailable() < kMaxLine &&
                       answer.elapsed() < kLineMs &&
                       socket.waitForReadyRead(int(std::max<qint64>(1, kLineMs - answer.elapsed())))) {
                }
                m_runningPid = socket.canReadLine() ? socket.readLine(64).trimmed().toLongLong() : 0;
                socket.abort();
                return Claim::HandedOver;
            }
            QThread::msleep(100);
        }
        QString host, application;
        m_lock.getLockInfo(&m_runningPid, &host, &application);
        return Claim::HandedOver;
    }
    QLocalServer::removeServer(socketPath); // left behind by an agent that died
    m_server = new QLocalServer(this);
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    m_server->listen(socketPath);
    connect(m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server->nextPendingConnection()) {
            socket->write(QByteArray::number(QCoreApplication::applicationPid()) + '\n');
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            // A peer that sends no line in time, or one longer than any request, is dropped.
            QTimer::singleShot(kLineMs, socket, [socket] { socket->abort(); });
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                while (socket->canReadLine())
                    emit requestReceived(socket->readLine(kMaxLine).trimmed());
                if (socket->bytesAvailable() >= kMaxLine)
                    socket->abort();
            });
        }
    });
    return Claim::Agent;
}
