#pragma once

#include "ui/BrowserCollectionItem.h"

#include <QMarginsF>
#include <QStringList>
#include <QVariantMap>
#include <QWidget>

#include <vector>

class IconTransformer;

// The row of browser tiles, 43 points each, centred. Pointing at a tile (or tabbing to it) asks for
// its popover; clicking it asks to activate it, then for the popover of the tile as it was.
class BrowserCollection : public QWidget
{
    Q_OBJECT
public:
    static constexpr int tileWidth = 43;

    BrowserCollection(const IconTransformer& icons, QWidget* parent = nullptr);

    // Replaces the tiles with these tile names.
    void reloadData(const QStringList& tileNames);
    QStringList array() const { return m_array; }
    // Left and right: (width - 43 x tiles) / 2, which centres the row; top and bottom 0.
    QMarginsF sectionInsets() const;
    // The tile's button; nullptr for a name not shown.
    HoverButton* buttonFor(const QString& tileName) const;
    // "browser", and "isDisabled" for a browser that is not activated.
    static QVariantMap popoverRequest(const QString& tileName);

signals:
    void popoverRequested(const QVariantMap& request);
    void tileClicked(const QString& tileName);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void layoutTiles();

    const IconTransformer& m_icons;
    QStringList m_array;
    std::vector<BrowserCollectionItem> m_items;
};
