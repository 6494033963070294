#pragma once

#include "ui/BrowserCollectionItem.h"

#include <QFontMetrics>
#include <QMarginsF>
#include <QStringList>
#include <QVariantMap>
#include <QWidget>

#include <vector>

class IconTransformer;

// The row of browser tiles, centred: each shows its browser's icon with the name under it. Pointing at a tile
// (or tabbing to it) asks for its popover; clicking it asks to activate it, then for the popover of the tile
// as it was.
class BrowserCollection : public QWidget
{
    Q_OBJECT
public:
    // Wide enough for a browser's name under its icon.
    static constexpr int tileWidth = 88;
    static constexpr int iconSize = 36;
    // More browsers than this go on further rows.
    static constexpr int maxColumns = 6;

    BrowserCollection(const IconTransformer& icons, QWidget* parent = nullptr);

    // Replaces the tiles with these tile names.
    void reloadData(const QStringList& tileNames);
    QStringList array() const { return m_array; }
    // Left and right: (width - tileWidth x tiles in a row) / 2, which centres the rows; top and bottom 0.
    QMarginsF sectionInsets() const;
    // The tile's button; nullptr for a name not shown.
    HoverButton* buttonFor(const QString& tileName) const;
    // "browser", and "isDisabled" for a browser that is not activated.
    static QVariantMap popoverRequest(const QString& tileName);

signals:
    void popoverRequested(const QVariantMap& request);
    void tileClicked(const QString& tileName);
    // The tiles were made anew; the minimum size is that of their rows.
    void reloaded();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void layoutTiles();
    int tileHeight() const;
    int columns() const;
    static QString tileText(const QString& browser, const QFontMetrics& metrics);

    const IconTransformer& m_icons;
    QStringList m_array;
    std::vector<BrowserCollectionItem> m_items;
};
