#include "ui/AccessRequestDialog.h"

#include "ui/FileDialogOpenPanel.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

AccessRequestDialog::AccessRequestDialog(const OpenPanelRequest& request, QWidget* parent)
    : QDialog(parent), m_request(request)
{
    setWindowTitle(request.title.isEmpty() ? QApplication::applicationName() : request.title);
    setWindowIcon(QIcon::fromTheme(QStringLiteral("folder-home")));
    const QString folder = QDir::cleanPath(request.directory);

    auto* icon = new QLabel(this);
    icon->setPixmap(
        QIcon::fromTheme(QStringLiteral("folder-home"), style()->standardIcon(QStyle::SP_DirHomeIcon))
            .pixmap(48, 48));
    auto* message = new QLabel(request.message, this);
    message->setWordWrap(true);
    auto* path = new QLabel(QStringLiteral("<b>%1</b>").arg(folder.toHtmlEscaped()), this);
    path->setTextInteractionFlags(Qt::TextSelectableByMouse);
    path->setAccessibleName(tr("Folder: %1").arg(folder));
    auto* texts = new QVBoxLayout;
    texts->addWidget(message);
    texts->addWidget(path);
    auto* top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addLayout(texts, 1);

    auto* buttons = new QDialogButtonBox(this);
    m_allow = buttons->addButton(request.prompt.isEmpty() ? tr("Allow") : request.prompt,
                                 QDialogButtonBox::AcceptRole);
    m_other = buttons->addButton(tr("Choose Another Folder…"), QDialogButtonBox::ActionRole);
    QPushButton* cancel = buttons->addButton(QDialogButtonBox::Cancel);
    m_allow->setAccessibleName(m_allow->text());
    m_other->setAccessibleName(tr("Choose Another Folder"));
    cancel->setAccessibleName(tr("Cancel"));
    const bool allowed = !request.shouldEnable || request.shouldEnable(QUrl::fromLocalFile(folder));
    m_allow->setEnabled(allowed);
    m_allow->setDefault(allowed);
    m_allow->setFocus();
    connect(m_allow, &QPushButton::clicked, this, [this, folder] {
        m_chosen = QUrl::fromLocalFile(folder);
        accept();
    });
    connect(m_other, &QPushButton::clicked, this, &AccessRequestDialog::chooseAnotherFolder);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    setMinimumWidth(440);
}

// Only the folder asked for and the folders above it can be chosen there (a grant of a folder inside
// would not cover what is asked for).
void AccessRequestDialog::chooseAnotherFolder()
{
    OpenPanelRequest folders = m_request;
    folders.canChooseFiles = false;
    folders.canChooseDirectories = true;
    const std::unique_ptr<QFileDialog> dialog = FileDialogOpenPanel::dialogFor(folders, this);
    if (dialog->exec() != QDialog::Accepted || dialog->selectedUrls().isEmpty())
        return;
    m_chosen = dialog->selectedUrls().first();
    accept();
}
