#pragma once

#include <QWidget>

// The background the popovers and the warning window share: a soft gradient of the theme's colours
// with an outline, its corners rounded by `cornerRadius`.
void paintPanel(QWidget& widget, qreal cornerRadius);

// What the popovers share: a frameless window on a soft gradient of the theme's colours with a
// rounded outline, closed by Escape.
class PopoverWindow : public QWidget
{
    Q_OBJECT
public:
    explicit PopoverWindow(Qt::WindowFlags flags, QWidget* parent = nullptr);

protected:
    // Moves the popover's top left corner to `topLeft`, or as near as keeps it whole on the anchor's
    // screen (a window at the top edge would push a popover beside it off the screen).
    void moveOnScreen(QPoint topLeft, const QWidget& anchor);
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};
