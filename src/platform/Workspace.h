#pragma once

#include <QList>
#include <QObject>
#include <QUrl>
#include <QVariantMap>

#include <optional>

// An application the workspace sees running.
struct RunningApplication
{
    QString name;
    QString bundleIdentifier;
    qint64 pid = 0;
};

// The desktop's view of applications: which are installed, which run, and which just quit.
class Workspace : public QObject
{
    Q_OBJECT
public:
    // The keys of a terminated application's user info.
    static inline const QString applicationNameKey = QStringLiteral("NSApplicationName");
    static inline const QString bundleIdentifierKey = QStringLiteral("NSApplicationBundleIdentifier");

    using QObject::QObject;

    // Where the application with this bundle identifier is installed; no value when it is not.
    virtual std::optional<QString>
    absolutePathForAppBundleWithIdentifier(const QString& bundleIdentifier) = 0;
    // Safe from any thread.
    virtual QList<RunningApplication> runningApplications() = 0;
    // Shows the items in the desktop's file manager, selected.
    virtual void activateFileViewerSelectingURLs(const QList<QUrl>& urls) = 0;

signals:
    // An application quit; the user info carries its name and bundle identifier.
    void didTerminateApplication(const QVariantMap& userInfo);
};
