#include "sandbox/Sandbox.h"

#include "platform/AtomicFile.h"
#include "platform/PathLayout.h"
#include "platform/PropertyList.h"
#include "platform/SettingsKeys.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"
#include "sandbox/JsonKeys.h"
#include "sandbox/LevelDbStore.h"
#include "sandbox/ProblemReport.h"
#include "sandbox/RemovalPreview.h"
#include "sandbox/SecureDelete.h"
#include "sandbox/Sqlite.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kSandboxDenial = QStringLiteral("Corvella Sandbox has denied access to %1");
const QString kWriteDenial = QStringLiteral("Cookie Sandbox has denied access to %1");
const QString kSparedFolder = QStringLiteral("com.apple.SafariBookmarksSyncAgent");
const char* const kDatabaseCompanions[] = {"-journal", "-wal", "-shm"};

bool hasDotComponent(const QString& path)
{
    if (path.contains(QChar(0)))
        return true;
    const QStringList parts = path.split(QLatin1Char('/'));
    return parts.contains(QStringLiteral(".")) || parts.contains(QStringLiteral(".."));
}

std::optional<struct stat> lstatOf(const QString& path)
{
    struct stat st
    {};
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return std::nullopt;
    return st;
}

std::optional<QByteArray> readFile(const QString& path)
{
    return AtomicFile::read(path);
}

bool existsFollowingLinks(const QString& path)
{
    struct stat st
    {};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0;
}

// The bytes of a file, or of every file below a folder; links count as themselves.
qint64 sizeBelow(const QString& path)
{
    struct stat st
    {};
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return 0;
    if (!S_ISDIR(st.st_mode))
        return st.st_size;
    qint64 total = 0;
    for (const QString& name :
         QDir(path).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        total += sizeBelow(path + QLatin1Char('/') + name);
    return total;
}

QDateTime fromTimespec(const timespec& ts)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000, Qt::UTC);
}

QString fileType(mode_t mode)
{
    if (S_ISDIR(mode))
        return QStringLiteral("NSFileTypeDirectory");
    if (S_ISREG(mode))
        return QStringLiteral("NSFileTypeRegular");
    if (S_ISLNK(mode))
        return QStringLiteral("NSFileTypeSymbolicLink");
    if (S_ISSOCK(mode))
        return QStringLiteral("NSFileTypeSocket");
    if (S_ISCHR(mode))
        return QStringLiteral("NSFileTypeCharacterSpecial");
    if (S_ISBLK(mode))
        return QStringLiteral("NSFileTypeBlockSpecial");
    return QStringLiteral("NSFileTypeUnknown");
}

} // namespace

Sandbox::Sandbox(const SandboxServices& services) : m_services(services) {}

void Sandbox::replaceFile(const QString& native, const QByteArray& bytes) const
{
    const QString error = AtomicFile::write(native, bytes, 0600);
    if (!error.isEmpty())
        problem(QStringLiteral("Corvella could not write %1 (%2); it was left as it was").arg(native, error));
}

void Sandbox::problem(const QString& line) const
{
    m_services.log.log(line);
    if (m_services.problems)
        m_services.problems->add(line);
}

QString Sandbox::checkForUserDirectory(const QString& path) const
{
    if (!path.startsWith(QLatin1Char('~')))
        return path;
    return m_services.defaults.stringForKey(SettingsKeys::userFolder).value_or(QString()) + path.mid(1);
}

std::optional<QString> Sandbox::childPath(const QString& base, const QString& component) const
{
    if (component.isEmpty() || component == QLatin1String(".") || component == QLatin1String("..") ||
        component.contains(QLatin1Char('/')) || component.contains(QChar(0))) {
        m_services.log.log(
            QStringLiteral("Corvella skipped the unsafe name \"%1\" below %2").arg(component, base));
        return std::nullopt;
    }
    return base.endsWith(QLatin1Char('/')) ? QString(base + component)
                                           : QString(base + QLatin1Char('/') + component);
}

bool Sandbox::insideHome(const QString& nativePath) const
{
    const QString home = QFileInfo(checkForUserDirectory(QStringLiteral("~"))).canonicalFilePath();
    // "~/" names the home folder itself, whose parent is outside.
    const QString parent =
        QFileInfo(QFileInfo(QDir::cleanPath(nativePath)).absolutePath()).canonicalFilePath();
    if (home.isEmpty() || parent.isEmpty())
        return false;
    return parent == home || parent.startsWith(home + QLatin1Char('/'));
}

