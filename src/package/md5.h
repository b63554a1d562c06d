#pragma once
// MD5 message digest (RFC 1321), computed block by block.
//
// Usage: MD5Init, any number of MD5Update calls, then MD5Final, which writes the
// 16-byte digest and leaves the context cleared. CalcMD5Buf does all three for one
// block of memory.
#include <cstdint>

struct MD5Context
{
    uint32_t state[4]; // A, B, C, D
    uint32_t count[2]; // number of bits hashed, low word first
    unsigned char buffer[64]; // input not yet transformed
};

// Starts a context with the four standard words.
void MD5Init(MD5Context* context);
// Adds `size` bytes to the digest.
void MD5Update(MD5Context* context, const void* data, unsigned long size);
// Pads, writes the digest and clears the context.
void MD5Final(unsigned char digest[16], MD5Context* context);
// Transforms one 64-byte block into `state`.
void MD5Transform(uint32_t state[4], const unsigned char block[64]);

// Digest of a memory block. A size below 1 digests nothing.
void CalcMD5Buf(const void* data, int size, unsigned char (&digest)[16]);
