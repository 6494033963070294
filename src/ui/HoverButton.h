#pragma once

#include <QToolButton>

// A button that says when the pointer enters or leaves it. Tabbing to it, or the Down key on it,
// counts as entering, so what a pointer shows on hover a keyboard user gets as well.
class HoverButton : public QToolButton
{
    Q_OBJECT
public:
    explicit HoverButton(QWidget* parent = nullptr);

signals:
    void entered();
    void left();

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};