// A browser's data or cache root that the user linked elsewhere (~/.cache on another disk) is still
// the browser's: its target counts when it is a folder the user owns. It is resolved once; links
// below the root are never followed, so the path's folder must resolve to exactly the root's
// target followed by the rest of the path.
bool Sandbox::insideALinkedRoot(const QString& nativePath) const
{
    const QString home = checkForUserDirectory(QStringLiteral("~"));
    const QString parent = QFileInfo(QDir::cleanPath(nativePath)).absolutePath();
    const QString resolvedParent = QFileInfo(parent).canonicalFilePath();
    if (home.isEmpty() || resolvedParent.isEmpty())
        return false;
    for (const QString& root : m_services.browserRoots + PathLayout::roots(layout(), home)) {
        if (parent != root && !parent.startsWith(root + QLatin1Char('/')))
            continue;
        const QString target = QFileInfo(root).canonicalFilePath();
        struct stat st
        {};
        if (target.isEmpty() || ::stat(QFile::encodeName(target).constData(), &st) != 0 ||
            !S_ISDIR(st.st_mode) || st.st_uid != ::getuid())
            return false;
        return resolvedParent == target + parent.mid(root.size());
    }
    return false;
}

bool Sandbox::envelope(const QString& path, Effect effect, const std::function<void(const QString&)>& action,
                       const QString& denial)
{
    if (effect != Effect::Reads && m_services.stop->stopped())
        return false; // the browser started again: its files are its own now
    AppSandboxFileAccess access =
        AppSandboxFileAccess::fileAccess({m_services.defaults, m_services.bookmarks, m_services.panel});
    const QString expanded = checkForUserDirectory(path);
    if (hasDotComponent(expanded)) {
        m_services.log.log(
            QStringLiteral("Corvella skipped %1: a path with \".\" or \"..\" in it").arg(expanded));
        return false;
    }
    const QString home = checkForUserDirectory(QStringLiteral("~"));
    const std::optional<QString> native = nativePath(expanded);
    if (!native)
        return false; // no counterpart on this system: nothing to find, nothing to do

    if (effect != Effect::Reads) {
        // A link is removed as a link wherever it points; what is written through a link must
        // land in the home folder too.
        const bool outside = !(insideHome(*native) || insideALinkedRoot(*native)) ||
                             (effect == Effect::Writes && QFileInfo(*native).isSymLink() &&
                              !insideHome(QFileInfo(*native).canonicalFilePath()));
        if (outside) {
            if (QFileInfo(QFileInfo(*native).absolutePath()).exists())
                problem(QStringLiteral("Corvella refused to change %1: it lies outside the home folder")
                            .arg(*native));
            return false;
        }
    }

    // Denials name the file as it is on this system, not its reference path.
    const QString shown = native->isEmpty() ? expanded : *native;
    if (home.isEmpty()) {
        m_services.log.log(denial.arg(shown));
        return false;
    }
    const bool granted = access.accessFilePath(home, true, [&] { action(*native); });
    if (!granted)
        m_services.log.log(denial.arg(shown));
    return granted;
}

bool Sandbox::enableAccess()
{
    const bool granted = hasAccess();
    if (!granted)
        m_services.log.log(kSandboxDenial.arg(checkForUserDirectory(QStringLiteral("~"))));
    return granted;
}

bool Sandbox::hasAccess()
{
    const QString home = checkForUserDirectory(QStringLiteral("~"));
    if (home.isEmpty())
        return false;
    return AppSandboxFileAccess::fileAccess({m_services.defaults, m_services.bookmarks, m_services.panel})
        .accessFilePath(home, true, [] {});
}

