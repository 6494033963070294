// corvella-clean's arguments: whatever a script passes (the input's NUL-separated words), it ends with
// one of its documented exit codes. It runs in a temporary home, granted, with nothing to remove.
#include "app/CleanCommand.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/TestHome.h"

#include <QCoreApplication>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    static TestHome home; // granted; empty: a run finds nothing to remove
    static FakeWorkspace workspace;

    const QList<QByteArray> words =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)).split('\0');
    QStringList arguments;
    for (const QByteArray& word : words)
        arguments.append(QString::fromUtf8(word));
    QString out, err;
    QTextStream outStream(&out), errStream(&err);
    CleanCommand command({home.t.defaults, home.t.log, home.bookmarks, workspace, outStream, errStream,
                          [](const QString&) { return std::optional<bool>(); }, QString(), 0});
    const int code = command.run(arguments);
    if (code != CleanCommand::Success && code != CleanCommand::BadUsage &&
        code != CleanCommand::NoHomeAccess && code != CleanCommand::BrowserRunning &&
        code != CleanCommand::NotWritten && code != CleanCommand::LockBusy)
        std::abort();
    return 0;
}
