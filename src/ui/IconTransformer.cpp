#include "ui/IconTransformer.h"

#include "catalogue/BrowserCatalogue.h"
#include "ui/BrowserCollection.h"
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
    // The browser's own icon by the name its packages give it, else a browser's generic one.
    const BrowserTable::Browser* row = BrowserTable::forIdentifier(identifier);
    if (row && QIcon::hasThemeIcon(row->icon))
        return QIcon::fromTheme(row->icon);
    // The theme's generic one only where it comes as large as a tile's (some themes draw it for menus).
    const QIcon generic = QIcon::fromTheme(QStringLiteral("web-browser"));
    if (generic.actualSize(QSize(kTileIconSize, kTileIconSize)).width() >= kTileIconSize / 2)
        return generic;
    return QIcon(QStringLiteral(":/icons/browser.svg"));
}

QIcon IconTransformer::transformedValue(const QString& tileName) const
{
    const QIcon icon = iconForBrowser(tileName);
    const bool disabled = tileName.endsWith(BrowserCatalogue::disabledSuffix);
    // A theme that has the icon only smaller than a tile (48 and 24 pixels, say) would have it drawn
    // at 24: it is drawn from its largest size instead, as every other tile.
    const int tile = BrowserCollection::iconSize;
    if (icon.isNull() || (!disabled && icon.actualSize(QSize(tile, tile)).width() >= tile))
        return icon;
    QIcon drawn;
    for (const int size : {kTileIconSize, kTileIconSize * 2})
        drawn.addPixmap(disabled ? dimmed(icon.pixmap(size, size)) : icon.pixmap(size, size));
    return drawn;
}

// Greyed inside its own outline, with the icon's own shapes still drawn in grey on it: a browser that
// is not protected stays recognisable, not a blank silhouette.
QPixmap IconTransformer::dimmed(const QPixmap& image)
{
    QPixmap result = tintImage(image);
    QImage shapes = image.toImage().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < shapes.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(shapes.scanLine(y));
        for (int x = 0; x < shapes.width(); ++x) {
            const int grey = 40 + qGray(line[x]) * 3 / 4;
            line[x] = qRgba(grey, grey, grey, qAlpha(line[x]));
        }
    }
    QPainter painter(&result);
    painter.setOpacity(0.8);
    painter.drawImage(0, 0, shapes);
    return result;
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
