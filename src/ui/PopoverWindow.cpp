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

void PopoverWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0, palette().color(QPalette::Base));
    gradient.setColorAt(1, palette().color(QPalette::Window));
    painter.setBrush(gradient);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
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
