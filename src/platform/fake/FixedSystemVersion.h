#pragma once

#include "platform/SystemVersion.h"

// A system the test chooses; Linux unless told otherwise.
class FixedSystemVersion final : public SystemVersion
{
public:
    QString name() const override { return systemName; }
    QVersionNumber version() const override { return systemVersion; }

    QString systemName = QStringLiteral("Linux");
    QVersionNumber systemVersion{6, 1};
};
