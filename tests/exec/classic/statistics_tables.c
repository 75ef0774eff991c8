/* Tables over small records: grouping, medians, running means, a histogram, dates and weekdays, a lottery of shuffles. */
#include <stdio.h>

struct sample { unsigned char group; short value; unsigned day : 5, month : 4; };
static struct sample samples[120];
static unsigned seed = 42;

static unsigned next(unsigned below)
{
    seed ^= seed << 13;
    seed ^= seed >> 17;
    seed ^= seed << 5;
    return seed % below;
}

static void make(void)
{
    int i;
    for (i = 0; i < 120; i++) {
        samples[i].group = (unsigned char)next(5);
        samples[i].value = (short)((int)next(2000) - 1000);
        samples[i].day = 1 + next(28);
        samples[i].month = 1 + next(12);
    }
}

static int select_nth(short *v, int n, int k)
{
    int low = 0, high = n - 1;
    while (low < high) {
        short pivot = v[k];
        int i = low, j = high;
        do {
            while (v[i] < pivot) i++;
            while (pivot < v[j]) j--;
            if (i <= j) {
                short t = v[i];
                v[i++] = v[j];
                v[j--] = t;
            }
        } while (i <= j);
        if (j < k) low = i;
        if (k < i) high = j;
    }
    return v[k];
}

static void groups(void)
{
    int g, i;
    for (g = 0; g < 5; g++) {
        short values[120];
        int n = 0, sum = 0, low = 32767, high = -32768;
        for (i = 0; i < 120; i++) {
            if (samples[i].group != g)
                continue;
            values[n++] = samples[i].value;
            sum += samples[i].value;
            if (samples[i].value < low) low = samples[i].value;
            if (samples[i].value > high) high = samples[i].value;
        }
        printf("%d: %d %d %d %d %d\n", g, n, sum / n, low, high, select_nth(values, n, n / 2));
    }
}

static int weekday(int y, int m, int d)
{
    static const char shift[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    if (m < 3)
        y--;
    return (y + y / 4 - y / 100 + y / 400 + shift[m - 1] + d) % 7;
}

static int day_number(int y, int m, int d)
{
    int a = (14 - m) / 12;
    y -= a;
    m += 12 * a - 3;
    return d + (153 * m + 2) / 5 + 365 * y + y / 4 - y / 100 + y / 400;
}

static void calendar(void)
{
    int per_day[7] = {0}, i, gap = 0;
    for (i = 0; i < 120; i++)
        per_day[weekday(2024, samples[i].month, samples[i].day)]++;
    for (i = 0; i < 7; i++)
        printf("%d ", per_day[i]);
    for (i = 1; i < 120; i++) {
        int d = day_number(2024, samples[i].month, samples[i].day) - day_number(2024, samples[i - 1].month, samples[i - 1].day);
        if (d < 0)
            d = -d;
        if (d > gap)
            gap = d;
    }
    printf("%d %d\n", gap, day_number(2000, 3, 1) - day_number(2000, 2, 28));
}

static void histogram(void)
{
    unsigned char bins[8] = {0};
    int i, j;
    for (i = 0; i < 120; i++)
        bins[(samples[i].value + 1000) / 250]++;
    for (i = 0; i < 8; i++) {
        printf("%5d ", i * 250 - 1000);
        for (j = 0; j < bins[i]; j++)
            putchar('*');
        putchar('\n');
    }
}

static int shuffles(void)
{
    int cards[52], i, round, fixed = 0;
    for (round = 0; round < 40; round++) {
        for (i = 0; i < 52; i++)
            cards[i] = i;
        for (i = 51; i > 0; i--) {
            int j = (int)next((unsigned)i + 1), t = cards[i];
            cards[i] = cards[j];
            cards[j] = t;
        }
        for (i = 0; i < 52; i++)
            fixed += cards[i] == i;
    }
    return fixed;
}

static int running(int width)
{
    int i, sum = 0, hash = 0;
    for (i = 0; i < 120; i++) {
        sum += samples[i].value;
        if (i >= width) {
            sum -= samples[i - width].value;
            hash = (hash * 5 + sum / width) % 99991;
        }
    }
    return hash;
}

int main(void)
{
    make();
    groups();
    calendar();
    histogram();
    printf("%d %d\n", running(7), running(30));
    printf("%d\n", shuffles());
    return 0;
}
