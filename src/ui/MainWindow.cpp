#include "ui/MainWindow.h"

#include "ui/BringToFront.h"
#include "ui/BrowserCollection.h"
#include "ui/HoverButton.h"
#include "ui/ToggleSwitch.h"

#include <QApplication>

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr int kWidth = 400;
constexpr int kHeight = 210;

} // namespace

MainWindow::MainWindow(const IconTransformer& icons, QWidget* parent)
    : QWidget(parent), m_enabledButton(new ToggleSwitch(this)), m_infoLabel(new QLabel(this)),
      m_grantButton(new QPushButton(tr("Grant Access…"), this)),
      m_collectionView(new BrowserCollection(icons, this)), m_infoButton(new HoverButton(this))
{
    setWindowTitle(tr("Corvella"));
    setWindowIcon(
        QIcon::fromTheme(QStringLiteral("security-high"), QIcon(QStringLiteral(":/icons/menu.svg"))));
    setFixedSize(kWidth, kHeight);
    // White text on the window's own gradient, whatever the theme.
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, Qt::white);
    colours.setColor(QPalette::ButtonText, Qt::white);
    // What lies behind the controls (the gradient's middle), for those that blend into it.
    colours.setColor(QPalette::Window, QColor(0x3a, 0x4f, 0x8b));
    setPalette(colours);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 14, 20, 14);
    auto* top = new QHBoxLayout;
    auto* title = new QLabel(tr("Corvella"), this);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setWeight(QFont::Light);
    title->setFont(titleFont);
    auto* version = new QLabel(tr("v%1").arg(QCoreApplication::applicationVersion()), this);
    version->setAccessibleName(tr("Version %1").arg(QCoreApplication::applicationVersion()));
    top->addWidget(title);
    top->addWidget(version, 0, Qt::AlignBottom);
    top->addStretch();
    m_infoButton->setIcon(
        QIcon::fromTheme(QStringLiteral("help-about"), QIcon(QStringLiteral(":/icons/info.svg"))));
    m_infoButton->setAccessibleName(tr("About Corvella"));
    m_infoButton->setToolTip(tr("About Corvella"));
    top->addWidget(m_infoButton);
    layout->addLayout(top);

    auto* protection = new QHBoxLayout;
    m_enabledButton->setAccessibleName(tr("Protection"));
    m_infoLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_infoLabel->setWordWrap(true); // a longer language's text goes on two lines, not off the edge
    QFont thin = m_infoLabel->font();
    thin.setWeight(QFont::Thin);
    m_infoLabel->setFont(thin);
    protection->addWidget(m_enabledButton);
    protection->addWidget(m_infoLabel, 1);
    m_grantButton->setAccessibleName(tr("Grant access to the home folder"));
    // A button as the theme draws it, not in the window's white text.
    QPalette button = m_grantButton->palette();
    for (const QPalette::ColorRole role : {QPalette::ButtonText, QPalette::WindowText, QPalette::Button})
        button.setColor(role, QApplication::palette().color(role));
    m_grantButton->setPalette(button);
    m_grantButton->hide();
    connect(m_grantButton, &QPushButton::clicked, this, &MainWindow::grantAccessRequested);
    protection->addWidget(m_grantButton);
    layout->addLayout(protection);
    layout->addStretch();
    layout->addWidget(m_collectionView);

    // The keyboard starts on something harmless: Space there opens the about panel, it does not
    // switch protection off.
    setTabOrder(m_infoButton, m_enabledButton);
    setTabOrder(m_enabledButton, m_grantButton);
    setTabOrder(m_grantButton, m_collectionView);
    m_infoButton->setFocus(Qt::OtherFocusReason);
    // Wider than usual only when a row of many browsers needs it, taller when they need a second row.
    const int oneRow = m_collectionView->minimumHeight();
    connect(m_collectionView, &BrowserCollection::reloaded, this, [this, oneRow] {
        setFixedSize(std::max(kWidth, m_collectionView->minimumWidth() + 40),
                     kHeight + std::max(0, m_collectionView->minimumHeight() - oneRow));
    });
    auto* preferences = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma), this);
    connect(preferences, &QShortcut::activated, this, &MainWindow::preferencesRequested);
}

void MainWindow::updateInfoLabel(bool isRunning, bool hasAccess)
{
    m_infoLabel->setText(!hasAccess  ? tr("No access to your home folder")
                         : isRunning ? tr("Corvella is Enabled")
                                     : tr("Corvella is Disabled"));
    m_grantButton->setVisible(!hasAccess);
    m_enabledButton->setChecked(isRunning);
}

void MainWindow::setShownInTaskBar(bool shown)
{
    // A new flag makes a new native window, which would take the keyboard away: only on a change.
    if (windowFlags().testFlag(Qt::Tool) == !shown)
        return;
    const bool visible = isVisible();
    setWindowFlag(Qt::Tool, !shown);
    if (visible)
        show();
}

void MainWindow::openWindow()
{
    bringToFront(*this);
}

void MainWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const bool dark =
        QApplication::palette().color(QPalette::Window).lightness() < 128; // the theme's, not ours
    QLinearGradient gradient(0, 0, width(), height());
    gradient.setColorAt(0, dark ? QColor(0x1d, 0x2b, 0x3a) : QColor(0x2d, 0x5f, 0x8a));
    gradient.setColorAt(1, dark ? QColor(0x2a, 0x1f, 0x3d) : QColor(0x4b, 0x3f, 0x8c));
    painter.fillRect(rect(), gradient);
}
