#include "catalogue/BrowserCatalogue.h"

#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "sandbox/Sandbox.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <algorithm>
#include <signal.h>

namespace {

using BrowserTable::Family;

Family familyOf(const QString& browser)
{
    const BrowserTable::Browser* row = BrowserTable::find(browser);
    return row ? row->family : Family::Safari;
}

// The revision folders of a Snap ("~/snap/brave/2890"): real folders, not the "current" link nor
// "common", which every revision shares.
QStringList snapRevisions(Sandbox& sandbox, const QString& snapFolder)
{
    QStringList revisions;
    for (const QString& name : sandbox.folderContentsOf(snapFolder)) {
        const std::optional<QString> folder = sandbox.childPath(snapFolder, name);
        if (name == QLatin1String("common") || !folder ||
            sandbox.fileAttributes(*folder).value(QStringLiteral("NSFileType")) !=
                QLatin1String("NSFileTypeDirectory"))
            continue;
        revisions.append(name);
    }
    revisions.sort();
    return revisions;
}

} // namespace

bool BrowserCatalogue::isChromiumFamily(const QString& browser)
{
    return familyOf(browser) == Family::Chromium;
}

bool BrowserCatalogue::isFirefoxFamily(const QString& browser)
{
    return familyOf(browser) == Family::Firefox;
}

bool BrowserCatalogue::hasSingleProfile(const QString& browser)
{
    const BrowserTable::Browser* row = BrowserTable::find(browser);
    return row && row->singleProfile;
}

BrowserInstall BrowserCatalogue::referenceInstall(const QString& browser)
{
    const BrowserTable::Browser* row = BrowserTable::find(browser);
    if (!row)
        return {browser, {}, {}};
    return {browser, row->referenceDataRoot, row->referenceCacheRoot};
}

QList<BrowserInstall> BrowserCatalogue::installsOf(Sandbox& sandbox, const QString& browser)
{
    const BrowserTable::Browser* row = BrowserTable::find(browser);
    if (!row || row->referenceDataRoot.isEmpty())
        return {};
    if (PathLayout::isReferenceLayout(sandbox.layout()))
        return {referenceInstall(browser)};
    QList<BrowserInstall> found;
    for (const BrowserTable::Install& install : row->installs) {
        for (const QString& root : install.dataRoots) {
            QStringList dataRoots{root};
            if (const qsizetype star = root.indexOf(QStringLiteral("/*/")); star >= 0) {
                dataRoots.clear();
                for (const QString& revision : snapRevisions(sandbox, QStringLiteral("~/") + root.left(star)))
                    dataRoots.append(root.left(star + 1) + revision + root.mid(star + 2));
            }
            for (const QString& dataRoot : std::as_const(dataRoots)) {
                const QString data = QStringLiteral("~/") + dataRoot;
                if (hasFamilyShape(sandbox, *row, data))
                    found.append({browser, data, QStringLiteral("~/") + install.cacheRoot});
            }
        }
    }
    return found;
}

bool BrowserCatalogue::hasFamilyShape(Sandbox& sandbox, const BrowserTable::Browser& browser,
                                      const QString& root)
{
    if (browser.family == Family::Chromium)
        return sandbox.fileExists(root + QStringLiteral("/Local State")) ||
               (browser.singleProfile && sandbox.fileExists(root + QStringLiteral("/Preferences")));
    if (browser.family == Family::Firefox)
        return sandbox.fileExists(root + QStringLiteral("/profiles.ini")) ||
               !firefoxProfiles(sandbox, root).isEmpty();
    return false;
}

const QStringList& BrowserCatalogue::detectionOrder()
{
    // The five the settings have always named, in their order, then the rest of the table.
    static const QStringList order = [] {
        QStringList ids{safariID, googleChromeID, chromiumID, firefoxID, operaID};
        for (const BrowserTable::Browser& browser : BrowserTable::all()) {
            if (!ids.contains(browser.identifier))
                ids.append(browser.identifier);
        }
        return ids;
    }();
    return order;
}

const QStringList& BrowserCatalogue::tileOrder()
{
    static const QStringList order = [] {
        QStringList names;
        for (const BrowserTable::Browser& browser : BrowserTable::all())
            names.append(browser.name);
        return names;
    }();
    return order;
}

BrowserCatalogue::BrowserCatalogue(Workspace& workspace, UserDefaults& defaults, Sandbox& sandbox,
                                   QObject* parent)
    : QObject(parent), m_workspace(workspace), m_defaults(defaults), m_sandbox(sandbox)
{}

