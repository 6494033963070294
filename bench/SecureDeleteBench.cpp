// Secure delete of a 100 MB file (the documented 1 KiB patterns, written in large blocks) against
// `shred -n 3` on an identical file in the same run (target: at most 1.0). Each round makes fresh
// files on the disk of FOLDER and alternates which one goes first; the figures are medians.
// Usage: bench-secure-delete [ROUNDS] [FOLDER]
#include "sandbox/SecureDelete.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <unistd.h>

namespace {

constexpr qint64 kFileSize = 100 * 1024 * 1024;

// A file of kFileSize bytes of data (no holes), on the disk before the clock starts.
bool makeFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray block(1 << 20, 'x');
    for (qint64 written = 0; written < kFileSize; written += block.size()) {
        if (file.write(block) != block.size())
            return false;
    }
    file.flush();
    return ::fsync(file.handle()) == 0;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Contender
{
    const char* name;
    std::function<bool(const QString&)> wipe;
    std::vector<double> seconds;
};

bool wipeWith(const QString& path, size_t writeSize)
{
    const int dir = ::open(QFile::encodeName(QFileInfo(path).path()).constData(), O_RDONLY | O_DIRECTORY);
    const auto outcome = SecureDelete::wipeAt(dir, QFile::encodeName(QFileInfo(path).fileName()), writeSize);
    ::close(dir);
    return outcome == SecureDelete::Outcome::Wiped;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    const int rounds = arguments.size() > 1 ? std::max(1, arguments.at(1).toInt()) : 5;
    // /var/tmp by default: /tmp may be a tmpfs, where nothing reaches a disk.
    const QString parent = arguments.size() > 2 ? arguments.at(2) : QStringLiteral("/var/tmp");
    QTemporaryDir folder(parent + QStringLiteral("/corvella-bench-XXXXXX"));
    if (!folder.isValid()) {
        std::fprintf(stderr, "cannot make a folder for the files\n");
        return 1;
    }
    std::vector<Contender> contenders{
        {"secure delete", [](const QString& path) { return wipeWith(path, 1024); }, {}},
        {"shred -n 3",
         [](const QString& path) {
             return QProcess::execute(QStringLiteral("shred"),
                                      {QStringLiteral("-n"), QStringLiteral("3"), path}) == 0;
         },
         {}},
    };
    for (int round = 0; round < rounds; ++round) {
        for (size_t turn = 0; turn < contenders.size(); ++turn) {
            Contender& contender = contenders[(turn + size_t(round)) % contenders.size()];
            const QString path = folder.filePath(QStringLiteral("file"));
            if (!makeFile(path)) {
                std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
                return 1;
            }
            QElapsedTimer timer;
            timer.start();
            if (!contender.wipe(path)) {
                std::fprintf(stderr, "%s failed\n", contender.name);
                return 1;
            }
            contender.seconds.push_back(double(timer.nsecsElapsed()) / 1e9);
            QFile::remove(path);
        }
    }
    const double shred = median(contenders[1].seconds);
    std::printf("| secure delete of a 100 MB file, median of %d | %.2f s | shred -n 3 %.2f s | %.2f | at "
                "most 1.0 |\n",
                rounds, median(contenders[0].seconds), shred, median(contenders[0].seconds) / shred);
    return 0;
}
