#pragma once

#include <QByteArray>

#include <optional>

// Firefox's search engines (search.json.mozlz4, see MozLz4). Removing search engines takes those the
// user added from sites; the engines Firefox ships ("_isAppProvided", "_isConfigEngine", loaded from
// "[app]") and those add-ons bring ("[addon]") stay, and so does the user's choice of default among them.
namespace FirefoxSearchEngines {

enum class Outcome
{
    Unchanged, // no engine of a site: the file stays as it is
    Rewritten, // the file's new bytes are given
    Unreadable // not a search file Corvella can read: it goes whole, as before
};

struct Result
{
    Outcome outcome;
    QByteArray bytes;
};

Result withoutSitesEngines(const QByteArray& mozlz4);

} // namespace FirefoxSearchEngines
