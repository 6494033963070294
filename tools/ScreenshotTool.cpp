// Renders every screen of the desktop face, in a light and a dark theme, into PNG files for review
// and for the README: the main window, the browser popover in each of its states, the info popover,
// the tray menu, the permission panel, the file-access warning, each preferences pane and the sync alert.
// Runs over the same fakes as the GUI tests, so no real settings are touched. Usage: corvella-screenshots
// OUTPUT_FOLDER (under Xvfb, or offscreen)
#include "platform/SettingsKeys.h"
#include "platform/Translations.h"
#include "sandbox/AppSandboxFileAccessOpenSavePanelDelegate.h"
#include "support/TestAgent.h"
#include "support/TestHome.h"
#include "ui/AccessRequestDialog.h"
#include "ui/BrowserCollection.h"
#include "ui/BrowserPopover.h"
#include "ui/DesktopFace.h"
#include "ui/FileDialogOpenPanel.h"
#include "ui/GeneralPopover.h"
#include "ui/MainWindow.h"
#include "ui/PreferencesPane.h"
#include "ui/PreferencesWindowController.h"
#include "ui/StatusItem.h"
#include "ui/WarningController.h"

#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

QPalette darkPalette()
{
    QPalette p;
    p.setColor(QPalette::Window, QColor(0x2b, 0x2b, 0x2e));
    p.setColor(QPalette::WindowText, QColor(0xe6, 0xe6, 0xe6));
    p.setColor(QPalette::Base, QColor(0x3a, 0x3a, 0x3e));
    p.setColor(QPalette::Text, QColor(0xe6, 0xe6, 0xe6));
    p.setColor(QPalette::Button, QColor(0x45, 0x45, 0x4a));
    p.setColor(QPalette::ButtonText, QColor(0xe6, 0xe6, 0xe6));
    p.setColor(QPalette::Mid, QColor(0x5c, 0x5c, 0x62));
    p.setColor(QPalette::Highlight, QColor(0x3d, 0x8e, 0xd9));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Disabled, QPalette::WindowText, QColor(0x80, 0x80, 0x80));
    p.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x80, 0x80, 0x80));
    return p;
}

bool save(QWidget* widget, const QString& path)
{
    QApplication::processEvents();
    QTest::qWait(200); // the switches' slide
    const bool saved = widget->grab().save(path);
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    return saved;
}