QString BrowserCatalogue::browserIDFor(const QString& name)
{
    // A disabled tile's name maps to its browser too; of names that start alike ("Google Chrome",
    // "Google Chrome Beta"), the longest that the name starts with.
    const QString key = name.endsWith(disabledSuffix) ? name.chopped(disabledSuffix.size()) : name;
    const BrowserTable::Browser* best = nullptr;
    for (const BrowserTable::Browser& browser : BrowserTable::all()) {
        if (key.startsWith(browser.name) && (!best || browser.name.size() > best->name.size()))
            best = &browser;
    }
    return best ? best->identifier : QString();
}

QString BrowserCatalogue::browserForID(const QString& bundleIdentifier)
{
    const BrowserTable::Browser* row = BrowserTable::forIdentifier(bundleIdentifier);
    return row ? row->name : QString();
}

std::optional<QString> BrowserCatalogue::browserForTerminatedApplication(const QVariantMap& userInfo)
{
    const QVariant nameValue = userInfo.value(Workspace::applicationNameKey);
    const QVariant idValue = userInfo.value(Workspace::bundleIdentifierKey);
    const QString name = nameValue.isValid() ? nameValue.toString() : QString();
    const QString bundleIdentifier = idValue.isValid() ? idValue.toString() : QString();
    for (const QString& key : {safari, googleChrome, chromium, firefox}) {
        if (name == key)
            return key;
    }
    // Opera ships under several application names; only its identifier is stable. The browsers
    // added since the settings' first five are known by either.
    if (bundleIdentifier == operaID)
        return opera;
    for (const BrowserTable::Browser& browser : BrowserTable::all()) {
        if (BrowserTable::settingsTemplate(browser) == browser.name)
            continue; // one of the first five
        if (name == browser.name || bundleIdentifier == browser.identifier)
            return browser.name;
    }
    return std::nullopt;
}

QStringList BrowserCatalogue::checkForInstalledBrowsers()
{
    QStringList installed;
    for (const QString& id : detectionOrder()) {
        if (m_workspace.absolutePathForAppBundleWithIdentifier(id))
            installed.append(id);
    }
    return installed;
}

bool BrowserCatalogue::checkIfBrowserEnabled(const QString& browser) const
{
    if (!tileOrder().contains(browser))
        return false;
    return m_defaults.arrayForKey(SettingsKeys::enabledBrowsers).contains(browserIDFor(browser));
}

QStringList BrowserCatalogue::enabledBrowserKeys() const
{
    QStringList keys;
    for (const QVariant& id : m_defaults.arrayForKey(SettingsKeys::enabledBrowsers))
        keys.append(browserForID(id.toString()));
    keys.removeAll(QString());
    return keys;
}

QStringList BrowserCatalogue::browserContentArray()
{
    const QStringList installed = checkForInstalledBrowsers();
    QStringList tiles;
    for (const QString& browser : tileOrder()) {
        if (!installed.contains(browserIDFor(browser)))
            continue;
        tiles.append(checkIfBrowserEnabled(browser) ? browser : browser + disabledSuffix);
    }
    return tiles;
}

void BrowserCatalogue::browsersChanged()
{
    QTimer::singleShot(1000, this, &BrowserCatalogue::applyInstalledBrowsers);
}

void BrowserCatalogue::applyInstalledBrowsers()
{
    const QVariantList enabled = m_defaults.arrayForKey(SettingsKeys::enabledBrowsers);
    QVariantList kept;
    for (const QString& id : checkForInstalledBrowsers()) {
        if (enabled.contains(id))
            kept.append(id);
    }
    m_defaults.setObject(kept, SettingsKeys::enabledBrowsers);
    emit browserContentArrayChanged();
}

QVariantMap BrowserCatalogue::userProfiles(const QString& browser)
{
    QVariantMap profiles;
    for (const BrowserInstall& install : installsOf(m_sandbox, browser))
        profiles.insert(profilesIn(m_sandbox, install.dataRoot));
    return profiles;
}

QVariantMap BrowserCatalogue::profilesIn(Sandbox& sandbox, const QString& dataRoot)
{
    const std::optional<QString> text = sandbox.contentsOf(dataRoot + QStringLiteral("/Local State"));
    if (!text || text->isEmpty())
        return {};
    const QJsonDocument document = QJsonDocument::fromJson(text->toUtf8());
    const QJsonValue infoCache =
        document.object().value(QStringLiteral("profile")).toObject().value(QStringLiteral("info_cache"));
    QVariantMap profiles;
    const QJsonObject entries = infoCache.toObject();
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        const QJsonValue name = it.value().toObject().value(QStringLiteral("name"));
        if (!name.isUndefined())
            profiles.insert(it.key(), name.toVariant());
    }
    return profiles;
}

