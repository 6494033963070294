#include "ui/BrowserCollection.h"

#include "catalogue/BrowserCatalogue.h"
#include "ui/IconTransformer.h"

BrowserCollection::BrowserCollection(const IconTransformer& icons, QWidget* parent)
    : QWidget(parent), m_icons(icons)
{
    setMinimumHeight(tileHeight() + 8);
    setAccessibleName(tr("Browsers"));
}

QVariantMap BrowserCollection::popoverRequest(const QString& tileName)
{
    QVariantMap request;
    if (tileName.endsWith(BrowserCatalogue::disabledSuffix)) {
        request.insert(QStringLiteral("browser"), tileName.chopped(BrowserCatalogue::disabledSuffix.size()));
        request.insert(QStringLiteral("isDisabled"), true);
    } else {
        request.insert(QStringLiteral("browser"), tileName);
    }
    return request;
}

void BrowserCollection::reloadData(const QStringList& tileNames)
{
    // The keyboard stays on the same browser's tile, without showing its popover anew.
    QString focusedBrowser;
    // Later: a click on a tile reloads the row from inside the tile's own signal.
    for (BrowserCollectionItem& item : m_items) {
        if (item.browserButton && item.browserButton->hasFocus())
            focusedBrowser = BrowserCatalogue::browserIDFor(item.browserButton->objectName());
        if (item.browserButton) {
            item.browserButton->hide();
            item.browserButton->deleteLater();
        }
    }
    m_items.clear();
    m_array = tileNames;
    for (const QString& name : std::as_const(m_array)) {
        auto* button = new HoverButton(this);
        button->setObjectName(name);
        button->setIcon(m_icons.transformedValue(name));
        button->setIconSize(QSize(iconSize, iconSize));
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        // On the window's own gradient, whatever the theme: white names, a faint plate under the pointer.
        button->setStyleSheet(QStringLiteral(
            "QToolButton { color: white; border: none; border-radius: 6px; background: transparent; }"
            "QToolButton:hover { background: rgba(255, 255, 255, 40); }"
            "QToolButton:pressed { background: rgba(255, 255, 255, 70); }"));
        const QVariantMap request = popoverRequest(name);
        const QString browser = request.value(QStringLiteral("browser")).toString();
        button->setText(tileText(browser, button->fontMetrics()));
        button->setAccessibleName(request.contains(QStringLiteral("isDisabled"))
                                      ? tr("%1, not protected").arg(browser)
                                      : tr("%1, protected").arg(browser));
        button->setToolTip(browser);
        connect(button, &HoverButton::entered, this,
                [this, name] { emit popoverRequested(popoverRequest(name)); });
        // On press. The popover shows the tile as it was before the click; the new tile shows
        // itself on the next entry of the pointer.
        connect(button, &HoverButton::pressed, this, [this, name] {
            emit tileClicked(name);
            emit popoverRequested(popoverRequest(name));
        });
        button->show();
        m_items.emplace_back(button);
        if (!focusedBrowser.isEmpty() && BrowserCatalogue::browserIDFor(name) == focusedBrowser)
            button->setFocus(Qt::OtherFocusReason);
    }
    const int rows = columns() == 0 ? 1 : int((m_array.size() + columns() - 1) / columns());
    setMinimumWidth(columns() * tileWidth);
    setMinimumHeight(rows * tileHeight() + 8);
    layoutTiles();
    emit reloaded();
}

QMarginsF BrowserCollection::sectionInsets() const
{
    const qreal side = (width() - qreal(tileWidth) * columns()) / 2;
    return {side, 0, side, 0};
}

HoverButton* BrowserCollection::buttonFor(const QString& tileName) const
{
    for (const BrowserCollectionItem& item : m_items) {
        if (item.browserButton && item.browserButton->objectName() == tileName)
            return item.browserButton;
    }
    return nullptr;
}

// The name under the icon: on two lines where one is too narrow ("Google" over "Chrome"), each cut
// with an ellipsis where it is still wider than the tile.
QString BrowserCollection::tileText(const QString& browser, const QFontMetrics& metrics)
{
    const int room = tileWidth - 4;
    const qsizetype space = browser.indexOf(QLatin1Char(' '));
    if (metrics.horizontalAdvance(browser) <= room || space < 0)
        return metrics.elidedText(browser, Qt::ElideRight, room);
    return metrics.elidedText(browser.left(space), Qt::ElideRight, room) + QLatin1Char('\n') +
           metrics.elidedText(browser.mid(space + 1), Qt::ElideRight, room);
}

int BrowserCollection::tileHeight() const
{
    return iconSize + 2 * fontMetrics().height() + 8;
}

int BrowserCollection::columns() const
{
    return int(std::min<qsizetype>(m_array.size(), maxColumns));
}

void BrowserCollection::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    layoutTiles();
}

void BrowserCollection::layoutTiles()
{
    const qreal left = sectionInsets().left();
    const int perRow = std::max(1, columns());
    const int rows = int((m_items.size() + perRow - 1) / perRow);
    const int top = (height() - rows * tileHeight()) / 2;
    for (size_t i = 0; i < m_items.size(); ++i) {
        if (m_items[i].browserButton)
            m_items[i].browserButton->setGeometry(int(left + qreal(tileWidth) * qreal(int(i) % perRow)),
                                                  top + int(i) / perRow * tileHeight(), tileWidth,
                                                  tileHeight());
    }
}
