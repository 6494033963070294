#include "ui/FileDialogOpenPanel.h"

#include "ui/AccessRequestDialog.h"

#include <QFileSystemModel>
#include <QGridLayout>
#include <QLabel>
#include <QSortFilterProxyModel>

namespace {

// Greys what the request does not enable, so it can neither be entered nor chosen.
class EnabledItems final : public QSortFilterProxyModel
{
public:
    EnabledItems(std::function<bool(const QUrl&)> shouldEnable, QObject* parent)
        : QSortFilterProxyModel(parent), m_shouldEnable(std::move(shouldEnable))
    {}

    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        Qt::ItemFlags flags = QSortFilterProxyModel::flags(index);
        const auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
        if (files && index.isValid() &&
            !m_shouldEnable(QUrl::fromLocalFile(files->filePath(mapToSource(index)))))
            flags &= ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        return flags;
    }

private:
    std::function<bool(const QUrl&)> m_shouldEnable;
};

class PermissionDialog final : public QFileDialog
{
public:
    PermissionDialog(const OpenPanelRequest& request, QWidget* parent)
        : QFileDialog(parent, request.title, request.directory), m_shouldEnable(request.shouldEnable)
    {
        setOption(QFileDialog::DontUseNativeDialog); // a portal's dialog could not be restricted
        setAcceptMode(QFileDialog::AcceptOpen);
        // A request that takes folders is for a folder (a grant is always one): in a file dialog that
        // also takes files, choosing a folder would enter it instead.
        const bool foldersOnly = request.canChooseDirectories;
        setFileMode(foldersOnly                       ? QFileDialog::Directory
                    : request.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                      : QFileDialog::ExistingFile);
        setOption(QFileDialog::ShowDirsOnly, foldersOnly);
        setOption(QFileDialog::ReadOnly, !request.canCreateDirectories);
        QDir::Filters filter = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::AllDirs;
        if (request.showsHiddenFiles)
            filter |= QDir::Hidden;
        setFilter(filter);
        if (!request.prompt.isEmpty())
            setLabelText(QFileDialog::Accept, request.prompt);
        if (m_shouldEnable)
            setProxyModel(new EnabledItems(m_shouldEnable, this));
        if (auto* grid = qobject_cast<QGridLayout*>(layout()); grid && !request.message.isEmpty()) {
            auto* message = new QLabel(request.message, this);
            message->setWordWrap(true);
            grid->addWidget(message, grid->rowCount(), 0, 1, grid->columnCount());
        }
    }

    void accept() override
    {
        const QList<QUrl> chosen = selectedUrls();
        if (chosen.isEmpty())
            return;
        if (m_shouldEnable) {
            for (const QUrl& url : chosen) {
                if (!m_shouldEnable(url))
                    return; // typed or pasted past the greyed items
            }
        }
        QFileDialog::accept();
    }

private:
    std::function<bool(const QUrl&)> m_shouldEnable;
};

} // namespace

std::unique_ptr<QFileDialog> FileDialogOpenPanel::dialogFor(const OpenPanelRequest& request, QWidget* parent)
{
    return std::make_unique<PermissionDialog>(request, parent);
}

std::optional<QUrl> FileDialogOpenPanel::runModal(const OpenPanelRequest& request)
{
    AccessRequestDialog dialog(request);
    if (dialog.exec() != QDialog::Accepted || dialog.chosen().isEmpty())
        return std::nullopt;
    return dialog.chosen();
}
