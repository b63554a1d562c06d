#pragma once
// Table<T, STEP>: a contiguous, growable array of values.
//
// Growth rule, applied whenever a new count n exceeds the capacity:
//   - STEP above 0: capacity = n + STEP - n % STEP, the next multiple of STEP strictly above n
//     (so a Table<int, 100> holds 100 elements in 100 slots, and the 101st raises it to 200);
//   - otherwise, with some capacity already: double it until it holds n (STEP -1 means doubling);
//   - otherwise: capacity = n.
// The elements are then copied one by one into a new array and the old array is freed.
// Elements are built with new[] (value-initialised, so numbers and pointers start at 0) and are
// owned by value: a Table of CharString holds one reference per element.
#include <cassert>

namespace TeskUtils {

template <class T, int STEP> class Table
{
public:
    Table()
        : count(0)
        , step(STEP)
        , capacity(0)
        , data(nullptr)
    {
    }
    Table(const Table& other)
        : count(0)
        , step(other.step)
        , capacity(0)
        , data(nullptr)
    {
        copyFrom(other);
    }
    Table& operator=(const Table& other)
    {
        if (this != &other) {
            freeData();
            step = other.step;
            copyFrom(other);
        }
        return *this;
    }
    ~Table() { delete[] data; }

    // Adds a copy of `value` at the end and returns its index.
    int append(const T& value)
    {
        if (count + 1 > capacity) {
            T copy(value); // `value` may be one of our own elements
            grow(count + 1, 0);
            data[count] = copy;
        } else {
            data[count] = value;
        }
        return count++;
    }
    // Adds a default element at the end and returns it.
    T& append()
    {
        if (count + 1 > capacity)
            grow(count + 1, 0);
        return data[count++];
    }

    // Sets the number of elements. If the capacity already holds n, only the count changes;
    // otherwise the capacity follows the growth rule (exact 0) or becomes exactly n (exact
    // non-zero). Elements dropped by a smaller count are reset to a default value, so elements
    // that come back into range read as new.
    void setCount(int n, int exact = 0)
    {
        if (n < 0)
            n = 0;
        if (n > capacity)
            grow(n, exact);
        for (int i = n; i < count; ++i)
            data[i] = T();
        count = n;
    }
    // Makes room for n elements without changing the count (same rule as setCount).
    void reserve(int n, int exact = 0)
    {
        if (n > capacity)
            grow(n, exact);
    }
    // Destroys the elements and frees the array: count and capacity become 0.
    void freeData()
    {
        delete[] data;
        data = nullptr;
        count = 0;
        capacity = 0;
    }
    // Drops all elements, keeping the capacity.
    void clear() { setCount(0); }

    // Inserts a copy of `value` before position `index` (0..count).
    void insertAt(int index, const T& value)
    {
        assert(index >= 0 && index <= count);
        T copy(value);
        if (count + 1 > capacity)
            grow(count + 1, 0);
        for (int i = count; i > index; --i)
            data[i] = data[i - 1];
        data[index] = copy;
        ++count;
    }
    // Removes the element at `index`, moving the ones behind it down.
    void removeAt(int index)
    {
        assert(index >= 0 && index < count);
        for (int i = index; i + 1 < count; ++i)
            data[i] = data[i + 1];
        data[--count] = T();
    }
    // Exchanges contents with `other` without copying elements.
    void swap(Table& other)
    {
        int c = count, s = step, cap = capacity;
        T* d = data;
        count = other.count;
        step = other.step;
        capacity = other.capacity;
        data = other.data;
        other.count = c;
        other.step = s;
        other.capacity = cap;
        other.data = d;
    }

    T& operator[](int index)
    {
        assert(index >= 0 && index < count);
        return data[index];
    }
    const T& operator[](int index) const
    {
        assert(index >= 0 && index < count);
        return data[index];
    }
    int size() const { return count; }
    int getCount() const { return count; }
    int getCapacity() const { return capacity; }
    bool empty() const { return count == 0; }
    T& last() { return (*this)[count - 1]; }
    const T& last() const { return (*this)[count - 1]; }
    T* begin() { return data; }
    T* end() { return data + count; }
    const T* begin() const { return data; }
    const T* end() const { return data + count; }

    int count;
    int step;
    int capacity;
    T* data;

private:
    // Raises the capacity to hold n elements and moves the elements over.
    void grow(int n, int exact)
    {
        int newCapacity;
        if (exact)
            newCapacity = n;
        else if (step > 0)
            newCapacity = n + step - n % step;
        else if (capacity > 0) {
            newCapacity = capacity;
            while (newCapacity < n)
                newCapacity *= 2;
        } else
            newCapacity = n;
        T* grown = new T[newCapacity]();
        for (int i = 0; i < count; ++i)
            grown[i] = data[i];
        delete[] data;
        data = grown;
        capacity = newCapacity;
    }

    void copyFrom(const Table& other)
    {
        if (other.count == 0)
            return;
        grow(other.count, 1);
        for (int i = 0; i < other.count; ++i)
            data[i] = other.data[i];
        count = other.count;
    }
};

} // namespace TeskUtils
