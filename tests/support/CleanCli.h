#pragma once

#include "app/CleanCommand.h"
#include "platform/fake/FakeWorkspace.h"
#include "sandbox/AppSandboxFileAccessPersist.h"
#include "sandbox/FileUrl.h"
#include "support/TestHome.h"

#include <QTextStream>

// corvella-clean over a temporary home; the terminal answers from a script (none: no terminal).
struct Cli
{
    explicit Cli(bool granted = true) : home(granted) {}

    int run(const QStringList& arguments, QIODevice* output = nullptr)
    {
        out.clear();
        err.clear();
        QTextStream outStream(&out);
        if (output)
            outStream.setDevice(output);
        QTextStream errStream(&err);
        CleanCommand command({home.t.defaults, home.t.log, home.bookmarks, workspace, outStream, errStream,
                              [this](const QString& question) -> std::optional<bool> {
                                  questions.append(question);
                                  return answer;
                              },
                              lockPath, 300});
        return command.run(arguments);
    }
    bool homeGrantRecorded()
    {
        return AppSandboxFileAccessPersist(home.t.defaults)
            .bookmarkDataForURL(FileUrl::forPath(home.path()))
            .has_value();
    }

    TestHome home;
    FakeWorkspace workspace;
    std::optional<bool> answer;
    QString lockPath;
    QStringList questions;
    QString out;
    QString err;
};
