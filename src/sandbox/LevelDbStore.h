#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

// Editing a LevelDB store (Chromium keeps local storage and service-worker registrations in them) in
// place: the keys a predicate chooses are deleted in one atomic batch. A store that cannot be opened
// (locked by a running browser, damaged, of another format) is left exactly as it is.
namespace LevelDbStore {

// Asked once for each entry, in the store's key order, so a filter may remember what it saw.
using KeyFilter = std::function<bool(const QByteArray& key, const QByteArray& value)>;

// How many keys were (or, counting only, would be) deleted; no value, with the reason in `error`,
// when the store could not be opened or written.
std::optional<int> removeKeys(const QString& folder, const KeyFilter& remove, bool countOnly,
                              QString* error = nullptr);

} // namespace LevelDbStore
