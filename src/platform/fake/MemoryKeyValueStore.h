#pragma once

#include "platform/CloudKeyValueStore.h"

#include <QTimer>

// A store held in memory with the account status a test gives.
class MemoryKeyValueStore final : public CloudKeyValueStore
{
    Q_OBJECT
public:
    QVariantMap dictionaryRepresentation() const override { return values; }
    void setObject(const QVariant& value, const QString& forKey) override { values.insert(forKey, value); }
    bool synchronize() override { return true; }
    void accountStatus(std::function<void(AccountStatus)> completion) override
    {
        QTimer::singleShot(0, this, [this, completion] { completion(status); });
    }

    QVariantMap values;
    AccountStatus status = AccountStatus::Available;
};
