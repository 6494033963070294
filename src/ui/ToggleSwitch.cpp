#include "ui/ToggleSwitch.h"

#include <QPainter>

ToggleSwitch::ToggleSwitch(QWidget* parent) : QAbstractButton(parent)
{
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_slide.setDuration(120);
    m_slide.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_slide, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_position = value.toReal();
        update();
    });
    // Set from code (a settings change) or by the user: the knob follows either way.
    connect(this, &QAbstractButton::toggled, this, [this](bool on) {
        m_slide.stop();
        m_slide.setStartValue(m_position);
        m_slide.setEndValue(on ? 1.0 : 0.0);
        if (isVisible())
            m_slide.start();
        else
            m_position = on ? 1.0 : 0.0;
    });
}

QSize ToggleSwitch::sizeHint() const
{
    return {40, 22};
}

bool ToggleSwitch::hitButton(const QPoint& pos) const
{
    return rect().contains(pos);
}

void ToggleSwitch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track = QRectF(rect()).adjusted(1, 1, -1, -1);
    const qreal radius = track.height() / 2;
    const QPalette& colours = palette();
    // The track blends from the off colour to the highlight as the knob travels.
    // Off: the text colour faded into the background, so the track shows in light and dark themes and
    // on the window's gradient alike (the theme's "mid" colour all but vanishes in some dark themes).
    const QColor text = colours.color(QPalette::WindowText), back = colours.color(QPalette::Window);
    QColor off;
    off.setRgbF(back.redF() + (text.redF() - back.redF()) * 0.45,
                back.greenF() + (text.greenF() - back.greenF()) * 0.45,
                back.blueF() + (text.blueF() - back.blueF()) * 0.45);
    const QColor on = colours.color(QPalette::Highlight);
    QColor fill;
    fill.setRgbF(off.redF() + (on.redF() - off.redF()) * m_position,
                 off.greenF() + (on.greenF() - off.greenF()) * m_position,
                 off.blueF() + (on.blueF() - off.blueF()) * m_position);
    if (!isEnabled())
        fill.setAlphaF(0.4);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(track, radius, radius);

    const qreal knob = track.height() - 4;
    const qreal x = track.left() + 2 + (track.width() - knob - 4) * m_position;
    // A faint rim keeps the white knob apart from a light track.
    painter.setPen(QPen(QColor(0, 0, 0, 60), 1));
    painter.setBrush(isEnabled() ? QColor(Qt::white) : colours.color(QPalette::Button));
    painter.drawEllipse(QRectF(x, track.top() + 2, knob, knob));

    // In the text colour of where it sits: seen on the window's gradient and in a popover alike.
    if (hasFocus()) {
        QPen ring(colours.color(QPalette::WindowText), 1.5);
        painter.setPen(ring);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius + 1, radius + 1);
    }
}
