#include "platform/SettingsKeys.h"
#include "sandbox/Sqlite.h"
#include "support/TestAgent.h"
#include "support/TestHome.h"
#include "ui/BrowserPopover.h"
#include "ui/DesktopFace.h"
#include "ui/FlatButton.h"
#include "ui/GeneralPopover.h"
#include "ui/KeptSitesPane.h"
#include "ui/PreferencesPanes.h"
#include "ui/PreferencesWindowController.h"
#include "ui/StatusItem.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolBar>

using namespace Qt::StringLiterals;

namespace {

const QString kGeneral = u"GeneralPreferences_en"_s, kKept = u"KeptSitesPreferences_en"_s,
              kDisplay = u"DisplayPreferences_en"_s, kUpdates = u"UpdatePreferences_en"_s,
              kAbout = u"AboutPreferences_en"_s;

// The agent's face with its shipped defaults, in a temporary home.
struct Face
{
    explicit Face(const QVariantMap& stored = {})
    {
        AppDelegate::initialize(home.t.defaults);
        home.t.defaults.setObject(home.path(), SettingsKeys::userFolder);
        home.t.defaults.setObjects(stored);
    }
    PreferencesWindowController& window()
    {
        PreferencesWindowController& window = face.preferencesWindowController();
        if (!window.isVisible()) {
            face.showPreferences();
            [&] { QVERIFY(QTest::qWaitForWindowExposed(&window)); }();
        }
        return window;
    }
    QString shown() { return window().selectedViewController()->identifier(); }
    template <typename Control> Control* control(const QString& pane, const QString& name)
    {
        window().selectControllerWithIdentifier(pane);
        for (Control* candidate : window().selectedViewController()->findChildren<Control*>()) {
            if (candidate->accessibleName() == name)
                return candidate;
        }
        return nullptr;
    }

    TestHome home;
    TestAgent agent{home.t};
    DesktopFace face{agent.app, agent.workspace, true};
};

} // namespace

class TestPreferences : public QObject
{
    Q_OBJECT
private slots:
    void theStoredOrRequestedPaneIsShown_data();
    void theStoredOrRequestedPaneIsShown();
    void nextAndPreviousGoRoundSkippingSpaces_data();
    void nextAndPreviousGoRoundSkippingSpaces();
    void aFolderThatCannotBeUsedKeepsThePaneUp_data();
    void aFolderThatCannotBeUsedKeepsThePaneUp();
    void controlsAndSettingsFollowEachOther_data();
    void controlsAndSettingsFollowEachOther();
    void theUpdateChoicesMirrorTheirKeys();
    void keptSitesAreTypedRemovedAndPickedFromCookies();
    void theMenuThePopoverAndTheSyncAlertLeadHere();
};

// The pane stored, else the first real one; a request shows a known pane only.
void TestPreferences::theStoredOrRequestedPaneIsShown_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QVariantMap>("request"); // empty: none
    QTest::addColumn<QString>("shown");
    QTest::newRow("none stored") << QVariant() << QVariantMap() << kGeneral;
    QTest::newRow("Display stored") << QVariant(kDisplay) << QVariantMap() << kDisplay;
    QTest::newRow("a pane no longer there")
        << QVariant(u"AdvancedPreferences_en"_s) << QVariantMap() << kGeneral;
    QTest::newRow("About asked for") << QVariant() << QVariantMap{{u"tab"_s, kAbout}} << kAbout;
    QTest::newRow("an unknown pane asked for")
        << QVariant() << QVariantMap{{u"tab"_s, u"Privacy"_s}} << kGeneral;
    QTest::newRow("a request without a tab") << QVariant() << QVariantMap{{u"pane"_s, kAbout}} << kGeneral;
}

