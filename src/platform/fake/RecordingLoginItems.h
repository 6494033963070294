#pragma once

#include "platform/LoginItems.h"

#include <QList>

// Keeps each registration call and answers as the test says.
class RecordingLoginItems final : public LoginItems
{
public:
    struct Call
    {
        QString identifier;
        QUrl url;
        bool enabled;
    };
    bool setEnabled(const QString& identifier, const QUrl& url, bool enabled) override
    {
        calls.append({identifier, url, enabled});
        return succeeds;
    }

    QList<Call> calls;
    bool succeeds = true;
};
