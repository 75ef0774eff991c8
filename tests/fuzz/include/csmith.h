/* What random programs need at run time, in 32-bit arithmetic only: checked arithmetic that is
 * defined for every pair of operands, and a checksum of all variables. The native oracle and
 * velkor-cc both compile this header, so its exact choices matter less than that each of them is
 * plain C without undefined behaviour. */
#ifndef VELKOR_RANDOM_PROGRAM_H
#define VELKOR_RANDOM_PROGRAM_H

#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- Checked arithmetic ----------------------------------------------------------------------
 * Where C gives no result (overflow, division by zero, a shift count out of range) the left
 * operand comes back unchanged. */

/* Types narrower than int: int holds every sum, difference, product and quotient, so a result only
 * has to be converted back. The product of two uint16_t needs unsigned. */
#define NARROW_ARITHMETIC(T, S, WORD)                                                              \
  static T safe_unary_minus_func_##T##_##S(T a) {                                                  \
    return (T)(-(int)a);                                                                           \
  }                                                                                                \
  static T safe_add_func_##T##_##S##_##S(T a, T b) {                                               \
    return (T)(a + b);                                                                             \
  }                                                                                                \
  static T safe_sub_func_##T##_##S##_##S(T a, T b) {                                               \
    return (T)(a - b);                                                                             \
  }                                                                                                \
  static T safe_mul_func_##T##_##S##_##S(T a, T b) {                                               \
    return (T)((WORD)a * (WORD)b);                                                                 \
  }                                                                                                \
  static T safe_div_func_##T##_##S##_##S(T a, T b) {                                               \
    return b == 0 ? a : (T)(a / b);                                                                \
  }                                                                                                \
  static T safe_mod_func_##T##_##S##_##S(T a, T b) {                                               \
    return b == 0 ? a : (T)(a % b);                                                                \
  }

NARROW_ARITHMETIC(int8_t, s, int)
NARROW_ARITHMETIC(int16_t, s, int)
NARROW_ARITHMETIC(uint8_t, u, unsigned)
NARROW_ARITHMETIC(uint16_t, u, unsigned)

static int32_t safe_unary_minus_func_int32_t_s(int32_t a) {
  return a == INT_MIN ? a : -a;
}

static int32_t safe_add_func_int32_t_s_s(int32_t a, int32_t b) {
  if (b > 0 ? a > INT_MAX - b : a < INT_MIN - b) return a;
  return a + b;
}

static int32_t safe_sub_func_int32_t_s_s(int32_t a, int32_t b) {
  if (b < 0 ? a > INT_MAX + b : a < INT_MIN + b) return a;
  return a - b;
}

/* The sign of the product chooses the limit that it must not pass. */
static int32_t safe_mul_func_int32_t_s_s(int32_t a, int32_t b) {
  if (a > 0) {
    if (b > 0 ? a > INT_MAX / b : b < INT_MIN / a) return a;
  } else if (a < 0) {
    if (b > 0 ? a < INT_MIN / b : b < INT_MAX / a) return a;
  }
  return a * b;
}

static int32_t safe_div_func_int32_t_s_s(int32_t a, int32_t b) {
  return b == 0 || (a == INT_MIN && b == -1) ? a : a / b;
}

static int32_t safe_mod_func_int32_t_s_s(int32_t a, int32_t b) {
  return b == 0 || (a == INT_MIN && b == -1) ? a : a % b;
}

static uint32_t safe_unary_minus_func_uint32_t_u(uint32_t a) {
  return 0u - a;
}
static uint32_t safe_add_func_uint32_t_u_u(uint32_t a, uint32_t b) {
  return a + b;
}
static uint32_t safe_sub_func_uint32_t_u_u(uint32_t a, uint32_t b) {
  return a - b;
}
static uint32_t safe_mul_func_uint32_t_u_u(uint32_t a, uint32_t b) {
  return a * b;
}
static uint32_t safe_div_func_uint32_t_u_u(uint32_t a, uint32_t b) {
  return b == 0 ? a : a / b;
}
static uint32_t safe_mod_func_uint32_t_u_u(uint32_t a, uint32_t b) {
  return b == 0 ? a : a % b;
}

/* Shifts. S is the sign of the value, C and COUNT the sign and type of the count, MAX the largest
 * value of T. A signed value is shifted left only if it is positive and stays below MAX. */
#define SIGNED_SHIFTS(T, C, COUNT, MAX)                                                            \
  static T safe_lshift_func_##T##_s_##C(T a, COUNT b) {                                            \
    if (a < 0 || (unsigned)b >= 32u || a > (MAX >> b)) return a;                                   \
    return (T)(a << b);                                                                            \
  }                                                                                                \
  static T safe_rshift_func_##T##_s_##C(T a, COUNT b) {                                            \
    if (a < 0 || (unsigned)b >= 32u) return a;                                                     \
    return (T)(a >> b);                                                                            \
  }