void TestPreferences::theStoredOrRequestedPaneIsShown()
{
    QFETCH(QVariant, stored);
    QFETCH(QVariantMap, request);
    QFETCH(QString, shown);
    Face f(stored.isValid() ? QVariantMap{{PreferencesWindowController::kSelectedIdentifierKey, stored}}
                            : QVariantMap());
    QCOMPARE(f.window().toolbarItemIdentifiers(),
             QStringList({u"NSToolbarFlexibleSpaceItem"_s, kGeneral, kKept, kDisplay, kUpdates, kAbout,
                          u"NSToolbarFlexibleSpaceItem"_s}));
    QSignalSpy changed(&f.window(), &PreferencesWindowController::panewiseWindowControllerDidChangeView);
    if (!request.isEmpty())
        emit f.face.changePrefsTab(request);
    QCOMPARE(f.shown(), shown);
    QCOMPARE(changed.size(), request.isEmpty() || shown == kGeneral ? 0 : 1);
    QCOMPARE(f.window().windowTitle(), f.window().selectedViewController()->toolbarItemLabel());
    QCOMPARE(f.home.t.defaults.stringForKey(PreferencesWindowController::kSelectedIdentifierKey), shown);
}

void TestPreferences::nextAndPreviousGoRoundSkippingSpaces_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<int>("key"); // with Ctrl (and Shift for going back)
    QTest::addColumn<QString>("to");
    QTest::newRow("next from About") << kAbout << int(Qt::Key_Tab) << kGeneral;
    QTest::newRow("previous from General") << kGeneral << int(Qt::Key_Backtab) << kAbout;
    QTest::newRow("next from Display") << kDisplay << int(Qt::Key_PageDown) << kUpdates;
    QTest::newRow("previous from Updates") << kUpdates << int(Qt::Key_PageUp) << kDisplay;
}

void TestPreferences::nextAndPreviousGoRoundSkippingSpaces()
{
    QFETCH(QString, from);
    QFETCH(int, key);
    QFETCH(QString, to);
    Face f({{PreferencesWindowController::kSelectedIdentifierKey, from}});
    QSignalSpy changed(&f.window(), &PreferencesWindowController::panewiseWindowControllerDidChangeView);
    const auto modifiers =
        key == Qt::Key_Backtab ? Qt::ControlModifier | Qt::ShiftModifier : Qt::ControlModifier;
    QTest::keyClick(&f.window(), Qt::Key(key), modifiers);
    QCOMPARE(f.shown(), to);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(f.home.t.defaults.stringForKey(PreferencesWindowController::kSelectedIdentifierKey), to);
}

void TestPreferences::aFolderThatCannotBeUsedKeepsThePaneUp_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("taken");
    QTest::newRow("no such folder") << u"HOME/Nowhere"_s << false;
    QTest::newRow("outside the home") << u"/tmp"_s << false;
    QTest::newRow("a folder in the home") << u"HOME/Sync"_s << true;
    QTest::newRow("with a tilde") << u"~/Sync"_s << true;
}

// Changing pane and closing the window both wait for the typed folder to be saved.
void TestPreferences::aFolderThatCannotBeUsedKeepsThePaneUp()
{
    QFETCH(QString, typed);
    QFETCH(bool, taken);
    Face f;
    f.home.folder(u"Sync"_s);
    auto& general = *qobject_cast<GeneralPreferencesViewController*>(f.window().selectedViewController());
    general.syncFolderField()->setText(typed.replace(u"HOME"_s, f.home.path()));
    f.window().toolbar()->actions().at(2)->trigger(); // Kept Sites
    QCOMPARE(f.shown(), taken ? kKept : kGeneral);
    QCOMPARE(f.window().toolbar()->actions().at(1)->isChecked(), !taken);
    QCOMPARE(general.syncFolderProblem()->isVisible(), !taken);
    QCOMPARE(f.home.t.defaults.stringForKey(SettingsKeys::syncFolder).has_value(), taken);
    if (taken)
        QCOMPARE(*f.home.t.defaults.stringForKey(SettingsKeys::syncFolder),
                 QFileInfo(f.home.path(u"Sync"_s)).canonicalFilePath());
    QCOMPARE(f.window().close(), taken);
}

