#pragma once

#include <QObject>
#include <QString>
#include <QUrl>

class LoginItems;

// Registers the login helper with the desktop's login items. `enabled` records whether the last
// registration call succeeded (switching off included): it is a record of success, not the state.
// `startAtLogin` is never written and always reads false. Observers hear of both only through the
// announcements of setStartAtLogin, "enabled" first.
class StartAtLoginController : public QObject
{
    Q_OBJECT
public:
    explicit StartAtLoginController(LoginItems& loginItems, QObject* parent = nullptr);

    // The helper: its identifier and where it lies.
    void setBundle(const QString& identifier, const QUrl& url);
    // Registers or removes the helper; nothing happens, and nothing is announced, without a helper.
    void setStartAtLogin(bool startAtLogin);
    void setEnabled(bool enabled) { setStartAtLogin(enabled); }

    bool enabled() const { return m_enabled; }
    bool startAtLogin() const { return m_startAtLogin; }
    QString identifier() const { return m_identifier; }
    QUrl url() const { return m_url; }

signals:
    void enabledChanged(bool enabled);
    void startAtLoginChanged(bool startAtLogin);

private:
    LoginItems& m_loginItems;
    QString m_identifier;
    QUrl m_url;
    bool m_enabled = false;
    const bool m_startAtLogin = false;
};