bool BrowserCatalogue::browserIsRunning(const QString& browser)
{
    const QString id = browserIDFor(browser);
    for (const RunningApplication& application : m_workspace.runningApplications()) {
        if (application.bundleIdentifier == id)
            return true;
    }
    for (const BrowserInstall& install : installsOf(m_sandbox, browser)) {
        if (!isFirefoxFamily(browser)) {
            if (lockIsLive(m_sandbox, install.dataRoot + QStringLiteral("/SingletonLock")))
                return true;
            continue;
        }
        for (const QString& profile : firefoxProfiles(m_sandbox, install.dataRoot)) {
            const QString folder = profile.startsWith(QLatin1Char('/'))
                                       ? profile
                                       : install.dataRoot + QLatin1Char('/') + profile;
            if (lockIsLive(m_sandbox, folder + QStringLiteral("/lock")))
                return true;
        }
    }
    return false;
}

QStringList BrowserCatalogue::firefoxProfiles(const QString& browser)
{
    QStringList profiles;
    for (const BrowserInstall& install : installsOf(m_sandbox, browser))
        profiles += firefoxProfiles(m_sandbox, install.dataRoot);
    return profiles;
}

QStringList BrowserCatalogue::firefoxProfiles(Sandbox& sandbox, const QString& profilesRoot)
{
    QStringList profiles;
    for (const QString& name : sandbox.folderContentsOf(profilesRoot)) {
        const std::optional<QString> folder = sandbox.childPath(profilesRoot, name);
        // The profiles root also holds profiles.ini, crash reports and pending pings.
        if (folder && (sandbox.fileExists(*folder + QStringLiteral("/prefs.js")) ||
                       sandbox.fileExists(*folder + QStringLiteral("/times.json"))))
            profiles.append(name);
    }
    profiles.sort();
    for (const ProfileElsewhere& elsewhere : firefoxProfilesElsewhere(sandbox, profilesRoot)) {
        if (elsewhere.inside)
            profiles.append(elsewhere.path);
    }
    return profiles;
}

QList<BrowserCatalogue::ProfileElsewhere>
BrowserCatalogue::firefoxProfilesElsewhere(Sandbox& sandbox, const QString& profilesRoot)
{
    QList<ProfileElsewhere> found;
    const QString home = sandbox.checkForUserDirectory(QStringLiteral("~"));
    const auto add = [&](const QString& value) {
        const QString path = QDir::cleanPath(value);
        if (!QDir::isAbsolutePath(value) || path.contains(QChar(0)) ||
            std::any_of(found.cbegin(), found.cend(),
                        [&](const ProfileElsewhere& p) { return p.path == path; }))
            return;
        // Inside by its name and, through any link on the way, by where it really is.
        const QString real = QFileInfo(path).canonicalFilePath();
        const auto below = [&home](const QString& p) { return p.startsWith(home + QLatin1Char('/')); };
        found.append({path, !home.isEmpty() && below(path) && (real.isEmpty() || below(real))});
    };
    // profiles.ini: [ProfileN] sections with IsRelative=0 and Path=/full/path; installs.ini:
    // [INSTALLHASH] sections whose Default= is a full path when the profile lies elsewhere.
    for (const char* file : {"profiles.ini", "installs.ini"}) {
        const QString text =
            sandbox.contentsOf(profilesRoot + QLatin1Char('/') + QLatin1String(file)).value_or(QString());
        bool relative = true;
        QString path;
        const auto endSection = [&] {
            if (!path.isEmpty() && (!relative || qstrcmp(file, "installs.ini") == 0))
                add(path);
            relative = true;
            path.clear();
        };
        for (const QString& raw : text.split(QLatin1Char('\n'))) {
            const QString line = raw.trimmed();
            if (line.startsWith(QLatin1Char('['))) {
                endSection();
            } else if (line.startsWith(QLatin1String("IsRelative="))) {
                relative = line.mid(11) != QLatin1String("0");
            } else if (line.startsWith(QLatin1String("Path=")) && qstrcmp(file, "profiles.ini") == 0) {
                path = line.mid(5);
            } else if (line.startsWith(QLatin1String("Default=")) && qstrcmp(file, "installs.ini") == 0) {
                path = line.mid(8);
            }
        }
        endSection();
    }
    return found;
}

// Browsers lock a profile with a link whose target ends in the owner's pid ("host-1234",
// "127.0.1.1:+1234"). A lock left by a crash names a pid that is gone; one that cannot be read
// counts as live, because cleaning a running browser's files corrupts them.
bool BrowserCatalogue::lockIsLive(Sandbox& sandbox, const QString& lockPath)
{
    const std::optional<QString> target = sandbox.destinationOfSymbolicLink(lockPath);
    if (!target) // no lock at all, or something there that cannot be read as one
        return !sandbox.fileAttributes(lockPath).isEmpty();
    const qsizetype separator =
        std::max(target->lastIndexOf(QLatin1Char('-')), target->lastIndexOf(QLatin1Char('+')));
    bool isNumber = false;
    const int pid = target->mid(separator + 1).toInt(&isNumber);
    if (!isNumber || pid <= 0)
        return true;
    return ::kill(pid, 0) == 0 || errno == EPERM;
}
