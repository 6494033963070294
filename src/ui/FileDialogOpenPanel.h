#pragma once

#include "platform/OpenPanel.h"

#include <QFileDialog>

// The permission panel on a desktop: the folder asked for with "Allow" ready (AccessRequestDialog);
// another folder is chosen in Qt's own file dialog (the same on every desktop, and one we can
// restrict), where only what the request enables can be entered or chosen. Folders off the path to
// the requested one are greyed, and its "Allow" refuses anything else, whatever is typed.
class FileDialogOpenPanel final : public OpenPanel
{
public:
    std::optional<QUrl> runModal(const OpenPanelRequest& request) override;

    // The restricted file dialog for a request, not yet shown.
    static std::unique_ptr<QFileDialog> dialogFor(const OpenPanelRequest& request, QWidget* parent = nullptr);
};
