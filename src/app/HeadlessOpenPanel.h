#pragma once

#include "platform/OpenPanel.h"

class SystemLog;

// The agent's panel while it has no window to show one in: it cannot ask, so it answers "cancel"
// and says once how to grant access from a terminal instead.
class HeadlessOpenPanel final : public OpenPanel
{
public:
    explicit HeadlessOpenPanel(SystemLog& log) : m_log(log) {}
    std::optional<QUrl> runModal(const OpenPanelRequest& request) override;

private:
    SystemLog& m_log;
    bool m_told = false;
};
