#include "platform/SettingsKeys.h"
#include "sandbox/AppSandboxFileAccessOpenSavePanelDelegate.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/Sqlite.h"
#include "support/TestAgent.h"
#include "support/TestHome.h"
#include "ui/BrowserCollection.h"
#include "ui/BrowserPopover.h"
#include "ui/DesktopFace.h"
#include "ui/FileDialogOpenPanel.h"
#include "ui/FlatButton.h"
#include "ui/KeptSitesPane.h"
#include "ui/MainWindow.h"
#include "ui/PreferencesPanes.h"
#include "ui/PreferencesWindowController.h"
#include "ui/StatusItem.h"
#include "ui/ToggleSwitch.h"

#include <QAbstractProxyModel>
#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDir>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString kChromiumID = u"org.chromium.Chromium"_s;
const QString kGeneral = u"GeneralPreferences_en"_s, kKept = u"KeptSitesPreferences_en"_s;

// The agent's face over the controller, in a temporary home: the shipped defaults, the home folder,
// and what the test stored.
struct Face
{
    explicit Face(const QVariantMap& stored = {}, const QStringList& installed = {},
                  bool trayAvailable = true)
    {
        AppDelegate::initialize(home.t.defaults);
        home.t.defaults.setObject(home.path(), SettingsKeys::userFolder);
        home.t.defaults.setObjects(stored);
        agent.workspace.setInstalled(installed);
        face = std::make_unique<DesktopFace>(agent.app, agent.workspace, trayAvailable);
    }
    // Launched after its first run with these browsers installed and activated, its window open (an
    // ordinary window: the shipped defaults would make it a tool window without a taskbar entry).
    Face(const QStringList& installed, const QStringList& activated, bool trayAvailable = true)
        : Face({{SettingsKeys::firstRun, false},
                {SettingsKeys::hideDock, false},
                {SettingsKeys::enabledBrowsers, QVariantList(activated.begin(), activated.end())}},
               installed, trayAvailable)
    {
        if (activated.contains(u"com.apple.Safari"_s)) // its files were readable when it was activated
            home.file(u"Library/Safari/Bookmarks.plist"_s, "<plist/>");
        agent.app.applicationWillFinishLaunching();
        agent.app.applicationDidFinishLaunching();
        window().openWindow();
        QVERIFY(QTest::qWaitForWindowExposed(&window()));
    }
    MainWindow& window() { return face->mainWindow(); }
    BrowserPopover& popover() { return face->browserPopover(); }
    QWidget* tile(const QString& name) { return window().collectionView()->buttonFor(name); }
    QVariantList activated() { return home.t.defaults.arrayForKey(SettingsKeys::enabledBrowsers); }
    PreferencesWindowController& prefs()
    {
        PreferencesWindowController& window = face->preferencesWindowController();
        if (!window.isVisible()) {
            face->showPreferences();
            [&] { QVERIFY(QTest::qWaitForWindowExposed(&window)); }();
        }
        return window;
    }
    TestHome home;
    TestAgent agent{home.t};
    std::unique_ptr<DesktopFace> face;
};

} // namespace

class TestDesktopFace : public QObject
{
    Q_OBJECT
private slots:
    void thePopoverAndTheTraySayWhenABrowserWasLastCleaned();
    void onlyCategoriesThatCanExistHereAreOffered();
    void withoutAccessTheWindowAndTheTraySaySoAndAskAgain();
    void withoutTrayItemTheWindowStaysReachable();
    void theKeyboardAloneActivatesAndConfigures();
    void thePermissionPanelOnlyTakesTheFolderOrOneAbove_data();
    void thePermissionPanelOnlyTakesTheFolderOrOneAbove();
    void controlsAndSettingsFollowEachOther_data();
    void controlsAndSettingsFollowEachOther();
    void keptSitesAreTypedRemovedAndPickedFromCookies();
};

void TestDesktopFace::thePopoverAndTheTraySayWhenABrowserWasLastCleaned()
{
    Face f({kChromiumID, u"org.mozilla.firefox"_s}, {kChromiumID, u"org.mozilla.firefox"_s});
    const QDateTime when(QDate(2026, 11, 20), QTime(9, 41));
    f.home.t.defaults.setObject(QVariantMap{{u"Chromium"_s, when}}, SettingsKeys::lastCleaned);
    const QString said = BrowserPopover::lastCleanedText(when);
    QVERIFY(said.startsWith(u"Last cleaned "_s) && said.contains(u"41"_s));
    QTRY_VERIFY(f.face->statusItem().toolTip().contains(u"Chromium: "_s + said));
    QVERIFY(f.face->statusItem().toolTip().contains(u"Firefox: Not cleaned yet"_s));
    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QApplication::sendEvent(f.tile(u"Chromium"_s), &enter);
    QTRY_COMPARE(f.popover().lastCleanedText(), said);
}

