/* May be included again with NDEBUG set otherwise. */
#undef assert

#ifdef NDEBUG
#define assert(condition) ((void)0)
#else
/* Not a routine: the compiler makes a check of it, from which the optimizer may learn. */
void __velkor_assert();
#define assert(condition) ((void)__velkor_assert((condition), #condition))
#endif
