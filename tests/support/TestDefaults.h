#pragma once

#include "platform/UserDefaults.h"
#include "platform/fake/MemoryDefaultsBackend.h"
#include "platform/fake/MemoryLog.h"

// A defaults domain kept in memory, with the log it writes to.
struct TestDefaults
{
    explicit TestDefaults(std::optional<QVariantMap> stored = QVariantMap());

    MemoryLog log;
    MemoryDefaultsBackend* backend; // owned by defaults
    UserDefaults defaults;
};
