#pragma once

#include <QString>

// Receives what the file layer would remove or change while it runs as a preview; nothing on
// disk changes then. Reads still happen, so a preview follows the same steps as a real run.
class RemovalPreview
{
public:
    virtual ~RemovalPreview() = default;
    // action: "remove", "remove files below", "write", "create folder", "change" or "run script",
    // each marked for translation in the context "RemovalPreview"; bytes: the size involved;
    // detail: the SQL statement of a change.
    virtual void record(const QString& action, const QString& path, qint64 bytes, const QString& detail) = 0;
};
