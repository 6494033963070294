#include "platform/PathLayout.h"

#include <QStringList>

namespace {

// Below the home folder: the folders every browser shares, whatever its install. The browsers' own
// folders come from the browser table, install by install, as native paths already.
struct Row
{
    const char* reference;
    const char* native;
};

const Row kLinuxRows[] = {
    {"Library/Preferences/Macromedia/Flash Player", ".macromedia/Flash_Player"},
    {"Library/Caches/Adobe/Flash Player", ".adobe/Flash_Player"},
    {"Library/Application Scripts/com.tovanex.Corvella6", ".local/share/corvella/scripts"},
};

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

bool isReferenceLayout(const QString& layout)
{
    return layout == macOS || (layout != linux_ && platformDefault() == macOS);
}

std::optional<QString> nativePath(const QString& layout, const QString& home, const QString& path)
{
    if (isReferenceLayout(layout))
        return path;
    if (!below(path, home + QStringLiteral("/Library")))
        return path;
    for (const Row& row : kLinuxRows) {
        if (const auto rest = below(path, home + QLatin1Char('/') + QLatin1String(row.reference)))
            return home + QLatin1Char('/') + QLatin1String(row.native) + *rest;
    }
    return std::nullopt;
}

QStringList roots(const QString& layout, const QString& home)
{
    QStringList roots;
    for (const Row& row : kLinuxRows)
        roots.append(home + QLatin1Char('/') +
                     QLatin1String(isReferenceLayout(layout) ? row.reference : row.native));
    return roots;
}

} // namespace PathLayout
