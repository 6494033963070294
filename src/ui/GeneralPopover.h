#pragma once

#include "ui/PopoverWindow.h"

class FlatButton;

// The popover of the info button: what Corvella does, and the way out.
class GeneralPopover : public PopoverWindow
{
    Q_OBJECT
public:
    explicit GeneralPopover(QWidget* parent = nullptr);

    // Shown beside the anchor, or closed when it is open.
    void togglePopover(QWidget* anchor);
    FlatButton* quitButton() const { return m_quitButton; }
    FlatButton* preferencesButton() const { return m_preferencesButton; }

signals:
    void quitRequested();
    void preferencesRequested();

private:
    FlatButton* m_preferencesButton;
    FlatButton* m_quitButton;
};
