#include "foundation/misc/permissions.h"

#include <cstdlib>
#include <unistd.h>

#include "foundation/strings/bounded_copy.h"
#include "foundation/strings/path_size.h"

int try_create_and_delete_file(const char* pathTemplate)
{
    if (!pathTemplate)
        return 0;
    char path[TeskUtils::kPathSize];
    TeskUtils::copyBounded(path, pathTemplate, sizeof path);
    int fd = mkstemp(path);
    if (fd < 0)
        return 0;
    close(fd);
    unlink(path);
    return 1;
}

int have_install_permissions()
{
    int inEtc = try_create_and_delete_file("/etc/tkinst_XXXXXX");
    int inUsr = try_create_and_delete_file("/usr/tkinst_XXXXXX");
    return inEtc && inUsr ? 1 : 0;
}
