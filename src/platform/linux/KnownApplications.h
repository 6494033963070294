#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// How the applications the agent cares about show up on a Linux system: the desktop entries and
// commands their packages (deb, Flatpak, Snap) install, and the names of their main executables.
struct KnownApplication
{
    QString name;
    QString bundleIdentifier;
    QStringList desktopEntries;
    QStringList commands;
    QStringList executableNames; // the file name of the main process's executable
    QString snapName;            // a Snap's executables live below /snap/<name>/
};

namespace KnownApplications {

const QList<KnownApplication>& all();
const KnownApplication* forBundleIdentifier(const QString& bundleIdentifier);
// The application whose main executable this is; nullptr for any other program.
const KnownApplication* forExecutable(const QString& executablePath);

} // namespace KnownApplications
