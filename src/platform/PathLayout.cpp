#include "platform/PathLayout.h"

#include <QFileInfo>
#include <QStringList>

namespace {

struct Row
{
    const char* reference;  // below the home folder
    QStringList candidates; // below the home folder; the first that exists wins, else the first
};

const QList<Row>& linuxRows()
{
    static const QList<Row> rows{
        {"Library/Application Support/Google/Chrome", {QStringLiteral(".config/google-chrome")}},
        {"Library/Caches/Google/Chrome", {QStringLiteral(".cache/google-chrome")}},
        {"Library/Application Support/Chromium", {QStringLiteral(".config/chromium")}},
        {"Library/Caches/Chromium", {QStringLiteral(".cache/chromium")}},
        {"Library/Application Support/com.operasoftware.Opera", {QStringLiteral(".config/opera")}},
        {"Library/Caches/com.operasoftware.Opera", {QStringLiteral(".cache/opera")}},
        {"Library/Application Support/Firefox/Profiles",
         {QStringLiteral(".mozilla/firefox"), QStringLiteral(".config/mozilla/firefox")}},
        {"Library/Caches/Firefox/Profiles", {QStringLiteral(".cache/mozilla/firefox")}},
        {"Library/Preferences/Macromedia/Flash Player", {QStringLiteral(".macromedia/Flash_Player")}},
        {"Library/Caches/Adobe/Flash Player", {QStringLiteral(".adobe/Flash_Player")}},
        {"Library/Application Scripts/com.tovanex.Corvella6",
         {QStringLiteral(".local/share/corvella/scripts")}},
    };
    return rows;
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

std::optional<QString> nativePath(const QString& layout, const QString& home, const QString& path)
{
    if (layout == macOS || (layout != linux_ && platformDefault() == macOS))
        return path;
    const QString library = home + QStringLiteral("/Library");
    if (!below(path, library))
        return path;
    // The rows do not nest, so the first match is the longest.
    for (const Row& row : linuxRows()) {
        const auto rest = below(path, home + QLatin1Char('/') + QLatin1String(row.reference));
        if (!rest)
            continue;
        QString chosen = row.candidates.first();
        for (const QString& candidate : row.candidates) {
            if (QFileInfo::exists(home + QLatin1Char('/') + candidate)) {
                chosen = candidate;
                break;
            }
        }
        return home + QLatin1Char('/') + chosen + *rest;
    }
    return std::nullopt;
}

QStringList roots(const QString& layout, const QString& home)
{
    const bool reference = layout == macOS || (layout != linux_ && platformDefault() == macOS);
    QStringList roots;
    for (const Row& row : linuxRows()) {
        if (reference) {
            roots.append(home + QLatin1Char('/') + QLatin1String(row.reference));
            continue;
        }
        for (const QString& candidate : row.candidates)
            roots.append(home + QLatin1Char('/') + candidate);
    }
    return roots;
}

} // namespace PathLayout
