#pragma once

#include <QString>

// The home folder of the user who runs the agent, from the password database (never from HOME:
// the browsers keep their data in the account's real home). Stops the process when the account
// has no password-database entry.
QString RealHomeDirectory();
