#include "support/TestHome.h"

#include "platform/SettingsKeys.h"
#include "support/PlistFixtures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

TestHome::TestHome(bool granted, const QString& parent)
    : dir(parent.isEmpty() ? QDir::tempPath() + u"/home-XXXXXX"_s : parent + u"/home-XXXXXX"_s),
      sandbox({t.defaults, bookmarks, panel, t.log})
{
    // The canonical path, so that paths the file layer resolves compare equal.
    t.defaults.setObject(QFileInfo(dir.path()).canonicalFilePath(), SettingsKeys::userFolder);
    t.defaults.setObject(u"macOS"_s, SettingsKeys::browserLayout);
    if (granted) {
        panel.answer(path());
        sandbox.enableAccess();
        panel.requests.clear();
    }
    t.log.clear();
}

QString TestHome::path(const QString& relative) const
{
    const QString home = QFileInfo(dir.path()).canonicalFilePath();
    return relative.isEmpty() ? home : home + QLatin1Char('/') + relative;
}

QString TestHome::file(const QString& relative, const QByteArray& bytes) const
{
    PlistFixtures::writeFile(path(relative), bytes);
    return path(relative);
}

QString TestHome::folder(const QString& relative) const
{
    QDir().mkpath(path(relative));
    return path(relative);
}

QByteArray TestHome::read(const QString& relative) const
{
    return PlistFixtures::readFile(path(relative));
}

bool TestHome::exists(const QString& relative) const
{
    return QFileInfo(path(relative)).exists() || QFileInfo(path(relative)).isSymLink();
}
