#pragma once

#include "platform/CloudKeyValueStore.h"

#include <QFileSystemWatcher>
#include <QMap>
#include <QMutex>
#include <QTimer>

#include <optional>

class SystemLog;
class UserDefaults;

// The shared settings as one property list, "corvella-settings.plist", in a folder the user already syncs
// between machines (Syncthing, Nextcloud, a network share), chosen under "syncFolder". No folder chosen
// means no account. Each value carries the time it was set, and whoever reads the file merges by key,
// newest first; so the copies a sync tool makes when two machines wrote at once are merged back and
// removed, and two writers of one user (serialised by a lock in the user's settings folder) lose nothing.
// The file is watched; nothing polls. Only a folder inside the home folder is used: Corvella writes
// nowhere else. What is in the folder is outside input: only regular files of the user, never through
// a link, at most kMaxFileBytes, nested no deeper than property lists allow; a store that does not read
// is left as it is. Which keys count, and of what kind, is for the reader of dictionaryRepresentation().
class SyncFolderKeyValueStore final : public CloudKeyValueStore
{
    Q_OBJECT
public:
    static inline const QString kFileName = QStringLiteral("corvella-settings.plist");
    // Ten settings take a few kilobytes.
    static constexpr qint64 kMaxFileBytes = 1024 * 1024;

    SyncFolderKeyValueStore(UserDefaults& defaults, SystemLog& log, const QString& home,
                            QObject* parent = nullptr);
    ~SyncFolderKeyValueStore() override;

    QVariantMap dictionaryRepresentation() const override;
    void setObject(const QVariant& value, const QString& forKey) override;
    bool synchronize() override;
    void accountStatus(std::function<void(AccountStatus)> completion) override;

    // Whether a chosen folder ("~/" allowed) can hold the store: an existing folder inside the home folder.
    struct FolderCheck
    {
        enum Kind
        {
            None,
            NotAFullPath,
            Missing,
            OutsideHome,
            Usable
        } kind;
        QString path; // the folder itself when usable, else the chosen path with "~" expanded
    };
    static FolderCheck checkFolder(const QString& chosen, const QString& home);

    struct Entry
    {
        QVariant value;
        qint64 modified = 0; // ms since the epoch
        bool operator==(const Entry& other) const;
    };
    using Entries = QMap<QString, Entry>;
    // The values of a store file's bytes with the time each was set; no value when they are not a store.
    static std::optional<Entries> parseEntries(const QByteArray& bytes);

private:
    // The stored choice, checked; what makes it unusable is logged (once).
    FolderCheck chosenFolder();
    static std::optional<Entries> readEntries(const QString& path, QString* problem);
    static QByteArray serialized(const Entries& entries);
    static void mergeInto(Entries& into, const Entries& from);
    void watch(const QString& folder);
    void logOnce(const QString& line);

    UserDefaults& m_defaults;
    SystemLog& m_log;
    QString m_home;
    QString m_lockPath;
    mutable QMutex m_mutex;
    Entries m_entries;
    QString m_watchedFolder;
    QFileSystemWatcher m_watcher;
    QTimer m_settle; // a sync tool writes in several steps: read once they are done
    QString m_lastLogged;
};
