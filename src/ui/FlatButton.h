#pragma once

#include <QPushButton>

// A borderless button drawn as a rounded plate that lightens under the pointer and shows a focus
// ring, in the palette's colours so it reads in light and dark themes.
class FlatButton : public QPushButton
{
    Q_OBJECT
public:
    explicit FlatButton(const QString& text, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
