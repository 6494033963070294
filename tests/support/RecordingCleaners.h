#pragma once

#include "cleaners/Cleaners.h"

#include <QMutex>
#include <QStringList>

#include <functional>

// Cleaners that only note each call ("removeBrowserHistory Safari history").
class RecordingCleaners final : public Cleaners
{
public:
    void removeCookies(const QString& browser) override { note(QStringLiteral("removeCookies ") + browser); }
    void removeNonFavLocalStorage(const QString& browser) override
    {
        note(QStringLiteral("removeNonFavLocalStorage ") + browser);
    }
    void removeFlash(const QString& browser) override { note(QStringLiteral("removeFlash ") + browser); }
    void removeSilverlight() override { note(QStringLiteral("removeSilverlight")); }
    void removeBrowserCache(const QString& browser) override
    {
        note(QStringLiteral("removeBrowserCache ") + browser);
    }
    void removeBrowserHistory(const QString& browser, const QString& ofType) override
    {
        note(QStringLiteral("removeBrowserHistory ") + browser + QLatin1Char(' ') + ofType);
    }

    QStringList calls() const
    {
        QMutexLocker lock(&m_mutex);
        return m_calls;
    }
    // Runs inside every call, outside the lock (to make a cleaner slow, or look at the world).
    std::function<void(const QString& call)> during;

private:
    void note(const QString& call)
    {
        {
            QMutexLocker lock(&m_mutex);
            m_calls.append(call);
        }
        if (during)
            during(call);
    }

    mutable QMutex m_mutex;
    QStringList m_calls;
};
