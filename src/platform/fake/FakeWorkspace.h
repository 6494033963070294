#pragma once

#include "platform/Workspace.h"

#include <QMap>
#include <QMutex>

// A workspace whose installed and running applications the test sets, and whose quits it sends.
class FakeWorkspace final : public Workspace
{
    Q_OBJECT
public:
    std::optional<QString> absolutePathForAppBundleWithIdentifier(const QString& bundleIdentifier) override
    {
        QMutexLocker lock(&m_mutex);
        return m_installed.contains(bundleIdentifier) ? std::optional(m_installed.value(bundleIdentifier))
                                                      : std::nullopt;
    }
    QList<RunningApplication> runningApplications() override
    {
        QMutexLocker lock(&m_mutex);
        return m_running;
    }

    void activateFileViewerSelectingURLs(const QList<QUrl>& urls) override { revealed += urls; }
    QList<QUrl> revealed;

    void setInstalled(const QStringList& bundleIdentifiers)
    {
        QMutexLocker lock(&m_mutex);
        m_installed.clear();
        for (const QString& id : bundleIdentifiers)
            m_installed.insert(id,
                               QStringLiteral("/usr/share/applications/") + id + QStringLiteral(".desktop"));
    }
    void setRunning(const QList<RunningApplication>& running)
    {
        QMutexLocker lock(&m_mutex);
        m_running = running;
    }
    void terminate(const QString& name, const QString& bundleIdentifier)
    {
        emit didTerminateApplication({{applicationNameKey, name}, {bundleIdentifierKey, bundleIdentifier}});
    }

private:
    mutable QMutex m_mutex;
    QMap<QString, QString> m_installed;
    QList<RunningApplication> m_running;
};
