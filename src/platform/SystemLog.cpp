#include "platform/SystemLog.h"

#include <cstdio>
#include <syslog.h>

SyslogLog::SyslogLog()
{
    openlog("corvella", LOG_PID, LOG_USER);
}

SyslogLog::~SyslogLog()
{
    closelog();
}

void SyslogLog::log(const QString& line)
{
    const QByteArray utf8 = line.toUtf8();
    syslog(LOG_NOTICE, "%s", utf8.constData());
    std::fprintf(stderr, "corvella: %s\n", utf8.constData());
}
