#include "app/CleanCommand.h"
#include "catalogue/BrowserTable.h"
#include "core/RunLock.h"
#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "platform/Translations.h"
#include "sandbox/Sqlite.h"
#include "support/CleanCli.h"
#include "support/PlistFixtures.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

class TestCleanCommand : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void answersAtOnce_data();
    void answersAtOnce();
    void runsTheNamedCategoriesOrTheSavedSelection();
    void theTerminalAsksOnceAndTheGrantIsRemembered();
    void aGrantThatCannotBeSavedIsReported();
    void endsOfOptionsOutputAndTheLock();
    void whatWasRefusedIsWarnedAboutAfterTheUsualLine();
    void listShowsInstalledActivatedAndProfiles();
};

void TestCleanCommand::initTestCase()
{
    installTranslations(QLocale(QLocale::English)); // the plural forms of counted messages
}

// Help, version and every wrong use answer at once, on one stream, and say what is accepted.
void TestCleanCommand::answersAtOnce_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("said"); // on standard output for success, else on standard error
    const auto row = [](const char* name, const QStringList& arguments, CleanCommand::ExitCode code,
                        const char* said) {
        QTest::newRow(name) << arguments << int(code) << QString::fromUtf8(said);
    };
    row("help", {u"--help"_s}, CleanCommand::Success, "CATEGORY: cookies, databases, flash");
    row("version", {u"--version"_s, u"Firefox"_s}, CleanCommand::Success,
        "corvella-clean " CORVELLA_VERSION "\n");
    row("no browser", {}, CleanCommand::BadUsage,
        "name a browser: Firefox, Google Chrome, Chromium, Opera, Brave");
    row("unknown browser", {u"Netscape"_s}, CleanCommand::BadUsage,
        "unknown browser \"Netscape\"; accepted: Firefox");
    row("unknown category", {u"Firefox"_s, u"cookies"_s, u"passwords"_s}, CleanCommand::BadUsage,
        "unknown category \"passwords\"; accepted: cookies, databases");
    row("unknown option", {u"--force"_s, u"Firefox"_s}, CleanCommand::BadUsage, "unknown option \"--force\"");
    row("no grant and no terminal", {u"Chromium"_s, u"cookies"_s}, CleanCommand::NoHomeAccess,
        "corvella-clean --allow-home-access Chromium");
}

void TestCleanCommand::answersAtOnce()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, said);
    Cli cli(code != CleanCommand::NoHomeAccess);
    QCOMPARE(cli.run(arguments), code);
    const QString& used = code == CleanCommand::Success ? cli.out : cli.err;
    QVERIFY2(used.contains(said), qPrintable(used));
    QVERIFY((code == CleanCommand::Success ? cli.err : cli.out).isEmpty());
    if (code == CleanCommand::NoHomeAccess)
        QVERIFY(!cli.homeGrantRecorded());
    // Nothing of another system is offered here: no Safari, no layout to choose.
    if (arguments.contains(u"--help"_s))
        QVERIFY(!cli.out.contains(u"Safari"_s) && !cli.out.contains(u"--layout"_s));
}

