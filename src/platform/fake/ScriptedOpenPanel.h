#pragma once

#include "platform/OpenPanel.h"

#include <QList>
#include <QThread>

// Answers each panel with the next scripted answer (cancel once the script runs out) and keeps
// each request and the thread it ran on.
class ScriptedOpenPanel final : public OpenPanel
{
public:
    void answer(const std::optional<QString>& path) { m_answers.append(path); }
    std::optional<QUrl> runModal(const OpenPanelRequest& request) override;

    QList<OpenPanelRequest> requests;
    QList<QThread*> threads;

private:
    QList<std::optional<QString>> m_answers;
};
