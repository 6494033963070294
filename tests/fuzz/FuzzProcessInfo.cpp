// The process watcher reads other users' programs through /proc: command lines, "stat" lines whose
// command name the program chooses (any bytes but NUL, ")" and spaces included), and executable
// paths. Whatever they hold, the watcher reads them without failing; a "stat" line gives back the
// parent it names whatever the command name; an argument "--type=..." always marks a helper.
#include "catalogue/BrowserTable.h"
#include "platform/linux/KnownApplications.h"
#include "platform/linux/ProcessWatcher.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto input = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    ProcessWatcher::parentInStat(input);
    static const QList<KnownApplication> applications = BrowserTable::knownApplications();
    KnownApplications::forExecutable(applications, QString::fromUtf8(input));

    // The input as the command name of a real "stat" line, and as a command line.
    uint32_t parent = 0;
    std::memcpy(&parent, data, std::min(size, sizeof parent));
    parent %= 4194304; // the kernel's largest pid
    QByteArray comm = input;
    comm.replace('\0', ' ');
    const QByteArray stat =
        "4242 (" + comm + ") S " + QByteArray::number(parent) + " 4242 4242 0 -1 4194560 1 0 0";
    if (ProcessWatcher::parentInStat(stat) != int(parent))
        std::abort();
    const bool helper = ProcessWatcher::isHelperCommandLine(input);
    for (const QByteArray& argument : input.split('\0')) {
        if (argument.startsWith("--type=") && !helper)
            std::abort();
    }
    if (!ProcessWatcher::isHelperCommandLine(input + QByteArray("\0--type=renderer", 16)))
        std::abort();
    return 0;
}