void TestPreferences::controlsAndSettingsFollowEachOther_data()
{
    QTest::addColumn<QString>("pane");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("key");
    QTest::newRow("start at login") << kGeneral << u"Start Corvella when you log in"_s
                                    << SettingsKeys::loginStart;
    QTest::newRow("notifications") << kGeneral << u"Show a notification after removing data"_s
                                   << SettingsKeys::displayNotifications;
    QTest::newRow("secure delete") << kGeneral << u"Overwrite files before removing them"_s
                                   << SettingsKeys::secureDeleteData;
    QTest::newRow("current layouts") << kGeneral << u"Also remove data where today's browsers keep it"_s
                                     << SettingsKeys::cleanCurrentLayouts;
    QTest::newRow("sync") << kGeneral << u"Share these settings with your other computers"_s
                          << SettingsKeys::iCloudSync;
    QTest::newRow("browser exceptions")
        << kKept << u"Also keep each browser's own exceptions"_s << SettingsKeys::keepBrowserExceptions;
    QTest::newRow("tray item") << kDisplay << u"Show Corvella in the tray"_s << SettingsKeys::showInMenu;
    QTest::newRow("automatic checks")
        << kUpdates << u"Check for updates automatically"_s << SettingsKeys::enableAutomaticChecks;
    QTest::newRow("automatic install")
        << kUpdates << u"Install updates automatically"_s << SettingsKeys::automaticallyUpdate;
}

void TestPreferences::controlsAndSettingsFollowEachOther()
{
    QFETCH(QString, pane);
    QFETCH(QString, control);
    QFETCH(QString, key);
    Face f;
    QCheckBox* box = f.control<QCheckBox>(pane, control);
    QVERIFY(box);
    const bool before = f.home.t.defaults.boolForKey(key);
    QCOMPARE(box->isChecked(), before);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Space);
    QCOMPARE(f.home.t.defaults.boolForKey(key), !before);
    f.home.t.defaults.setBool(before, key); // as another machine, or an edit on disk, does
    QCOMPARE(box->isChecked(), before);

    f.home.t.backend->failWrites = true; // a full disk: the box shows what is stored
    QTest::keyClick(box, Qt::Key_Space);
    QCOMPARE(box->isChecked(), before);
}

void TestPreferences::theUpdateChoicesMirrorTheirKeys()
{
    Face f;
    auto* updates = qobject_cast<UpdatePreferencesViewController*>(
        (f.window().selectControllerWithIdentifier(kUpdates), f.window().selectedViewController()));
    QCOMPARE(updates->checkScheduleButton()->currentData().toInt(), 86400);
    f.home.t.defaults.setObject(604800, SettingsKeys::scheduledCheckInterval);
    QCOMPARE(updates->checkScheduleButton()->currentText(), u"Weekly"_s);
}

