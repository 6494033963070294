// The key filters of Chromium's LevelDB stores (local storage, service workers) read keys and values
// written by the browser. Whatever they hold (records of the input: "key TAB value" per line), an
// extension's entries and the stores' own "VERSION" key are never chosen, and every script named for
// removal has a cache-entry name.
#include "cleaners/SiteEntries.h"

#include <cstdint>
#include <cstdlib>

namespace {

// The origin a key names after one of the prefixes, up to its NUL.
QByteArray origin(const QByteArray& key, std::initializer_list<const char*> prefixes)
{
    for (const char* prefix : prefixes) {
        if (key.startsWith(prefix)) {
            const QByteArray rest = key.mid(qsizetype(qstrlen(prefix)));
            return rest.left(rest.indexOf('\0') < 0 ? rest.size() : rest.indexOf('\0'));
        }
    }
    return {};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto input = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const LevelDbStore::KeyFilter local = SiteEntries::localStorage(KeptSites());
    const auto resources = std::make_shared<QSet<QByteArray>>();
    const LevelDbStore::KeyFilter workers = SiteEntries::serviceWorkers(KeptSites(), resources);
    for (const QByteArray& record : input.split('\n')) {
        const qsizetype tab = record.indexOf('\t');
        const QByteArray key = tab < 0 ? record : record.left(tab);
        const QByteArray value = tab < 0 ? QByteArray() : record.mid(tab + 1);
        const bool removed = local(key, value);
        if (removed &&
            (key == "VERSION" || SiteEntries::isExtension(origin(key, {"_", "META:", "METAACCESS:"}))))
            std::abort();
        const bool workerRemoved = workers(key, value);
        if (workerRemoved &&
            (key == "VERSION" || SiteEntries::isExtension(origin(key, {"REG:", "INITDATA_UNIQUE_ORIGIN:"})) ||
             (key.startsWith("REGID_TO_ORIGIN:") && SiteEntries::isExtension(value)) ||
             (key.startsWith("RES:") && value.contains("chrome-extension://"))))
            std::abort();
    }
    for (const QByteArray& resource : std::as_const(*resources)) {
        const QString entry = SiteEntries::scriptCacheEntry(resource);
        bool hex = false;
        entry.toULongLong(&hex, 16);
        if (entry.size() != 16 || !hex)
            std::abort();
    }
    return 0;
}
