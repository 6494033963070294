#pragma once

#include <QWidget>

// Shows a window above the others with the keyboard, as a click on the tray item or a menu entry asks.
inline void bringToFront(QWidget& window)
{
    window.show();
    window.raise();
    window.activateWindow();
}