// Each file of a tree is let through only while the browser has not started again (when the gate
// heeds the run's stop), and is overwritten first when the user chose secure delete.
FileTree::FileGate Sandbox::wipeGate(bool heedTheStop) const
{
    const bool wipe = m_services.defaults.boolForKey(SettingsKeys::secureDeleteData);
    heedTheStop = heedTheStop && m_services.stop->armed();
    if (!wipe && !heedTheStop)
        return {}; // every file may go, and the tree is walked without building each one's path
    return [this, wipe, heedTheStop](int dirFd, const char* name, const std::string& nativePath) {
        if (heedTheStop && m_services.stop->stopped())
            return false;
        if (!wipe)
            return true;
        const QString path = QFile::decodeName(nativePath.c_str());
        switch (SecureDelete::wipeAt(dirFd, QByteArray(name))) {
        case SecureDelete::Outcome::Wiped:
        case SecureDelete::Outcome::Nothing:
            return true;
        case SecureDelete::Outcome::SharedByLinks:
            m_services.log.log(QStringLiteral("Corvella removed %1 without overwriting it: other hard links "
                                              "share its data, and overwriting would destroy them")
                                   .arg(path));
            return true;
        case SecureDelete::Outcome::Failed:
            break;
        }
        problem(QStringLiteral("Corvella kept %1: it could not be overwritten").arg(path));
        return false;
    };
}

void Sandbox::removeNative(const QString& nativePath)
{
    const auto st = lstatOf(nativePath);
    const FileTree::FileGate gate = wipeGate();
    if (st && (!FileTree::removeItem(nativePath, gate) || !S_ISREG(st->st_mode)))
        return;
    // A database's journal, write-ahead log and shared memory would otherwise outlive it; also when
    // it is gone already (a run killed between the two): SQLite would play a journal left behind
    // into the next database of that name. Once the database went, they go with it even if the
    // browser was seen starting meanwhile.
    const FileTree::FileGate companionGate = st ? wipeGate(false) : gate;
    for (const char* suffix : kDatabaseCompanions)
        FileTree::removeItem(nativePath + QLatin1String(suffix), companionGate);
}

void Sandbox::remove(const QString& path)
{
    if (path.isEmpty())
        return;
    envelope(
        path, Effect::Removes,
        [&](const QString& native) {
            if (!m_services.preview)
                removeNative(native);
            else if (lstatOf(native)) // a link is removed whether or not its target exists
                m_services.preview->record(QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "remove")),
                                           native, sizeBelow(native), QString());
        },
        kSandboxDenial);
}

void Sandbox::removeFiles(const QStringList& paths)
{
    for (const QString& path : paths)
        remove(path);
}

void Sandbox::removeRecursiveSubFilesFor(const QString& path)
{
    if (path.isEmpty())
        return;
    envelope(
        path, Effect::Removes,
        [&](const QString& native) {
            if (native.contains(kSparedFolder))
                return;
            if (m_services.preview) {
                if (QFileInfo(native).isDir())
                    m_services.preview->record(
                        QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "remove files below")), native,
                        sizeBelow(native), QString());
                return;
            }
            FileTree::removeFilesBelow(native, kSparedFolder, wipeGate());
        },
        kSandboxDenial);
}

std::optional<QString> Sandbox::contentsOf(const QString& path)
{
    std::optional<QString> result = QString(QLatin1String(""));
    if (path.isEmpty())
        return result;
    envelope(
        path, Effect::Reads,
        [&](const QString& native) {
            result.reset();
            const auto bytes = readFile(native);
            if (!bytes)
                return;
            auto decode = QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
            const QString text = decode(*bytes);
            if (!decode.hasError())
                result = text;
        },
        kSandboxDenial);
    return result;
}

QStringList Sandbox::folderContentsOf(const QString& path)
{
    QStringList names;
    if (path.isEmpty())
        return names;
    envelope(
        path, Effect::Reads,
        [&](const QString& native) {
            DIR* dir = ::opendir(QFile::encodeName(native).constData());
            if (!dir)
                return;
            while (const dirent* entry = ::readdir(dir)) {
                const char* name = entry->d_name;
                if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
                    continue;
                names.append(QFile::decodeName(name));
            }
            ::closedir(dir);
        },
        kSandboxDenial);
    return names;
}

bool Sandbox::fileExists(const QString& path)
{
    bool exists = false;
    if (path.isEmpty())
        return exists;
    envelope(
        path, Effect::Reads, [&](const QString& native) { exists = existsFollowingLinks(native); },
        kSandboxDenial);
    return exists;
}

