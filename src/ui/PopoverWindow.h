#pragma once

#include <QWidget>

// What the popovers share: a frameless window on a soft gradient of the theme's colours with a
// rounded outline, closed by Escape.
class PopoverWindow : public QWidget
{
    Q_OBJECT
public:
    explicit PopoverWindow(Qt::WindowFlags flags, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};
