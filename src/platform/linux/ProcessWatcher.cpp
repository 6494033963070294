#include "platform/linux/ProcessWatcher.h"

#include "platform/linux/KnownApplications.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <dirent.h>
#include <functional>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// A process is re-examined while it is this young: a launcher script becomes the browser by exec,
// keeping its pid.
constexpr qint64 kSettleMs = 30000;

QString procPath(int pid, const char* entry)
{
    return QStringLiteral("/proc/%1/%2").arg(pid).arg(QLatin1String(entry));
}

QString executableOf(int pid)
{
    QString target = QFile::symLinkTarget(procPath(pid, "exe"));
    // A browser updated while it runs keeps running from its replaced file.
    if (target.endsWith(QLatin1String(" (deleted)")))
        target.chop(10);
    return target;
}

QByteArray readProcFile(int pid, const char* entry)
{
    QFile file(procPath(pid, entry));
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? file.readAll() : QByteArray();
}

int parentOf(int pid)
{
    return ProcessWatcher::parentInStat(readProcFile(pid, "stat"));
}

bool ownedByThisUser(int pid)
{
    struct stat st
    {};
    return ::stat(QFile::encodeName(QStringLiteral("/proc/%1").arg(pid)).constData(), &st) == 0 &&
           st.st_uid == ::getuid();
}

// The application whose main process this is: a known executable that is no helper. A descendant of
// the same application is one of two things: a fork the browser made for itself that has not exec'd
// (a GPU probe, a sandbox's helper), which still carries the command line of the browser process it
// was forked from, even when a content process in between has since exec'd into a helper; or a second
// instance it launched ("open profile in a new browser"), which was started with its own arguments and
// is an application like any other.
const KnownApplication* applicationOf(const QList<KnownApplication>& applications, int pid,
                                      const QString& executable)
{
    const KnownApplication* application = KnownApplications::forExecutable(applications, executable);
    if (!application)
        return nullptr;
    // Empty for a moment while the process execs; it is young, so it is looked at again.
    const QByteArray commandLine = readProcFile(pid, "cmdline");
    if (commandLine.isEmpty() || ProcessWatcher::isHelperCommandLine(commandLine))
        return nullptr;
    int ancestor = parentOf(pid);
    for (int depth = 0; depth < 16 && ancestor > 1; ++depth, ancestor = parentOf(ancestor)) {
        if (KnownApplications::forExecutable(applications, executableOf(ancestor)) != application)
            break;
        if (readProcFile(ancestor, "cmdline") == commandLine)
            return nullptr;
    }
    return application;
}

int pidfdOpen(int pid)
{
    return int(::syscall(SYS_pidfd_open, pid, 0));
}

void forEachProcess(const std::function<void(int)>& visit)
{
    DIR* proc = ::opendir("/proc");
    if (!proc)
        return;
    while (const dirent* entry = ::readdir(proc)) {
        char* end = nullptr;
        const long pid = std::strtol(entry->d_name, &end, 10);
        if (pid > 0 && *end == '\0')
            visit(int(pid));
    }
    ::closedir(proc);
}

} // namespace

// Renderers, GPU and utility processes, zygotes, content processes and Firefox's fork server run the
// browser's own executable but are not the application. Chromium rewrites its children's titles into
// one string, arguments separated by spaces instead of NULs.
bool ProcessWatcher::isHelperCommandLine(QByteArray commandLine)
{
    commandLine.replace('\0', ' ');
    for (const QByteArray& argument : commandLine.split(' ')) {
        if (argument.startsWith("--type=") || argument == "-contentproc" || argument == "-forkserver")
            return true;
    }
    return false;
}

// "pid (comm) state ppid ...": comm may hold spaces and parentheses, so read after the last ')'.
int ProcessWatcher::parentInStat(const QByteArray& stat)
{
    const int close = stat.lastIndexOf(')');
    if (close < 0)
        return 0;
    const QList<QByteArray> fields = stat.mid(close + 2).split(' ');
    return fields.size() > 1 ? fields.at(1).toInt() : 0;
}

