/* error: 3:17: labels have no addresses on the target */
void *start(void) {
  void *place = &&here;
here:
  return place;
}
