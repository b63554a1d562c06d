#pragma once
// HashMap: text keys to values, with chained buckets and pooled nodes.
//
// The first template argument is the type of the values; keys are always texts, copied into the
// node. The bucket count is always one of the primes in hashMapPrimes: a lookup that misses
// first checks the load (entries x 100 / buckets) and moves one step up the list at 76 or more,
// or one step down below 20 (from 29 buckets upward). Nodes come from a SimplePool and are only
// given back to the system with the map.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <pthread.h>

#include "foundation/strings/char_string.h"
#include "foundation/strings/exceptions.h"
#include "foundation/strings/table.h"

namespace TeskUtils {

// Bob Jenkins's lookup3 hash of `length` bytes, as on a little-endian machine.
uint32_t hashlittle(const void* key, size_t length, uint32_t initval);

// The bucket counts a HashMap moves through, in increasing order.
extern const int hashMapPrimes[];
extern const int hashMapPrimeCount;
// Index in hashMapPrimes of `size`, or -1 when it is not one of them.
int hashMapPrimeIndex(int size);

// A store of objects of type T, carved out of blocks of BLOCK objects. Freed objects go to a free
// list and are handed out again; blocks are returned only when the pool dies. The two mutexes
// exist for a threaded build and are not taken: the program has one thread.
template <class T, int BLOCK, bool LOCKED> class SimplePool
{
public:
    SimplePool()
        : blocks(nullptr)
        , used(BLOCK)
        , freeList(nullptr)
    {
        pthread_mutex_init(&allocMutex, nullptr);
        pthread_mutex_init(&freeMutex, nullptr);
    }
    // Frees all blocks. Objects still handed out are not destroyed: release them first.
    ~SimplePool()
    {
        while (blocks) {
            Block* next = blocks->next;
            ::operator delete(blocks, std::nothrow);
            blocks = next;
        }
        pthread_mutex_destroy(&allocMutex);
        pthread_mutex_destroy(&freeMutex);
    }
    SimplePool(const SimplePool&) = delete;
    SimplePool& operator=(const SimplePool&) = delete;

    // A default-constructed object. Throws ExceptionMsg when a new block cannot be allocated.
    T* alloc()
    {
        Slot* slot = freeList;
        if (slot) {
            freeList = slot->nextFree;
        } else {
            if (used == BLOCK)
                addBlock();
            slot = &blocks->slots[used++];
        }
        return new (slot->storage) T();
    }
    // Destroys the object and keeps its place for the next alloc().
    void release(T* object)
    {
        if (!object)
            return;
        object->~T();
        Slot* slot = reinterpret_cast<Slot*>(object);
        slot->nextFree = freeList;
        freeList = slot;
    }
    // Number of blocks allocated so far.
    int blockCount() const
    {
        int n = 0;
        for (const Block* b = blocks; b; b = b->next)
            ++n;
        return n;
    }

private:
    union Slot {
        Slot* nextFree;
        alignas(T) unsigned char storage[sizeof(T)];
    };
    struct Block
    {
        Block* next;
        Slot slots[BLOCK];
    };

    void addBlock()
    {
        void* memory = ::operator new(sizeof(Block), std::nothrow);
        if (!memory)
            throw ExceptionMsg("[_SequenceBlock] Could not allocate memory");
        Block* block = static_cast<Block*>(memory);
        block->next = blocks;
        blocks = block;
        used = 0;
    }

    Block* blocks;
    int used; // slots handed out of the newest block
    Slot* freeList;
    pthread_mutex_t allocMutex;
    pthread_mutex_t freeMutex;
};

template <class VALUE, int COPYKEYS, int SIZE, int LOCKED, int POOLBLOCK> class HashMap
{
public:
    struct Node
    {
        char* key; // new[] copy of the key, null for a null key
        VALUE value;
        Node* next;
    };

    // Starts with the first prime of the list at or above SIZE.
    HashMap()
        : entries(0)
    {
        int index = 0;
        while (index + 1 < hashMapPrimeCount && hashMapPrimes[index] < SIZE)
            ++index;
        buckets.setCount(hashMapPrimes[index], 1);
    }
    ~HashMap() { clear(); }
    HashMap(const HashMap&) = delete;
    HashMap& operator=(const HashMap&) = delete;

    // The value stored under `key`; a new key is inserted with an empty value (after the
    // bucket count has been adjusted to the load). A null key is a key of its own.
    VALUE& operator[](const char* key)
    {
        if (Node* hit = findNode(key))
            return hit->value;
        int load = static_cast<int>(static_cast<long long>(entries) * 100 / buckets.count);
        int index = hashMapPrimeIndex(buckets.count);
        if (load >= 76 && index >= 0 && index + 1 < hashMapPrimeCount)
            rehash(hashMapPrimes[index + 1]);
        else if (load < 20 && buckets.count >= 14 && index > 0)
            rehash(hashMapPrimes[index - 1]);
        Node* node = pool.alloc();
        if (key) {
            size_t length = strlen(key);
            node->key = new char[length + 1];
            memcpy(node->key, key, length + 1);
        }
        int bucket = bucketOf(key);
        node->next = buckets[bucket];
        buckets[bucket] = node;
        ++entries;
        return node->value;
    }
    VALUE& operator[](const CharString& key) { return (*this)[key.data()]; }

    // The value stored under `key`, or null; never changes the map.
    VALUE* find(const char* key)
    {
        Node* node = findNode(key);
        return node ? &node->value : nullptr;
    }
    const VALUE* find(const char* key) const
    {
        const Node* node = findNode(key);
        return node ? &node->value : nullptr;
    }
    bool contains(const char* key) const { return findNode(key) != nullptr; }

    // Removes `key`; returns 1 if it was there, else 0. The bucket count stays.
    int remove(const char* key)
    {
        Node** link = &buckets[bucketOf(key)];
        for (; *link; link = &(*link)->next) {
            Node* node = *link;
            if (!sameKey(node->key, key))
                continue;
            *link = node->next;
            freeNode(node);
            --entries;
            return 1;
        }
        return 0;
    }
    // Removes all entries; the bucket count stays.
    void clear()
    {
        for (int i = 0; i < buckets.count; ++i) {
            Node* node = buckets[i];
            while (node) {
                Node* next = node->next;
                freeNode(node);
                node = next;
            }
            buckets[i] = nullptr;
        }
        entries = 0;
    }

    // Calls f(const char* key, VALUE& value) for each entry, in bucket order.
    template <class F> void forEach(F f)
    {
        for (int i = 0; i < buckets.count; ++i)
            for (Node* node = buckets[i]; node; node = node->next)
                f(static_cast<const char*>(node->key), node->value);
    }

    int size() const { return entries; }
    int bucketCount() const { return buckets.count; }

private:
    static bool sameKey(const char* a, const char* b)
    {
        if (!a || !b)
            return a == b;
        return strcmp(a, b) == 0;
    }
    static uint32_t hashOf(const char* key) { return key ? hashlittle(key, strlen(key), 0) : 0; }
    int bucketOf(const char* key) const
    {
        return static_cast<int>(hashOf(key) % static_cast<uint32_t>(buckets.count));
    }
    Node* findNode(const char* key) const
    {
        for (Node* node = buckets[bucketOf(key)]; node; node = node->next)
            if (sameKey(node->key, key))
                return node;
        return nullptr;
    }
    void freeNode(Node* node)
    {
        delete[] node->key;
        pool.release(node);
    }
    // Relinks every node into a new bucket array of `size` buckets, each at the head of its
    // new chain.
    void rehash(int size)
    {
        Table<Node*, 1000> fresh;
        fresh.setCount(size, 1);
        for (int i = 0; i < buckets.count; ++i) {
            Node* node = buckets[i];
            while (node) {
                Node* next = node->next;
                int bucket = static_cast<int>(hashOf(node->key) % static_cast<uint32_t>(size));
                node->next = fresh[bucket];
                fresh[bucket] = node;
                node = next;
            }
        }
        buckets.swap(fresh);
    }

    Table<Node*, 1000> buckets;
    int entries;
    SimplePool<Node, POOLBLOCK, false> pool;
};

} // namespace TeskUtils
