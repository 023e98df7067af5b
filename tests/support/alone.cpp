// The program that one archive is linked into.
int main() {
  return 0;
}
