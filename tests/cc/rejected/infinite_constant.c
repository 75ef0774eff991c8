/* error: 2:25: a floating constant may not be infinite or not a number */
double greatest = 1e300 * 1e300;
