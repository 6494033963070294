#pragma once

#include "platform/OpenPanel.h"

#include <QList>

// Answers each panel with the next scripted answer (cancel once the script runs out) and keeps
// each request.
class ScriptedOpenPanel final : public OpenPanel
{
public:
    void answer(const std::optional<QString>& path) { m_answers.append(path); }
    std::optional<QUrl> runModal(const OpenPanelRequest& request) override;

    QList<OpenPanelRequest> requests;

private:
    QList<std::optional<QString>> m_answers;
};
