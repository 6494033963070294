#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// How an application the agent cares about shows up on a Linux system: the desktop entries and
// commands its packages (deb, Flatpak, Snap) install, and the names of its main executables.
struct KnownApplication
{
    QString name;
    QString bundleIdentifier;
    QStringList desktopEntries;
    QStringList commands;
    // The main process's executable: a file name, or the end of its path ("chrome-beta/chrome") where
    // several applications share one file name.
    QStringList executableNames;
    QString snapName; // a Snap's executables live below /snap/<name>/
};

namespace KnownApplications {

// The login helper: the agent asks whether it runs to learn that it was started at login.
const KnownApplication& loginHelper();
const KnownApplication* forBundleIdentifier(const QList<KnownApplication>& applications,
                                            const QString& bundleIdentifier);
// The application whose main executable this is; nullptr for any other program.
const KnownApplication* forExecutable(const QList<KnownApplication>& applications,
                                      const QString& executablePath);

} // namespace KnownApplications
