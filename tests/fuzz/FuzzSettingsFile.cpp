// The settings file is the user's to edit, and arrives from other machines through the sync folder.
// Whatever it holds, the agent starts on it as it does every day (the shipped registration, the home
// folder stored, the grant records tidied), every setting reads as its kind or as the documented
// empty value, and what the agent writes back can be read again: no setting is lost or changed. Read
// as the synced folder's store, it changes nothing but the shared settings, each to a value of its kind.
#include "core/AppDelegate.h"
#include "core/CloudSync.h"
#include "core/SettingsController.h"
#include "platform/PropertyList.h"
#include "platform/SettingsKeys.h"
#include "platform/fake/MemoryKeyValueStore.h"
#include "platform/linux/InodeBookmarks.h"
#include "platform/linux/PlistFileDefaultsBackend.h"
#include "platform/linux/SyncFolderKeyValueStore.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/FileUrl.h"
#include "support/TestDefaults.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

// Names the property that failed, for the finding's log.
#define check(holds)                                                                                         \
    do {                                                                                                     \
        if (!(holds)) {                                                                                      \
            std::fprintf(stderr, "does not hold: %s\n", #holds);                                             \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

// Each getter answers the stored value when it is of its kind (a switch also reads numbers and
// "YES"), and its empty value otherwise.
void readEveryKind(const UserDefaults& defaults, const QString& key)
{
    const std::optional<QVariant> value = defaults.objectForKey(key);
    const int type = value ? value->typeId() : QMetaType::UnknownType;
    if (type == QMetaType::Bool)
        check(defaults.boolForKey(key) == value->toBool());
    else if (type != QMetaType::LongLong && type != QMetaType::Double && type != QMetaType::QString)
        check(!defaults.boolForKey(key));
    check(defaults.arrayForKey(key).isEmpty() || type == QMetaType::QVariantList);
    check(defaults.dictionaryForKey(key).isEmpty() || type == QMetaType::QVariantMap);
    check(defaults.stringForKey(key).has_value() == (type == QMetaType::QString));
    check(defaults.dataForKey(key).has_value() == (type == QMetaType::QByteArray));
    defaults.integerForKey(key);
}

QStringList grantPaths(const QVariantMap& domain)
{
    QStringList paths;
    for (auto it = domain.keyBegin(); it != domain.keyEnd(); ++it) {
        if (it->startsWith(AppSandboxFileAccessPersist::keyPrefix))
            paths.append(FileUrl::path(QUrl(it->mid(AppSandboxFileAccessPersist::keyPrefix.size()))));
    }
    return paths;
}

void pullAsSyncedStore(const QByteArray& input)
{
    const auto entries = SyncFolderKeyValueStore::parseEntries(input);
    if (!entries)
        return;
    MemoryKeyValueStore store;
    for (auto it = entries->cbegin(); it != entries->cend(); ++it)
        store.values.insert(it.key(), it->value);
    TestDefaults local;
    AppDelegate::initialize(local.defaults, u":/Defaults.plist"_s);
    const QVariantMap before = local.defaults.dictionaryRepresentation();
    CloudSync sync(local.defaults, store, local.log);
    sync.updateFromiCloud();
    const QVariantMap after = local.defaults.dictionaryRepresentation();
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        if (before.value(it.key()) != it.value() || before.value(it.key()).typeId() != it.value().typeId())
            check(CloudSync::isSharedValue(it.key(), it.value()) &&
                  store.values.value(it.key()) == it.value());
    }
    for (auto it = before.keyBegin(); it != before.keyEnd(); ++it)
        check(after.contains(*it));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto input = QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    pullAsSyncedStore(input);
    const std::optional<QVariantMap> stored = PlistFileDefaultsBackend::parse(input);
    if (!stored)
        return 0;
    TestDefaults test(*stored);
    UserDefaults& defaults = test.defaults;
    AppDelegate::initialize(defaults, u":/Defaults.plist"_s);

    const QVariantMap domain = defaults.dictionaryRepresentation();
    // Every key stored or shipped, and those the shipped defaults leave unset.
    for (const QString& key :
         domain.keys() + QStringList{SettingsKeys::firstRun, SettingsKeys::hideiCloudAlert,
                                     SettingsKeys::syncFolder, SettingsKeys::browserLayout})
        readEveryKind(defaults, key);
    const QVariantMap selected =
        SettingsController::selectedEntries(defaults.dictionaryForKey(SettingsKeys::settings));
    for (const QVariant& value : selected)
        check(value.typeId() == QMetaType::Bool && value.toBool());

    // No grant record is left below another's folder.
    const QStringList paths = grantPaths(defaults.dictionaryRepresentation());
    for (const QString& path : paths) {
        for (const QString& folder : paths) {
            const QString prefix = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
            check(folder == path || !path.startsWith(prefix));
        }
    }
    InodeBookmarks bookmarks;
    for (auto it = domain.cbegin(); it != domain.cend(); ++it) {
        if (it.key().startsWith(AppSandboxFileAccessPersist::keyPrefix) &&
            it.value().typeId() == QMetaType::QByteArray)
            bookmarks.resolve(it.value().toByteArray());
    }

    // The start stored the home folder; a file that can be written reads back as what was stored.
    const std::optional<QVariantMap> written = test.backend->read();
    const std::optional<QByteArray> xml = written ? PropertyList::toXml(*written) : std::nullopt;
    // Compared as written again: a NaN setting reads back as NaN, which never equals itself.
    const std::optional<QVariantMap> again = xml ? PlistFileDefaultsBackend::parse(*xml) : std::nullopt;
    if (xml)
        check(again && PropertyList::toXml(*again) == xml);
    else
        check(!PropertyList::toXml(*stored));
    return 0;
}
