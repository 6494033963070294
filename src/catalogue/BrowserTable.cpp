#include "catalogue/BrowserTable.h"

#include "platform/linux/KnownApplications.h"
#include "platform/linux/LinuxWorkspace.h"

#include <QDir>

namespace BrowserTable {

namespace {

QStringList list(std::initializer_list<const char*> items)
{
    QStringList result;
    for (const char* item : items)
        result.append(QString::fromLatin1(item));
    return result;
}

QString text(const char* item)
{
    return QString::fromLatin1(item);
}

// A Chromium-family browser's Flatpak: its config and cache below ~/.var/app/<id>.
Install chromiumFlatpak(const char* appId, const char* folder)
{
    const QString base = QStringLiteral(".var/app/%1/").arg(QLatin1String(appId));
    return {{base + QStringLiteral("config/") + QLatin1String(folder)},
            base + QStringLiteral("cache/") + QLatin1String(folder),
            {QLatin1String(appId) + QStringLiteral(".desktop")}};
}

// A Firefox-family browser's Flatpak: its profiles in the home folder's place below ~/.var/app/<id>.
Install firefoxFlatpak(const char* appId, QStringList profileFolders, const char* cacheFolder)
{
    const QString base = QStringLiteral(".var/app/%1/").arg(QLatin1String(appId));
    for (QString& folder : profileFolders)
        folder.prepend(base);
    return {profileFolders,
            base + QLatin1String(cacheFolder),
            {QLatin1String(appId) + QStringLiteral(".desktop")}};
}

} // namespace

const QList<Browser>& all()
{
    // The first five are the browsers the settings have always named, in their tile order.
    static const QList<Browser> browsers{
        {text("Safari"), text("com.apple.Safari"), Family::Safari, {}, {}, text("safari"), {}},
        {text("Firefox"),
         text("org.mozilla.firefox"),
         Family::Firefox,
         text("~/Library/Application Support/Firefox/Profiles"),
         text("~/Library/Caches/Firefox/Profiles"),
         text("firefox"),
         {{list({".mozilla/firefox", ".config/mozilla/firefox"}), text(".cache/mozilla/firefox"),
           list({"firefox.desktop", "firefox-esr.desktop"}), list({"firefox", "firefox-esr"}),
           list({"firefox", "firefox-esr", "firefox-bin"})},
          firefoxFlatpak("org.mozilla.firefox", list({".mozilla/firefox", "config/mozilla/firefox"}),
                         "cache/mozilla/firefox"),
          {list({"snap/firefox/common/.mozilla/firefox"}),
           text("snap/firefox/common/.cache/mozilla/firefox"),
           list({"firefox_firefox.desktop"}),
           {},
           {},
           text("firefox")}}},
        {text("Google Chrome"),
         text("com.google.Chrome"),
         Family::Chromium,
         text("~/Library/Application Support/Google/Chrome"),
         text("~/Library/Caches/Google/Chrome"),
         text("google-chrome"),
         {{list({".config/google-chrome"}), text(".cache/google-chrome"), list({"google-chrome.desktop"}),
           list({"google-chrome", "google-chrome-stable"}), list({"google/chrome/chrome"})},
          chromiumFlatpak("com.google.Chrome", "google-chrome")}},
        {text("Chromium"),
         text("org.chromium.Chromium"),
         Family::Chromium,
         text("~/Library/Application Support/Chromium"),
         text("~/Library/Caches/Chromium"),
         text("chromium"),
         // Ungoogled Chromium's deb shares these folders and names; its Flatpak keeps its own.
         {{list({".config/chromium"}), text(".cache/chromium"),
           list({"chromium.desktop", "chromium-browser.desktop"}), list({"chromium", "chromium-browser"}),
           list({"chromium", "chromium-browser"})},
          chromiumFlatpak("org.chromium.Chromium", "chromium"),
          chromiumFlatpak("io.github.ungoogled_software.ungoogled_chromium", "chromium"),
          {list({"snap/chromium/common/chromium"}),
           text("snap/chromium/common/.cache/chromium"),
           list({"chromium_chromium.desktop"}),
           {},
           {},
           text("chromium")}}},
        {text("Opera"),
         text("com.operasoftware.Opera"),
         Family::Chromium,
         text("~/Library/Application Support/com.operasoftware.Opera"),
         text("~/Library/Caches/com.operasoftware.Opera"),
         text("opera"),
         {{list({".config/opera"}), text(".cache/opera"), list({"opera.desktop"}), list({"opera"}),
           list({"opera"})},
          chromiumFlatpak("com.opera.Opera", "opera"),
          {list({"snap/opera/*/.config/opera"}),
           text("snap/opera/common/.cache/opera"),
           list({"opera_opera.desktop"}),
           {},
           {},
           text("opera")}},
         true},
        {text("Brave"),
         text("com.brave.Browser"),
         Family::Chromium,
         text("~/Library/Application Support/BraveSoftware/Brave-Browser"),
         text("~/Library/Caches/BraveSoftware/Brave-Browser"),
         text("brave-browser"),
         {{list({".config/BraveSoftware/Brave-Browser"}), text(".cache/BraveSoftware/Brave-Browser"),
           list({"brave-browser.desktop"}), list({"brave-browser", "brave-browser-stable"}),
           list({"brave.com/brave/brave"})},
          chromiumFlatpak("com.brave.Browser", "BraveSoftware/Brave-Browser"),
          {list({"snap/brave/*/.config/BraveSoftware/Brave-Browser"}),
           text("snap/brave/common/.cache/BraveSoftware/Brave-Browser"),
           list({"brave_brave.desktop"}),
           {},
           {},
           text("brave")}}},
        {text("Vivaldi"),
         text("com.vivaldi.Vivaldi"),
         Family::Chromium,
         text("~/Library/Application Support/Vivaldi"),
         text("~/Library/Caches/Vivaldi"),
         text("vivaldi"),
         {{list({".config/vivaldi"}), text(".cache/vivaldi"), list({"vivaldi-stable.desktop"}),
           list({"vivaldi", "vivaldi-stable"}), list({"vivaldi-bin"})},
          chromiumFlatpak("com.vivaldi.Vivaldi", "vivaldi"),
          {list({"snap/vivaldi/*/.config/vivaldi"}),
           text("snap/vivaldi/common/.cache/vivaldi"),
           list({"vivaldi_vivaldi-stable.desktop"}),
           {},
           {},
           text("vivaldi")}}},
        {text("Microsoft Edge"),
         text("com.microsoft.Edge"),
         Family::Chromium,
         text("~/Library/Application Support/Microsoft Edge"),
         text("~/Library/Caches/Microsoft Edge"),
         text("microsoft-edge"),
         {{list({".config/microsoft-edge"}), text(".cache/microsoft-edge"), list({"microsoft-edge.desktop"}),
           list({"microsoft-edge", "microsoft-edge-stable"}), list({"microsoft/msedge/msedge"})},
          chromiumFlatpak("com.microsoft.Edge", "microsoft-edge")}},
        // The Beta and Dev channels keep profiles of their own beside the stable one's.
        {text("Google Chrome Beta"),
         text("com.google.Chrome.beta"),
         Family::Chromium,
         text("~/Library/Application Support/Google/Chrome Beta"),
         text("~/Library/Caches/Google/Chrome Beta"),
         text("google-chrome-beta"),
         {{list({".config/google-chrome-beta"}), text(".cache/google-chrome-beta"),
           list({"google-chrome-beta.desktop"}), list({"google-chrome-beta"}),
           list({"google/chrome-beta/chrome"})}}},
        {text("Google Chrome Dev"),
         text("com.google.Chrome.dev"),
         Family::Chromium,
         text("~/Library/Application Support/Google/Chrome Dev"),
         text("~/Library/Caches/Google/Chrome Dev"),
         text("google-chrome-unstable"),
         {{list({".config/google-chrome-unstable"}), text(".cache/google-chrome-unstable"),
           list({"google-chrome-unstable.desktop"}), list({"google-chrome-unstable"}),
           list({"google/chrome-unstable/chrome"})}}},
        {text("Microsoft Edge Beta"),
         text("com.microsoft.Edge.beta"),
         Family::Chromium,
         text("~/Library/Application Support/Microsoft Edge Beta"),
         text("~/Library/Caches/Microsoft Edge Beta"),
         text("microsoft-edge-beta"),
         {{list({".config/microsoft-edge-beta"}), text(".cache/microsoft-edge-beta"),
           list({"microsoft-edge-beta.desktop"}), list({"microsoft-edge-beta"}),
           list({"microsoft/msedge-beta/msedge"})}}},
        {text("Microsoft Edge Dev"),
         text("com.microsoft.Edge.dev"),
         Family::Chromium,
         text("~/Library/Application Support/Microsoft Edge Dev"),
         text("~/Library/Caches/Microsoft Edge Dev"),
         text("microsoft-edge-dev"),
         {{list({".config/microsoft-edge-dev"}), text(".cache/microsoft-edge-dev"),
           list({"microsoft-edge-dev.desktop"}), list({"microsoft-edge-dev"}),
           list({"microsoft/msedge-dev/msedge"})}}},
        {text("LibreWolf"),
         text("io.gitlab.librewolf-community"),
         Family::Firefox,
         text("~/Library/Application Support/librewolf/Profiles"),
         text("~/Library/Caches/librewolf/Profiles"),
         text("librewolf"),
         {{list({".librewolf", ".config/librewolf/librewolf"}), text(".cache/librewolf"),
           list({"librewolf.desktop"}), list({"librewolf"}), list({"librewolf", "librewolf-bin"})},
          firefoxFlatpak("io.gitlab.librewolf-community", list({".librewolf"}), "cache/librewolf")}},
        {text("Waterfox"),
         text("net.waterfox.waterfox"),
         Family::Firefox,
         text("~/Library/Application Support/Waterfox/Profiles"),
         text("~/Library/Caches/Waterfox/Profiles"),
         text("waterfox"),
         {{list({".waterfox"}), text(".cache/waterfox"), list({"waterfox.desktop"}), list({"waterfox"}),
           list({"waterfox", "waterfox-bin"})},
          firefoxFlatpak("net.waterfox.waterfox", list({".waterfox"}), "cache/waterfox")}},
        {text("Floorp"),
         text("one.ablaze.floorp"),
         Family::Firefox,
         text("~/Library/Application Support/Floorp/Profiles"),
         text("~/Library/Caches/Floorp/Profiles"),
         text("floorp"),
         {{list({".floorp"}), text(".cache/floorp"), list({"floorp.desktop"}), list({"floorp"}),
           list({"floorp", "floorp-bin"})},
          firefoxFlatpak("one.ablaze.floorp", list({".floorp"}), "cache/floorp")}},
    };
    return browsers;
}

const Browser* find(const QString& name)
{
    for (const Browser& browser : all()) {
        if (browser.name == name)
            return &browser;
    }
    return nullptr;
}

const Browser* forIdentifier(const QString& identifier)
{
    for (const Browser& browser : all()) {
        if (browser.identifier == identifier)
            return &browser;
    }
    return nullptr;
}

QString settingsTemplate(const Browser& browser)
{
    static const QStringList ownRows{QStringLiteral("Safari"), QStringLiteral("Firefox"),
                                     QStringLiteral("Google Chrome"), QStringLiteral("Chromium"),
                                     QStringLiteral("Opera")};
    if (ownRows.contains(browser.name))
        return browser.name;
    return browser.family == Family::Firefox ? QStringLiteral("Firefox") : QStringLiteral("Chromium");
}

QList<KnownApplication> knownApplications()
{
    QList<KnownApplication> applications;
    for (const Browser& browser : all()) {
        KnownApplication application{browser.name, browser.identifier, {}, {}, {}, {}};
        for (const Install& install : browser.installs) {
            application.desktopEntries += install.desktopEntries;
            application.commands += install.commands;
            application.executableNames += install.executables;
            if (!install.snapName.isEmpty())
                application.snapName = install.snapName;
        }
        applications.append(application);
    }
    return applications;
}

WorkspaceLocations workspaceLocations(const QString& home)
{
    WorkspaceLocations locations = WorkspaceLocations::forHome(home);
    locations.applications += knownApplications();
    for (const Browser& browser : all()) {
        for (const Install& install : browser.installs) {
            for (const QString& root : install.dataRoots) {
                // Snap revisions: the lock files appear in the revision "current" points to.
                const QString folder =
                    home + QLatin1Char('/') +
                    QString(root).replace(QStringLiteral("/*/"), QStringLiteral("/current/"));
                locations.lockFolders.append(folder);
                // The Firefox family locks each profile folder it opens.
                if (browser.family != Family::Firefox)
                    continue;
                for (const QString& profile : QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
                    locations.lockFolders.append(folder + QLatin1Char('/') + profile);
            }
        }
    }
    return locations;
}

} // namespace BrowserTable
