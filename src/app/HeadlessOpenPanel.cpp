#include "app/HeadlessOpenPanel.h"

#include "platform/SystemLog.h"

std::optional<QUrl> HeadlessOpenPanel::runModal(const OpenPanelRequest& request)
{
    if (!m_told) {
        m_told = true;
        m_log.log(QStringLiteral("Corvella needs access to %1 but has no window to ask in; grant it with "
                                 "\"corvella-clean --allow-home-access --list\"")
                      .arg(request.directory));
    }
    return std::nullopt;
}
