#include <cstdio>

int main() {
  std::puts("sonvale");
  return 0;
}
