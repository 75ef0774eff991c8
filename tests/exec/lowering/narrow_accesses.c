/* Values of which only some bits are looked at: masks, casts, shifts, sums and stores that a byte
   or a halfword of a word in memory would do for. Signs are where it goes wrong. */
#include <stdio.h>

/* Bits moved up, those of the sign as well. */
#define UP(value, bits) ((int)((unsigned)(value) << (bits)))

static int si;
static unsigned ui;
static short sh;
static unsigned short uh;
static signed char sc;
static unsigned char uc;
static long lo;
static volatile int vi;
static int words[4];
static struct {
  int whole;
  unsigned plain;
  short half;
} record;

static const int samples[] = {0,      1,       -1,         127,    128,        255,        256,
                              0x7FFF, 0x8000,  0xFFFF,     65536,  0x00FF00FF, 0x12345678, -2,
                              -32768, -32769,  0x7FFFFFFF, -65536, (int)0x80000000u,
                              (int)0x80FF7F01u};
#define SAMPLE_COUNT ((int)(sizeof samples / sizeof samples[0]))

static unsigned sum;

static void note(long value) {
  sum = (sum << 5 | sum >> 27) ^ (unsigned)value;
}

static void load_all(int value) {
  si = value;
  ui = (unsigned)value;
  sh = (short)value;
  uh = (unsigned short)value;
  sc = (signed char)value;
  uc = (unsigned char)value;
  lo = value;
  vi = value;
  words[1] = value;
  record.whole = value;
  record.plain = (unsigned)value * 3u;
  record.half = (short)value;
}

static void masks(void) {
  note(si & 0x7F), note(si & 0xFF), note(si & 0xFF00), note(si & 0x1FF), note(ui & 0x7FFF);
  note(sh & 0xFF), note(sh & 0x8000), note(sh & 0xFF0000), note(sc & 0xF0), note(sc & 0xFF00);
  note(uh & 0xF0), note(uc & 0x0F), note(lo & 0xFF), note(lo & 0xFFFF), note(vi & 0xFF);
  note(words[1] & 0x3F), note(record.whole & 0xFF), note(record.half & 0x100);
  note((si | 0xFFFFFF00) & 0xFFF), note((si ^ 0xFF) & 0xFF), note((~ui) & 0xFFFF);
}

static void casts(void) {
  note((short)si & 0xFF0000), note((short)si & 0x100FF), note((signed char)si & 0xFF00);
  note((unsigned char)si), note((unsigned short)si), note((short)si), note((signed char)words[1]);
  note((unsigned)(unsigned short)si), note((short)(si | 0x10)), note((signed char)(sh + 1));
  note((unsigned char)(si - ui)), note((short)(si ^ uh) >> 3), note((unsigned)(short)ui >> 20);
  note((unsigned char)(si ? ui : uh)), note((short)(si > 5 ? words[1] : si) & 0x18000);
}

static void shifts(void) {
  note(si >> 24), note(si >> 16), note(si >> 20), note(si >> 28), note(si >> 8), note(ui >> 24);
  note(ui >> 16), note(ui >> 20), note(sh >> 8), note(sh >> 4), note(uh >> 8), note(uc >> 4);
  note((si >> 8) & 0xFF), note((si >> 4) & 0xF), note((si >> 16) & 0xFFFF), note((si >> 12) & 0xFF);
  note((unsigned)(si >> 4) & 0xF0000000u), note((unsigned)(sh >> 4) & 0xFFFF0000u);
  note(UP(si, 24) >> 24), note(UP(si, 16) >> 24), note(UP(si, 8) >> 24), note(UP(si, 16) >> 16);
  note(UP(si, 8) >> 26), note(UP(si, 4) >> 24), note(UP(si, 8) >> 16), note(UP(ui, 16) >> 18);
  note(UP(sh, 16) >> 24), note(UP(sh, 24) >> 28), note(UP(uh, 16) >> 20), note(lo >> 24);
  note((unsigned char)(si >> 24)), note((short)(si >> 16) & 0x10000), note(vi >> 24);
  note((unsigned short)(ui >> 8)), note((short)(ui >> 12)), note((unsigned char)(uh >> 12));
}

static void sums(void) {
  note((si / 2 + 0x1FE00) & 0xFFFFFE00), note((ui + 0x12340000u) & 0xFFFF0000u);
  note((si + ui) & 0xFF), note((si / 4 - words[1] / 2) & 0xFFFF), note((sh + 0xFF00) & 0xFF00);
  note((si / 2 + 0x5500) & 0xFF00), note((unsigned char)(ui + 0x101)), note((ui - 0x30000u) >> 16);
  note(((si & 0xFF) + 0x7FFFFF00) & 0xF0), note((sh * 8 + 6) & 0xFE), note((si / 2 - 0x1FE00) & -512);
}

static void show(void) {
  note(si), note((long)ui), note(sh), note(uh), note(sc), note(uc), note(lo), note(vi);
  note(words[1]), note(record.whole), note((long)record.plain), note(record.half);
}

static void stores(unsigned by) {
  int *p = &words[1];
  si = (si & (int)0xFFFF00FFu) | 0x100, show();
  ui = (ui & 0xFFFFFF00u) | (by & 0xFF), show();
  ui = (ui & 0xFF00FFFFu) | (by & 0xFF) << 16, show();
  sh = (short)((sh & 0xFF) | 0x1200), show();
  *p = (*p & 0xFFFF) | (int)(by << 16), show();
  si |= 0x10000, ui |= 0x10001, sh |= 0x4000, uh ^= 0xFF, lo |= 0x10000, vi |= 0x100, show();
  si &= (int)0xFFFF00FFu, ui &= 0xFFFFFF0Fu, uh &= 0xFF7F, *p &= 0x00FFFFFF, show();
  ui ^= 0xFF000000u, words[1] ^= 0x8000, record.plain |= 0xF0, record.whole &= ~0xFF00, show();
  ui |= by & 0xF0, si ^= (int)(by & 0xFF00), uc |= by, sc ^= by, sh &= by | 0xFF0F, show();
  note(si |= 0x20000), note((long)(ui &= 0xFFFF00FFu)), show();
}

int main(void) {
  int i;
  for (i = 0; i < SAMPLE_COUNT; i++) {
    load_all(samples[i]);
    masks();
    printf("%d: masks %08x", samples[i], sum);
    casts();
    printf(" casts %08x", sum);
    shifts();
    printf(" shifts %08x", sum);
    sums();
    printf(" sums %08x", sum);
    stores((unsigned)samples[SAMPLE_COUNT - 1 - i] * 77u);
    printf(" stores %08x\n", sum);
  }
  return 0;
}
