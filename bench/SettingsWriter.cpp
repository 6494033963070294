// One writer of the settings file, through the store the agent and corvella-clean use (the user
// defaults over the property-list file, serialised by its lock). Stores FIRST, FIRST+1, ... under
// "writer.NAME" and prints each value once the store acknowledged it, so a driver that kills writers
// can tell which changes must have survived. Usage: bench-settings-writer FILE NAME FIRST COUNT
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"
#include "platform/linux/PlistFileDefaultsBackend.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

class StderrLog final : public SystemLog
{
public:
    void log(const QString& line) override { std::fprintf(stderr, "%s\n", qPrintable(line)); }
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() != 5) {
        std::fprintf(stderr, "usage: bench-settings-writer FILE NAME FIRST COUNT\n");
        return 2;
    }
    StderrLog log;
    UserDefaults defaults(std::make_unique<PlistFileDefaultsBackend>(arguments.at(1)), log);
    const QString key = QStringLiteral("writer.") + arguments.at(2);
    const qint64 first = arguments.at(3).toLongLong();
    const qint64 last = first + arguments.at(4).toLongLong();
    for (qint64 value = first; value < last; ++value) {
        if (!defaults.setObject(value, key))
            return 1;
        std::printf("%lld\n", static_cast<long long>(value));
        std::fflush(stdout);
    }
    return 0;
}
