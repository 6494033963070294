#include "catalogue/BrowserCatalogue.h"
#include "cleaners/PluginCleaner.h"
#include "platform/fake/FakeWorkspace.h"
#include "support/BrowserFixtures.h"
#include "support/TestHome.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestPluginCleaner : public QObject
{
    Q_OBJECT
private slots:
    void flashAndSilverlight_data();
    void flashAndSilverlight();
};

void TestPluginCleaner::flashAndSilverlight_data()
{
    const QString chrome = QLatin1String(BrowserFixtures::kChromeRoot);
    const QString systemFlash = u"Library/Preferences/Macromedia/Flash Player/settings.sol"_s;
    const QString silverlight = u"Library/Application Support/Microsoft/Silverlight/is/store"_s;
    const QStringList pepper{chrome + u"/Default/Pepper Data/Shockwave Flash/x.sol"_s,
                             chrome + u"/Profile 1/Pepper Data/Shockwave Flash/y.sol"_s};
    QTest::addColumn<QString>("browser"); // "" for Silverlight
    QTest::addColumn<QStringList>("gone");
    QTest::addColumn<QStringList>("kept");
    for (const QString& browser : {u"Safari"_s, u"Opera"_s, u"Firefox"_s})
        QTest::addRow("Flash, %s", qPrintable(browser))
            << browser << QStringList{systemFlash} << pepper + QStringList{silverlight};
    QTest::newRow("Flash, Google Chrome: per profile")
        << u"Google Chrome"_s << pepper << QStringList{systemFlash, silverlight};
    QTest::newRow("Silverlight") << QString() << QStringList{silverlight}
                                 << pepper + QStringList{systemFlash};
}

void TestPluginCleaner::flashAndSilverlight()
{
    QFETCH(QString, browser);
    QFETCH(QStringList, gone);
    QFETCH(QStringList, kept);
    TestHome home;
    FakeWorkspace workspace;
    BrowserCatalogue catalogue(workspace, home.t.defaults, home.sandbox);
    BrowserFixtures::localState(home, QLatin1String(BrowserFixtures::kChromeRoot),
                                {u"Default"_s, u"Profile 1"_s});
    for (const QString& path : gone + kept)
        home.file(path);
    PluginCleaner plugins({home.sandbox, catalogue, home.t.defaults, home.t.log});
    if (browser.isEmpty())
        plugins.removeSilverlight();
    else
        plugins.removeFlash(browser);
    for (const QString& path : gone)
        QVERIFY2(!home.exists(path), qPrintable(path));
    for (const QString& path : kept)
        QVERIFY2(home.exists(path), qPrintable(path));
}

QTEST_GUILESS_MAIN(TestPluginCleaner)
#include "tst_plugincleaner.moc"
