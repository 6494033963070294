#include "cleaners/Profiles.h"

#include "core/BrowserCatalogue.h"
#include "sandbox/Sandbox.h"

namespace Profiles {

QStringList chromiumFamily(const CleanerServices& services, const QString& browser)
{
    const QString root = BrowserCatalogue::chromiumDataRoot(browser);
    if (root.isEmpty())
        return {};
    if (browser == BrowserCatalogue::opera)
        return {root};
    QStringList folders;
    const QVariantMap profiles = services.catalogue.userProfiles(browser);
    for (auto it = profiles.keyBegin(); it != profiles.keyEnd(); ++it) {
        if (const std::optional<QString> folder = services.sandbox.childPath(root, *it))
            folders.append(*folder);
    }
    return folders;
}

QStringList firefox(const CleanerServices& services)
{
    QStringList folders;
    const QString root = BrowserCatalogue::firefoxProfilesRoot;
    for (const QString& name : services.sandbox.folderContentsOf(root)) {
        if (const std::optional<QString> folder = services.sandbox.childPath(root, name))
            folders.append(*folder);
    }
    return folders;
}

} // namespace Profiles
