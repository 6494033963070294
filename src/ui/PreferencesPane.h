#pragma once

#include <QIcon>
#include <QWidget>

#include <optional>

// One pane of the preferences window: its toolbar item and its view.
class PreferencesPane : public QWidget
{
    Q_OBJECT
public:
    using QWidget::QWidget;

    // Names the pane, in the stored choice of pane too.
    virtual QString identifier() const = 0;
    virtual QIcon toolbarItemImage() const = 0;
    virtual QString toolbarItemLabel() const = 0;
    // No value: the height is resizable when the view's size policy lets it grow.
    virtual std::optional<bool> hasResizableHeight() const { return std::nullopt; }
    // Saves an edit still in progress; false keeps the pane up (the edit cannot be saved as it is).
    virtual bool commitEditing() { return true; }
    virtual void viewWillAppear() {}
    virtual void viewDidDisappear() {}
};
