#pragma once

#include "platform/CloudKeyValueStore.h"

#include <QTimer>

// A store held in memory with the account status a test gives; `storeFromElsewhere` plays another machine.
class MemoryKeyValueStore final : public CloudKeyValueStore
{
    Q_OBJECT
public:
    QVariantMap dictionaryRepresentation() const override { return values; }
    void setObject(const QVariant& value, const QString& forKey) override { values.insert(forKey, value); }
    bool synchronize() override
    {
        ++synchronizations;
        return true;
    }
    void accountStatus(std::function<void(AccountStatus)> completion) override
    {
        QTimer::singleShot(0, this, [this, completion] { completion(status); });
    }
    void storeFromElsewhere(const QVariant& value, const QString& key)
    {
        values.insert(key, value);
        emit didChangeExternally();
    }

    QVariantMap values;
    AccountStatus status = AccountStatus::Available;
    int synchronizations = 0;
};
