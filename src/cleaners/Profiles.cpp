#include "cleaners/Profiles.h"

#include "catalogue/BrowserCatalogue.h"
#include "sandbox/Sandbox.h"

namespace Profiles {

BrowserInstall install(const CleanerServices& services, const QString& browser)
{
    if (services.install && services.install->browser == browser)
        return *services.install;
    return BrowserCatalogue::referenceInstall(browser);
}

QString dataRoot(const CleanerServices& services, const QString& browser)
{
    return install(services, browser).dataRoot;
}

QString cacheRoot(const CleanerServices& services, const QString& browser)
{
    return install(services, browser).cacheRoot;
}

QStringList chromiumFamilyKeys(const CleanerServices& services, const QString& browser)
{
    const QString root = dataRoot(services, browser);
    if (!BrowserCatalogue::isChromiumFamily(browser) || root.isEmpty())
        return {};
    if (BrowserCatalogue::hasSingleProfile(browser))
        return {QString()};
    QStringList keys;
    const QVariantMap profiles = BrowserCatalogue::profilesIn(services.sandbox, root);
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
    const QString root = dataRoot(services, browser);
    for (const QString& key : chromiumFamilyKeys(services, browser))
        folders.append(profileFolder(root, key));
    return folders;
}

QStringList firefox(const CleanerServices& services, const QString& browser)
{
    if (!BrowserCatalogue::isFirefoxFamily(browser))
        return {};
    QStringList folders;
    const QString root = dataRoot(services, browser);
    for (const QString& name : services.sandbox.folderContentsOf(root)) {
        if (const std::optional<QString> folder = services.sandbox.childPath(root, name))
            folders.append(*folder);
    }
    return folders + firefoxElsewhere(services, browser);
}

QStringList firefoxElsewhere(const CleanerServices& services, const QString& browser)
{
    if (!BrowserCatalogue::isFirefoxFamily(browser))
        return {};
    QStringList folders;
    for (const auto& profile :
         BrowserCatalogue::firefoxProfilesElsewhere(services.sandbox, dataRoot(services, browser))) {
        if (profile.inside)
            folders.append(profile.path);
    }
    return folders;
}

QStringList firefoxFolders(const CleanerServices& services, const QString& browser)
{
    QStringList folders;
    for (const QString& folder : firefox(services, browser)) {
        // Read without following links.
        if (services.sandbox.fileAttributes(folder).value(QStringLiteral("NSFileType")) ==
            QLatin1String("NSFileTypeDirectory"))
            folders.append(folder);
    }
    return folders;
}

} // namespace Profiles
