#include "platform/linux/KnownApplications.h"

namespace {

QStringList list(std::initializer_list<const char*> names)
{
    QStringList result;
    for (const char* name : names)
        result.append(QString::fromLatin1(name));
    return result;
}

} // namespace

const QList<KnownApplication>& KnownApplications::all()
{
    // Safari has no Linux build; it is listed so every bundle identifier has an answer.
    static const QList<KnownApplication> applications{
        {QStringLiteral("Safari"), QStringLiteral("com.apple.Safari"), {}, {}, {}, {}},
        {QStringLiteral("Google Chrome"),
         QStringLiteral("com.google.Chrome"),
         list({"google-chrome.desktop", "com.google.Chrome.desktop"}),
         list({"google-chrome", "google-chrome-stable"}),
         list({"chrome"}),
         {}},
        {QStringLiteral("Chromium"), QStringLiteral("org.chromium.Chromium"),
         list({"chromium.desktop", "chromium-browser.desktop", "org.chromium.Chromium.desktop",
               "chromium_chromium.desktop"}),
         list({"chromium", "chromium-browser"}), list({"chromium", "chromium-browser"}),
         QStringLiteral("chromium")},
        {QStringLiteral("Firefox"), QStringLiteral("org.mozilla.firefox"),
         list({"firefox.desktop", "firefox-esr.desktop", "org.mozilla.firefox.desktop",
               "firefox_firefox.desktop"}),
         list({"firefox", "firefox-esr"}), list({"firefox", "firefox-esr", "firefox-bin"}),
         QStringLiteral("firefox")},
        {QStringLiteral("Opera"), QStringLiteral("com.operasoftware.Opera"),
         list({"opera.desktop", "com.opera.Opera.desktop", "opera_opera.desktop"}), list({"opera"}),
         list({"opera"}), QStringLiteral("opera")},
        // The login helper; the agent asks whether it runs to learn that it was started at login.
        {QStringLiteral("Corvella Login Helper"),
         QStringLiteral("com.tovanex.Corvella6Helper"),
         {},
         list({"corvella-login-helper"}),
         list({"corvella-login-helper"}),
         {}},
    };
    return applications;
}

const KnownApplication* KnownApplications::forBundleIdentifier(const QString& bundleIdentifier)
{
    for (const KnownApplication& application : all()) {
        if (application.bundleIdentifier == bundleIdentifier)
            return &application;
    }
    return nullptr;
}

const KnownApplication* KnownApplications::forExecutable(const QString& executablePath)
{
    // A Snap ships its own binary names ("chrome" inside the chromium snap), so the snap decides.
    if (executablePath.startsWith(QLatin1String("/snap/"))) {
        const QString snap = executablePath.section(QLatin1Char('/'), 2, 2);
        for (const KnownApplication& application : all()) {
            if (!application.snapName.isEmpty() && application.snapName == snap)
                return &application;
        }
        return nullptr;
    }
    const QString fileName = executablePath.section(QLatin1Char('/'), -1);
    for (const KnownApplication& application : all()) {
        if (application.executableNames.contains(fileName))
            return &application;
    }
    return nullptr;
}