bool Sandbox::fileIsDirectory(const QString& path)
{
    bool directory = false;
    // An empty path is not turned away up front; it names nothing.
    if (path.isEmpty())
        return directory;
    envelope(
        path, Effect::Reads, [&](const QString& native) { directory = QFileInfo(native).isDir(); },
        kSandboxDenial);
    return directory;
}

QVariantMap Sandbox::fileAttributes(const QString& path)
{
    QVariantMap attributes;
    if (path.isEmpty())
        return attributes;
    envelope(
        path, Effect::Reads,
        [&](const QString& native) {
            const auto st = lstatOf(native);
            if (!st)
                return;
            attributes.insert(QStringLiteral("NSFileType"), fileType(st->st_mode));
            attributes.insert(QStringLiteral("NSFileSize"), qint64(st->st_size));
            attributes.insert(QStringLiteral("NSFilePosixPermissions"), qint64(st->st_mode & 07777));
            attributes.insert(QStringLiteral("NSFileOwnerAccountID"), qint64(st->st_uid));
            attributes.insert(QStringLiteral("NSFileGroupOwnerAccountID"), qint64(st->st_gid));
            attributes.insert(QStringLiteral("NSFileReferenceCount"), qint64(st->st_nlink));
            attributes.insert(QStringLiteral("NSFileSystemNumber"), qint64(st->st_dev));
            attributes.insert(QStringLiteral("NSFileSystemFileNumber"), qint64(st->st_ino));
            attributes.insert(QStringLiteral("NSFileModificationDate"), fromTimespec(st->st_mtim));
            attributes.insert(QStringLiteral("NSFileCreationDate"),
                              QFileInfo(native).birthTime().isValid() ? QFileInfo(native).birthTime().toUTC()
                                                                      : fromTimespec(st->st_ctim));
            if (const passwd* pw = ::getpwuid(st->st_uid))
                attributes.insert(QStringLiteral("NSFileOwnerAccountName"), QString::fromUtf8(pw->pw_name));
            if (const group* gr = ::getgrgid(st->st_gid))
                attributes.insert(QStringLiteral("NSFileGroupOwnerAccountName"),
                                  QString::fromUtf8(gr->gr_name));
        },
        kSandboxDenial);
    return attributes;
}

std::optional<QString> Sandbox::destinationOfSymbolicLink(const QString& path)
{
    std::optional<QString> target;
    if (path.isEmpty())
        return target;
    envelope(
        path, Effect::Reads,
        [&](const QString& native) {
            char buffer[PATH_MAX];
            const ssize_t length = ::readlink(QFile::encodeName(native).constData(), buffer, sizeof buffer);
            if (length >= 0)
                target = QFile::decodeName(QByteArray(buffer, length));
        },
        kSandboxDenial);
    return target;
}

QVariantMap Sandbox::dictionaryWithContentsOfFile(const QString& path)
{
    QVariantMap dictionary;
    if (path.isEmpty())
        return dictionary;
    envelope(
        path, Effect::Reads,
        [&](const QString& native) {
            const auto value = PropertyList::parse(readFile(native).value_or(QByteArray()));
            if (value && value->typeId() == QMetaType::QVariantMap)
                dictionary = value->toMap();
        },
        kSandboxDenial);
    return dictionary;
}

std::optional<QByteArray> Sandbox::dataWithContentsOfFile(const QString& path)
{
    std::optional<QByteArray> data = QByteArray();
    if (path.isEmpty())
        return data;
    envelope(
        path, Effect::Reads, [&](const QString& native) { data = readFile(native); }, kSandboxDenial);
    return data;
}

void Sandbox::write(const QVariant& object, const QString& ToFile)
{
    if (ToFile.isEmpty())
        return;
    std::optional<QByteArray> bytes;
    switch (object.typeId()) {
    case QMetaType::QVariantMap:
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        bytes = PropertyList::toXml(object);
        break;
    case QMetaType::QByteArray:
        bytes = object.toByteArray();
        break;
    case QMetaType::QString:
        bytes = object.toString().toUtf8();
        break;
    default:
        break;
    }
    if (!bytes)
        return;
    envelope(
        ToFile, Effect::Writes,
        [&](const QString& native) {
            if (m_services.preview) {
                m_services.preview->record(QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "write")),
                                           native, bytes->size(), QString());
                return;
            }
            replaceFile(native, *bytes);
        },
        kWriteDenial);
}

