// Runs a fuzz target without libFuzzer: every file named on the command line, and every
// regular file in a directory named there, goes once through LLVMFuzzerTestOneInput, in
// name order. The suite runs each target this way over its seed corpus, so that a seed
// that crashes, aborts on a broken invariant or trips a sanitizer fails the build's tests.
//
//   <target>_replay PATH...
//
// Exit status: 0 when every input ran, 1 when a path can't be read or no input was found
// (an empty corpus tests nothing). A failing input ends the process the way it would end
// a fuzzing run (abort or sanitizer report); the name of the input is printed before it.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool isDirectory(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// The regular files directly inside `dir`, sorted; false when it can't be listed.
bool listFiles(const std::string& dir, std::vector<std::string>& files)
{
    DIR* listing = opendir(dir.c_str());
    if (!listing)
        return false;
    std::vector<std::string> found;
    while (const dirent* entry = readdir(listing)) {
        const std::string path = dir + "/" + entry->d_name;
        struct stat info;
        if (stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode))
            found.push_back(path);
    }
    closedir(listing);
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
    return true;
}

bool readFile(const std::string& path, std::vector<uint8_t>& content)
{
    FILE* file = fopen(path.c_str(), "rb");
    if (!file)
        return false;
    content.clear();
    uint8_t block[65536];
    size_t got;
    while ((got = fread(block, 1, sizeof block, file)) > 0)
        content.insert(content.end(), block, block + got);
    const bool ok = !ferror(file);
    fclose(file);
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> inputs;
    for (int i = 1; i < argc; ++i) {
        const std::string path = argv[i];
        if (!isDirectory(path)) {
            inputs.push_back(path);
        } else if (!listFiles(path, inputs)) {
            fprintf(stderr, "replay: can't list %s\n", path.c_str());
            return 1;
        }
    }
    if (inputs.empty()) {
        fprintf(stderr, "replay: no inputs\n");
        return 1;
    }

    std::vector<uint8_t> content;
    for (const std::string& path : inputs) {
        if (!readFile(path, content)) {
            fprintf(stderr, "replay: can't read %s\n", path.c_str());
            return 1;
        }
        fprintf(stderr, "replay: %s (%zu bytes)\n", path.c_str(), content.size());
        fflush(stderr);
        // A heap copy of exactly the input's size (never a null pointer, even when empty, as
        // libFuzzer gives it), so that the sanitizers catch a read past its end.
        std::unique_ptr<uint8_t[]> data(new uint8_t[content.size()]);
        std::copy(content.begin(), content.end(), data.get());
        LLVMFuzzerTestOneInput(data.get(), content.size());
    }
    printf("replay: %zu input(s) ran\n", inputs.size());
    return 0;
}
