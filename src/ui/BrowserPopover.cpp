#include "ui/BrowserPopover.h"

#include "catalogue/BrowserCatalogue.h"
#include "core/AppDelegate.h"
#include "core/RemovalRun.h"
#include "core/SettingsController.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "ui/IconTransformer.h"
#include "ui/ToggleSwitch.h"

#include <QGridLayout>
#include <QLocale>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr qreal kDefaultWidth = 300.0;

} // namespace

BrowserPopover::BrowserPopover(AppDelegate& delegate, const IconTransformer& icons, QWidget* parent)
    : PopoverWindow(Qt::ToolTip, parent), m_delegate(delegate), m_icons(icons),
      m_keptSitesButton(new QPushButton(this)), m_iconView(new QLabel(this)),
      m_browserInfoLabel(new QLabel(this)), m_browserLabel(new QLabel(this)),
      m_browserSetttingsView(new QWidget(this)), m_protectSwitch(new ToggleSwitch(this)),
      m_lastCleanedLabel(new QLabel(this))
{
    setAccessibleName(tr("Browser settings"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    auto* header = new QHBoxLayout;
    m_iconView->setFixedSize(40, 40);
    header->addWidget(m_iconView);
    auto* texts = new QVBoxLayout;
    m_browserInfoLabel->setWordWrap(true);
    QFont bold = m_browserLabel->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    m_browserLabel->setFont(bold);
    texts->addWidget(m_browserInfoLabel);
    texts->addWidget(m_browserLabel);
    texts->addWidget(m_lastCleanedLabel);
    header->addLayout(texts, 1);
    header->addWidget(m_protectSwitch, 0, Qt::AlignVCenter);
    connect(m_protectSwitch, &ToggleSwitch::clicked, this, &BrowserPopover::protectSwitched);
    layout->addLayout(header);

    auto* grid = new QGridLayout(m_browserSetttingsView);
    grid->setContentsMargins(0, 8, 0, 0);
    grid->setVerticalSpacing(4);
    int row = 0;
    for (const QString& category : SettingsKeys::categories) {
        auto* label = new QLabel(RemovalRun::labelFor(category), m_browserSetttingsView);
        auto* toggle = new ToggleSwitch(m_browserSetttingsView);
        toggle->setObjectName(category + QStringLiteral("Button"));
        toggle->setAccessibleName(label->text());
        label->setBuddy(toggle);
        grid->addWidget(label, row, 0);
        grid->addWidget(toggle, row, 1, Qt::AlignRight);
        // Only a user's switch writes the setting; a settings change moves the switch silently.
        connect(toggle, &ToggleSwitch::clicked, this, [this, category](bool on) {
            if (!m_delegate.currentBrowser().isEmpty())
                m_delegate.setCategorySelected(m_delegate.currentBrowser(), category, on);
        });
        m_toggles.insert(category, toggle);
        m_labels.insert(category, label);
        ++row;
    }
    m_keptSitesButton->setParent(m_browserSetttingsView);
    m_keptSitesButton->setFlat(true);
    m_keptSitesButton->setAccessibleName(tr("Kept sites"));
    m_keptSitesButton->setToolTip(tr("The sites whose cookies and site data every clean keeps"));
    grid->addWidget(m_keptSitesButton, row, 0, 1, 2, Qt::AlignLeft);
    connect(m_keptSitesButton, &QPushButton::clicked, this, &BrowserPopover::keptSitesRequested);
    layout->addWidget(m_browserSetttingsView, 1);
    layout->addStretch();
    m_browserSetttingsView->hide();
    connect(&m_delegate, &AppDelegate::settingsChanged, this, &BrowserPopover::updateSettingsBindings);
}

qreal BrowserPopover::popoverWidth()
{
    bool ok = false;
    const qreal width = tr("PopoverWindowWidth").toDouble(&ok);
    return ok && width > 0 ? width : kDefaultWidth;
}

bool BrowserPopover::settingsViewShown() const
{
    return m_browserSetttingsView->isVisibleTo(this);
}

void BrowserPopover::setHeight(qreal height)
{
    setFixedSize(int(popoverWidth()), int(height));
}

void BrowserPopover::showBrowserPopover(const std::optional<QVariantMap>& request, QWidget* anchor)
{
    m_delegate.setCurrentBrowser(QString());
    m_browserSetttingsView->hide();
    m_browserInfoLabel->show();
    if (!request) {
        setHeight(noBrowserHeight);
        m_browserInfoLabel->setText(tr("Please activate any Browsers you wish to protect here"));
        m_browserLabel->clear();
        m_browserLabel->hide();
        m_iconView->clear();
        m_iconView->hide();
        m_protectSwitch->hide();
        m_lastCleanedLabel->hide();
        present(false, anchor);
        return;
    }
    const QString browser = request->value(QStringLiteral("browser")).toString();
    m_browserLabel->setText(browser);
    m_browserLabel->show();
    m_iconView->setPixmap(m_icons.iconForBrowser(browser).pixmap(40, 40));
    m_iconView->show();
    // The browser as it is now: a click on its tile activates it before this popover, built from the
    // tile as it was, is shown.
    m_protectSwitch->setChecked(m_delegate.isActivated(browser));
    m_protectSwitch->setAccessibleName(tr("Protect %1").arg(browser));
    m_protectSwitch->setToolTip(m_protectSwitch->accessibleName());
    m_protectSwitch->show();
    m_lastCleanedLabel->setText(lastCleanedText(m_delegate.lastCleaned(browser)));
    m_lastCleanedLabel->setVisible(!request->contains(QStringLiteral("isDisabled")));
    for (const QString& category : SettingsKeys::categories) {
        const bool offered = m_delegate.offersCategory(browser, category);
        m_toggles.value(category)->setVisible(offered);
        m_labels.value(category)->setVisible(offered);
    }
    if (request->contains(QStringLiteral("isDisabled"))) {
        m_browserInfoLabel->setText(tr("Click to activate protection for"));
        setHeight(shortHeight);
        present(false, anchor);
        return;
    }
    m_delegate.setCurrentBrowser(browser);
    updateSettingsBindings();
    m_keptSitesButton->setText(
        tr("Kept sites: %1…").arg(m_delegate.defaults().arrayForKey(SettingsKeys::keptSites).size()));
    if (m_delegate.editingBrowserSettings()) {
        setHeight(settingsHeight);
        m_browserSetttingsView->show();
        m_browserInfoLabel->hide();
        present(true, anchor);
    } else {
        m_browserInfoLabel->setText(tr("Click to change settings for"));
        setHeight(shortHeight);
        present(false, anchor);
    }
}

// Pointing shows the popover without taking the keyboard from the window; settings take it. Not a
// grabbing popup: a click on the tile whose settings are open must reach the tile (it deactivates
// the browser), so the face closes the popover on other presses itself.
void BrowserPopover::present(bool takesKeyboard, QWidget* anchor)
{
    m_anchor = anchor;
    const Qt::WindowFlags flags =
        (takesKeyboard ? Qt::Tool : Qt::ToolTip) | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint;
    if (windowFlags() != flags) {
        m_hidingOnPurpose = true;
        setWindowFlags(flags);
        m_hidingOnPurpose = false;
    }
    setAttribute(Qt::WA_ShowWithoutActivating, !takesKeyboard);
    if (anchor)
        moveOnScreen(placeBeside(*anchor), *anchor);
    show();
    raise();
    if (takesKeyboard) {
        activateWindow();
        if (ToggleSwitch* first = m_toggles.value(SettingsKeys::categories.first()))
            first->setFocus(Qt::PopupFocusReason);
    }
}

// The switch says at once what it did: activated, the browser's settings are shown; deactivated,
// the offer to activate it again.
void BrowserPopover::protectSwitched(bool on)
{
    const QString browser = m_browserLabel->text();
    if (on) {
        m_delegate.enableBrowser(browser + BrowserCatalogue::disabledSuffix);
    } else {
        m_delegate.setCurrentBrowser(browser);
        m_delegate.disableBrowser();
    }
    QVariantMap request{{QStringLiteral("browser"), browser}};
    if (!on)
        request.insert(QStringLiteral("isDisabled"), true);
    showBrowserPopover(request, m_anchor);
}

// Under the tile row where the screen has room, else beside the window, else above the row: never
// over the tiles, which must stay within reach of the pointer.
QPoint BrowserPopover::placeBeside(const QWidget& anchor) const
{
    const QRect tiles(anchor.mapToGlobal(QPoint(0, 0)), anchor.size());
    const QRect below(QPoint(tiles.center().x() - width() / 2, tiles.bottom() + 5), size());
    const QScreen* screen = anchor.screen();
    if (!screen)
        return below.topLeft();
    const QRect room = screen->availableGeometry();
    const QRect window = anchor.window()->frameGeometry();
    const int top = std::max(room.top(), tiles.bottom() - height());
    for (const QRect& place : {below, QRect(QPoint(window.right() + 5, top), size()),
                               QRect(QPoint(window.left() - 5 - width(), top), size())}) {
        if (room.contains(place))
            return place.topLeft();
    }
    return {below.left(), tiles.top() - 5 - height()};
}

QString BrowserPopover::lastCleanedText(const std::optional<QDateTime>& when)
{
    return when ? tr("Last cleaned %1").arg(QLocale().toString(when->toLocalTime(), QLocale::ShortFormat))
                : tr("Not cleaned yet");
}

void BrowserPopover::hideBrowserPopover()
{
    m_delegate.setCurrentBrowser(QString());
    m_browserSetttingsView->hide();
    setHeight(shortHeight);
    hide();
}

void BrowserPopover::updateSettingsBindings()
{
    const QString browser = m_delegate.currentBrowser();
    const QVariantMap content = m_delegate.settingsController().content();
    for (auto it = m_toggles.cbegin(); it != m_toggles.cend(); ++it) {
        it.value()->setEnabled(!browser.isEmpty());
        it.value()->setChecked(SettingsController::isSelected(content, browser, it.key()));
    }
}

void BrowserPopover::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    if (m_hidingOnPurpose)
        return;
    m_delegate.popoverIsClosing();
    m_browserSetttingsView->hide();
    setHeight(shortHeight);
}