void TestDesktopFace::onlyCategoriesThatCanExistHereAreOffered()
{
    Face f({u"com.apple.Safari"_s, kChromiumID}, {u"com.apple.Safari"_s, kChromiumID});
    const auto offered = [&f](const QString& browser, const QString& category) {
        f.popover().close();
        QTest::mouseClick(f.tile(browser), Qt::LeftButton);
        return f.popover().settingsViewShown() && f.popover().toggleFor(category)->isVisible();
    };
    // Safari has no search engines; a plug-in's data only once its folder exists.
    QVERIFY(!offered(u"Safari"_s, u"searchEngines"_s) && offered(u"Chromium"_s, u"searchEngines"_s));
    QVERIFY(!offered(u"Chromium"_s, u"flash"_s));
    f.home.folder(u"Library/Preferences/Macromedia/Flash Player"_s);
    QVERIFY(offered(u"Chromium"_s, u"flash"_s) && !offered(u"Chromium"_s, u"silverlight"_s));
}

// The request was cancelled, or the grant went: nothing can be protected, and the window and the tray
// say so at once (not after the next quit) and ask again.
void TestDesktopFace::withoutAccessTheWindowAndTheTraySaySoAndAskAgain()
{
    Face f({kChromiumID}, {kChromiumID});
    f.home.t.defaults.setBool(true, SettingsKeys::isRunning);
    StatusItem& item = f.face->statusItem();
    QTRY_COMPARE(f.window().infoText(), u"Corvella is Enabled"_s);
    const auto asks = [&item] { return item.menu()->actions().contains(item.grantAccessItem()); };
    QVERIFY(!f.window().grantButton()->isVisible() && !asks());
    const QVariantMap settings = f.home.t.defaults.dictionaryRepresentation();
    for (auto it = settings.keyBegin(); it != settings.keyEnd(); ++it) {
        if (it->startsWith(AppSandboxFileAccessPersist::keyPrefix))
            f.home.t.defaults.removeObjectForKey(*it);
    }
    QTRY_COMPARE(f.window().infoText(), u"No access to your home folder"_s);
    QVERIFY(f.window().grantButton()->isVisible() && asks());
    QCOMPARE(item.menu()->actions().first(), item.runStateItem());

    f.agent.panel.answer(f.home.path());
    QTest::mouseClick(f.window().grantButton(), Qt::LeftButton);
    QTRY_COMPARE(f.agent.panel.requests.size(), 1); // after the press has returned
    QTRY_COMPARE(f.window().infoText(), u"Corvella is Enabled"_s);
    QVERIFY(!f.window().grantButton()->isVisible() && !asks());
}

void TestDesktopFace::withoutTrayItemTheWindowStaysReachable()
{
    Face f({kChromiumID}, {kChromiumID});
    f.home.t.defaults.setBool(true, SettingsKeys::hideDock);
    QTRY_VERIFY(f.window().windowFlags().testFlag(Qt::Tool));
    f.window().hide();
    f.home.t.defaults.setBool(false, SettingsKeys::showInMenu);
    QTRY_VERIFY(f.window().isVisible());
    QVERIFY(!f.face->statusItem().isShown());
    QVERIFY(!f.window().windowFlags().testFlag(Qt::Tool));
    QVERIFY(!f.home.t.defaults.boolForKey(SettingsKeys::hideDock));

    Face noTray({kChromiumID}, {kChromiumID}, false);
    QVERIFY(!noTray.face->statusItem().isShown());
    QVERIFY(noTray.window().isVisible());
}