// The main window with the popover under its tiles, as one picture.
bool saveWithPopover(MainWindow& window, QWidget& popover, const QString& path)
{
    QApplication::processEvents();
    QTest::qWait(200);
    const QPixmap top = window.grab();
    const QPixmap below = popover.grab();
    const QSizeF topSize = top.deviceIndependentSize(), belowSize = below.deviceIndependentSize();
    const qreal scale = top.devicePixelRatio();
    QPixmap both(
        (QSizeF(std::max(topSize.width(), belowSize.width()), topSize.height() + belowSize.height() + 8) *
         scale)
            .toSize());
    both.setDevicePixelRatio(scale);
    both.fill(window.palette().color(QPalette::Window));
    QPainter painter(&both);
    painter.drawPixmap(0, 0, top);
    painter.drawPixmap(
        QPointF((both.deviceIndependentSize().width() - belowSize.width()) / 2, topSize.height() + 8), below);
    painter.end();
    const bool saved = both.save(path);
    std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    return saved;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"Corvella"_s); // as the agent names itself in its texts
    QApplication::setApplicationVersion(u"0.1.0"_s);
    installTranslations(); // LANG=de_DE.UTF-8 shows the German screens
    if (app.arguments().size() != 2) {
        std::fprintf(stderr, "usage: corvella-screenshots OUTPUT_FOLDER\n");
        return 2;
    }
    const QDir out(app.arguments().at(1));
    QDir().mkpath(out.path());
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    bool ok = true;
    for (const bool dark : {false, true}) {
        QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());
        const QString theme = dark ? u"dark"_s : u"light"_s;
        const auto file = [&](const QString& name) { return out.filePath(name + u'-' + theme + u".png"_s); };

        TestHome home;
        AppDelegate::initialize(home.t.defaults); // the shipped defaults, as the preferences show them
        home.t.defaults.setObject(home.path(), SettingsKeys::userFolder);
        home.t.defaults.setBool(false, SettingsKeys::firstRun);
        home.t.defaults.setBool(true, SettingsKeys::showInMenu);
        home.t.defaults.setObject(QVariantList{u"org.chromium.Chromium"_s, u"org.mozilla.firefox"_s},
                                  SettingsKeys::enabledBrowsers);
        home.t.defaults.setBool(true, SettingsKeys::isRunning);
        home.t.defaults.setObject(QVariantMap{{u"Chromium:cookies"_s, true},
                                              {u"Chromium:cache"_s, true},
                                              {u"Chromium:history"_s, true}},
                                  SettingsKeys::settings);
        home.t.defaults.setObject(QVariantList{u"bank.example"_s, u"mail.example.com"_s},
                                  SettingsKeys::keptSites);
        TestAgent agent(home.t);
        agent.workspace.setInstalled(
            {u"org.chromium.Chromium"_s, u"org.mozilla.firefox"_s, u"com.google.Chrome"_s});
        DesktopFace face(agent.app, agent.workspace, true);
        agent.app.applicationWillFinishLaunching();
        agent.app.applicationDidFinishLaunching();
        MainWindow& window = face.mainWindow();
        window.openWindow();
        ok &= save(&window, file(u"main-window"_s));

        BrowserPopover& popover = face.browserPopover();
        BrowserCollection* tiles = window.collectionView();
        popover.showBrowserPopover(std::nullopt, tiles);
        ok &= saveWithPopover(window, popover, file(u"popover-no-browser"_s));
        popover.showBrowserPopover(BrowserCollection::popoverRequest(u"Google Chrome-disabled"_s), tiles);
        ok &= saveWithPopover(window, popover, file(u"popover-activate"_s));
        popover.showBrowserPopover(BrowserCollection::popoverRequest(u"Firefox"_s), tiles);
        ok &= saveWithPopover(window, popover, file(u"popover-change"_s));
        popover.close();
        agent.app.enableBrowser(u"Chromium"_s);
        popover.showBrowserPopover(BrowserCollection::popoverRequest(u"Chromium"_s), tiles);
        ok &= saveWithPopover(window, popover, file(u"popover-settings"_s));
        popover.close();

        // Many browsers: the tiles go on a second row, each with its own name.
        agent.workspace.setInstalled(
            {u"org.chromium.Chromium"_s, u"org.mozilla.firefox"_s, u"com.google.Chrome"_s,
             u"com.brave.Browser"_s, u"com.vivaldi.Vivaldi"_s, u"com.microsoft.Edge"_s,
             u"com.google.Chrome.beta"_s, u"io.gitlab.librewolf-community"_s, u"one.ablaze.floorp"_s});
        tiles->reloadData(agent.catalogue.browserContentArray());
        ok &= save(&window, file(u"main-window-many-browsers"_s));
        agent.workspace.setInstalled(
            {u"org.chromium.Chromium"_s, u"org.mozilla.firefox"_s, u"com.google.Chrome"_s});
        tiles->reloadData(agent.catalogue.browserContentArray());

        face.generalPopover().togglePopover(window.infoButton());
        ok &= save(&face.generalPopover(), file(u"info-popover"_s));
        face.generalPopover().close();

        QMenu* menu = face.statusItem().menu();
        menu->popup(QPoint(0, 0));
        ok &= save(menu, file(u"tray-menu"_s));
        menu->close();

        // The request the agent makes for the home folder, through the desktop's panel, and the
        // chooser behind its "Choose Another Folder…".
        TestHome asking(false);
        FileDialogOpenPanel dialogPanel;
        Sandbox requester({asking.t.defaults, asking.bookmarks, dialogPanel, asking.t.log});
        QTimer::singleShot(0, &app, [&] {
            auto* request = qobject_cast<AccessRequestDialog*>(QApplication::activeModalWidget());
            if (!request) {
                ok = false;
                if (QApplication::activeModalWidget())
                    QApplication::activeModalWidget()->close();
                return;
            }
            ok &= save(request, file(u"permission-panel"_s));
            QTimer::singleShot(0, &app, [&] {
                if (QWidget* chooser = QApplication::activeModalWidget()) {
                    ok &= save(chooser, file(u"permission-panel-other-folder"_s));
                    chooser->close();
                }
            });
            request->otherFolderButton()->click();
            request->reject();
        });
        requester.enableAccess();

        agent.app.enableBrowser(u"Safari-disabled"_s); // no Safari files to read: the warning
        if (WarningController* warning = face.warningController()) {
            ok &= save(warning, file(u"file-access-warning"_s));
            warning->close();
        }

        PreferencesWindowController& preferences = face.preferencesWindowController();
        face.showPreferences();
        for (const QString& pane : preferences.toolbarItemIdentifiers()) {
            if (PreferencesPane* viewController = preferences.viewControllerForIdentifier(pane)) {
                preferences.setSelectedViewController(viewController);
                ok &= save(&preferences,
                           file(u"preferences-"_s +
                                viewController->toolbarItemLabel().toLower().replace(u' ', u'-')));
            }
        }
        preferences.close();

        agent.cloudStore.status = CloudKeyValueStore::AccountStatus::NoAccount;
        home.t.defaults.setBool(true, SettingsKeys::iCloudSync); // with no synced folder chosen
        ok &= QTest::qWaitFor([&face] { return face.syncAlert() != nullptr; });
        if (QMessageBox* alert = face.syncAlert()) {
            ok &= save(alert, file(u"sync-alert"_s));
            alert->done(QMessageBox::Ok);
        }
    }
    return ok ? 0 : 1;
}
