/* Hash tables: chained with entries in a pool, and open with removal; words counted. */
#include <stdio.h>
#include <string.h>

#define BUCKETS 31
#define SLOTS 128
struct entry { const char *key; int length, count; struct entry *next; };
static struct entry pool[100], *buckets[BUCKETS];
static int used;

static const char *text =
    "it was the best of times it was the worst of times it was the age of wisdom it was the age of foolishness it was the "
    "epoch of belief it was the epoch of incredulity it was the season of light it was the season of darkness";

static unsigned hash(const char *s, int n)
{
    unsigned h = 2166136261u;
    while (n-- > 0)
        h = (h ^ (unsigned char)*s++) * 16777619u;
    return h;
}

static struct entry *look_up(const char *s, int n, int create)
{
    struct entry **head = &buckets[hash(s, n) % BUCKETS], *e;
    for (e = *head; e; e = e->next)
        if (e->length == n && memcmp(e->key, s, (size_t)n) == 0)
            return e;
    if (!create)
        return 0;
    e = &pool[used++];
    e->key = s;
    e->length = n;
    e->count = 0;
    e->next = *head;
    return *head = e;
}

static void count_words(const char *p)
{
    while (*p) {
        const char *start = p;
        while (*p && *p != ' ')
            p++;
        look_up(start, (int)(p - start), 1)->count++;
        while (*p == ' ')
            p++;
    }
}

static struct { unsigned key; int value; char state; } slots[SLOTS];
static int probes;

static int find_slot(unsigned key)
{
    unsigned at = key * 2654435761u >> 25;
    int grave = -1;
    while (slots[at].state) {
        probes++;
        if (slots[at].state == 1 && slots[at].key == key)
            return (int)at;
        if (slots[at].state == 2 && grave < 0)
            grave = (int)at;
        at = (at + 1) % SLOTS;
    }
    return grave >= 0 ? grave : (int)at;
}

static void put(unsigned key, int value)
{
    int at = find_slot(key);
    slots[at].key = key;
    slots[at].value = value;
    slots[at].state = 1;
}

static int get(unsigned key)
{
    int at = find_slot(key);
    return slots[at].state == 1 ? slots[at].value : -1;
}

static void drop(unsigned key)
{
    int at = find_slot(key);
    if (slots[at].state == 1)
        slots[at].state = 2;
}

int main(void)
{
    int i, sum = 0, longest = 0;
    unsigned k;
    count_words(text);
    for (i = 0; i < used; i++)
        if (pool[i].count > 2)
            printf("%.*s:%d ", pool[i].length, pool[i].key, pool[i].count);
    printf("\n%d %d %d\n", used, look_up("season", 6, 0)->count, look_up("absent", 6, 0) == 0);
    for (i = 0; i < BUCKETS; i++) {
        struct entry *e;
        int n = 0;
        for (e = buckets[i]; e; e = e->next)
            n++;
        if (n > longest)
            longest = n;
    }
    printf("%d\n", longest);
    for (k = 0; k < 100; k++)
        put(k * k, (int)k);
    for (k = 0; k < 100; k += 3)
        drop(k * k);
    for (k = 0; k < 100; k += 6)
        put(k * k, -5);
    for (k = 0; k < 100; k++)
        sum = sum * 3 % 65521 + get(k * k) + 7;
    printf("%d %d %d %d\n", sum, get(81), get(49), probes > 200);
    return 0;
}
