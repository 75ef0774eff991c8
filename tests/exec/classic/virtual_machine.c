/* A stack machine and a register machine, each an interpreter with one big switch, running small programs. */
#include <stdio.h>

enum op { HALT, PUSH, LOAD, STORE, ADD, SUB, MUL, DIV, MOD, LESS, EQUAL, NOT, JUMP, ZERO, CALL, RET, DUP, SWAP, DROP, PRINT };

static int memory[32], executed;

static int run(const short *code, int pc)
{
    int stack[64], returns[32], sp = 0, rp = 0, a;
    for (;;) {
        executed++;
        switch ((enum op)code[pc++]) {
        case HALT: return sp > 0 ? stack[sp - 1] : 0;
        case PUSH: stack[sp++] = code[pc++]; break;
        case LOAD: stack[sp++] = memory[code[pc++]]; break;
        case STORE: memory[code[pc++]] = stack[--sp]; break;
        case ADD: sp--; stack[sp - 1] += stack[sp]; break;
        case SUB: sp--; stack[sp - 1] -= stack[sp]; break;
        case MUL: sp--; stack[sp - 1] *= stack[sp]; break;
        case DIV: sp--; stack[sp - 1] /= stack[sp]; break;
        case MOD: sp--; stack[sp - 1] %= stack[sp]; break;
        case LESS: sp--; stack[sp - 1] = stack[sp - 1] < stack[sp]; break;
        case EQUAL: sp--; stack[sp - 1] = stack[sp - 1] == stack[sp]; break;
        case NOT: stack[sp - 1] = !stack[sp - 1]; break;
        case JUMP: pc = code[pc]; break;
        case ZERO: pc = stack[--sp] ? pc + 1 : code[pc]; break;
        case CALL: returns[rp++] = pc + 1; pc = code[pc]; break;
        case RET: pc = returns[--rp]; break;
        case DUP: stack[sp] = stack[sp - 1]; sp++; break;
        case SWAP: a = stack[sp - 1]; stack[sp - 1] = stack[sp - 2]; stack[sp - 2] = a; break;
        case DROP: sp--; break;
        case PRINT: printf("%d ", stack[--sp]); break;
        default: printf("bad operation %d\n", code[pc - 1]); return -1;
        }
    }
}

/* Sum of all n below 1000 with n % 3 == 0. */
static const short sum_multiples[] = {
    PUSH, 0, STORE, 0, PUSH, 0, STORE, 1,
    LOAD, 0, PUSH, 1000, LESS, ZERO, 34,
    LOAD, 0, PUSH, 3, MOD, ZERO, 24, JUMP, 28, LOAD, 1, JUMP, 35,
    LOAD, 0, JUMP, 42, HALT, HALT, HALT,
    LOAD, 0, ADD, STORE, 1, JUMP, 28,
    PUSH, 1, ADD, STORE, 0, JUMP, 8};

/* Factorial of the number pushed at 1, by a routine at 5 that calls itself. */
static short factorial[] = {
    PUSH, 1, CALL, 5, HALT,
    DUP, PUSH, 2, LESS, NOT, ZERO, 19, DUP, PUSH, 1, SUB, CALL, 5, MUL, RET};

enum { R_MOVE, R_CONST, R_ADD, R_SUB, R_MUL, R_BLT, R_BEQ, R_JUMP, R_LOAD, R_STORE, R_END };
struct instruction { unsigned op : 5, a : 4, b : 4; signed value : 19; };

static int run_registers(const struct instruction *program, int argument)
{
    int r[16] = {0}, cells[16] = {0};
    const struct instruction *p = program;
    r[1] = argument;
    while (p->op != R_END) {
        const struct instruction i = *p++;
        executed++;
        switch (i.op) {
        case R_MOVE: r[i.a] = r[i.b]; break;
        case R_CONST: r[i.a] = i.value; break;
        case R_ADD: r[i.a] += r[i.b] + i.value; break;
        case R_SUB: r[i.a] -= r[i.b] + i.value; break;
        case R_MUL: r[i.a] *= r[i.b]; break;
        case R_BLT: if (r[i.a] < r[i.b]) p += i.value; break;
        case R_BEQ: if (r[i.a] == r[i.b]) p += i.value; break;
        case R_JUMP: p += i.value; break;
        case R_LOAD: r[i.a] = cells[r[i.b] & 15]; break;
        case R_STORE: cells[r[i.b] & 15] = r[i.a]; break;
        }
    }
    return r[0];
}

/* r0 = fibonacci(r1). */
static const struct instruction fibonacci[] = {
    {R_CONST, 0, 0, 0}, {R_CONST, 2, 0, 1}, {R_CONST, 15, 0, 0}, {R_BEQ, 1, 15, 6}, {R_MOVE, 3, 0, 0}, {R_ADD, 0, 2, 0},
    {R_MOVE, 2, 3, 0}, {R_CONST, 4, 0, 1}, {R_SUB, 1, 4, 0}, {R_JUMP, 0, 0, -7}, {R_END, 0, 0, 0}};

static const struct instruction cells[] = {
    {R_CONST, 5, 0, 0}, {R_MOVE, 6, 5, 0}, {R_MUL, 6, 5, 0}, {R_STORE, 6, 5, 0}, {R_CONST, 7, 0, 0}, {R_ADD, 5, 7, 1},
    {R_BLT, 5, 1, -6}, {R_CONST, 5, 0, 0}, {R_LOAD, 8, 5, 0}, {R_ADD, 0, 8, 0}, {R_ADD, 5, 7, 1}, {R_BLT, 5, 1, -4},
    {R_END, 0, 0, 0}};

int main(void)
{
    int n, k;
    n = run(sum_multiples, 0);
    printf("%d %d %d\n", n, memory[1], executed);
    for (n = 1; n < 10; n++) {
        factorial[1] = (short)n;
        printf("%d ", run(factorial, 0));
    }
    printf("%d\n", executed);
    for (n = 0; n < 25; n += 4) {
        k = run_registers(fibonacci, n);
        printf("%d ", k);
    }
    k = run_registers(cells, 13);
    printf("%d %d\n", k, executed);
    return 0;
}
