#include "core/StartAtLoginController.h"
#include "platform/SettingsKeys.h"
#include "platform/linux/XdgAutostartLoginItems.h"
#include "support/TestAgent.h"
#include "support/TestHome.h"

#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

using namespace Qt::StringLiterals;

class TestStartAtLogin : public QObject
{
    Q_OBJECT
private slots:
    void theAutostartEntryIsValidForAnyProgramPath_data();
    void theAutostartEntryIsValidForAnyProgramPath();
    void theControllerRecordsSuccessNotState();
};

void TestStartAtLogin::theAutostartEntryIsValidForAnyProgramPath_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("plain") << u"/usr/bin/corvella-login-helper"_s;
    QTest::newRow("space") << u"/opt/My Apps/corvella-login-helper"_s;
    QTest::newRow("shell characters") << u"/opt/a\"b`c$d\\e/corvella-login-helper"_s;
    QTest::newRow("percent") << u"/opt/100%/corvella-login-helper"_s;
}

// The entry's Exec line, unquoted as the desktop does, names the program again; and the desktop's own
// validator accepts the entry.
void TestStartAtLogin::theAutostartEntryIsValidForAnyProgramPath()
{
    QFETCH(QString, program);
    TestHome home;
    XdgAutostartLoginItems items(home.path(u".config"_s), home.t.log);
    const QString id = u"com.tovanex.Corvella6Helper"_s;
    QVERIFY(items.setEnabled(id, QUrl::fromLocalFile(program), true));
    QCOMPARE(items.entryPath(id), home.path(u".config/autostart/com.tovanex.Corvella6Helper.desktop"_s));

    const QString exec = QString::fromUtf8(home.read(u".config/autostart/"_s + id + u".desktop"_s))
                             .section(u"\nExec="_s, 1)
                             .section(u'\n', 0, 0);
    QString unquoted, value = exec;
    value.replace(u"\\\\"_s, u"\\"_s); // the string escape of the file
    QVERIFY(value.startsWith(u'"') && value.endsWith(u'"'));
    for (qsizetype i = 1; i < value.size() - 1; ++i) {
        if (value[i] == u'\\' || (value[i] == u'%' && value[i + 1] == u'%'))
            ++i;
        unquoted += value[i];
    }
    QCOMPARE(unquoted, program);

    const QString validator = QStandardPaths::findExecutable(u"desktop-file-validate"_s);
    if (!validator.isEmpty()) {
        QProcess validate;
        validate.start(validator, {items.entryPath(id)});
        QVERIFY(validate.waitForFinished());
        QVERIFY2(validate.exitCode() == 0, validate.readAllStandardOutput().constData());
    }
    QVERIFY(items.setEnabled(id, QUrl::fromLocalFile(program), false));
    QVERIFY(!home.exists(u".config/autostart/"_s + id + u".desktop"_s));
    QVERIFY(items.setEnabled(id, QUrl::fromLocalFile(program), false)); // nothing left to remove
}

void TestStartAtLogin::theControllerRecordsSuccessNotState()
{
    RecordingLoginItems items;
    StartAtLoginController controller(items);
    QSignalSpy enabled(&controller, &StartAtLoginController::enabledChanged);
    controller.setStartAtLogin(true); // no helper yet: nothing happens
    QVERIFY(items.calls.isEmpty() && enabled.isEmpty());

    controller.setBundle(u"com.tovanex.Corvella6Helper"_s, QUrl::fromLocalFile(u"/usr/bin/helper"_s));
    for (const bool succeeds : {true, false, true}) {
        items.succeeds = succeeds;
        controller.setStartAtLogin(false);
        QCOMPARE(controller.enabled(), succeeds);
        QVERIFY(!controller.startAtLogin());
    }
    QCOMPARE(enabled.size(), 3);
    QCOMPARE(items.calls.size(), 3);
}

QTEST_MAIN(TestStartAtLogin)
#include "tst_startatlogin.moc"
