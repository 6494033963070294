#include "ui/IconTransformer.h"

#include "core/BrowserCatalogue.h"
#include "platform/Workspace.h"
#include "platform/linux/DesktopEntry.h"

#include <QFile>
#include <QPainter>

namespace {

constexpr int kTileIconSize = 64;
// Desktop entries are a few kilobytes; a larger file is not read further.
constexpr qint64 kDesktopEntryLimit = 1 << 20;

QString iconNameInDesktopEntry(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? DesktopEntry::iconName(file.read(kDesktopEntryLimit)) : QString();
}

} // namespace

IconTransformer::IconTransformer(Workspace& workspace) : m_workspace(workspace) {}

QIcon IconTransformer::iconForBrowser(const QString& browser) const
{
    const QString identifier = BrowserCatalogue::browserIDFor(browser);
    if (identifier.isEmpty())
        return QIcon();
    if (const std::optional<QString> entry = m_workspace.absolutePathForAppBundleWithIdentifier(identifier);
        entry && entry->endsWith(QLatin1String(".desktop"))) {
        const QString name = iconNameInDesktopEntry(*entry);
        if (name.startsWith(QLatin1Char('/')) && QFile::exists(name))
            return QIcon(name);
        if (!name.isEmpty() && QIcon::hasThemeIcon(name))
            return QIcon::fromTheme(name);
    }
    return QIcon::fromTheme(QStringLiteral("web-browser"), QIcon(QStringLiteral(":/icons/browser.svg")));
}

QIcon IconTransformer::transformedValue(const QString& tileName) const
{
    const QIcon icon = iconForBrowser(tileName);
    if (icon.isNull() || !tileName.endsWith(BrowserCatalogue::disabledSuffix))
        return icon;
    QIcon tinted;
    for (const int size : {kTileIconSize, kTileIconSize * 2})
        tinted.addPixmap(tintImage(icon.pixmap(size, size)));
    return tinted;
}

QPixmap IconTransformer::tintImage(const QPixmap& image)
{
    QPixmap tinted = image;
    QPainter painter(&tinted);
    painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    QColor grey;
    grey.setRgbF(0.4, 0.4, 0.4, 1.0);
    painter.fillRect(tinted.rect(), grey);
    return tinted;
}