void TestDesktopFace::theKeyboardAloneActivatesAndConfigures()
{
    Face f({kChromiumID}, {});
    const QVariantMap others{{u"Firefox:cache"_s, true}};
    f.home.t.defaults.setObject(others, SettingsKeys::settings);
    f.window().activateWindow();
    f.window().enabledButton()->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), f.tile(u"Chromium-disabled"_s));
    QTRY_VERIFY(f.popover().isVisible());
    QCOMPARE(f.popover().infoText(), u"Click to activate protection for"_s);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QVERIFY(f.activated().contains(kChromiumID));
    // The keyboard stays on the browser's new tile; Down shows what the pointer's entry would: the
    // settings, with the keyboard in the first toggle.
    QTRY_COMPARE(QApplication::focusWidget(), f.tile(u"Chromium"_s));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QTRY_VERIFY(f.popover().settingsViewShown());
    QTRY_COMPARE(QApplication::focusWidget(), f.popover().toggleFor(u"cookies"_s));
    // Enter, pressed once more as on the tile, switches nothing; Space does.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QVERIFY(!f.home.t.defaults.dictionaryForKey(SettingsKeys::settings).contains(u"Chromium:cookies"_s));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), f.popover().toggleFor(u"databases"_s));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QVariantMap changed = others; // exactly its own setting
    changed.insert(u"Chromium:databases"_s, true);
    QCOMPARE(f.home.t.defaults.dictionaryForKey(SettingsKeys::settings), changed);
    // A change made elsewhere (another program, another computer) moves its toggle.
    f.home.t.defaults.setObject(QVariantMap{{u"Chromium:forms"_s, true}}, SettingsKeys::settings);
    QTRY_VERIFY(f.popover().toggleFor(u"forms"_s)->isChecked() &&
                !f.popover().toggleFor(u"databases"_s)->isChecked());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QVERIFY(!f.popover().isVisible());
    QVERIFY(!f.agent.app.editingBrowserSettings());
}

void TestDesktopFace::thePermissionPanelOnlyTakesTheFolderOrOneAbove_data()
{
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<bool>("taken");
    QTest::newRow("the home folder") << u"home/ann"_s << true;
    QTest::newRow("the folder above") << u"home"_s << true;
    QTest::newRow("a neighbour's folder") << u"home/bob"_s << false;
    QTest::newRow("a folder inside") << u"home/ann/Documents"_s << false;
    QTest::newRow("a look-alike name") << u"home/ann2"_s << false;
}

void TestDesktopFace::thePermissionPanelOnlyTakesTheFolderOrOneAbove()
{
    QFETCH(QString, chosen);
    QFETCH(bool, taken);
    TestHome root;
    for (const QString& folder : {u"home/ann/Documents"_s, u"home/bob"_s, u"home/ann2"_s})
        root.folder(folder);
    const AppSandboxFileAccessOpenSavePanelDelegate rule(QUrl::fromLocalFile(root.path(u"home/ann"_s)));
    OpenPanelRequest request;
    request.prompt = u"Allow"_s;
    request.message = u"Corvella needs access to your home folder."_s;
    request.directory = root.path(u"home/ann"_s); // files and folders may be chosen, as the agent asks
    request.shouldEnable = [rule](const QUrl& url) { return rule.panelShouldEnableURL(url); };
    const auto dialog = FileDialogOpenPanel::dialogFor(request);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));

    auto* files = qobject_cast<QFileSystemModel*>(dialog->proxyModel()->sourceModel());
    const QModelIndex item = dialog->proxyModel()->mapFromSource(files->index(root.path(chosen)));
    QCOMPARE(item.flags().testFlag(Qt::ItemIsEnabled), taken);
    // Greyed items cannot be clicked; typing the path is the way past them.
    auto* typed = dialog->findChild<QLineEdit*>(u"fileNameEdit"_s);
    QVERIFY(typed);
    QTest::keyClicks(typed, root.path(chosen));
    static_cast<QDialog*>(dialog.get())->accept(); // what "Allow" does
    QCOMPARE(dialog->result() == QDialog::Accepted, taken);
    QCOMPARE(dialog->isVisible(), !taken);
}

void TestDesktopFace::controlsAndSettingsFollowEachOther_data()
{
    QTest::addColumn<QString>("pane");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("key");
    QTest::newRow("start at login") << kGeneral << u"Start Corvella when you log in"_s
                                    << SettingsKeys::loginStart;
    QTest::newRow("browser exceptions")
        << kKept << u"Also keep each browser's own exceptions"_s << SettingsKeys::keepBrowserExceptions;
}

void TestDesktopFace::controlsAndSettingsFollowEachOther()
{
    QFETCH(QString, pane);
    QFETCH(QString, control);
    QFETCH(QString, key);
    Face f;
    f.prefs().selectControllerWithIdentifier(pane);
    QCheckBox* box = nullptr; // found as a screen reader finds it, by its name
    for (QCheckBox* candidate : f.prefs().selectedViewController()->findChildren<QCheckBox*>()) {
        if (candidate->accessibleName() == control)
            box = candidate;
    }
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

// From the keyboard, as a user does: a name typed and entered, a URL refused with a message, a site
// removed with Delete, a site picked from those that hold cookies in an activated browser.
void TestDesktopFace::keptSitesAreTypedRemovedAndPickedFromCookies()
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
    f.prefs().selectControllerWithIdentifier(kKept);
    auto& pane = *qobject_cast<KeptSitesPreferencesViewController*>(f.prefs().selectedViewController());
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
}

QTEST_MAIN(TestDesktopFace)
#include "tst_desktopface.moc"
