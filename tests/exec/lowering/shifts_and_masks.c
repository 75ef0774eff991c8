/* Products, masks and shifts that are turned into each other, in each type; pointer arithmetic
   with scaled and odd sizes; negatives and complements. */
#include <stdio.h>

/* Bits moved up, those of the sign as well. */
#define UP(value, bits) ((int)((unsigned)(value) << (bits)))

struct odd {
  char bytes[12];
};

static unsigned sum;

static void note(long value) {
  sum = (sum << 3 | sum >> 29) + (unsigned)value;
}

static void products(int i, unsigned u, short s, unsigned char c, long l) {
  note(i * 8), note(i * 4), note(i * -8), note(-(i * 3)), note((long)(u * 0x80000000u));
  note(s * 16), note(c * 256), note(l * 1024), note((short)(s * 64)), note((unsigned char)(c * 8));
  note(i * 3 + 6), note((long)(u * 5u + 10u)), note((long)(u * 3u - 6u)), note(i * 24 - 48);
  i *= 16, note(i), u *= 0x80000000u, note((long)u), s *= 32, note(s), c *= 8, note(c);
  note(-(i - s)), note(-((i - s) * c)), note((long)-((u - 3) * 5u)), note(i - -5), note(i + -7);
}

static void masks(int i, unsigned u, short s, unsigned char c, long l) {
  note((i / 8 * 8) & 0x38), note((i / 4 * 2) & 0xE), note((s * 8) & 0x38), note(UP(i, 4) & 0xFF0), note((long)((u << 5) & 0xFFE0u));
  note((i >> 3) & 0xFF), note((i >> 3) & 0xFFF), note((i >> 5) & 0x3FFFF), note((i >> 20) & 0xFFF);
  note((long)((u >> 3) & 0xFFFu)), note((long)((u >> 1) & 0x7FFFFFFFu)), note((s >> 2) & 0xFFF);
  note((c >> 1) & 0x7F), note((l >> 3) & 0xFFF), note(UP(i & 0xFF, 8)), note(UP(l & 0xFF, 8));
  note((long)((u & 0xFFFFu) << 16)), note((long)((u & 0x1FFFFu) << 16)), note((s & 0xFFF) << 4);
  note(UP(i & 0xFFFF, 16)), note(UP(l & 0x7FFF, 16)), note(UP(i & 0xFFFFFF, 8));
  note(i ^ -1), note((unsigned char)(c ^ 0xFF)), note((short)(s ^ 0xFFFF)), note(c ^ 0xFF);
  i &= 0xFF0F, c &= 0x1F7, s |= 0x7FF, l ^= -1, note(i), note(c), note(s), note(l);
}

static int differences(void) {
  static struct odd objects[5];
  static double reals[4];
  static char text[9];
  struct odd *p = objects + 4, *q = objects;
  double *d = reals + 3;
  char *t = text + 8;
  int i, total = 0;
  for (i = 1; i < 4; i++) {
    p -= i & 1, q += i & 1;
    total = total * 9 + (int)(p - q) + (int)(d - reals) * 2 + (int)(t - text);
    objects[i].bytes[i * 2] = (char)i;
    total += (&objects[i])->bytes[i + i] + (int)(&objects[i] - objects);
    d = reals + (3 - i), t -= 2, *(d + i) = i * 8, total += (int)d[i];
  }
  return total;
}

static double reals(double a, double b) {
  float f = (float)a;
  double result = 1.0 / a * b + b / 4.0 - (a - b);
  f += 4294967295u;
  printf("%g %g %.1f\n", -(a - a), -((a - a) * b), f);
  return result + -(a - b);
}

int main(void) {
  static const int samples[] = {0, 1, -1, 5, 255, 256, -129, 0x7FFF, 0x12345678, -0x12345678,
                                0x0FFFFFFF, -0x10000000};
  int k;
  for (k = 0; k < (int)(sizeof samples / sizeof samples[0]); k++) {
    const int n = samples[k];
    const int m = n % 30000;
    products(m, (unsigned)n, (short)n, (unsigned char)n, m);
    printf("%d: %08x", n, sum);
    masks(n, (unsigned)n, (short)n, (unsigned char)n, n);
    printf(" %08x\n", sum);
  }
  printf("%d\n", differences());
  printf("%.6f\n", reals(3.0, 8.0));
  return 0;
}