ProcessWatcher::ProcessWatcher(const QList<KnownApplication>& applications, const QStringList& lockFolders,
                               QObject* parent)
    : QObject(parent), m_applications(applications), m_lockFolders(lockFolders)
{
    m_clock.start();
    m_fallback.setInterval(kFallbackIntervalMs);
    m_fallback.setTimerType(Qt::CoarseTimer);
    connect(&m_fallback, &QTimer::timeout, this, &ProcessWatcher::scan);
    // A lock-folder change comes in bursts as a browser starts; one look after the burst is enough.
    m_soon.setSingleShot(true);
    m_soon.setInterval(100);
    connect(&m_soon, &QTimer::timeout, this, &ProcessWatcher::scan);
    connect(&m_triggers, &QFileSystemWatcher::directoryChanged, this, [this] { m_soon.start(); });
    scan();
    m_fallback.start();
}

ProcessWatcher::~ProcessWatcher()
{
    for (auto& [pid, watched] : m_watched)
        ::close(watched.pidfd);
}

QList<RunningApplication> ProcessWatcher::running() const
{
    QMutexLocker lock(&m_runningMutex);
    return m_running;
}

void ProcessWatcher::scan()
{
    watchLockFolders();
    const qint64 now = m_clock.elapsed();
    // What ran before the agent started is examined once, now, and has long since become what it is.
    const qint64 firstSeen = m_firstScan ? now - kSettleMs : now;
    m_firstScan = false;

    QHash<int, qint64> seen;
    seen.reserve(m_seen.size() + 16);
    forEachProcess([&](int pid) {
        const auto known = m_seen.constFind(pid);
        const bool isNew = known == m_seen.cend();
        const qint64 since = isNew ? firstSeen : *known;
        // A young process is looked at again: a launcher may yet become the browser by exec.
        if (!m_watched.count(pid) && (isNew || now - since < kSettleMs))
            examine(pid);
        seen.insert(pid, since);
    });
    m_seen.swap(seen);
}

void ProcessWatcher::examine(int pid)
{
    if (!ownedByThisUser(pid))
        return;
    const QString executable = executableOf(pid);
    const KnownApplication* application = applicationOf(m_applications, pid, executable);
    if (!application)
        return;
    const int pidfd = pidfdOpen(pid);
    if (pidfd < 0)
        return;
    // The pid may have been reused between the look and the open; the pidfd is the process now.
    if (executableOf(pid) != executable) {
        ::close(pidfd);
        return;
    }
    Watched& watched = m_watched[pid];
    watched.application = {application->name, application->bundleIdentifier, pid};
    watched.pidfd = pidfd;
    watched.notifier = std::make_unique<QSocketNotifier>(pidfd, QSocketNotifier::Read);
    connect(watched.notifier.get(), &QSocketNotifier::activated, this, [this, pid] { exited(pid); });
    QMutexLocker lock(&m_runningMutex);
    m_running.append(watched.application);
}

QList<RunningApplication> ProcessWatcher::lookNow(const QList<KnownApplication>& applications)
{
    QList<RunningApplication> running;
    forEachProcess([&](int pid) {
        if (!ownedByThisUser(pid))
            return;
        if (const KnownApplication* application = applicationOf(applications, pid, executableOf(pid)))
            running.append({application->name, application->bundleIdentifier, pid});
    });
    return running;
}

void ProcessWatcher::exited(int pid)
{
    const auto it = m_watched.find(pid);
    if (it == m_watched.end())
        return;
    const RunningApplication application = it->second.application;
    it->second.notifier->setEnabled(false);
    ::close(it->second.pidfd);
    m_watched.erase(it);
    m_seen.remove(pid);
    {
        QMutexLocker lock(&m_runningMutex);
        m_running.removeIf([pid](const RunningApplication& running) { return running.pid == pid; });
    }
    emit applicationTerminated(application);
}

void ProcessWatcher::watchLockFolders()
{
    const QStringList watched = m_triggers.directories();
    QStringList missing;
    for (const QString& folder : std::as_const(m_lockFolders)) {
        if (!watched.contains(folder) && QFileInfo(folder).isDir())
            missing.append(folder);
    }
    if (!missing.isEmpty())
        m_triggers.addPaths(missing);
}
