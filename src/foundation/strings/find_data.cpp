#include "foundation/strings/find_data.h"

#include <cstring>
#include <glob.h>

namespace TeskUtils {

FindData::FindData(const char* pattern)
    : items(nullptr)
    , count(0)
    , cursor(0)
{
    search(pattern);
}

int FindData::search(const char* pattern)
{
    if (!pattern)
        return 0;
    glob_t found;
    memset(&found, 0, sizeof found);
    if (glob(pattern, GLOB_MARK | GLOB_TILDE, nullptr, &found) != 0 || found.gl_pathc == 0) {
        globfree(&found);
        return 0;
    }
    int matches = static_cast<int>(found.gl_pathc);
    char** copies = new char*[matches];
    for (int i = 0; i < matches; ++i) {
        size_t length = strlen(found.gl_pathv[i]);
        copies[i] = new char[length + 1];
        memcpy(copies[i], found.gl_pathv[i], length + 1);
    }
    globfree(&found);
    freeItems();
    items = copies;
    count = matches;
    cursor = 0;
    return matches;
}

void FindData::freeItems()
{
    for (int i = 0; i < count; ++i)
        delete[] items[i];
    delete[] items;
    items = nullptr;
    count = 0;
    cursor = 0;
}

} // namespace TeskUtils
