#pragma once

#include <QString>
#include <QVersionNumber>

// Which system the agent runs on. Some checks only apply from a given version of one system: on
// macOS before 10.14 any program could read Safari's files, so there was nothing to test there.
class SystemVersion
{
public:
    virtual ~SystemVersion() = default;
    // "macOS", "Linux", ...
    virtual QString name() const = 0;
    virtual QVersionNumber version() const = 0;
};

// The system this binary was built for, with the running kernel's version.
class RunningSystemVersion final : public SystemVersion
{
public:
    QString name() const override;
    QVersionNumber version() const override;
};
