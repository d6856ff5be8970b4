// Stands in for an installer that installs nothing and tells of success: the sweeps have to see it.
int main() {
  return 0;
}
