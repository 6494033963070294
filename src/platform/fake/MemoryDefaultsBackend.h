#pragma once

#include "platform/UserDefaultsBackend.h"

// A defaults store in memory, for tests: it can hold an unreadable domain, and can be changed
// "by another process".
class MemoryDefaultsBackend final : public UserDefaultsBackend
{
    Q_OBJECT
public:
    explicit MemoryDefaultsBackend(std::optional<QVariantMap> stored = QVariantMap(),
                                   QObject* parent = nullptr);

    std::optional<QVariantMap> read() override { return m_stored; }
    bool write(const QVariantMap& domain) override;
    QString quarantine() override;
    void lock() override {}
    void unlock() override {}

    // Another writer replaces the stored domain (no value: it leaves it unreadable).
    void changeExternally(const std::optional<QVariantMap>& stored);
    int writes() const { return m_writes; }
    // While set, every write fails as on a full disk, leaving the stored domain as it was.
    bool failWrites = false;
    QString errorString() const override { return QStringLiteral("No space left on device"); }
    QList<std::optional<QVariantMap>> quarantined() const { return m_quarantined; }

private:
    std::optional<QVariantMap> m_stored;
    QList<std::optional<QVariantMap>> m_quarantined;
    int m_writes = 0;
};
