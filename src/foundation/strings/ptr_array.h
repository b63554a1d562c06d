#pragma once
// PtrArray<T>: an owning array shared by reference count.
//
// Copies of a PtrArray point at the same data and share one RefCounter; the data is freed when the
// last holder lets go. A PtrArray without data is "null" (data null, count 0).
namespace TeskUtils {

// Allocates and frees the data of a PtrArray and counts its holders (starting at 1).
template <class T> class RefCounter
{
public:
    RefCounter()
        : refCount(1)
    {
    }

    virtual T* allocMem(int n) { return new T[n > 0 ? n : 0]; }
    // Frees data from allocMem; null is ignored.
    virtual void freeMem(T* p)
    {
        if (p)
            delete[] p;
    }
    virtual void deleteThis() { delete this; }

    int refCount;

protected:
    virtual ~RefCounter() { }
};

template <class T> class PtrArray
{
public:
    PtrArray()
        : data(nullptr)
        , counter(nullptr)
        , count(0)
    {
    }
    PtrArray(const PtrArray& other)
        : data(other.data)
        , counter(other.counter)
        , count(other.count)
    {
        if (counter)
            ++counter->refCount;
    }
    PtrArray& operator=(const PtrArray& other)
    {
        // Take the fields first: `other` may be this very array.
        T* otherData = other.data;
        RefCounter<T>* otherCounter = other.counter;
        int otherCount = other.count;
        if (otherCounter)
            ++otherCounter->refCount;
        freeMem();
        data = otherData;
        counter = otherCounter;
        count = otherCount;
        return *this;
    }
    ~PtrArray() { freeMem(); }

    // Lets go of the current data and allocates a new array of n elements (not initialised for
    // plain types). Returns the data.
    T* allocArray(int n)
    {
        freeMem();
        counter = new RefCounter<T>;
        data = counter->allocMem(n);
        count = n;
        return data;
    }
    // Lets go of the current data and takes ownership of `array`, which must come from new[]
    // and hold n elements.
    void attach(T* array, int n)
    {
        freeMem();
        if (!array)
            return;
        counter = new RefCounter<T>;
        data = array;
        count = n;
    }
    // Drops this holder's reference; at zero frees the data and the counter. The array is
    // always null afterwards, with count 0.
    void freeMem()
    {
        if (counter && --counter->refCount <= 0) {
            counter->freeMem(data);
            counter->deleteThis();
        }
        data = nullptr;
        counter = nullptr;
        count = 0;
    }

    T& operator[](int index) { return data[index]; }
    const T& operator[](int index) const { return data[index]; }
    T* get() const { return data; }
    int size() const { return count; }
    bool isNull() const { return data == nullptr; }
    // Number of holders sharing the data; 0 for a null array.
    int shareCount() const { return counter ? counter->refCount : 0; }

    T* data;
    RefCounter<T>* counter;
    int count;
};

} // namespace TeskUtils
