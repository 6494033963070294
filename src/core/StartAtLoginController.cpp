#include "core/StartAtLoginController.h"

#include "platform/LoginItems.h"

StartAtLoginController::StartAtLoginController(LoginItems& loginItems, QObject* parent)
    : QObject(parent), m_loginItems(loginItems)
{}

void StartAtLoginController::setBundle(const QString& identifier, const QUrl& url)
{
    m_identifier = identifier;
    m_url = url;
}

void StartAtLoginController::setStartAtLogin(bool startAtLogin)
{
    if (m_identifier.isEmpty() || m_url.isEmpty())
        return;
    m_enabled = m_loginItems.setEnabled(m_identifier, m_url, startAtLogin);
    emit enabledChanged(m_enabled);
    emit startAtLoginChanged(m_startAtLogin);
}
