// The browsers' session files are rewritten to keep only their pinned tabs. Whatever the bytes, a
// rewrite is a session file of the same kind, and rewriting its own output changes nothing more. The
// input is taken as a Chromium session and, compressed, as Firefox's.
#include "cleaners/ChromiumSession.h"
#include "cleaners/FirefoxSession.h"
#include "cleaners/MozLz4.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto input = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    if (const std::optional<QByteArray> chromium = ChromiumSession::withOnlyPinnedTabs(input)) {
        if (chromium->left(8) != input.left(8) || ChromiumSession::withOnlyPinnedTabs(*chromium) != chromium)
            std::abort();
    }
    for (const bool keepCookies : {false, true}) {
        const std::optional<QByteArray> firefox =
            FirefoxSession::withOnlyPinnedTabs(MozLz4::compress(input), keepCookies);
        if (firefox && (!MozLz4::decompress(*firefox) ||
                        FirefoxSession::withOnlyPinnedTabs(*firefox, keepCookies) != firefox))
            std::abort();
    }
    return 0;
}