void Sandbox::createDirectory(const QString& path)
{
    if (path.isEmpty())
        return;
    // One level at a time, so each new folder's parent exists and is checked like any write target.
    const QString native = nativePath(path).value_or(QString());
    const QString home = checkForUserDirectory(QStringLiteral("~"));
    if (native.isEmpty() || home.isEmpty() || !native.startsWith(home + QLatin1Char('/')))
        return;
    const QStringList parts = native.mid(home.size() + 1).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QString level = home;
    for (const QString& part : parts) {
        level += QLatin1Char('/') + part;
        if (QFileInfo(level).isDir())
            continue;
        const bool made = envelope(
            level, Effect::Writes,
            [&](const QString& folder) {
                if (m_services.preview)
                    m_services.preview->record(
                        QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "create folder")), folder, 0,
                        QString());
                else if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0 && errno != EEXIST)
                    problem(QStringLiteral("Corvella could not create the folder %1").arg(folder));
            },
            kWriteDenial);
        if (!made || m_services.preview)
            return;
    }
}

// The sites' parts only: what "net" learnt of servers goes, the user's prediction setting
// ("network_prediction_options") stays.
void Sandbox::removeExtraChromeCacheData(const QString& path)
{
    removeJsonKeys(path, {{QStringLiteral("net"), QStringLiteral("http_server_properties")},
                          {QStringLiteral("net"), QStringLiteral("network_qualities")},
                          {QStringLiteral("dns_prefetching")}});
}

// The per-site zoom levels and permission exceptions; the default zoom and the default permissions
// are the user's settings and stay.
void Sandbox::removeChromeZoomSettings(const QString& path)
{
    removeJsonKeys(path, {{QStringLiteral("partition"), QStringLiteral("per_host_zoom_levels")},
                          {QStringLiteral("profile"), QStringLiteral("content_settings"),
                           QStringLiteral("exceptions")}});
}

void Sandbox::removeJsonKeys(const QString& path, const QList<QStringList>& keyPaths)
{
    QStringList keys;
    for (const QStringList& keyPath : keyPaths)
        keys.append(u'"' + keyPath.join(u'.') + u'"');
    rewriteJson(path, QStringLiteral("without ") + keys.join(QStringLiteral(", ")),
                [&](const QByteArray& text) { return JsonKeys::without(text, keyPaths); });
}

void Sandbox::removeJsonMembers(const QString& path, const QList<QStringList>& objectPaths,
                                const std::function<bool(const QString& key)>& removes)
{
    QStringList paths;
    for (const QStringList& objectPath : objectPaths)
        paths.append(u'"' + objectPath.join(u'.') + u'"');
    rewriteJson(path, QStringLiteral("without the sites' entries of ") + paths.join(QStringLiteral(", ")),
                [&](const QByteArray& text) { return JsonKeys::withoutMembers(text, objectPaths, removes); });
}

void Sandbox::rewriteJson(const QString& path, const QString& change,
                          const std::function<std::optional<QByteArray>(const QByteArray&)>& rewrite)
{
    if (path.isEmpty())
        return;
    envelope(
        path, Effect::Writes,
        [&](const QString& native) {
            const std::optional<QByteArray> text = AtomicFile::read(native);
            if (!text)
                return;
            const std::optional<QByteArray> rewritten = rewrite(*text);
            if (!rewritten) {
                problem(QStringLiteral("Corvella left %1 as it was: it is not UTF-8 text").arg(native));
                return;
            }
            if (m_services.preview) {
                m_services.preview->record(QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "change")),
                                           native, rewritten->size(), change);
                return;
            }
            replaceFile(native, *rewritten);
        },
        kSandboxDenial);
}

void Sandbox::removeLevelDbKeys(const QString& folder, const LevelDbStore::KeyFilter& filter)
{
    if (folder.isEmpty())
        return;
    envelope(
        folder, Effect::Writes,
        [&](const QString& native) {
            if (!QFileInfo(native).isDir())
                return;
            QString error;
            const std::optional<int> count =
                LevelDbStore::removeKeys(native, filter, m_services.preview, &error);
            if (!count)
                problem(QStringLiteral("Corvella left %1 as it was: %2").arg(native, error));
            else if (m_services.preview && *count > 0)
                m_services.preview->record(QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "change")),
                                           native, sizeBelow(native), QStringLiteral("%1 keys").arg(*count));
        },
        kSandboxDenial);
}

