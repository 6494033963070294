#include "platform/fake/MemoryDefaultsBackend.h"

MemoryDefaultsBackend::MemoryDefaultsBackend(std::optional<QVariantMap> stored, QObject* parent)
    : UserDefaultsBackend(parent), m_stored(std::move(stored))
{}

bool MemoryDefaultsBackend::write(const QVariantMap& domain)
{
    if (failWrites)
        return false;
    m_stored = domain;
    ++m_writes;
    return true;
}

QString MemoryDefaultsBackend::quarantine()
{
    m_quarantined.append(m_stored);
    m_stored = QVariantMap();
    return QStringLiteral("memory-%1").arg(m_quarantined.size());
}

void MemoryDefaultsBackend::changeExternally(const std::optional<QVariantMap>& stored)
{
    m_stored = stored;
    emit changedOnDisk();
}
