#include "platform/linux/XdgAutostartLoginItems.h"

#include "platform/AtomicFile.h"
#include "platform/SystemLog.h"

#include <QDir>
#include <QFile>

XdgAutostartLoginItems::XdgAutostartLoginItems(const QString& configFolder, SystemLog& log)
    : m_autostartFolder(configFolder + QStringLiteral("/autostart")), m_log(log)
{}

QString XdgAutostartLoginItems::entryPath(const QString& identifier) const
{
    return m_autostartFolder + QLatin1Char('/') + identifier + QStringLiteral(".desktop");
}

QByteArray XdgAutostartLoginItems::entryFor(const QString& path)
{
    // Exec quoting: the path in double quotes, with '"', '`', '$' and '\' escaped by a backslash,
    // and '%' doubled (field codes).
    QString quoted;
    for (const QChar c : path) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        quoted += c;
        if (c == u'%')
            quoted += u'%';
    }
    // Then the desktop entry's own escape of the backslash in string values.
    quoted.replace(QStringLiteral("\\"), QStringLiteral("\\\\"));
    // The shipped template (validated with the other desktop files) names the helper without a path.
    QFile file(QStringLiteral(":/com.tovanex.Corvella6Helper.desktop"));
    QString entry = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    Q_ASSERT(entry.contains(QStringLiteral("\nExec=corvella-login-helper\n")));
    return entry
        .replace(QStringLiteral("\nExec=corvella-login-helper\n"),
                 QStringLiteral("\nExec=\"%1\"\n").arg(quoted))
        .toUtf8();
}

bool XdgAutostartLoginItems::setEnabled(const QString& identifier, const QUrl& url, bool enabled)
{
    const QString entry = entryPath(identifier);
    if (!enabled) {
        if (!QFile::exists(entry) || QFile::remove(entry))
            return true;
        m_log.log(QStringLiteral("Corvella could not remove its login entry \"%1\".").arg(entry));
        return false;
    }
    const QString program = url.toLocalFile();
    if (!url.isLocalFile() || program.contains(u'\n') || program.contains(u'\r')) { // no line of an entry
        m_log.log(QStringLiteral("Corvella cannot start \"%1\" at login.").arg(url.toString()));
        return false;
    }
    if (!QDir().mkpath(m_autostartFolder)) {
        m_log.log(
            QStringLiteral("Corvella could not make its login entry in \"%1\".").arg(m_autostartFolder));
        return false;
    }
    const QString error = AtomicFile::write(entry, entryFor(program), 0644);
    if (!error.isEmpty())
        m_log.log(QStringLiteral("Corvella could not write its login entry: %1").arg(error));
    return error.isEmpty();
}
