/* error: 2:17: the target cannot express type '_Complex double' */
_Complex double z;
