#pragma once
// PList<T>: a small growable list of plain values (node numbers, mostly), used where
// the document hands out sets of nodes (GetChildren, the trail of FindFullTag).
//
// It grows by `step` elements at a time (5 unless told otherwise), never by doubling,
// so that a list stays close to its count. Elements are copied by assignment.
#include <cassert>

template <class T> class PList
{
public:
    explicit PList(int growStep = 5)
        : data(nullptr)
        , capacity(0)
        , count(0)
        , step(growStep > 0 ? growStep : 5)
    {
    }

    PList(const PList& other)
        : data(nullptr)
        , capacity(0)
        , count(0)
        , step(other.step)
    {
        assign(other);
    }

    PList& operator=(const PList& other)
    {
        if (this != &other) {
            count = 0;
            assign(other);
        }
        return *this;
    }

    virtual ~PList() { delete[] data; }

    // Appends one element and gives its place in the list.
    int Add(const T& value)
    {
        if (count == capacity)
            grow(count + 1);
        data[count] = value;
        return count++;
    }

    // Empties the list; the storage stays for reuse.
    void Clear() { count = 0; }

    int Count() const { return count; }
    bool Empty() const { return count == 0; }

    T& operator[](int i)
    {
        assert(i >= 0 && i < count);
        return data[i];
    }
    const T& operator[](int i) const
    {
        assert(i >= 0 && i < count);
        return data[i];
    }

    // Place of the first element equal to `value`, or -1.
    int Find(const T& value) const
    {
        for (int i = 0; i < count; ++i)
            if (data[i] == value)
                return i;
        return -1;
    }

    T* data;
    int capacity;
    int count;
    int step;

private:
    // Raises the capacity by whole steps until `needed` elements fit.
    void grow(int needed)
    {
        int newCapacity = capacity;
        while (newCapacity < needed)
            newCapacity += step;
        T* grown = new T[newCapacity];
        for (int i = 0; i < count; ++i)
            grown[i] = data[i];
        delete[] data;
        data = grown;
        capacity = newCapacity;
    }

    void assign(const PList& other)
    {
        if (capacity < other.count)
            grow(other.count);
        for (int i = 0; i < other.count; ++i)
            data[i] = other.data[i];
        count = other.count;
    }
};
