#include "core/BrowserCatalogue.h"

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

const QString kChromeLocalState = QStringLiteral("~/Library/Application Support/Google/Chrome/Local State");
const QString kChromiumLocalState = QStringLiteral("~/Library/Application Support/Chromium/Local State");

} // namespace

QString BrowserCatalogue::chromiumDataRoot(const QString& browser)
{
    if (browser == googleChrome)
        return QStringLiteral("~/Library/Application Support/Google/Chrome");
    if (browser == chromium)
        return QStringLiteral("~/Library/Application Support/Chromium");
    if (browser == opera)
        return operaDataRoot;
    return QString();
}

QString BrowserCatalogue::chromiumCacheRoot(const QString& browser)
{
    if (browser == googleChrome)
        return QStringLiteral("~/Library/Caches/Google/Chrome");
    if (browser == chromium)
        return QStringLiteral("~/Library/Caches/Chromium");
    if (browser == opera)
        return QStringLiteral("~/Library/Caches/com.operasoftware.Opera");
    return QString();
}

const QStringList& BrowserCatalogue::detectionOrder()
{
    static const QStringList order{safariID, googleChromeID, chromiumID, firefoxID, operaID};
    return order;
}

const QStringList& BrowserCatalogue::tileOrder()
{
    static const QStringList order{safari, firefox, googleChrome, chromium, opera};
    return order;
}

BrowserCatalogue::BrowserCatalogue(Workspace& workspace, UserDefaults& defaults, Sandbox& sandbox,
                                   QObject* parent)
    : QObject(parent), m_workspace(workspace), m_defaults(defaults), m_sandbox(sandbox)
{}

QString BrowserCatalogue::browserIDFor(const QString& name)
{
    // Tile order; a prefix test, so a disabled tile's name maps to its browser too.
    static const QList<std::pair<QString, QString>> prefixes{{safari, safariID},
                                                             {firefox, firefoxID},
                                                             {googleChrome, googleChromeID},
                                                             {chromium, chromiumID},
                                                             {opera, operaID}};
    for (const auto& [prefix, id] : prefixes) {
        if (name.startsWith(prefix))
            return id;
    }
    return QString();
}

QString BrowserCatalogue::browserForID(const QString& bundleIdentifier)
{
    for (const QString& browser : tileOrder()) {
        if (browserIDFor(browser) == bundleIdentifier)
            return browser;
    }
    return QString();
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
    // Opera ships under several application names; only its identifier is stable.
    if (bundleIdentifier == operaID)
        return opera;
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
    return profilesIn(m_sandbox, browser);
}

QVariantMap BrowserCatalogue::profilesIn(Sandbox& sandbox, const QString& browser)
{
    const QString localState = browser == googleChrome ? kChromeLocalState : kChromiumLocalState;
    const std::optional<QString> text = sandbox.contentsOf(localState);
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
    const QString root = browser == firefox ? firefoxProfilesRoot : chromiumDataRoot(browser);
    if (root.isEmpty())
        return false;
    for (const PathLayout::Install install : m_sandbox.installsOf(root)) {
        Sandbox sandbox = m_sandbox.forInstall(install);
        if (browser != firefox) {
            if (lockIsLive(sandbox, root + QStringLiteral("/SingletonLock")))
                return true;
            continue;
        }
        for (const QString& profile : firefoxProfiles(sandbox)) {
            const QString folder =
                profile.startsWith(QLatin1Char('/')) ? profile : firefoxProfilesRoot + profile;
            if (lockIsLive(sandbox, folder + QStringLiteral("/lock")))
                return true;
        }
    }
    return false;
}

QStringList BrowserCatalogue::firefoxProfiles()
{
    return firefoxProfiles(m_sandbox);
}

QStringList BrowserCatalogue::firefoxProfiles(Sandbox& sandbox)
{
    QStringList profiles;
    for (const QString& name : sandbox.folderContentsOf(firefoxProfilesRoot)) {
        const std::optional<QString> folder = sandbox.childPath(firefoxProfilesRoot, name);
        // The profiles root also holds profiles.ini, crash reports and pending pings.
        if (folder && (sandbox.fileExists(*folder + QStringLiteral("/prefs.js")) ||
                       sandbox.fileExists(*folder + QStringLiteral("/times.json"))))
            profiles.append(name);
    }
    profiles.sort();
    for (const ProfileElsewhere& elsewhere : firefoxProfilesElsewhere(sandbox)) {
        if (elsewhere.inside)
            profiles.append(elsewhere.path);
    }
    return profiles;
}

QList<BrowserCatalogue::ProfileElsewhere> BrowserCatalogue::firefoxProfilesElsewhere(Sandbox& sandbox)
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
            sandbox.contentsOf(firefoxProfilesRoot + QLatin1String(file)).value_or(QString());
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
