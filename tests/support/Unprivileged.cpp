#include "support/Unprivileged.h"

#include <sys/wait.h>
#include <unistd.h>

bool asUnprivilegedUser(const std::function<bool()>& function)
{
    if (geteuid() != 0)
        return function();
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0) {
        if (setgid(65534) != 0 || setuid(65534) != 0)
            _exit(2);
        _exit(function() ? 0 : 1);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
