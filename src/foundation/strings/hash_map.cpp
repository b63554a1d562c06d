#include "foundation/strings/hash_map.h"

namespace TeskUtils {

const int hashMapPrimes[] = {
    13,
    29,
    59,
    127,
    257,
    521,
    1049,
    2099,
    4201,
    8419,
    16843,
    33703,
    67409,
    134837,
    269683,
    539389,
    1078787,
    2157587,
    4315183,
    8630387,
    17260781,
    34521589,
    69043189,
    138086407,
    276172823,
    552345671,
    1104691373,
};
const int hashMapPrimeCount = static_cast<int>(sizeof hashMapPrimes / sizeof hashMapPrimes[0]);

int hashMapPrimeIndex(int size)
{
    for (int i = 0; i < hashMapPrimeCount; ++i)
        if (hashMapPrimes[i] == size)
            return i;
    return -1;
}

namespace {

inline uint32_t rot(uint32_t x, int k)
{
    return (x << k) | (x >> (32 - k));
}

// Mixes three 32-bit values reversibly.
inline void mix(uint32_t& a, uint32_t& b, uint32_t& c)
{
    a -= c;
    a ^= rot(c, 4);
    c += b;
    b -= a;
    b ^= rot(a, 6);
    a += c;
    c -= b;
    c ^= rot(b, 8);
    b += a;
    a -= c;
    a ^= rot(c, 16);
    c += b;
    b -= a;
    b ^= rot(a, 19);
    a += c;
    c -= b;
    c ^= rot(b, 4);
    b += a;
}

// Final mixing of three 32-bit values into c.
inline void finalMix(uint32_t& a, uint32_t& b, uint32_t& c)
{
    c ^= b;
    c -= rot(b, 14);
    a ^= c;
    a -= rot(c, 11);
    b ^= a;
    b -= rot(a, 25);
    c ^= b;
    c -= rot(b, 16);
    a ^= c;
    a -= rot(c, 4);
    b ^= a;
    b -= rot(a, 14);
    c ^= b;
    c -= rot(b, 24);
}

// Little-endian 32-bit word of up to four bytes starting at k.
inline uint32_t word(const unsigned char* k, size_t n)
{
    uint32_t w = 0;
    for (size_t i = 0; i < n && i < 4; ++i)
        w |= static_cast<uint32_t>(k[i]) << (8 * i);
    return w;
}

} // namespace

uint32_t hashlittle(const void* key, size_t length, uint32_t initval)
{
    uint32_t a, b, c;
    a = b = c = 0xdeadbeef + static_cast<uint32_t>(length) + initval;
    const unsigned char* k = static_cast<const unsigned char*>(key);

    // Reading byte by byte gives the same result as the word-wise reads on a little-endian
    // machine, for any alignment.
    while (length > 12) {
        a += word(k, 4);
        b += word(k + 4, 4);
        c += word(k + 8, 4);
        mix(a, b, c);
        length -= 12;
        k += 12;
    }
    if (length == 0)
        return c;
    a += word(k, length);
    if (length > 4)
        b += word(k + 4, length - 4);
    if (length > 8)
        c += word(k + 8, length - 8);
    finalMix(a, b, c);
    return c;
}

} // namespace TeskUtils
