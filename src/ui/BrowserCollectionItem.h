#pragma once

#include "ui/HoverButton.h"

#include <QPointer>

// One tile: a button that carries its tile name ("Chromium" or "Chromium-disabled") as identifier.
class BrowserCollectionItem
{
public:
    explicit BrowserCollectionItem(HoverButton* button) : browserButton(button) {}

    QPointer<HoverButton> browserButton;
};
