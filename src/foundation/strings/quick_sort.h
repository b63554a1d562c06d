#pragma once
// quickSort__: sorts an array of pointers in place, from index `low` to `high`, both included.
//
// Ranges of more than 9 elements are partitioned around the middle element (moved to the high
// end first); the smaller side is sorted by recursion and the larger one in the loop, so the
// stack stays shallow. Short ranges are finished by selection sort. The order comes from a
// quickSortCompare(const T*, const T*) overload; the one for CharString is below.
#include "foundation/strings/char_string.h"

namespace TeskUtils {

// Order of two strings for sorting: byte order, a null pointer, null string or buffer without
// data first.
inline int quickSortCompare(const CharString* a, const CharString* b)
{
    const char* x = a ? a->data() : nullptr;
    const char* y = b ? b->data() : nullptr;
    if (!x || !y)
        return (x ? 1 : 0) - (y ? 1 : 0);
    return a->compare(y);
}

template <class T> void quickSort__(T** array, int low, int high)
{
    while (high - low + 1 > 9) {
        int middle = low + (high - low) / 2;
        T* pivot = array[middle];
        array[middle] = array[high];
        array[high] = pivot;
        int store = low;
        for (int i = low; i < high; ++i) {
            if (quickSortCompare(array[i], pivot) < 0) {
                T* swap = array[i];
                array[i] = array[store];
                array[store] = swap;
                ++store;
            }
        }
        array[high] = array[store];
        array[store] = pivot;
        if (store - low < high - store) {
            quickSort__(array, low, store - 1);
            low = store + 1;
        } else {
            quickSort__(array, store + 1, high);
            high = store - 1;
        }
    }
    for (int i = low; i < high; ++i) {
        int smallest = i;
        for (int j = i + 1; j <= high; ++j)
            if (quickSortCompare(array[j], array[smallest]) < 0)
                smallest = j;
        if (smallest != i) {
            T* swap = array[i];
            array[i] = array[smallest];
            array[smallest] = swap;
        }
    }
}

} // namespace TeskUtils
