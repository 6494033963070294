#include "core/SettingsController.h"

#include "platform/SettingsKeys.h"

QVariantMap SettingsController::content() const
{
    QMutexLocker lock(&m_mutex);
    return m_content;
}

void SettingsController::setContent(const QVariantMap& content)
{
    QMutexLocker lock(&m_mutex);
    m_content = content;
}

QVariantMap SettingsController::selectedEntries(const QVariantMap& settings)
{
    QVariantMap selected;
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        if (it.value().typeId() == QMetaType::Bool && it.value().toBool())
            selected.insert(it.key(), it.value());
    }
    return selected;
}

bool SettingsController::isSelected(const QVariantMap& content, const QString& browser,
                                    const QString& category)
{
    const QVariant value = content.value(SettingsKeys::settingsKey(browser, category));
    return value.typeId() == QMetaType::Bool && value.toBool();
}
