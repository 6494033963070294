#pragma once

#include <QByteArray>

#include <optional>

// A Chromium-family session file ("Sessions/Session_<time>"): "SNSS", a version, then commands, each
// a 16-bit size, an 8-bit id and its payload, that say which windows and tabs there are and which
// pages each tab went through. The browser restores the last one at start ("Continue where you left
// off"). Removing history takes the session with it, but not the pinned tabs.
namespace ChromiumSession {

// The session with nothing but its open pinned tabs and the windows that hold them; each tab at its
// current page only (no back or forward history, no form data, referrer or session storage). No value
// when no pinned tab is open in it, or the bytes are no session file the browser wrote unencrypted
// (the file then goes as before).
std::optional<QByteArray> withOnlyPinnedTabs(const QByteArray& snss);

} // namespace ChromiumSession
