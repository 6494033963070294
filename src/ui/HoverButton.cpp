#include "ui/HoverButton.h"

#include <QKeyEvent>
#include <QPainter>

HoverButton::HoverButton(QWidget* parent) : QToolButton(parent)
{
    setAutoRaise(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
}

void HoverButton::enterEvent(QEnterEvent* event)
{
    QToolButton::enterEvent(event);
    emit entered();
}

void HoverButton::leaveEvent(QEvent* event)
{
    QToolButton::leaveEvent(event);
    emit left();
}

void HoverButton::focusInEvent(QFocusEvent* event)
{
    QToolButton::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
        emit entered();
}

void HoverButton::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    // What the pointer's entry shows, again: after a click changed the button, say.
    if (event->key() == Qt::Key_Down) {
        emit entered();
        return;
    }
    QToolButton::keyPressEvent(event);
}

// The keyboard's place is always seen: a ring in the text colour of where the button sits.
void HoverButton::paintEvent(QPaintEvent* event)
{
    QToolButton::paintEvent(event);
    if (!hasFocus())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::WindowText), 1.5, Qt::DotLine));
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 5, 5);
}
