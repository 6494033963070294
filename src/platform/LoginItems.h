#pragma once

#include <QString>
#include <QUrl>

// The desktop's list of programs started at login.
class LoginItems
{
public:
    virtual ~LoginItems() = default;
    // Starts the helper program at `url`, known by `identifier`, at every login, or no longer;
    // whether that worked.
    virtual bool setEnabled(const QString& identifier, const QUrl& url, bool enabled) = 0;
};
