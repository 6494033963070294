#pragma once

#include "platform/LoginItems.h"

class SystemLog;

// Login items as XDG autostart entries: "IDENTIFIER.desktop" in the autostart folder of the user's
// configuration folder, which every desktop of the XDG family starts at login.
class XdgAutostartLoginItems final : public LoginItems
{
public:
    // `configFolder`: "$XDG_CONFIG_HOME", else "~/.config" of the real home.
    XdgAutostartLoginItems(const QString& configFolder, SystemLog& log);
    bool setEnabled(const QString& identifier, const QUrl& url, bool enabled) override;

    QString entryPath(const QString& identifier) const;
    // The entry that starts the program at `path`.
    static QByteArray entryFor(const QString& path);

private:
    QString m_autostartFolder;
    SystemLog& m_log;
};
