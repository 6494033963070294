#include "ui/FlatButton.h"

#include <QPainter>

FlatButton::FlatButton(const QString& text, QWidget* parent) : QPushButton(text, parent)
{
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(text);
}

void FlatButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colours = palette();
    QColor plate = colours.color(QPalette::Button);
    if (isDown())
        plate = plate.darker(120);
    else if (underMouse())
        plate = plate.lighter(115);
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setPen(hasFocus() ? QPen(colours.color(QPalette::Highlight), 2) : Qt::NoPen);
    painter.setBrush(plate);
    painter.drawRoundedRect(area, 6, 6);
    painter.setPen(colours.color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    if (!icon().isNull()) {
        const QSize size = iconSize();
        icon().paint(&painter,
                     QRect(QPoint((width() - size.width()) / 2, (height() - size.height()) / 2), size));
    } else {
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
}