#define UNSIGNED_SHIFTS(T, C, COUNT, MAX)                                                          \
  static T safe_lshift_func_##T##_u_##C(T a, COUNT b) {                                            \
    if ((unsigned)b >= 32u || a > (MAX >> b)) return a;                                            \
    return (T)(a << b);                                                                            \
  }                                                                                                \
  static T safe_rshift_func_##T##_u_##C(T a, COUNT b) {                                            \
    if ((unsigned)b >= 32u) return a;                                                              \
    return (T)(a >> b);                                                                            \
  }

SIGNED_SHIFTS(int8_t, s, int, SCHAR_MAX)
SIGNED_SHIFTS(int8_t, u, unsigned, SCHAR_MAX)
SIGNED_SHIFTS(int16_t, s, int, SHRT_MAX)
SIGNED_SHIFTS(int16_t, u, unsigned, SHRT_MAX)
SIGNED_SHIFTS(int32_t, s, int, INT_MAX)
SIGNED_SHIFTS(int32_t, u, unsigned, INT_MAX)
UNSIGNED_SHIFTS(uint8_t, s, int, UCHAR_MAX)
UNSIGNED_SHIFTS(uint8_t, u, unsigned, UCHAR_MAX)
UNSIGNED_SHIFTS(uint16_t, s, int, USHRT_MAX)
UNSIGNED_SHIFTS(uint16_t, u, unsigned, USHRT_MAX)
UNSIGNED_SHIFTS(uint32_t, s, int, UINT_MAX)
UNSIGNED_SHIFTS(uint32_t, u, unsigned, UINT_MAX)

/* Floating point stays in a range in which single and double arithmetic are finite and normal. */
#define FLOAT_ARITHMETIC(T)                                                                        \
  static T float_operand_##T(T a) {                                                                \
    return a > 1e12 || a < -1e12 ? (T)1 : a;                                                       \
  }                                                                                                \
  static T safe_add_func_##T##_f_f(T a, T b) {                                                     \
    return float_operand_##T(a) + float_operand_##T(b);                                            \
  }                                                                                                \
  static T safe_sub_func_##T##_f_f(T a, T b) {                                                     \
    return float_operand_##T(a) - float_operand_##T(b);                                            \
  }                                                                                                \
  static T safe_mul_func_##T##_f_f(T a, T b) {                                                     \
    return float_operand_##T(a) * float_operand_##T(b);                                            \
  }                                                                                                \
  static T safe_div_func_##T##_f_f(T a, T b) {                                                     \
    return b < (T)1e-6 && b > (T)-1e-6 ? a : float_operand_##T(a) / b;                             \
  }

FLOAT_ARITHMETIC(float)
FLOAT_ARITHMETIC(double)

static int32_t safe_convert_func_float_to_int32_t(float a) {
  return a >= 2147483648.0f || a < -2147483648.0f ? INT_MAX : (int32_t)a;
}

/* ---- Checksum --------------------------------------------------------------------------------
 * CRC-32, reflected polynomial 0xEDB88320, one byte at a time. */

static uint32_t crc32_tab[256];
static uint32_t crc32_context = 0xFFFFFFFFu;

static void crc32_gentab(void) {
  unsigned i;
  for (i = 0; i < 256; i++) {
    uint32_t value = i;
    int bit;
    for (bit = 0; bit < 8; bit++)
      value = value & 1u ? (value >> 1) ^ 0xEDB88320u : value >> 1;
    crc32_tab[i] = value;
  }
}

static void crc32_byte(uint8_t byte) {
  crc32_context = (crc32_context >> 8) ^ crc32_tab[(crc32_context ^ byte) & 0xFFu];
}

/* Adds the four bytes of a value; shows the checksum after it if the caller asks for that. */
static void transparent_crc(uint32_t value, const char *name, int show) {
  crc32_byte((uint8_t)value);
  crc32_byte((uint8_t)(value >> 8));
  crc32_byte((uint8_t)(value >> 16));
  crc32_byte((uint8_t)(value >> 24));
  if (show) printf("%s: %08X\n", name, ~crc32_context);
}

static void transparent_crc_bytes(const char *bytes, int count, const char *name, int show) {
  int i;
  for (i = 0; i < count; i++)
    crc32_byte((uint8_t)bytes[i]);
  if (show) printf("%s: %08X\n", name, ~crc32_context);
}

static void platform_main_begin(void) {}

static void platform_main_end(uint32_t checksum, int show) {
  (void)show;
  printf("checksum %08X\n", checksum);
}

#endif
