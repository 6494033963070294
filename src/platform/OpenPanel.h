#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

// The request of an open panel that asks the user to choose a file or folder.
struct OpenPanelRequest
{
    QString title;
    QString message;
    QString prompt;
    QString directory; // the folder the panel starts in
    bool canCreateDirectories = false;
    bool canChooseFiles = true;
    bool canChooseDirectories = true;
    bool allowsMultipleSelection = false;
    bool showsHiddenFiles = false;
    bool extensionHidden = false;
    std::function<bool(const QUrl&)> shouldEnable; // which items may be chosen
};

// Asks the user; the UI shows a file dialog, the command-line cleaner a terminal prompt, tests
// answer from a script. Always called on the main thread.
class OpenPanel
{
public:
    virtual ~OpenPanel() = default;
    // The chosen item, or no value when the user cancelled.
    virtual std::optional<QUrl> runModal(const OpenPanelRequest& request) = 0;
};