Sandbox Sandbox::forRoots(const QStringList& roots) const
{
    SandboxServices services = m_services;
    services.browserRoots.clear();
    for (const QString& root : roots) {
        if (const std::optional<QString> native = nativePath(root))
            services.browserRoots.append(*native);
    }
    return Sandbox(services);
}

QString Sandbox::layout() const
{
    return m_services.defaults.stringForKey(SettingsKeys::browserLayout)
        .value_or(PathLayout::platformDefault());
}

std::optional<QString> Sandbox::nativePath(const QString& path) const
{
    return PathLayout::nativePath(layout(), checkForUserDirectory(QStringLiteral("~")),
                                  checkForUserDirectory(path));
}

bool Sandbox::runSql(const QString& sql, const QString& onfile)
{
    QList<QVariantMap> rows;
    return onfile.isEmpty() || runSqlFor(sql, onfile, rows);
}

bool Sandbox::runSqlThenVacuum(const QStringList& statements, const QString& onfile)
{
    if (!fileExists(onfile))
        return true;
    for (const QString& statement : statements) {
        if (!runSql(statement, onfile))
            return false;
    }
    return runSql(QStringLiteral("VACUUM;"), onfile);
}

void Sandbox::reportKept(const QString& path, const QStringList& sites)
{
    if (!m_services.preview || sites.isEmpty())
        return;
    envelope(
        path, Effect::Reads,
        [&](const QString& native) {
            if (existsFollowingLinks(native))
                m_services.preview->record(QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "keep")),
                                           native, sizeBelow(native), sites.join(QStringLiteral(", ")));
        },
        kSandboxDenial);
}

std::optional<QList<QVariantMap>> Sandbox::returnArrayFromSql(const QString& sql, const QString& onfile)
{
    if (onfile.isEmpty())
        return std::nullopt;
    QList<QVariantMap> rows;
    runSqlFor(sql, onfile, rows);
    return rows;
}

bool Sandbox::runSqlFor(const QString& sql, const QString& onfile, QList<QVariantMap>& rows)
{
    bool ran = true;
    const bool granted = envelope(
        onfile, Effect::Writes,
        [&](const QString& native) {
            if (!existsFollowingLinks(native))
                return; // a database is never created
            if (!Sqlite::isDatabaseFile(native)) {
                m_services.log.log(
                    QStringLiteral("Corvella left %1 alone: it is not a SQLite database").arg(native));
                return;
            }
            // SQLite would open a file it cannot write read-only, and leave companion files behind
            // with the file's permissions, which later writers (the browser) could not open.
            if (!m_services.preview && ::access(QFile::encodeName(native).constData(), W_OK) != 0) {
                problem(QStringLiteral("Corvella could not change %1 (%2); it was left as it was")
                            .arg(native, QString::fromLocal8Bit(std::strerror(errno))));
                ran = false;
                return;
            }
            // A preview opens the database read-only and runs only what SQLite says cannot change it.
            Sqlite db;
            if (!db.openExisting(native, m_services.preview != nullptr)) {
                problem(QStringLiteral("Corvella could not open %1; it was left as it was").arg(native));
                ran = false;
                return;
            }
            if (m_services.preview && !db.isReadOnly(sql)) {
                if (!db.couldChangeRows(sql))
                    return; // nothing there to remove: a preview does not list it
                m_services.preview->record(QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "change")),
                                           native, sizeBelow(native), sql);
                return;
            }
            // A long statement (VACUUM rewrites the whole file) must not hold the database from a
            // browser that starts meanwhile; SQLite undoes what it began.
            db.interruptWhen([this] { return m_services.stop->stopped(); });
            const auto result = db.executeQuery(sql);
            if (db.wasInterrupted()) {
                ran = false;
            } else if (db.failedOnTheFile()) {
                problem(QStringLiteral("Corvella could not change %1 (%2); it was left as it was")
                            .arg(native, db.errorMessage()));
                ran = false;
            }
            rows = result.value_or(QList<QVariantMap>());
        },
        kSandboxDenial);
    return granted && ran;
}
