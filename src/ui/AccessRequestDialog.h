#pragma once

#include "platform/OpenPanel.h"

#include <QDialog>

class QPushButton;

// The request for access as a user meets it: the folder asked for, by name, with "Allow" ready (and
// the default button), "Choose Another Folder…" for a folder above it (through the restricted file
// dialog), and Cancel. A grant is always of a folder, so this asks for one.
class AccessRequestDialog final : public QDialog
{
    Q_OBJECT
public:
    explicit AccessRequestDialog(const OpenPanelRequest& request, QWidget* parent = nullptr);

    // The folder the user allowed; empty until then.
    QUrl chosen() const { return m_chosen; }
    QPushButton* allowButton() const { return m_allow; }
    QPushButton* otherFolderButton() const { return m_other; }

private:
    void chooseAnotherFolder();

    OpenPanelRequest m_request;
    QUrl m_chosen;
    QPushButton* m_allow = nullptr;
    QPushButton* m_other = nullptr;
};
