#pragma once

#include <QString>

// Where the agent's few log lines go (denied access, skipped items, refused targets).
class SystemLog
{
public:
    virtual ~SystemLog() = default;
    virtual void log(const QString& line) = 0;
};

// syslog(3) with the ident "corvella", and a copy on stderr.
class SyslogLog final : public SystemLog
{
public:
    SyslogLog();
    ~SyslogLog() override;
    void log(const QString& line) override;
};
