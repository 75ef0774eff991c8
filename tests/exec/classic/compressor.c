/* Compression there and back: run lengths, references to earlier text, and codes by frequency. */
#include <stdio.h>
#include <string.h>

static unsigned char source[700], packed[1600], unpacked[700];

static int make_source(void)
{
    static const char *const words[] = {"the ", "cat ", "sat on ", "a mat ", "and ", "aaaaaaaaaa ", "then ", "\n"};
    unsigned seed = 5;
    int n = 0;
    while (n < 650) {
        const char *w;
        seed = seed * 1103515245u + 12345u;
        for (w = words[seed >> 20 & 7]; *w; w++)
            source[n++] = (unsigned char)*w;
    }
    return n;
}

static int pack_runs(int n)
{
    int i = 0, out = 0;
    while (i < n) {
        int run = 1;
        while (i + run < n && run < 255 && source[i + run] == source[i])
            run++;
        packed[out++] = (unsigned char)run;
        packed[out++] = source[i];
        i += run;
    }
    return out;
}

static int unpack_runs(int n)
{
    int i, out = 0;
    for (i = 0; i < n; i += 2) {
        memset(unpacked + out, packed[i + 1], packed[i]);
        out += packed[i];
    }
    return out;
}

/* A flag byte tells for the next eight items whether each is a byte or (distance, length). */
static int pack_references(int n)
{
    int i = 0, out = 0, flag_at = 0, bit = 8;
    while (i < n) {
        int best = 0, from = 0, j, low = i > 255 ? i - 255 : 0;
        for (j = low; j < i; j++) {
            int k = 0;
            while (k < 18 && i + k < n && source[j + k] == source[i + k])
                k++;
            if (k > best) {
                best = k;
                from = i - j;
            }
        }
        if (bit == 8) {
            bit = 0;
            flag_at = out++;
            packed[flag_at] = 0;
        }
        if (best >= 3) {
            packed[flag_at] |= (unsigned char)(1 << bit);
            packed[out++] = (unsigned char)from;
            packed[out++] = (unsigned char)(best - 3);
            i += best;
        } else
            packed[out++] = source[i++];
        bit++;
    }
    return out;
}

static int unpack_references(int n)
{
    int i = 0, out = 0;
    while (i < n) {
        int flags = packed[i++], bit;
        for (bit = 0; bit < 8 && i < n; bit++, flags >>= 1) {
            if (flags & 1) {
                int from = packed[i++], length = packed[i++] + 3;
                while (length-- > 0) {
                    unpacked[out] = unpacked[out - from];
                    out++;
                }
            } else
                unpacked[out++] = packed[i++];
        }
    }
    return out;
}

static struct { int weight; short left, right, parent; } tree[512];
static int leaves;

static int build_codes(int n)
{
    int i, nodes = 256, left = 0;
    memset(tree, 0, sizeof tree);
    for (i = 0; i < 512; i++)
        tree[i].parent = -1;
    for (i = 0; i < n; i++)
        tree[source[i]].weight++;
    for (i = 0; i < 256; i++)
        left += tree[i].weight > 0;
    leaves = left;
    while (left > 1) {
        int a = -1, b = -1;
        for (i = 0; i < nodes; i++) {
            if (!tree[i].weight || tree[i].parent >= 0)
                continue;
            if (a < 0 || tree[i].weight < tree[a].weight) {
                b = a;
                a = i;
            } else if (b < 0 || tree[i].weight < tree[b].weight)
                b = i;
        }
        tree[nodes].weight = tree[a].weight + tree[b].weight;
        tree[nodes].left = (short)a;
        tree[nodes].right = (short)b;
        tree[a].parent = tree[b].parent = (short)nodes++;
        left--;
    }
    return nodes - 1;
}

static int pack_codes(int n)
{
    int i, bits = 0;
    memset(packed, 0, sizeof packed);
    for (i = 0; i < n; i++) {
        char path[40];
        int depth = 0, v = source[i];
        while (tree[v].parent >= 0) {
            path[depth++] = tree[tree[v].parent].right == v;
            v = tree[v].parent;
        }
        while (depth > 0) {
            if (path[--depth])
                packed[bits >> 3] |= (unsigned char)(0x80 >> (bits & 7));
            bits++;
        }
    }
    return bits;
}

static int unpack_codes(int root, int bits)
{
    int i, v = root, out = 0;
    for (i = 0; i < bits; i++) {
        v = packed[i >> 3] & 0x80 >> (i & 7) ? tree[v].right : tree[v].left;
        if (v < 256) {
            unpacked[out++] = (unsigned char)v;
            v = root;
        }
    }
    return out;
}

static void report(const char *name, int n, int size, int back)
{
    unsigned h = 0;
    int i;
    for (i = 0; i < size; i++)
        h = h * 31 + packed[i];
    printf("%s %d -> %d -> %d %s %08x\n", name, n, size, back, memcmp(source, unpacked, (size_t)n) ? "differs" : "same", h);
    memset(unpacked, 0, sizeof unpacked);
}

int main(void)
{
    int n = make_source(), size, root;
    size = pack_runs(n);
    report("runs", n, size, unpack_runs(size));
    size = pack_references(n);
    report("references", n, size, unpack_references(size));
    root = build_codes(n);
    size = pack_codes(n);
    report("codes", n, (size + 7) / 8, unpack_codes(root, size));
    printf("%d leaves\n", leaves);
    return 0;
}
