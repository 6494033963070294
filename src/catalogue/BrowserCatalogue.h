#pragma once

#include "catalogue/BrowserTable.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <optional>

class Sandbox;
class UserDefaults;
class Workspace;

// One install of a browser found in the home folder: its data and cache roots as "~/..." paths
// (on the macOS layout, the reference roots).
struct BrowserInstall
{
    QString browser;
    QString dataRoot;
    QString cacheRoot;
};

// The browsers the agent knows (the browser table): which are installed and activated, how a
// quitting application is recognised as one of them, their installs and their profiles.
class BrowserCatalogue : public QObject
{
    Q_OBJECT
public:
    static inline const QString safari = QStringLiteral("Safari");
    static inline const QString googleChrome = QStringLiteral("Google Chrome");
    static inline const QString chromium = QStringLiteral("Chromium");
    static inline const QString opera = QStringLiteral("Opera");
    static inline const QString firefox = QStringLiteral("Firefox");

    static inline const QString safariID = QStringLiteral("com.apple.Safari");
    static inline const QString googleChromeID = QStringLiteral("com.google.Chrome");
    static inline const QString chromiumID = QStringLiteral("org.chromium.Chromium");
    static inline const QString operaID = QStringLiteral("com.operasoftware.Opera");
    static inline const QString firefoxID = QStringLiteral("org.mozilla.firefox");

    // A tile of an installed browser that is not activated carries this suffix.
    static inline const QString disabledSuffix = QStringLiteral("-disabled");

    // Whether the browser is of the Chromium family (a data root holding "Local State", or Opera's
    // only profile) or of the Firefox family (a profiles root holding profiles.ini).
    static bool isChromiumFamily(const QString& browser);
    static bool isFirefoxFamily(const QString& browser);
    // Opera keeps its only profile in its data root itself.
    static bool hasSingleProfile(const QString& browser);
    // The browser's installs in this home folder, each with roots that exist and have the family's
    // shape ("Local State"; profiles.ini or a profile folder); every Snap revision holding data is
    // one. On the macOS layout, the one install at the reference roots. None for an unknown browser.
    static QList<BrowserInstall> installsOf(Sandbox& sandbox, const QString& browser);
    // The install at the reference roots, whatever exists there.
    static BrowserInstall referenceInstall(const QString& browser);

    // Detection order, which is also the order of "enabledBrowsers" after browsersChanged().
    static const QStringList& detectionOrder();
    // Tile order, also the order of the enabled and identifier tests.
    static const QStringList& tileOrder();
    // Every browser key, in tile order.
    static QStringList browserKeys() { return tileOrder(); }

    BrowserCatalogue(Workspace& workspace, UserDefaults& defaults, Sandbox& sandbox,
                     QObject* parent = nullptr);

    // The bundle identifier of a browser key or tile name (the longest browser name it starts with);
    // "" for anything else.
    static QString browserIDFor(const QString& name);
    // The browser key of a bundle identifier; "" for any other identifier.
    static QString browserForID(const QString& bundleIdentifier);
    // The browser key of a quitting application: Safari, Google Chrome, Chromium and Firefox by
    // exact name, Opera by bundle identifier whatever its name, every later row by either; no value
    // for anything else.
    static std::optional<QString> browserForTerminatedApplication(const QVariantMap& userInfo);

    // The bundle identifiers of the installed browsers, in detection order; asked anew each time.
    QStringList checkForInstalledBrowsers();
    bool checkIfBrowserEnabled(const QString& browser) const;
    // The keys of the activated browsers ("enabledBrowsers"), in its order; unknown identifiers left out.
    QStringList enabledBrowserKeys() const;
    QStringList browserContentArray();
    // The reaction to a change among the installed applications: a second later, drops every
    // browser that is no longer installed from "enabledBrowsers" and announces the new tiles.
    void browsersChanged();
    // Folder name -> display name of the profiles in a Chromium-family "Local State" of each install;
    // empty on any failure.
    QVariantMap userProfiles(const QString& browser);
    // The same, for the data root of one install.
    static QVariantMap profilesIn(Sandbox& sandbox, const QString& dataRoot);
    // The Firefox-family profile folders of every install (those holding a profile's files), by name
    // below their profiles root, then the full paths of those profiles.ini lists elsewhere in the home.
    QStringList firefoxProfiles(const QString& browser);
    static QStringList firefoxProfiles(Sandbox& sandbox, const QString& profilesRoot);
    // The profiles that Firefox's profiles.ini and installs.ini list by a full path ("IsRelative=0"), in
    // their order, without repeats; `inside` says whether each lies inside the home folder (only those
    // may be cleaned: one outside is reported and left alone).
    struct ProfileElsewhere
    {
        QString path;
        bool inside = false;
    };
    static QList<ProfileElsewhere> firefoxProfilesElsewhere(Sandbox& sandbox, const QString& profilesRoot);
    // Whether the browser runs now, by its process or by a live lock file in the profile folders of
    // any of its installs.
    bool browserIsRunning(const QString& browser);

signals:
    void browserContentArrayChanged();

private:
    void applyInstalledBrowsers();
    static bool hasFamilyShape(Sandbox& sandbox, const BrowserTable::Browser& browser, const QString& root);
    static bool lockIsLive(Sandbox& sandbox, const QString& lockPath);

    Workspace& m_workspace;
    UserDefaults& m_defaults;
    Sandbox& m_sandbox;
};
