#include "platform/linux/DesktopEntry.h"

#include <QList>
#include <QStringDecoder>

QString DesktopEntry::iconName(const QByteArray& contents)
{
    bool inMainGroup = false;
    for (const QByteArray& rawLine : contents.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            inMainGroup = line == "[Desktop Entry]";
            continue;
        }
        if (!inMainGroup || !line.startsWith("Icon"))
            continue;
        const QByteArray rest = line.mid(4).trimmed();
        if (!rest.startsWith('='))
            continue;
        // Values are UTF-8; anything else names no icon this program could find.
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString name = utf8(rest.mid(1).trimmed());
        return utf8.hasError() ? QString() : name;
    }
    return QString();
}