void TestCleanCommand::runsTheNamedCategoriesOrTheSavedSelection()
{
    Cli cli;
    QCOMPARE(cli.run({u"Firefox"_s, u"cache"_s, u"cookies"_s}), int(CleanCommand::Success));
    QCOMPARE(cli.out, u"Cookies, Cache removed from Firefox\n"_s);
    QCOMPARE(cli.run({u"Firefox"_s}), int(CleanCommand::Success));
    QCOMPARE(cli.out, u"Whoops, you havn't selected anything to be removed from Firefox\n"_s);
    cli.home.t.defaults.setObject(QVariantMap{{u"Firefox:history"_s, true}, {u"Firefox:forms"_s, false}},
                                  SettingsKeys::settings);
    QCOMPARE(cli.run({u"Firefox"_s}), int(CleanCommand::Success));
    QCOMPARE(cli.out, u"History removed from Firefox\n"_s);
    QVERIFY(cli.questions.isEmpty());

    // Sites kept for one run stay, beside those kept in the settings; the settings do not change.
    cli.home.t.defaults.setObject(QVariantList{u"mail.example"_s}, SettingsKeys::keptSites);
    const QString cookies =
        cli.home.path(u"Library/Application Support/Firefox/Profiles/a.default/cookies.sqlite"_s);
    QDir().mkpath(QFileInfo(cookies).path());
    {
        Sqlite db(cookies);
        db.executeNonQuery(u"CREATE TABLE moz_cookies (host TEXT, originAttributes TEXT)"_s);
        db.executeNonQuery(u"INSERT INTO moz_cookies VALUES ('.mail.example', ''), ('bank.example', ''), "
                           "('other.example', '')"_s);
    }
    // The preview says which kept sites each store keeps.
    QCOMPARE(cli.run({u"--preview"_s, u"--keep"_s, u"Bank.Example"_s, u"Firefox"_s, u"cookies"_s}),
             int(CleanCommand::Success));
    QVERIFY2(cli.out.contains(
                 QRegularExpression(u"^keep .+/cookies.sqlite \\(.*\\): bank.example, mail.example$"_s,
                                    QRegularExpression::MultilineOption)),
             qPrintable(cli.out));
    QCOMPARE(cli.run({u"--keep"_s, u"Bank.Example"_s, u"Firefox"_s, u"cookies"_s}),
             int(CleanCommand::Success));
    Sqlite db;
    QVERIFY(db.openExisting(cookies, true));
    QCOMPARE(db.executeQuery(u"SELECT count(*) AS n FROM moz_cookies"_s).value().first().value(u"n"_s),
             QVariant(2));
    QCOMPARE(cli.home.t.defaults.arrayForKey(SettingsKeys::keptSites), QVariantList{u"mail.example"_s});
}

void TestCleanCommand::theTerminalAsksOnceAndTheGrantIsRemembered()
{
    Cli refused(false);
    refused.answer = false;
    QCOMPARE(refused.run({u"Opera"_s}), int(CleanCommand::NoHomeAccess));
    QCOMPARE(refused.questions.size(), 1);
    QVERIFY(refused.questions.first().contains(refused.home.path()));
    QVERIFY(!refused.homeGrantRecorded());

    Cli allowed(false);
    allowed.answer = true;
    QCOMPARE(allowed.run({u"Opera"_s, u"cache"_s}), int(CleanCommand::Success));
    QVERIFY(allowed.homeGrantRecorded());
    QCOMPARE(allowed.run({u"Opera"_s, u"cache"_s}), int(CleanCommand::Success));
    QCOMPARE(allowed.questions.size(), 1); // asked once
}

// A full disk, say: the command fails, says so once, and the log says why once.
void TestCleanCommand::aGrantThatCannotBeSavedIsReported()
{
    Cli cli(false);
    cli.home.t.backend->failWrites = true;
    QCOMPARE(cli.run({u"--allow-home-access"_s, u"Opera"_s, u"cache"_s}), int(CleanCommand::NotWritten));
    QCOMPARE(cli.out, u"Cache removed from Opera\n"_s); // access was given for this run
    QCOMPARE(cli.err.count(u'\n'), 1);
    QVERIFY2(cli.err.contains(u"could not be saved"_s), qPrintable(cli.err));
    QCOMPARE(cli.home.t.log.lines().filter(u"could not save its settings"_s).size(), 1);
    QVERIFY(!cli.homeGrantRecorded());
}

void TestCleanCommand::endsOfOptionsOutputAndTheLock()
{
    Cli cli;
    QCOMPARE(cli.run({u"--layout=Linux"_s, u"--"_s, u"Firefox"_s, u"cache"_s}), int(CleanCommand::Success));
    // A layout given for one run is not stored.
    QCOMPARE(cli.home.t.backend->read()->value(SettingsKeys::browserLayout), QVariant(u"macOS"_s));
    QCOMPARE(cli.run({u"--"_s, u"--list"_s}), int(CleanCommand::BadUsage)); // a browser name now

    QFile full(u"/dev/full"_s);
    QVERIFY(full.open(QIODevice::WriteOnly));
    QCOMPARE(cli.run({u"Firefox"_s, u"cache"_s}, &full), int(CleanCommand::NotWritten));

    cli.lockPath = cli.home.path(u"removal.lock"_s);
    const RunLock held(cli.lockPath, cli.home.t.log); // another run, holding on
    QCOMPARE(cli.run({u"Firefox"_s, u"cache"_s}), int(CleanCommand::LockBusy));
    QVERIFY2(cli.err.contains(u"waiting for another removal run"_s), qPrintable(cli.err));
    QVERIFY(cli.out.isEmpty());
}

