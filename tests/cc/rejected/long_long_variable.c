/* error: 2:20: the target has no 64-bit integers (type 'unsigned long long') */
unsigned long long counter;
