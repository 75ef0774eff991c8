#include "driver/driver.h"

int main(int argc, char **argv) {
  velkor::raise_stack_limit();
  return velkor::run_optimizer(argc, argv);
}
