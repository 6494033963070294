#include "platform/RealHomeDirectory.h"

#include <cstdio>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

QString RealHomeDirectory()
{
    const passwd* pw = getpwuid(getuid());
    if (!pw) {
        std::fprintf(stderr, "Assertion failed: (pw), function RealHomeDirectory\n");
        std::abort();
    }
    return QString::fromUtf8(pw->pw_dir);
}
