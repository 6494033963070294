// Times the file layer's removal of a large tree against the system's own tools on an identical
// tree in the same run, and prints the median ratios (lower is better; 1.0 = as fast as the tool).
//
//   build/bin/bench-remove-tree [rounds]
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "platform/fake/MemoryDefaultsBackend.h"
#include "platform/fake/MemoryLog.h"
#include "platform/fake/ScriptedOpenPanel.h"
#include "platform/linux/InodeBookmarks.h"
#include "sandbox/Sandbox.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

const int kTopFolders = 50;
const int kFoldersEach = 100; // 5,000 folders
const int kFilesEach = 20;    // 100,000 files

void buildTree(const std::string& root)
{
    ::mkdir(root.c_str(), 0700);
    for (int t = 0; t < kTopFolders; ++t) {
        const std::string top = root + "/t" + std::to_string(t);
        ::mkdir(top.c_str(), 0700);
        for (int f = 0; f < kFoldersEach; ++f) {
            const std::string folder = top + "/f" + std::to_string(f);
            ::mkdir(folder.c_str(), 0700);
            for (int n = 0; n < kFilesEach; ++n) {
                const std::string file = folder + "/data_" + std::to_string(n);
                const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
                if (fd >= 0) {
                    if (::write(fd, "cache entry", 11) != 11)
                        std::perror(file.c_str()); // a short fixture would make the figures meaningless
                    ::close(fd);
                }
            }
        }
    }
    ::sync();
}

double seconds(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.nsecsElapsed() / 1e9;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

void shell(const std::string& command)
{
    if (std::system(command.c_str()) != 0)
        std::fprintf(stderr, "failed: %s\n", command.c_str());
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;

    QTemporaryDir home;
    const QString homePath = QFileInfo(home.path()).canonicalFilePath();
    MemoryLog log;
    UserDefaults defaults(std::make_unique<MemoryDefaultsBackend>(), log);
    defaults.setObject(homePath, SettingsKeys::userFolder);
    defaults.setObject(QStringLiteral("macOS"), SettingsKeys::browserLayout);
    InodeBookmarks bookmarks;
    ScriptedOpenPanel panel;
    panel.answer(homePath);
    Sandbox sandbox({defaults, bookmarks, panel, log});
    sandbox.enableAccess();

    const std::string root = homePath.toStdString();
    std::vector<double> removeRatios, subFileRatios, removeOurs, removeTheirs, subOurs, subTheirs;
    std::printf("tree: %d folders, %d files; %d rounds\n", kTopFolders * kFoldersEach,
                kTopFolders * kFoldersEach * kFilesEach, rounds);
    for (int round = 0; round < rounds; ++round) {
        buildTree(root + "/ours");
        buildTree(root + "/theirs");
        // Alternate who goes first, so cache warmth favours neither.
        double ours = 0, theirs = 0;
        auto runOurs = [&] { ours = seconds([&] { sandbox.remove(QStringLiteral("~/ours")); }); };
        auto runTheirs = [&] { theirs = seconds([&] { shell("rm -rf '" + root + "/theirs'"); }); };
        round % 2 ? (runTheirs(), runOurs()) : (runOurs(), runTheirs());
        removeRatios.push_back(ours / theirs);
        removeOurs.push_back(ours);
        removeTheirs.push_back(theirs);
        std::printf("round %d  remove: corvella %.3f s, rm -rf %.3f s, ratio %.3f\n", round + 1, ours, theirs,
                    ours / theirs);

        buildTree(root + "/ours");
        buildTree(root + "/theirs");
        auto runSubOurs = [&] {
            ours = seconds([&] { sandbox.removeRecursiveSubFilesFor(QStringLiteral("~/ours")); });
        };
        auto runSubTheirs = [&] {
            theirs = seconds([&] { shell("find '" + root + "/theirs' -type f -delete"); });
        };
        round % 2 ? (runSubTheirs(), runSubOurs()) : (runSubOurs(), runSubTheirs());
        subFileRatios.push_back(ours / theirs);
        subOurs.push_back(ours);
        subTheirs.push_back(theirs);
        std::printf("round %d  files only: corvella %.3f s, find -delete %.3f s, ratio %.3f\n", round + 1,
                    ours, theirs, ours / theirs);
        shell("rm -rf '" + root + "/ours' '" + root + "/theirs'");
    }
    std::printf(
        "| file layer remove of 100,000 files, median of %d | %.2f s | rm -rf %.2f s | %.2f | at most "
        "1.15 |\n",
        rounds, median(removeOurs), median(removeTheirs), median(removeRatios));
    std::printf(
        "| file layer removal of the files below a folder (100,000), median of %d | %.2f s | find -type f "
        "-delete %.2f s | %.2f | - |\n",
        rounds, median(subOurs), median(subTheirs), median(subFileRatios));
    return 0;
}
