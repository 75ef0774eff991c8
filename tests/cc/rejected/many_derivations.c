/* error: 2:20: type 'int ***************' has more than 14 derivations */
int ***************too_deep;
