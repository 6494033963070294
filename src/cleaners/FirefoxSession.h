#pragma once

#include <QByteArray>

#include <optional>

// Firefox's session file (sessionstore.jsonlz4, see MozLz4). Removing history takes the session with
// it, but not the pinned tabs, which Firefox restores from it at every start: they are all that is kept.
namespace FirefoxSession {

// The session with nothing but its pinned tabs, each at its current page (no back or forward history,
// no form data, scroll positions or session storage), no closed tabs or windows, and the session
// cookies only when `keepCookies`; compressed as Firefox writes it. No value when the session holds
// no pinned tab, or the bytes are no session file (the file then goes as before).
std::optional<QByteArray> withOnlyPinnedTabs(const QByteArray& mozlz4, bool keepCookies);

} // namespace FirefoxSession
