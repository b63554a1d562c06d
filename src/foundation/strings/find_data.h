#pragma once
// FindData: the paths matching a shell pattern, as glob gives them.
//
// Directories come back with a trailing '/', and a leading '~' is expanded. The object owns
// copies of the matches.
namespace TeskUtils {

class FindData
{
public:
    FindData()
        : items(nullptr)
        , count(0)
        , cursor(0)
    {
    }
    // Searches at once (see search()).
    explicit FindData(const char* pattern);
    ~FindData() { freeItems(); }
    FindData(const FindData&) = delete;
    FindData& operator=(const FindData&) = delete;

    // Runs the pattern. With matches they replace the previous ones (and the cursor restarts);
    // without a match, or for a null pattern, the object stays as it was. Returns the number of
    // matches found.
    int search(const char* pattern);

    int size() const { return count; }
    bool empty() const { return count == 0; }
    // The i-th match, or null out of range.
    const char* operator[](int i) const { return i >= 0 && i < count ? items[i] : nullptr; }
    // The match at the cursor, moving the cursor on; null at the end.
    const char* next() { return cursor < count ? items[cursor++] : nullptr; }
    void rewind() { cursor = 0; }

private:
    void freeItems();

    char** items;
    int count;
    int cursor;
};

} // namespace TeskUtils
