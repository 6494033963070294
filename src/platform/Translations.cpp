#include "platform/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

namespace {

bool install(const QLocale& locale, const QString& name, const QString& folder)
{
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(locale, name, QStringLiteral("_"), folder) &&
        QCoreApplication::installTranslator(translator))
        return true;
    delete translator;
    return false;
}

} // namespace

bool installTranslations(const QLocale& locale)
{
    install(locale, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    const QString ours = QStringLiteral(":/i18n");
    if (install(locale, QStringLiteral("corvella"), ours))
        return true;
    install(QLocale(QLocale::English), QStringLiteral("corvella"), ours);
    return false;
}
