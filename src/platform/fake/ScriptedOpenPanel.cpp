#include "platform/fake/ScriptedOpenPanel.h"

std::optional<QUrl> ScriptedOpenPanel::runModal(const OpenPanelRequest& request)
{
    requests.append(request);
    if (m_answers.isEmpty())
        return std::nullopt;
    const auto path = m_answers.takeFirst();
    if (!path)
        return std::nullopt;
    return QUrl::fromLocalFile(*path);
}
