#pragma once

#include <QObject>
#include <QStringList>

// A watch on folders that reports changes in them, at most once per latency period.
class FolderWatch : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    virtual void start(const QStringList& paths, int latencyMs) = 0;
    virtual void stop() = 0;
    virtual bool isWatching() const = 0;

signals:
    void foldersChanged();
};
