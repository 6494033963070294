#include "core/RemovalRun.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/Cleaners.h"
#include "core/RunLock.h"
#include "core/SettingsController.h"
#include "platform/SettingsKeys.h"
#include "platform/SystemLog.h"
#include "sandbox/RunStop.h"

#include <QCoreApplication>
#include <QScopeGuard>

namespace {

struct Category
{
    const char* key;
    const char* label;
};

// Run order; the labels are the English texts and the translation keys.
constexpr Category kCategories[] = {
    {"cookies", QT_TRANSLATE_NOOP("RemovalRun", "Cookies")},
    {"databases", QT_TRANSLATE_NOOP("RemovalRun", "LocalStorage and Databases")},
    {"flash", QT_TRANSLATE_NOOP("RemovalRun", "Flash")},
    {"silverlight", QT_TRANSLATE_NOOP("RemovalRun", "Silverlight")},
    {"cache", QT_TRANSLATE_NOOP("RemovalRun", "Cache")},
    {"history", QT_TRANSLATE_NOOP("RemovalRun", "History")},
    {"favicons", QT_TRANSLATE_NOOP("RemovalRun", "Favicons")},
    {"webpage", QT_TRANSLATE_NOOP("RemovalRun", "Webpage previews")},
    {"forms", QT_TRANSLATE_NOOP("RemovalRun", "Form values")},
    {"downloads", QT_TRANSLATE_NOOP("RemovalRun", "Downloads")},
    {"websitePrefs", QT_TRANSLATE_NOOP("RemovalRun", "Website preferences")},
    {"searchEngines", QT_TRANSLATE_NOOP("RemovalRun", "Other search engines")},
};

void callCleaner(Cleaners& cleaners, const QString& browser, const QString& category)
{
    if (category == QLatin1String("cookies"))
        cleaners.removeCookies(browser);
    else if (category == QLatin1String("databases"))
        cleaners.removeNonFavLocalStorage(browser);
    else if (category == QLatin1String("flash"))
        cleaners.removeFlash(browser);
    else if (category == QLatin1String("silverlight"))
        cleaners.removeSilverlight();
    else if (category == QLatin1String("cache"))
        cleaners.removeBrowserCache(browser);
    else
        cleaners.removeBrowserHistory(browser, category); // the seven history-group categories
}

// Fills each "%@" of a format with the next argument, in one pass, so a "%" in an argument is shown
// as it is.
QString withObjects(const QString& format, const QStringList& arguments)
{
    QString text;
    qsizetype next = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        if (format.at(i) == QLatin1Char('%') && i + 1 < format.size() &&
            format.at(i + 1) == QLatin1Char('@') && next < arguments.size()) {
            text += arguments.at(next++);
            ++i;
        } else {
            text += format.at(i);
        }
    }
    return text;
}

} // namespace

QString RemovalRun::labelFor(const QString& category)
{
    for (const Category& row : kCategories) {
        if (category == QLatin1String(row.key))
            return QCoreApplication::translate("RemovalRun", row.label);
    }
    return QString();
}

QStringList RemovalRun::performCategoryLoop(const QString& browser, const QVariantMap& choices,
                                            Cleaners& cleaners)
{
    QStringList labels;
    for (const Category& row : kCategories) {
        const QString category = QLatin1String(row.key);
        if (!SettingsController::isSelected(choices, browser, category))
            continue;
        callCleaner(cleaners, browser, category);
        // Counted whether or not the cleaner found anything: cleaners report nothing back.
        labels.append(QCoreApplication::translate("RemovalRun", row.label));
    }
    return labels;
}

QString RemovalRun::notificationText(const QString& browser, const QStringList& labels)
{
    if (labels.isEmpty())
        return withObjects(QCoreApplication::translate(
                               "RemovalRun", "Whoops, you havn't selected anything to be removed from %@"),
                           {browser});
    return withObjects(QCoreApplication::translate("RemovalRun", "%@ removed from %@"),
                       {labels.join(QStringLiteral(", ")), browser});
}

RunOutcome RemovalRun::perform(const QString& browser, const std::function<QVariantMap()>& choices,
                               const RemovalRunServices& services)
{
    const RunLock lock(services.lockPath, services.log, services.lockWait);
    if (!lock.isHeld()) {
        services.log.log(
            QStringLiteral("Corvella did not remove data of %1: another removal run held the lock")
                .arg(browser));
        return {RunOutcome::LockNotTaken, {}};
    }
    if (services.hasAccess && !services.hasAccess()) {
        services.log.log(
            QStringLiteral("Corvella did not remove data of %1: it has no access to the home folder")
                .arg(browser));
        return {RunOutcome::NoAccess, {}};
    }
    if (services.refuseRunningBrowser && services.catalogue.browserIsRunning(browser)) {
        services.log.log(QStringLiteral("Corvella skipped removing data of %1: it is running").arg(browser));
        return {RunOutcome::BrowserRunning, {}};
    }
    RunStop* const stop = services.refuseRunningBrowser ? services.stop : nullptr;
    if (stop)
        stop->arm([&] { return services.catalogue.browserIsRunning(browser); });
    // Disarmed however the loop ends: the look it was armed with refers to this call's arguments.
    const auto disarm = qScopeGuard([stop] {
        if (stop)
            stop->disarm();
    });
    const QStringList labels = performCategoryLoop(browser, choices(), services.cleaners);
    if (stop && stop->disarm()) {
        services.log.log(
            QStringLiteral("Corvella stopped removing data of %1: it started during the run").arg(browser));
        return {RunOutcome::BrowserStarted, labels};
    }
    services.log.log(QStringLiteral("Corvella removal run for %1: %2")
                         .arg(browser, labels.isEmpty() ? QStringLiteral("nothing selected")
                                                        : labels.join(QStringLiteral(", "))));
    return {RunOutcome::Done, labels};
}
