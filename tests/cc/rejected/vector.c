/* error: 3:6: the target cannot express type */
typedef int four __attribute__((vector_size(16)));
four v;
