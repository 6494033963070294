#include "ui/GeneralPopover.h"

#include "ui/BringToFront.h"
#include "ui/FlatButton.h"

#include <QLabel>
#include <QVBoxLayout>

GeneralPopover::GeneralPopover(QWidget* parent)
    : PopoverWindow(Qt::Tool, parent), m_preferencesButton(new FlatButton(tr("Preferences…"), this)),
      m_quitButton(new FlatButton(tr("Quit Corvella"), this))
{
    setAccessibleName(tr("About Corvella"));
    setFixedWidth(280);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 14, 16, 14);
    auto* text = new QLabel(tr("When a browser you protect quits, Corvella removes the data you chose for it "
                               "and keeps your bookmarks, passwords and extensions. Point at a browser "
                               "below to choose what goes."),
                            this);
    text->setWordWrap(true);
    layout->addWidget(text);
    for (FlatButton* button : {m_preferencesButton, m_quitButton}) {
        button->setMinimumHeight(28);
        layout->addWidget(button);
    }
    connect(m_preferencesButton, &FlatButton::clicked, this, &GeneralPopover::preferencesRequested);
    connect(m_quitButton, &FlatButton::clicked, this, &GeneralPopover::quitRequested);
}

void GeneralPopover::togglePopover(QWidget* anchor)
{
    if (isVisible()) {
        close();
        return;
    }
    adjustSize();
    if (anchor) {
        const QPoint beside = anchor->mapToGlobal(QPoint(anchor->width(), anchor->height() / 2));
        moveOnScreen(QPoint(beside.x() + 4, beside.y() - height() / 2), *anchor);
    }
    bringToFront(*this);
    m_preferencesButton->setFocus(Qt::PopupFocusReason);
}
