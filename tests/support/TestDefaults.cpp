#include "support/TestDefaults.h"

namespace {
std::unique_ptr<MemoryDefaultsBackend> makeBackend(std::optional<QVariantMap> stored,
                                                   MemoryDefaultsBackend*& raw)
{
    auto backend = std::make_unique<MemoryDefaultsBackend>(std::move(stored));
    raw = backend.get();
    return backend;
}
} // namespace

TestDefaults::TestDefaults(std::optional<QVariantMap> stored)
    : backend(nullptr), defaults(makeBackend(std::move(stored), backend), log)
{}
