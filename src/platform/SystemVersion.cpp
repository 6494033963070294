#include "platform/SystemVersion.h"

#include <QSysInfo>

QString RunningSystemVersion::name() const
{
#ifdef Q_OS_MACOS
    return QStringLiteral("macOS");
#else
    return QStringLiteral("Linux");
#endif
}

QVersionNumber RunningSystemVersion::version() const
{
#ifdef Q_OS_MACOS
    return QVersionNumber::fromString(QSysInfo::productVersion());
#else
    return QVersionNumber::fromString(QSysInfo::kernelVersion());
#endif
}
