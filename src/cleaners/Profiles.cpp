#include "cleaners/Profiles.h"

#include "core/BrowserCatalogue.h"
#include "sandbox/Sandbox.h"

namespace Profiles {

QStringList chromiumFamilyKeys(const CleanerServices& services, const QString& browser)
{
    const QString root = BrowserCatalogue::chromiumDataRoot(browser);
    if (root.isEmpty())
        return {};
    if (browser == BrowserCatalogue::opera)
        return {QString()};
    QStringList keys;
    const QVariantMap profiles = BrowserCatalogue::profilesIn(services.sandbox, browser);
    for (auto it = profiles.keyBegin(); it != profiles.keyEnd(); ++it) {
        if (services.sandbox.childPath(root, *it))
            keys.append(*it);
    }
    return keys;
}

QString profileFolder(const QString& root, const QString& key)
{
    return key.isEmpty() ? root : root + QLatin1Char('/') + key;
}

QStringList chromiumFamily(const CleanerServices& services, const QString& browser)
{
    QStringList folders;
    const QString root = BrowserCatalogue::chromiumDataRoot(browser);
    for (const QString& key : chromiumFamilyKeys(services, browser))
        folders.append(profileFolder(root, key));
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
    return folders + firefoxElsewhere(services);
}

QStringList firefoxElsewhere(const CleanerServices& services)
{
    QStringList folders;
    for (const auto& profile : BrowserCatalogue::firefoxProfilesElsewhere(services.sandbox)) {
        if (profile.inside)
            folders.append(profile.path);
    }
    return folders;
}

QStringList firefoxFolders(const CleanerServices& services)
{
    QStringList folders;
    for (const QString& folder : firefox(services)) {
        // Read without following links.
        if (services.sandbox.fileAttributes(folder).value(QStringLiteral("NSFileType")) ==
            QLatin1String("NSFileTypeDirectory"))
            folders.append(folder);
    }
    return folders;
}

} // namespace Profiles
