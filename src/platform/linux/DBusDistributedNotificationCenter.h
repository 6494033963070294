#pragma once

#include "platform/DistributedNotificationCenter.h"

// Distributed notifications as signals on the session bus: every program of ours that listens
// there hears every post. Without a session bus nothing is delivered, and nothing fails.
class DBusDistributedNotificationCenter final : public DistributedNotificationCenter
{
    Q_OBJECT
public:
    static inline const QString path = QStringLiteral("/com/tovanex/DistributedNotificationCenter");
    static inline const QString interface = QStringLiteral("com.tovanex.DistributedNotificationCenter");
    static inline const QString member = QStringLiteral("Posted");

    explicit DBusDistributedNotificationCenter(QObject* parent = nullptr);
    void postNotificationName(const QString& name, const QString& object) override;

private slots:
    void received(const QString& name, const QString& object);
};
