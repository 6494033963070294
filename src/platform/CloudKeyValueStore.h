#pragma once

#include <QObject>
#include <QVariantMap>

#include <functional>

// A key-value store the user's machines share, and whether this user has one.
class CloudKeyValueStore : public QObject
{
    Q_OBJECT
public:
    // The values of the platform's cloud account status.
    enum class AccountStatus
    {
        CouldNotDetermine = 0,
        Available = 1,
        Restricted = 2,
        NoAccount = 3
    };

    using QObject::QObject;

    virtual QVariantMap dictionaryRepresentation() const = 0;
    virtual void setObject(const QVariant& value, const QString& forKey) = 0;
    // Saves what was set here and picks up what other machines stored; false when the store cannot be
    // reached (what was set is kept for the next time).
    virtual bool synchronize() = 0;
    // Answers once, later, on this object's thread.
    virtual void accountStatus(std::function<void(AccountStatus)> completion) = 0;

signals:
    // Values stored by another machine arrived.
    void didChangeExternally();
};
