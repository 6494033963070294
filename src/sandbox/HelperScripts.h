#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class Sandbox;
class SystemLog;

// The three shell scripts that clear the parts of Safari's data the cleaners do not reach: carried as
// resources, installed into the scripts folder (never replacing an installed one, which the user may
// have edited), and run there with /bin/sh and HOME set to the real home folder. A run never waits
// for ever: a script that cannot be started answers at once, one that runs too long is stopped.
class HelperScripts
{
public:
    static inline const QString clearCookies = QStringLiteral("clearCookies.sh");
    static inline const QString clearSafariHistory = QStringLiteral("clearSafariHistory.sh");
    static inline const QString clearSafariCache = QStringLiteral("clearSafariCache.sh");
    // On Linux the layout maps it to ~/.local/share/corvella/scripts.
    static inline const QString scriptsFolder =
        QStringLiteral("~/Library/Application Scripts/com.tovanex.Corvella6");
    static constexpr int kTimeoutMs = 120000;

    HelperScripts(Sandbox& sandbox, SystemLog& log, int timeoutMs = kTimeoutMs);

    // True when the script is in the scripts folder, or was installed there now. An unknown name gets
    // the cookie script.
    bool checkForScriptInFolder(const QString& name);
    // The scripts folder on this system, made when missing; no value without access.
    std::optional<QString> folder();
    // The three scripts, cookies first.
    void installAll();
    // Installs the script if needed and runs it without arguments; true when it ran to its end
    // (whatever its exit status), false when it could not be started or was stopped.
    bool executeScript(const QString& name);

private:
    Sandbox& m_sandbox;
    SystemLog& m_log;
    int m_timeoutMs;
};
