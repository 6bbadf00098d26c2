/// A stand-in for the suite's receiver.
#include "client.h"

int main(int argc, char **argv) {
  standin::run_client(standin::Role::receiver, argc, argv);
}
