#include "platform/linux/KnownApplications.h"

const KnownApplication& KnownApplications::loginHelper()
{
    static const KnownApplication helper{
        QStringLiteral("Corvella Login Helper"),   QStringLiteral("com.tovanex.Corvella6Helper"), {},
        {QStringLiteral("corvella-login-helper")}, {QStringLiteral("corvella-login-helper")},     {}};
    return helper;
}

const KnownApplication* KnownApplications::forBundleIdentifier(const QList<KnownApplication>& applications,
                                                               const QString& bundleIdentifier)
{
    for (const KnownApplication& application : applications) {
        if (application.bundleIdentifier == bundleIdentifier)
            return &application;
    }
    return nullptr;
}

const KnownApplication* KnownApplications::forExecutable(const QList<KnownApplication>& applications,
                                                         const QString& executablePath)
{
    // A Snap ships its own binary names ("chrome" inside the chromium snap), so the snap decides.
    if (executablePath.startsWith(QLatin1String("/snap/"))) {
        const QString snap = executablePath.section(QLatin1Char('/'), 2, 2);
        for (const KnownApplication& application : applications) {
            if (!application.snapName.isEmpty() && application.snapName == snap)
                return &application;
        }
        return nullptr;
    }
    // The end of a path first: Chrome's channels all run a "chrome", each in a folder of its own.
    for (const KnownApplication& application : applications) {
        for (const QString& name : application.executableNames) {
            if (name.contains(QLatin1Char('/')) && executablePath.endsWith(QLatin1Char('/') + name))
                return &application;
        }
    }
    const QString fileName = executablePath.section(QLatin1Char('/'), -1);
    for (const KnownApplication& application : applications) {
        if (application.executableNames.contains(fileName))
            return &application;
    }
    return nullptr;
}
