#include "sandbox/AppSandboxFileAccessOpenSavePanelDelegate.h"

#include "sandbox/FileUrl.h"

namespace {
const char kSource[] = "sandbox/AppSandboxFileAccessOpenSavePanelDelegate";
}

AppSandboxFileAccessOpenSavePanelDelegate::AppSandboxFileAccessOpenSavePanelDelegate(const QUrl& fileURL)
{
    assertParameter(!fileURL.isEmpty(), "fileURL", kSource);
    m_pathComponents = FileUrl::pathComponents(fileURL);
}

bool AppSandboxFileAccessOpenSavePanelDelegate::panelShouldEnableURL(const QUrl& url) const
{
    assertParameter(!url.isEmpty(), "url", kSource);
    const QStringList components = FileUrl::pathComponents(url);
    if (components.size() > m_pathComponents.size())
        return false;
    for (qsizetype i = 0; i < components.size(); ++i) {
        if (components[i] != m_pathComponents[i])
            return false;
    }
    return true;
}
