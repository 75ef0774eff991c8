/* Volatile objects: every access happens, in order, and none is replaced by a remembered value. */
#include <stdio.h>

static volatile int port;
static volatile unsigned char status = 1;
static int log_count, log_sum;
volatile const int fixed = 77;
static volatile double real = 1.5;
static struct { volatile int a; int b; volatile short c[3]; } device;

static int read_twice(void) { return port + port * 2; }
static void write_twice(int x) { port = x; port = x + 1; }
static int read_write(void) { port = port + 1; port += 2; port++; --port; return port; }
static int dropped(void) { port; (void)port; status; return port; }

static int polled(int n)
{
    int tries = 0;
    status = 0;
    while (!(status & 4)) {
        status++;
        if (++tries > n)
            break;
    }
    return tries;
}

static int through_pointer(volatile int *p, int n)
{
    int i, s = 0;
    for (i = 0; i < n; i++) {
        *p = i;
        s += *p + *p;
    }
    return s;
}

static int locals(int n)
{
    volatile int i, s = 0;
    volatile int a[4] = {1, 2, 3, 4};
    int *volatile q = &log_count;
    for (i = 0; i < n; i++) {
        s += a[i & 3];
        a[i & 3] = s;
        *q += 1;
    }
    return s + i;
}

static int parameter(volatile int x, volatile char c)
{
    int y = x;
    x++;
    c += 3;
    return y + x * 10 + c;
}

static void logged(int x)
{
    log_count++;
    log_sum = log_sum * 3 + x;
}

static int members(void)
{
    int i;
    device.a = 5;
    device.b = device.a + device.a;
    for (i = 0; i < 3; i++)
        device.c[i] = (short)(device.a * i + device.b);
    logged(device.c[0]);
    logged(device.c[1] + device.c[2]);
    return device.a + device.b;
}

static int condition(void)
{
    int n = 0;
    port = 3;
    if (port == 3) n += 1;
    if (port == 3) n += 2;
    n += port ? port : 100;
    n += port && port > 2;
    switch (port) { case 3: n += 50; break; case 4: n += 60; }
    return n;
}

int main(void)
{
    port = 10;
    printf("%d\n", read_twice());
    write_twice(20);
    printf("%d\n", port);
    printf("%d\n", read_write());
    printf("%d\n", dropped());
    printf("%d", polled(10));
    printf(" %d\n", polled(2));
    printf("%d\n", through_pointer(&port, 5));
    printf("%d\n", locals(9));
    printf("%d\n", parameter(4, 'a'));
    printf("%d", members());
    printf(" %d", device.c[1]);
    printf(" %d\n", device.c[2]);
    printf("%d %d\n", log_count, log_sum);
    printf("%d", condition());
    printf(" %d\n", fixed);
    real = real * 2 + real;
    printf("%g\n", real);
    return 0;
}
