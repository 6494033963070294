#pragma once

#include <QStringList>
#include <QUrl>

// The navigation rule of the permission panel: only the requested path itself and the folders
// above it can be chosen.
class AppSandboxFileAccessOpenSavePanelDelegate
{
public:
    explicit AppSandboxFileAccessOpenSavePanelDelegate(const QUrl& fileURL);

    bool panelShouldEnableURL(const QUrl& url) const;
    const QStringList& pathComponents() const { return m_pathComponents; }

private:
    QStringList m_pathComponents;
};
