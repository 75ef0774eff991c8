/* CRC-32 by bit, by byte and by nibble, Adler, Fletcher, a mixing hash, and a digest of 512-bit blocks. */
#include <stdio.h>
#include <string.h>

static unsigned table[256], nibbles[16];
static unsigned char message[600];

static unsigned crc_bits(const unsigned char *p, unsigned n)
{
    unsigned crc = ~0u;
    int k;
    while (n--) {
        crc ^= *p++;
        for (k = 0; k < 8; k++)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320u : crc >> 1;
    }
    return ~crc;
}

static void make_tables(void)
{
    unsigned i, k;
    for (i = 0; i < 256; i++) {
        unsigned c = i;
        for (k = 0; k < 8; k++)
            c = c >> 1 ^ (0xEDB88320u & (0u - (c & 1u)));
        table[i] = c;
    }
    for (i = 0; i < 16; i++) {
        unsigned c = i;
        for (k = 4; k; k--)
            c = c & 1 ? c >> 1 ^ 0xEDB88320u : c >> 1;
        nibbles[i] = c;
    }
}

static unsigned crc_bytes(const unsigned char *p, unsigned n)
{
    unsigned crc = 0xFFFFFFFFu;
    while (n--)
        crc = crc >> 8 ^ table[(crc ^ *p++) & 0xFF];
    return crc ^ 0xFFFFFFFFu;
}

static unsigned crc_nibbles(const unsigned char *p, unsigned n)
{
    unsigned crc = ~0u, i;
    for (i = 0; i < n; i++) {
        crc = nibbles[(crc ^ p[i]) & 15] ^ crc >> 4;
        crc = nibbles[(crc ^ p[i] >> 4) & 15] ^ crc >> 4;
    }
    return ~crc;
}

static unsigned adler(const unsigned char *p, unsigned n)
{
    unsigned a = 1, b = 0;
    while (n-- > 0) {
        a = (a + *p++) % 65521u;
        b = (b + a) % 65521u;
    }
    return b << 16 | a;
}

static unsigned short fletcher(const unsigned char *p, unsigned n)
{
    unsigned char a = 0, b = 0;
    unsigned i;
    for (i = 0; i < n; i++) {
        a = (unsigned char)((a + p[i]) % 255);
        b = (unsigned char)((b + a) % 255);
    }
    return (unsigned short)(b << 8 | a);
}

static unsigned rotate(unsigned x, int n) { return x << n | x >> (32 - n); }

static unsigned mix(const unsigned char *p, unsigned n)
{
    unsigned h = 0x9747B28Cu ^ n;
    for (; n >= 4; p += 4, n -= 4) {
        unsigned k = p[0] | p[1] << 8 | p[2] << 16 | (unsigned)p[3] << 24;
        k = rotate(k * 0xCC9E2D51u, 15) * 0x1B873593u;
        h = rotate(h ^ k, 13) * 5 + 0xE6546B64u;
    }
    while (n--)
        h = rotate(h ^ *p++, 7) * 31;
    h = (h ^ h >> 16) * 0x85EBCA6Bu;
    h = (h ^ h >> 13) * 0xC2B2AE35u;
    return h ^ h >> 16;
}

static void digest_block(unsigned state[5], const unsigned char *p)
{
    unsigned w[80], a = state[0], b = state[1], c = state[2], d = state[3], e = state[4], f, k, t;
    int i;
    for (i = 0; i < 16; i++)
        w[i] = (unsigned)p[4 * i] << 24 | p[4 * i + 1] << 16 | p[4 * i + 2] << 8 | p[4 * i + 3];
    for (; i < 80; i++)
        w[i] = rotate(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
    for (i = 0; i < 80; i++) {
        if (i < 20) { f = (b & c) | (~b & d); k = 0x5A827999u; }
        else if (i < 40) { f = b ^ c ^ d; k = 0x6ED9EBA1u; }
        else if (i < 60) { f = (b & c) | (b & d) | (c & d); k = 0x8F1BBCDCu; }
        else { f = b ^ c ^ d; k = 0xCA62C1D6u; }
        t = rotate(a, 5) + f + e + k + w[i];
        e = d; d = c; c = rotate(b, 30); b = a; a = t;
    }
    state[0] += a; state[1] += b; state[2] += c; state[3] += d; state[4] += e;
}

static void digest(const unsigned char *p, unsigned n)
{
    unsigned state[5] = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u, 0xC3D2E1F0u}, total = n;
    unsigned char last[128] = {0};
    int i, rest;
    for (; n >= 64; n -= 64, p += 64)
        digest_block(state, p);
    memcpy(last, p, n);
    last[n] = 0x80;
    rest = n < 56 ? 64 : 128;
    for (i = 0; i < 4; i++)
        last[rest - 1 - i] = (unsigned char)(total * 8 >> 8 * i);
    digest_block(state, last);
    if (rest == 128)
        digest_block(state, last + 64);
    printf("%08x%08x%08x%08x%08x\n", state[0], state[1], state[2], state[3], state[4]);
}

int main(void)
{
    static const unsigned lengths[] = {0, 1, 3, 55, 56, 64, 119, 600};
    unsigned i;
    make_tables();
    for (i = 0; i < sizeof message; i++)
        message[i] = (unsigned char)(i * i + i / 7);
    for (i = 0; i < 8; i++) {
        unsigned n = lengths[i];
        printf("%u %08x %08x %08x %08x %04x %08x\n", n, crc_bits(message, n), crc_bytes(message, n), crc_nibbles(message, n),
               adler(message, n), fletcher(message, n), mix(message, n));
        digest(message, n);
    }
    digest((const unsigned char *)"abc", 3);
    return (int)(crc_bytes((const unsigned char *)"123456789", 9) == 0xCBF43926u);
}
