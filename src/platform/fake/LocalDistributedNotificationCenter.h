#pragma once

#include "platform/DistributedNotificationCenter.h"

#include <QList>
#include <QPair>

// Delivers posts to this process only, and keeps them.
class LocalDistributedNotificationCenter final : public DistributedNotificationCenter
{
    Q_OBJECT
public:
    void postNotificationName(const QString& name, const QString& object) override
    {
        posted.append({name, object});
        emit notificationPosted(name, object);
    }

    QList<QPair<QString, QString>> posted;
};
