// The program that does nothing: what starting any program costs.

int main() {
  return 0;
}
