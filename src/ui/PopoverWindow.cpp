#include "ui/PopoverWindow.h"

#include <algorithm>

#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

PopoverWindow::PopoverWindow(Qt::WindowFlags flags, QWidget* parent)
    : QWidget(parent, flags | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint)
{}

void PopoverWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void paintPanel(QWidget& widget, qreal cornerRadius)
{
    QPainter painter(&widget);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient gradient(0, 0, 0, widget.height());
    gradient.setColorAt(0, widget.palette().color(QPalette::Base));
    gradient.setColorAt(1, widget.palette().color(QPalette::Window));
    painter.setBrush(gradient);
    painter.setPen(QPen(widget.palette().color(QPalette::Mid), 1));
    painter.drawRoundedRect(QRectF(widget.rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

void PopoverWindow::paintEvent(QPaintEvent*)
{
    paintPanel(*this, 8);
}

void PopoverWindow::moveOnScreen(QPoint topLeft, const QWidget& anchor)
{
    if (const QScreen* screen = anchor.screen()) {
        const QRect room = screen->availableGeometry();
        topLeft.setX(std::clamp(topLeft.x(), room.left(), std::max(room.left(), room.right() + 1 - width())));
        topLeft.setY(std::clamp(topLeft.y(), room.top(), std::max(room.top(), room.bottom() + 1 - height())));
    }
    move(topLeft);
}
