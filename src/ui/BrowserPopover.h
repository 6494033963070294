#pragma once

#include "ui/PopoverWindow.h"

#include <QDateTime>
#include <QLabel>
#include <QMap>
#include <QVariantMap>

#include <optional>

class AppDelegate;
class IconTransformer;
class ToggleSwitch;

// The popover of the tile row: it asks to activate a browser, or shows the twelve category toggles
// of an activated one. Pointing at a tile shows it without taking the keyboard; the settings take
// the keyboard (Tab moves through the toggles, Space switches one, Escape closes). Closing it in any
// way ends settings mode.
class QPushButton;

class BrowserPopover : public PopoverWindow
{
    Q_OBJECT
public:
    static constexpr qreal noBrowserHeight = 72.0;
    static constexpr qreal shortHeight = 132.0;
    static constexpr qreal settingsHeight = 435.0;

    BrowserPopover(AppDelegate& delegate, const IconTransformer& icons, QWidget* parent = nullptr);

    // Width: the translated "PopoverWindowWidth", read each time a size is set.
    static qreal popoverWidth();

    // Fills the popover for the request (none: the plea to activate a browser) and shows it by the anchor.
    void showBrowserPopover(const std::optional<QVariantMap>& request, QWidget* anchor);
    void hideBrowserPopover();
    // The toggles follow the settings of the current browser.
    void updateSettingsBindings();

    bool settingsViewShown() const;
    ToggleSwitch* toggleFor(const QString& category) const { return m_toggles.value(category); }
    QString infoText() const { return m_browserInfoLabel->text(); }
    QString browserText() const { return m_browserLabel->text(); }
    QString lastCleanedText() const { return m_lastCleanedLabel->text(); }
    // "Last cleaned <date>" / "Not cleaned yet", in the user's locale.
    static QString lastCleanedText(const std::optional<QDateTime>& when);
    // "Protect <browser>": on while the shown browser is activated; switching it activates or
    // deactivates the browser.
    ToggleSwitch* protectSwitch() const { return m_protectSwitch; }
    // "Kept sites: N…" under the switches: opens the Kept Sites preferences.
    QPushButton* keptSitesButton() const { return m_keptSitesButton; }

signals:
    void keptSitesRequested();

protected:
    void hideEvent(QHideEvent* event) override;

private:
    void setHeight(qreal height);
    void present(bool takesKeyboard, QWidget* anchor);
    void protectSwitched(bool on);
    QPoint placeBeside(const QWidget& anchor) const;

    AppDelegate& m_delegate;
    const IconTransformer& m_icons;
    QPushButton* m_keptSitesButton;
    QLabel* m_iconView;
    QLabel* m_browserInfoLabel;
    QLabel* m_browserLabel;
    QWidget* m_browserSetttingsView;
    ToggleSwitch* m_protectSwitch;
    QLabel* m_lastCleanedLabel;
    QWidget* m_anchor = nullptr;
    QMap<QString, ToggleSwitch*> m_toggles;
    QMap<QString, QLabel*> m_labels;
    bool m_hidingOnPurpose = false;
};
