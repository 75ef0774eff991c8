#ifndef VELKOR_MATH_H
#define VELKOR_MATH_H

double sqrt(double value);
double fabs(double value);
double floor(double value);
double ceil(double value);
double fmod(double value, double divisor);
double modf(double value, double *whole);
double frexp(double value, int *exponent);
double ldexp(double value, int exponent);

double exp(double value);
double log(double value);
double log10(double value);
double pow(double base, double exponent);

double sin(double angle);
double cos(double angle);
double tan(double angle);
double asin(double value);
double acos(double value);
double atan(double value);
double atan2(double y, double x);
double sinh(double value);
double cosh(double value);
double tanh(double value);

float sqrtf(float value);
float fabsf(float value);
float floorf(float value);

#define M_E 2.7182818284590452354
#define M_PI 3.14159265358979323846
#define M_PI_2 1.57079632679489661923
#define M_PI_4 0.78539816339744830962
#define M_SQRT2 1.41421356237309504880

#endif
