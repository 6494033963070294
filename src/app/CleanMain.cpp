// corvella-clean: one removal run from the command line (see CleanCommand).

#include "app/CleanCommand.h"
#include "catalogue/BrowserTable.h"
#include "core/AppDelegate.h"
#include "core/RunLock.h"
#include "platform/RealHomeDirectory.h"
#include "platform/SystemLog.h"
#include "platform/Translations.h"
#include "platform/UserDefaults.h"
#include "platform/linux/InodeBookmarks.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/PlistFileDefaultsBackend.h"

#include <QCoreApplication>

#include <cstdio>
#include <unistd.h>

namespace {

std::optional<bool> askOnTerminal(QTextStream& out, const QString& question)
{
    if (!::isatty(STDIN_FILENO))
        return std::nullopt;
    out << question << Qt::flush;
    QTextStream in(stdin);
    const QString answer = in.readLine().trimmed().toLower();
    return answer == QLatin1String("y") || answer == QLatin1String("yes");
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Corvella"));
    installTranslations();
    QTextStream out(stdout);
    QTextStream err(stderr);

    SyslogLog log;
    const QString home = RealHomeDirectory();
    UserDefaults defaults(std::make_unique<PlistFileDefaultsBackend>(UserDefaults::filePathForHome(home)),
                          log);
    AppDelegate::initialize(defaults);
    InodeBookmarks bookmarks;
    LinuxWorkspace workspace(BrowserTable::workspaceLocations(home));

    CleanCommand command({defaults, log, bookmarks, workspace, out, err,
                          [&err](const QString& question) { return askOnTerminal(err, question); },
                          RunLock::pathForHome(home)});
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    return command.run(arguments);
}
