#include "sandbox/HelperScripts.h"

#include "platform/SystemLog.h"
#include "sandbox/RemovalPreview.h"
#include "sandbox/Sandbox.h"

#include <QFile>
#include <QProcess>

#include <csignal>
#include <unistd.h>

namespace {

QString resourceFor(const QString& name)
{
    if (name == HelperScripts::clearSafariHistory || name == HelperScripts::clearSafariCache)
        return QStringLiteral(":/scripts/") + name;
    return QStringLiteral(":/scripts/") + HelperScripts::clearCookies;
}

} // namespace

HelperScripts::HelperScripts(Sandbox& sandbox, SystemLog& log, int timeoutMs)
    : m_sandbox(sandbox), m_log(log), m_timeoutMs(timeoutMs)
{}

bool HelperScripts::checkForScriptInFolder(const QString& name)
{
    const std::optional<QString> script = m_sandbox.childPath(scriptsFolder, name);
    if (!script)
        return false;
    if (m_sandbox.fileExists(*script))
        return true;
    QFile resource(resourceFor(name));
    if (!resource.open(QIODevice::ReadOnly))
        return false;
    if (!m_sandbox.enableAccess()) {
        m_log.log(QStringLiteral("CorvellaWorker Sandbox has denied access to %1")
                      .arg(m_sandbox.nativePath(*script).value_or(*script)));
        return false;
    }
    m_sandbox.createDirectory(scriptsFolder);
    m_sandbox.write(resource.readAll(), *script);
    return m_sandbox.fileExists(*script) || m_sandbox.preview();
}

std::optional<QString> HelperScripts::folder()
{
    m_sandbox.createDirectory(scriptsFolder);
    if (!m_sandbox.fileIsDirectory(scriptsFolder))
        return std::nullopt;
    return m_sandbox.nativePath(scriptsFolder);
}

void HelperScripts::installAll()
{
    for (const QString& name : {clearCookies, clearSafariHistory, clearSafariCache})
        checkForScriptInFolder(name);
}

bool HelperScripts::executeScript(const QString& name)
{
    checkForScriptInFolder(name);
    const std::optional<QString> script = m_sandbox.childPath(scriptsFolder, name);
    const std::optional<QString> native = script ? m_sandbox.nativePath(*script) : std::nullopt;
    if (!native)
        return false;
    if (RemovalPreview* preview = m_sandbox.preview()) {
        preview->record(QStringLiteral(QT_TRANSLATE_NOOP("RemovalPreview", "run script")), *native, 0,
                        QString());
        return true;
    }
    const QString home = m_sandbox.checkForUserDirectory(QStringLiteral("~"));
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(home);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    // A group of its own, so stopping it stops whatever it started too.
    process.setChildProcessModifier([] { ::setpgid(0, 0); });
    process.start(QStringLiteral("/bin/sh"), {*native});
    if (!process.waitForStarted(5000)) {
        m_log.log(
            QStringLiteral("Corvella could not run the script %1: %2").arg(*native, process.errorString()));
        return false;
    }
    if (!process.waitForFinished(m_timeoutMs)) {
        ::kill(-pid_t(process.processId()), SIGKILL);
        process.kill();
        process.waitForFinished(5000);
        m_log.log(
            QStringLiteral("Corvella stopped the script %1 after %2 s").arg(*native).arg(m_timeoutMs / 1000));
        return false;
    }
    return true;
}
