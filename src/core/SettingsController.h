#pragma once

#include <QMutex>
#include <QVariantMap>

// The in-memory mirror of the "settings" dictionary, holding only the selected (true) entries.
// The removal run reads a copy of it from its own thread.
class SettingsController
{
public:
    QVariantMap content() const;
    void setContent(const QVariantMap& content);

    // The mirror of a "settings" dictionary: its entries whose value is the boolean true.
    static QVariantMap selectedEntries(const QVariantMap& settings);
    // Selected only when the entry is the boolean true; missing, false or any other kind is not.
    static bool isSelected(const QVariantMap& content, const QString& browser, const QString& category);

private:
    mutable QMutex m_mutex;
    QVariantMap m_content;
};
