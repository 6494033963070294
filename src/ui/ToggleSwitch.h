#pragma once

#include <QAbstractButton>
#include <QVariantAnimation>

// An on/off switch: a rounded track with a knob that slides to its new side. Checkable; Space switches
// it when it has focus (as a check box: Enter, pressed twice in a row on a tile, must not switch the
// first category), and the accessible state follows the check state.
class ToggleSwitch : public QAbstractButton
{
    Q_OBJECT
public:
    explicit ToggleSwitch(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    // Where the knob is, from 0.0 (off) to 1.0 (on); it moves over 120 ms after each change.
    qreal knobPosition() const { return m_position; }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override;

private:
    QVariantAnimation m_slide;
    qreal m_position = 0.0;
};
