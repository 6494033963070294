#pragma once

#include "platform/PathLayout.h"
#include "sandbox/AppSandboxFileAccess.h"
#include "sandbox/FileTree.h"
#include "sandbox/LevelDbStore.h"
#include "sandbox/RunStop.h"

#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <optional>

class ProblemReport;
class RemovalPreview;
class SystemLog;

// The platform services the file layer works with.
struct SandboxServices
{
    UserDefaults& defaults;
    SecurityScopedBookmarks& bookmarks;
    OpenPanel& panel;
    SystemLog& log;
    // When set, removals, writes and changing SQL are reported here instead of done.
    RemovalPreview* preview = nullptr;
    // When set, collects what was refused, kept or could not be written (besides the log).
    ProblemReport* problems = nullptr;
    // The data and cache roots of the browser install this file layer cleans, "~" expanded: a root the
    // user linked elsewhere still counts as the browser's.
    QStringList browserRoots = {};
    // Shared by every copy of the file layer: once a run's browser starts again, nothing is changed.
    std::shared_ptr<RunStop> stop = std::make_shared<RunStop>();
};

// The one door to the disk. Every operation expands "~" to the real home folder, maps the path to
// this system's layout, runs inside the user's grant of the home folder, and answers with a plain
// value: a refusal, a missing file or a failed action gives the operation's empty result.
// It never deletes or writes outside the home folder, and never acts on a path with a "." or ".."
// component.
class Sandbox
{
public:
    explicit Sandbox(const SandboxServices& services);

    QString checkForUserDirectory(const QString& path) const;
    // The base path followed by one name that came from data (a profile, an origin, a listing);
    // no value, and a log line, when the name could step out of the base ("", ".", "..", "/", NUL).
    std::optional<QString> childPath(const QString& base, const QString& component) const;

    bool enableAccess();
    // Like enableAccess, without the denial line: for asking whether access is there.
    bool hasAccess();
    void remove(const QString& path);
    void removeFiles(const QStringList& paths);
    void removeRecursiveSubFilesFor(const QString& path);
    // "" for an empty path or a refusal; no value for a missing file or one that is not UTF-8.
    std::optional<QString> contentsOf(const QString& path);
    QStringList folderContentsOf(const QString& path);
    bool fileExists(const QString& path);
    // Where browsers keep their data here: the settings' layout, else the platform's.
    QString layout() const;
    bool fileIsDirectory(const QString& path);
    QVariantMap fileAttributes(const QString& path);
    // What a symbolic link points to, as written in the link; no value when the path is no link.
    std::optional<QString> destinationOfSymbolicLink(const QString& path);
    QVariantMap dictionaryWithContentsOfFile(const QString& path);
    // Empty bytes for an empty path or a refusal; no value for a missing or unreadable file.
    std::optional<QByteArray> dataWithContentsOfFile(const QString& path);
    // Atomic: readers see the old or the new file. Maps and lists as XML property lists, bytes as
    // they are, strings as UTF-8. An existing file keeps its permissions.
    void write(const QVariant& object, const QString& ToFile);

    // Makes the folder with the folders above it, private to the user, inside the grant.
    void createDirectory(const QString& path);
    // Where the reference path is on this system ("~" expanded, the layout applied); no value when
    // the layout has no counterpart.
    std::optional<QString> nativePath(const QString& path) const;
    // The same file layer for one install of a browser, whose roots these are ("~/..." paths).
    Sandbox forRoots(const QStringList& roots) const;
    // What a run arms so that it changes nothing more once its browser starts again.
    RunStop& runStop() const { return *m_services.stop; }
    // The preview this file layer reports to instead of acting; null for a real run.
    RemovalPreview* preview() const { return m_services.preview; }

    // Deletes the keys (each a path through nested objects) from a JSON file, whenever it exists, and
    // rewrites it compactly and atomically with every other key kept in its order; a file that is not
    // JSON becomes "{}", one that is not UTF-8 text is left as it is (and reported).
    void removeJsonKeys(const QString& path, const QList<QStringList>& keyPaths);
    // The same for the members `removes` picks of the objects at the paths ("*": every member there).
    void removeJsonMembers(const QString& path, const QList<QStringList>& objectPaths,
                           const std::function<bool(const QString& key)>& removes);
    // A Chromium-family "Preferences" file without its network predictions: "net", "dns_prefetching".
    void removeExtraChromeCacheData(const QString& path);
    // A Chromium-family "Preferences" file without its per-site settings: "partition" (zoom levels)
    // and "profile"'s "content_settings".
    void removeChromeZoomSettings(const QString& path);

    // Deletes the entries the filter chooses from the LevelDB store in the folder, in one batch; a store
    // that cannot be opened (a running browser holds it) is left as it is, and logged.
    void removeLevelDbKeys(const QString& folder, const LevelDbStore::KeyFilter& filter);

    // Runs the first statement of the text on the database, if it exists; never creates one. False
    // when it could not run for the file's or the disk's sake (read-only, full, damaged) or was
    // refused; a statement for a table the database lacks, or a missing database, is no failure.
    bool runSql(const QString& sql, const QString& onfile);
    // When the database exists: each statement, then "VACUUM;", so no deleted row lingers in free
    // pages; stops at the first that fails as runSql says (the later ones may count on it).
    bool runSqlThenVacuum(const QStringList& statements, const QString& onfile);
    // In a preview, says that the file or folder keeps these sites' data (the kept sites found there);
    // nothing in a run.
    void reportKept(const QString& path, const QStringList& sites);
    // The rows; empty when the database is missing, the statement fails or access is refused;
    // no value for an empty path.
    std::optional<QList<QVariantMap>> returnArrayFromSql(const QString& sql, const QString& onfile);

private:
    // What the action does to its target: removing a link never touches what it points to.
    enum class Effect
    {
        Reads,
        Removes,
        Writes
    };
    // Runs the action with the native path inside the grant of the home folder; false when it did not run.
    bool envelope(const QString& path, Effect effect, const std::function<void(const QString&)>& action,
                  const QString& denial);
    bool insideHome(const QString& nativePath) const;
    bool insideALinkedRoot(const QString& nativePath) const;
    void problem(const QString& line) const;
    // Replaces a JSON file with its rewrite (atomically; text that is not UTF-8 is left and reported).
    void rewriteJson(const QString& path, const QString& change,
                     const std::function<std::optional<QByteArray>(const QByteArray&)>& rewrite);
    // Replaces the file atomically; a failure leaves it as it was and is reported.
    void replaceFile(const QString& native, const QByteArray& bytes) const;
    void removeNative(const QString& nativePath);
    bool runSqlFor(const QString& sql, const QString& onfile, QList<QVariantMap>& rows);
    FileTree::FileGate wipeGate(bool heedTheStop = true) const;

    SandboxServices m_services;
};
