#pragma once

#include "platform/fake/ScriptedOpenPanel.h"
#include "platform/linux/InodeBookmarks.h"
#include "sandbox/Sandbox.h"
#include "support/TestDefaults.h"

#include <QTemporaryDir>

// A temporary home folder with its settings, the user's grant of it, and a Sandbox over both.
// Paths are laid out the macOS way unless a test chooses another layout.
struct TestHome
{
    // `parent`: the folder to make the home in (a small file system, say); empty: the system's temporary
    // folder.
    explicit TestHome(bool granted = true, const QString& parent = QString());

    QString path(const QString& relative = QString()) const;
    // Makes the file with its folders; returns its full path.
    QString file(const QString& relative, const QByteArray& bytes = "data") const;
    QString folder(const QString& relative) const;
    QByteArray read(const QString& relative) const;
    bool exists(const QString& relative) const;

    QTemporaryDir dir;
    TestDefaults t;
    InodeBookmarks bookmarks;
    ScriptedOpenPanel panel;
    Sandbox sandbox;
};