void TestPreferences::theMenuThePopoverAndTheSyncAlertLeadHere()
{
    Face f({{SettingsKeys::iCloudSync, true}, {SettingsKeys::firstRun, false}});
    f.face.statusItem().menu()->actions().at(2)->trigger();
    QCOMPARE(f.face.statusItem().menu()->actions().at(2)->text(), u"Preferences…"_s);
    QTRY_VERIFY(f.face.preferencesWindowController().isVisible());
    f.face.preferencesWindowController().close();
    f.face.generalPopover().togglePopover(nullptr);
    QTest::keyClick(f.face.generalPopover().preferencesButton(), Qt::Key_Space);
    QTRY_VERIFY(f.face.preferencesWindowController().isVisible());
    QVERIFY(!f.face.generalPopover().isVisible());

    // The browser popover says how many sites are kept and leads to them.
    f.face.preferencesWindowController().close();
    f.home.t.defaults.setObject(QVariantList{u"mail.example"_s}, SettingsKeys::keptSites);
    f.face.browserPopover().showBrowserPopover(QVariantMap{{u"browser"_s, u"Firefox"_s}}, nullptr);
    QCOMPARE(f.face.browserPopover().keptSitesButton()->text(), u"Kept sites: 1…"_s);
    f.face.browserPopover().keptSitesButton()->click();
    QTRY_VERIFY(f.face.preferencesWindowController().isVisible());
    QCOMPARE(f.shown(), kKept);

    // Sync on with no synced folder: switched off, and the alert says what to do.
    f.agent.cloudStore.status = CloudKeyValueStore::AccountStatus::NoAccount;
    f.agent.app.applicationWillFinishLaunching();
    f.agent.app.applicationDidFinishLaunching();
    QTRY_VERIFY(f.face.syncAlert());
    QVERIFY(!f.home.t.defaults.boolForKey(SettingsKeys::iCloudSync));
    f.face.syncAlert()->checkBox()->setChecked(true);
    f.face.syncAlert()->button(QMessageBox::Ok)->click();
    QTRY_VERIFY(!f.face.syncAlert());
    QVERIFY(f.home.t.defaults.boolForKey(SettingsKeys::hideiCloudAlert));
}

// From the keyboard, as a user does: a name typed and entered, a URL refused with a message, a site
// removed with Delete, a site picked from those that hold cookies in an activated browser.
void TestPreferences::keptSitesAreTypedRemovedAndPickedFromCookies()
{
    Face f({{SettingsKeys::enabledBrowsers, QVariantList{u"org.mozilla.firefox"_s}}});
    const QString cookies =
        f.home.path(u"Library/Application Support/Firefox/Profiles/a.default/cookies.sqlite"_s);
    QDir().mkpath(QFileInfo(cookies).path());
    {
        Sqlite db(cookies);
        db.executeNonQuery(u"CREATE TABLE moz_cookies (host TEXT)"_s);
        db.executeNonQuery(u"INSERT INTO moz_cookies VALUES ('.bank.example'), ('mail.example.com')"_s);
    }
    f.window().selectControllerWithIdentifier(kKept);
    auto& pane = *qobject_cast<KeptSitesPreferencesViewController*>(f.window().selectedViewController());
    const auto stored = [&f] { return f.home.t.defaults.arrayForKey(SettingsKeys::keptSites); };

    QTest::keyClicks(pane.siteField(), u"Example.COM"_s);
    QTest::keyClick(pane.siteField(), Qt::Key_Return);
    QCOMPARE(stored(), QVariantList{u"example.com"_s});
    QVERIFY(pane.siteField()->text().isEmpty());
    QTest::keyClicks(pane.siteField(), u"https://shop.example/"_s);
    QTest::keyClick(pane.siteField(), Qt::Key_Return);
    QVERIFY(pane.problem()->isVisible());
    QCOMPARE(stored(), QVariantList{u"example.com"_s});

    // Only the cookie sites not kept yet are offered: mail.example.com is example.com's.
    QCOMPARE(pane.suggestionList()->count(), 1);
    QCOMPARE(pane.suggestionList()->item(0)->text(), u"bank.example"_s);
    pane.suggestionList()->setCurrentRow(0);
    QTest::keyClick(pane.suggestionList(), Qt::Key_Return);
    QCOMPARE(stored(), (QVariantList{u"example.com"_s, u"bank.example"_s}));
    QCOMPARE(pane.suggestionList()->count(), 0);

    pane.keptList()->setFocus();
    pane.keptList()->setCurrentRow(1); // sorted: bank.example, example.com
    QTest::keyClick(pane.keptList(), Qt::Key_Delete);
    QCOMPARE(stored(), QVariantList{u"bank.example"_s});
    f.home.t.defaults.setObject(QVariantList{u"a.example"_s, u"b.example"_s},
                                SettingsKeys::keptSites); // synced
    QCOMPARE(pane.keptList()->count(), 2);
}

QTEST_MAIN(TestPreferences)
#include "tst_preferences.moc"
