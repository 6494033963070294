#pragma once

#include <functional>

// Runs the function as a user without privileges: in a child process as "nobody" when the tests
// run as root (root may write any file), directly otherwise. True when it returned true.
bool asUnprivilegedUser(const std::function<bool()>& function);
