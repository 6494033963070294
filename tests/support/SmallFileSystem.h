#pragma once

#include <QString>
#include <QTemporaryDir>

// A tiny tmpfs mounted for one test, to run out of space on purpose. Needs root; isMounted() says
// whether it could be made (tests skip otherwise).
class SmallFileSystem
{
public:
    explicit SmallFileSystem(int kibibytes = 256);
    // Unmounts it with everything mounted below it.
    ~SmallFileSystem();
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;

    bool isMounted() const { return m_mounted; }
    QString path(const QString& relative = QString()) const;
    // Takes every free byte, so the next write fails with ENOSPC.
    void fill() const;
    // Makes a folder in it read-only: every new write there fails.
    bool makeReadOnly(const QString& relative) const;

private:
    QTemporaryDir m_dir;
    bool m_mounted = false;
};
