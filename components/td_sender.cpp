/// A stand-in for the suite's sender.
#include "client.h"

int main(int argc, char **argv) {
  standin::run_client(standin::Role::sender, argc, argv);
}