void TestCleanCommand::listShowsInstalledActivatedAndProfiles()
{
    Cli cli;
    cli.workspace.setInstalled({u"org.chromium.Chromium"_s, u"org.mozilla.firefox"_s});
    cli.home.t.defaults.setObject(QVariantList{u"org.mozilla.firefox"_s}, SettingsKeys::enabledBrowsers);
    cli.home.file(
        u"Library/Application Support/Chromium/Local State"_s,
        R"({"profile":{"info_cache":{"Default":{"name":"Person 1"},"Profile 2":{"name":"Work"}}}})");
    cli.home.file(u"Library/Application Support/Firefox/Profiles/x1.default-esr/prefs.js"_s);
    cli.home.folder(u"Library/Application Support/Firefox/Profiles/Crash Reports"_s);
    QCOMPARE(cli.run({u"--list"_s}), int(CleanCommand::Success));
    QStringList lines = cli.out.split(u'\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), BrowserTable::all().size() + 1);
    QCOMPARE(lines.last(), u"Kept sites: none"_s);
    // Columns as wide as the longest name.
    QCOMPARE(lines.at(0), u"Safari"_s.leftJustified(21) + u"not installed  not activated"_s);
    for (QString& line : lines)
        line = line.simplified();
    QCOMPARE(lines.at(2),
             u"Chromium installed not activated profiles: Default (Person 1), Profile 2 (Work)"_s);
    QCOMPARE(lines.at(3), u"Firefox installed activated profiles: x1.default-esr"_s);
    // On this system's layout: no Safari, and the profiles of a browser's every install.
    cli.home.t.defaults.setObject(PathLayout::linux_, SettingsKeys::browserLayout);
    cli.home.file(u".var/app/com.brave.Browser/config/BraveSoftware/Brave-Browser/Local State"_s,
                  R"({"profile":{"info_cache":{"Profile 3":{"name":"Bo"}}}})");
    cli.out.clear();
    QCOMPARE(cli.run({u"--list"_s}), int(CleanCommand::Success));
    QVERIFY(!cli.out.contains(u"Safari"_s));
    QVERIFY(cli.out.simplified().contains(u"Brave not installed not activated profiles: Profile 3 (Bo)"_s));
}

void TestCleanCommand::whatWasRefusedIsWarnedAboutAfterTheUsualLine()
{
    Cli cli;
    // Opera's data root is a link to a folder of another user: not the browser's, so refused.
    QTemporaryDir outside;
    QVERIFY(QFile::setPermissions(outside.path(), QFileDevice::Permissions(0x7777)));
    QVERIFY(PlistFixtures::writeFile(outside.filePath(u"Cookies"_s), "sid=1"));
    QCOMPARE(::chown(QFile::encodeName(outside.path()).constData(), 65534, 65534), 0);
    cli.home.folder(u"Library/Application Support"_s);
    QVERIFY(
        QFile::link(outside.path(), cli.home.path(u"Library/Application Support/com.operasoftware.Opera"_s)));
    QCOMPARE(cli.run({u"Opera"_s, u"cookies"_s}), int(CleanCommand::Success));
    QCOMPARE(cli.out, u"Cookies removed from Opera\n"_s);
    // The channel-identifier database and the cookie file, both refused.
    QVERIFY2(cli.err.startsWith(u"corvella-clean: warning: 2 items were left as they were; the first: "_s),
             qPrintable(cli.err));
    QVERIFY(cli.err.contains(u"outside the home folder"_s));
    QVERIFY(QFile::exists(outside.filePath(u"Cookies"_s)));
}

QTEST_GUILESS_MAIN(TestCleanCommand)
#include "tst_cleancommand.moc"
