#include "ui/WarningController.h"

#include "ui/FlatButton.h"
#include "ui/PopoverWindow.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

WarningController::WarningController(QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      m_closeButton(new FlatButton(tr("Close"), this)),
      m_quitButton(new FlatButton(tr("Quit Corvella"), this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QString());
    setAccessibleName(tr("Corvella cannot read Safari's files"));
    const int width = 420, margin = 22;
    setFixedWidth(width);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, 18, margin, 18);
    auto* title = new QLabel(tr("Corvella cannot read Safari's files"), this);
    QFont bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    title->setWordWrap(true); // longer in some languages
    title->setMinimumHeight(title->heightForWidth(width - 2 * margin));
    auto* text =
        new QLabel(tr("Safari keeps its history, cookies and caches where only programs you allow may "
                      "read them. Until Corvella is allowed to read them, it cannot protect Safari, "
                      "so Safari stays deactivated.\n\nAllow Corvella full access to your files in "
                      "your system's privacy settings, then activate Safari again."),
                   this);
    text->setWordWrap(true);
    // A window does not ask its wrapped text how tall it wants to be at this width; tell it.
    text->setMinimumHeight(text->heightForWidth(width - 2 * margin));
    layout->addWidget(title);
    layout->addWidget(text);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    for (FlatButton* button : {m_quitButton, m_closeButton}) {
        button->setMinimumSize(110, 28);
        buttons->addWidget(button);
    }
    layout->addLayout(buttons);
    m_closeButton->setDefault(true);
    connect(m_closeButton, &FlatButton::clicked, this, &WarningController::close);
    connect(m_quitButton, &FlatButton::clicked, this, [this] {
        releaseWindow();
        emit quitCorvella();
    });
}

void WarningController::releaseWindow()
{
    if (m_released)
        return;
    m_released = true;
    emit releaseFileAccessWindow(this);
}

void WarningController::closeEvent(QCloseEvent* event)
{
    releaseWindow();
    QWidget::closeEvent(event);
}

void WarningController::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void WarningController::mousePressEvent(QMouseEvent* event)
{
    m_dragOffset = event->globalPosition().toPoint() - frameGeometry().topLeft();
}

void WarningController::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        move(event->globalPosition().toPoint() - m_dragOffset);
}

void WarningController::paintEvent(QPaintEvent*)
{
    paintPanel(*this, 0); // square: a window of its own, not a popover
}
