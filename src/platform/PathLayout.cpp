#include "platform/PathLayout.h"

#include <QFileInfo>
#include <QStringList>

namespace {

using PathLayout::Install;

// Below the home folder. Within each install's list, the first that exists wins, else the first.
struct Row
{
    const char* reference;
    QStringList native;
    QStringList flatpak = {};
    QStringList snap = {};
    bool shared = false; // one folder whatever the install
};

QStringList list(std::initializer_list<const char*> paths)
{
    QStringList result;
    for (const char* path : paths)
        result.append(QString::fromLatin1(path));
    return result;
}

const QList<Row>& linuxRows()
{
    static const QList<Row> rows{
        {"Library/Application Support/Google/Chrome", list({".config/google-chrome"}),
         list({".var/app/com.google.Chrome/config/google-chrome"})},
        {"Library/Caches/Google/Chrome", list({".cache/google-chrome"}),
         list({".var/app/com.google.Chrome/cache/google-chrome"})},
        {"Library/Application Support/Chromium", list({".config/chromium"}),
         list({".var/app/org.chromium.Chromium/config/chromium"}), list({"snap/chromium/common/chromium"})},
        {"Library/Caches/Chromium", list({".cache/chromium"}),
         list({".var/app/org.chromium.Chromium/cache/chromium"}),
         list({"snap/chromium/common/.cache/chromium"})},
        {"Library/Application Support/com.operasoftware.Opera", list({".config/opera"}),
         list({".var/app/com.opera.Opera/config/opera"})},
        {"Library/Caches/com.operasoftware.Opera", list({".cache/opera"}),
         list({".var/app/com.opera.Opera/cache/opera"})},
        {"Library/Application Support/Firefox/Profiles",
         list({".mozilla/firefox", ".config/mozilla/firefox"}),
         list({".var/app/org.mozilla.firefox/.mozilla/firefox",
               ".var/app/org.mozilla.firefox/config/mozilla/firefox"}),
         list({"snap/firefox/common/.mozilla/firefox"})},
        {"Library/Caches/Firefox/Profiles", list({".cache/mozilla/firefox"}),
         list({".var/app/org.mozilla.firefox/cache/mozilla/firefox"}),
         list({"snap/firefox/common/.cache/mozilla/firefox"})},
        {"Library/Preferences/Macromedia/Flash Player", list({".macromedia/Flash_Player"}), {}, {}, true},
        {"Library/Caches/Adobe/Flash Player", list({".adobe/Flash_Player"}), {}, {}, true},
        {"Library/Application Scripts/com.tovanex.Corvella6",
         list({".local/share/corvella/scripts"}),
         {},
         {},
         true},
    };
    return rows;
}

const QStringList& candidates(const Row& row, Install install)
{
    if (row.shared)
        return row.native;
    switch (install) {
    case Install::Flatpak:
        return row.flatpak;
    case Install::Snap:
        return row.snap;
    case Install::Native:
        break;
    }
    return row.native;
}

// "rest" when path is prefix itself or prefix followed by "/rest"; no value otherwise.
std::optional<QString> below(const QString& path, const QString& prefix)
{
    if (path == prefix)
        return QString();
    if (path.startsWith(prefix) && path.at(prefix.size()) == QLatin1Char('/'))
        return path.mid(prefix.size());
    return std::nullopt;
}

bool isReference(const QString& layout)
{
    return layout == PathLayout::macOS ||
           (layout != PathLayout::linux_ && PathLayout::platformDefault() == PathLayout::macOS);
}

} // namespace

namespace PathLayout {

QString platformDefault()
{
#ifdef Q_OS_MACOS
    return macOS;
#else
    return linux_;
#endif
}

std::optional<QString> nativePath(const QString& layout, const QString& home, const QString& path,
                                  Install install)
{
    if (isReference(layout))
        return install == Install::Native ? std::optional<QString>(path) : std::nullopt;
    const QString library = home + QStringLiteral("/Library");
    if (!below(path, library))
        return path;
    // The rows do not nest, so the first match is the longest.
    for (const Row& row : linuxRows()) {
        const auto rest = below(path, home + QLatin1Char('/') + QLatin1String(row.reference));
        if (!rest)
            continue;
        const QStringList& paths = candidates(row, install);
        if (paths.isEmpty())
            return std::nullopt;
        QString chosen = paths.first();
        for (const QString& candidate : paths) {
            if (QFileInfo::exists(home + QLatin1Char('/') + candidate)) {
                chosen = candidate;
                break;
            }
        }
        return home + QLatin1Char('/') + chosen + *rest;
    }
    return std::nullopt;
}

QList<Install> installs(const QString& layout, const QString& home, const QString& referenceRoot)
{
    QList<Install> found{Install::Native};
    if (isReference(layout))
        return found;
    for (const Install install : {Install::Flatpak, Install::Snap}) {
        const std::optional<QString> root = nativePath(layout, home, referenceRoot, install);
        if (root && QFileInfo::exists(*root) && *root != nativePath(layout, home, referenceRoot))
            found.append(install);
    }
    return found;
}

QStringList roots(const QString& layout, const QString& home)
{
    QStringList roots;
    for (const Row& row : linuxRows()) {
        if (isReference(layout)) {
            roots.append(home + QLatin1Char('/') + QLatin1String(row.reference));
            continue;
        }
        for (const QStringList& paths : {row.native, row.flatpak, row.snap}) {
            for (const QString& candidate : paths)
                roots.append(home + QLatin1Char('/') + candidate);
        }
    }
    return roots;
}

} // namespace PathLayout
