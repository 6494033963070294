#pragma once

#include "platform/UserDefaultsBackend.h"

#include <QFileSystemWatcher>
#include <QTimer>

// The defaults domain as an XML property list on disk, replaced atomically on every write and
// watched for changes made by other processes. Writers of the same file serialise on an
// advisory lock (flock) on a companion ".lock" file.
class PlistFileDefaultsBackend final : public UserDefaultsBackend
{
    Q_OBJECT
public:
    explicit PlistFileDefaultsBackend(const QString& filePath, QObject* parent = nullptr);
    ~PlistFileDefaultsBackend() override;

    std::optional<QVariantMap> read() override;
    bool write(const QVariantMap& domain) override;
    QString quarantine() override;
    QString errorString() const override { return m_error; }
    void lock() override;
    void unlock() override;

    QString filePath() const { return m_filePath; }
    // The domain a settings file holds; no value when it is no property list with a dictionary at
    // its top (broken, half-written, or another kind of file).
    static std::optional<QVariantMap> parse(const QByteArray& bytes);

private:
    void watch();
    void makeFolder();

    // Half a second of patience: a busy machine can hold an editor between its writes for tens of
    // milliseconds, and only a file that is really broken pays the wait.
    static constexpr int kReadAttempts = 10;
    static constexpr int kReadRetryMs = 50;

    QString m_filePath;
    QString m_error;
    int m_lockFd = -1;
    int m_lockDepth = 0;
    QFileSystemWatcher m_watcher;
    QTimer m_settle;
};
