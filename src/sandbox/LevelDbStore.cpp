#include "sandbox/LevelDbStore.h"

#include <QDir>
#include <QFile>
#include <QList>

#include <leveldb/db.h>
#include <leveldb/write_batch.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace LevelDbStore {

std::optional<int> removeKeys(const QString& folder, const KeyFilter& remove, bool countOnly, QString* error)
{
    auto fail = [error](const leveldb::Status& status) -> std::optional<int> {
        if (error)
            *error = QString::fromStdString(status.ToString());
        return std::nullopt;
    };
    const std::string path = QFile::encodeName(folder).toStdString();
    QList<std::pair<std::string, std::string>> kept;
    int count = 0;
    {
        leveldb::Options options;
        options.create_if_missing = false; // a store is never created
        options.paranoid_checks = true;    // a damaged store is left alone rather than "repaired"
        leveldb::DB* raw = nullptr;
        const leveldb::Status opened = leveldb::DB::Open(options, path, &raw);
        if (!opened.ok())
            return fail(opened);
        const std::unique_ptr<leveldb::DB> db(raw);
        const std::unique_ptr<leveldb::Iterator> it(db->NewIterator(leveldb::ReadOptions()));
        for (it->SeekToFirst(); it->Valid(); it->Next()) {
            if (remove(QByteArray(it->key().data(), qsizetype(it->key().size())),
                       QByteArray(it->value().data(), qsizetype(it->value().size()))))
                ++count;
            else
                kept.append({it->key().ToString(), it->value().ToString()});
        }
        if (!it->status().ok())
            return fail(it->status());
    }
    if (countOnly || count == 0)
        return count;
    // Deleting in place would leave each removed key named in a deletion record and in the store's
    // manifest, so the store is written anew with what is kept, beside the old one, and swapped in.
    const std::string fresh = path + ".corvella-new", old = path + ".corvella-old";
    leveldb::DestroyDB(fresh, leveldb::Options());
    {
        leveldb::Options options;
        options.create_if_missing = true;
        options.error_if_exists = true;
        leveldb::DB* raw = nullptr;
        const leveldb::Status created = leveldb::DB::Open(options, fresh, &raw);
        if (!created.ok())
            return fail(created);
        const std::unique_ptr<leveldb::DB> db(raw);
        leveldb::WriteBatch batch;
        for (const auto& [key, value] : kept)
            batch.Put(key, value);
        leveldb::WriteOptions sync;
        sync.sync = true;
        const leveldb::Status written = db->Write(sync, &batch);
        if (!written.ok()) {
            leveldb::DestroyDB(fresh, leveldb::Options());
            return fail(written);
        }
    }
    if (::rename(path.c_str(), old.c_str()) != 0 || ::rename(fresh.c_str(), path.c_str()) != 0) {
        const int saved = errno;
        ::rename(old.c_str(), path.c_str());
        leveldb::DestroyDB(fresh, leveldb::Options());
        if (error)
            *error = QString::fromLocal8Bit(std::strerror(saved));
        return std::nullopt;
    }
    leveldb::DestroyDB(old, leveldb::Options());
    QDir(QFile::decodeName(QByteArray::fromStdString(old))).removeRecursively(); // its LOG files
    return count;
}

} // namespace LevelDbStore
