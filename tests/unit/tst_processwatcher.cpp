#include "catalogue/BrowserTable.h"
#include "platform/linux/DesktopEntry.h"
#include "platform/linux/KnownApplications.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/ProcessWatcher.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

class TestProcessWatcher : public QObject
{
    Q_OBJECT
private slots:
    void knownExecutables_data();
    void knownExecutables();
    void lockFoldersOfEveryInstall();
    void aDesktopEntryLineOver4KiBIsOneLine();
    void helpersAndForksAreNotApplicationsButInstancesAre();

private:
    // A copy of a system program under a browser's executable name.
    QString fakeBrowser(const QString& name, const QString& program = u"/bin/sh"_s)
    {
        const QString path = m_dir.filePath(name);
        QFile::remove(path);
        QFile::copy(program, path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner | QFile::ExeOther | QFile::ReadOther);
        return path;
    }
    QTemporaryDir m_dir;
};

// The tests share the machine with other processes (other tests' browsers, leftovers being reaped),
// so they look only at the processes they started.
namespace {

const QList<KnownApplication> kApplications = BrowserTable::knownApplications();

QList<qint64> pidsOf(const QList<RunningApplication>& applications)
{
    QList<qint64> pids;
    for (const RunningApplication& application : applications)
        pids.append(application.pid);
    return pids;
}

qint64 parentOf(qint64 pid)
{
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    return text.mid(text.lastIndexOf(')') + 2).split(' ').value(1).toLongLong();
}

QList<qint64> descendantsOf(qint64 pid)
{
    QList<qint64> found;
    for (const QString& entry : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        for (qint64 ancestor = parentOf(entry.toLongLong()); entry.toLongLong() > 0 && ancestor > 1;
             ancestor = parentOf(ancestor)) {
            if (ancestor == pid) {
                found.append(entry.toLongLong());
                break;
            }
        }
    }
    return found;
}

} // namespace

// What the run of every row's executables does not show: a Snap decides by its name, and lookalikes.
void TestProcessWatcher::knownExecutables_data()
{
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QString>("application"); // "" for none
    QTest::newRow("the Chromium snap's chrome")
        << u"/snap/chromium/2890/usr/lib/chromium-browser/chrome"_s << u"Chromium"_s;
    QTest::newRow("the Brave snap") << u"/snap/brave/512/opt/brave.com/brave/brave"_s << u"Brave"_s;
    QTest::newRow("crash handler") << u"/usr/lib/chromium/chrome_crashpad_handler"_s << u""_s;
    QTest::newRow("a name that only starts alike") << u"/usr/bin/firefoxy"_s << u""_s;
    QTest::newRow("an unknown snap") << u"/snap/vlc/1/bin/vlc"_s << u""_s;
}

void TestProcessWatcher::knownExecutables()
{
    QFETCH(QString, executable);
    QFETCH(QString, application);
    const KnownApplication* known = KnownApplications::forExecutable(kApplications, executable);
    QCOMPARE(known ? known->name : QString(), application);
}

// A browser's lock files appear in its data root (the Chromium family) or in each profile folder (the
// Firefox family); a Snap's, in the revision "current" points to.
void TestProcessWatcher::lockFoldersOfEveryInstall()
{
    QTemporaryDir home;
    for (const char* folder : {".config/BraveSoftware/Brave-Browser/Default", ".librewolf/q.default"})
        QVERIFY(QDir(home.path()).mkpath(QLatin1String(folder)));
    const QStringList folders = BrowserTable::workspaceLocations(home.path()).lockFolders;
    for (const char* watched :
         {"/.config/BraveSoftware/Brave-Browser", "/.librewolf", "/.librewolf/q.default",
          "/snap/brave/current/.config/BraveSoftware/Brave-Browser"})
        QVERIFY2(folders.contains(home.path() + QLatin1String(watched)), watched);
    QVERIFY(!folders.contains(home.path() + u"/.config/BraveSoftware/Brave-Browser/Default"_s));
}

// A long line was once read as two, its end taken for a key of its own.
void TestProcessWatcher::aDesktopEntryLineOver4KiBIsOneLine()
{
    const QByteArray entry =
        "[Desktop Entry]\nComment=" + QByteArray(4096, 'a') + "Icon=evil\nIcon=chromium\n";
    QCOMPARE(DesktopEntry::iconName(entry), u"chromium"_s);
}

// A helper runs the browser's executable with "--type="; Firefox's content processes are forks of the
// browser that then become helpers; a browser may fork itself. Only the browser's own process is an
// instance, and only its end is a quit.
void TestProcessWatcher::helpersAndForksAreNotApplicationsButInstancesAre()
{
    ProcessWatcher watcher(kApplications, {});
    QSignalSpy terminated(&watcher, &ProcessWatcher::applicationTerminated);
    const QString chromium = fakeBrowser(u"chromium"_s);
    QProcess renderer, forking, contentForking;
    renderer.start(chromium, {u"-c"_s, u"sleep 30; :"_s, u"chromium"_s, u"--type=renderer"_s});
    forking.start(chromium, {u"-c"_s, u"(sleep 30; :); :"_s}); // the subshell keeps the command line
    // (The helper's argument is put together so that the browser's own command line does not hold it.)
    contentForking.start(chromium, {u"-c"_s, u"t=--ty; ( ( sleep 30; : ) & exec "_s + chromium +
                                                 u" -c 'sleep 30; :' chromium ${t}pe=renderer ); :"_s});
    QVERIFY(renderer.waitForStarted() && forking.waitForStarted() && contentForking.waitForStarted());
    const auto forksNow = [&] {
        return descendantsOf(forking.processId()) + descendantsOf(contentForking.processId());
    };
    // Each fork with its sleep; the helper and the fork below it, with theirs.
    QTRY_COMPARE_WITH_TIMEOUT(forksNow().size(), 6, 10000);
    const QList<qint64> forks = forksNow();
    watcher.scan();
    const QList<qint64> pids = pidsOf(watcher.running());
    QVERIFY(pids.contains(forking.processId()) && pids.contains(contentForking.processId()));
    QVERIFY(!pids.contains(renderer.processId()));
    for (qint64 fork : forks)
        QVERIFY2(!pids.contains(fork), "a fork was taken for an instance");
    QVERIFY(pidsOf(ProcessWatcher::lookNow(kApplications)).contains(forking.processId()));

    const qint64 rendererPid = renderer.processId(), browserPid = forking.processId();
    for (qint64 fork : forks) // forks outlive their parents unless stopped first
        ::kill(pid_t(fork), SIGKILL);
    for (QProcess* process : {&renderer, &forking, &contentForking}) {
        process->kill();
        process->waitForFinished();
    }
    const auto reported = [&terminated](qint64 pid) {
        return std::any_of(terminated.cbegin(), terminated.cend(), [pid](const QList<QVariant>& event) {
            return event.first().value<RunningApplication>().pid == pid;
        });
    };
    QTRY_VERIFY(reported(browserPid));
    QVERIFY(!reported(rendererPid));
}

QTEST_GUILESS_MAIN(TestProcessWatcher)
#include "tst_processwatcher.moc"
