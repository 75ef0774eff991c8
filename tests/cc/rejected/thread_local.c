/* error: 2:14: the target has no thread-local variables */
__thread int mine;
