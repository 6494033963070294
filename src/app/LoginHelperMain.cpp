// corvella-login-helper: what the autostart entry runs at login. It starts the agent installed with
// it and stays until the agent says it has finished launching, so the agent can tell that it was
// started at login (and stay hidden when the user asked for that). It never waits for ever: an agent
// that was already running, or a session without a bus, does not answer.
#include "core/AppDelegate.h"
#include "platform/UserDefaults.h"
#include "platform/linux/DBusDistributedNotificationCenter.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTimer>

#include <cstdio>

namespace {
constexpr int kLongestWaitMs = 60'000;
}

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    DBusDistributedNotificationCenter center; // listening before the agent can post
    QObject::connect(&center, &DistributedNotificationCenter::notificationPosted, &app,
                     [](const QString& name, const QString& object) {
                         if (name == AppDelegate::terminateLoginHelperNotification &&
                             object == UserDefaults::kDomain)
                             QCoreApplication::quit();
                     });
    const QString agent = QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                          QStringLiteral("/" CORVELLA_AGENT_FROM_HELPER "/corvella"));
    if (!QProcess::startDetached(agent, {})) {
        std::fprintf(stderr, "corvella-login-helper: could not start %s\n", qPrintable(agent));
        return 1;
    }
    QTimer::singleShot(kLongestWaitMs, &app, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
