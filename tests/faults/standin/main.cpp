// Stands in for an installer that installs nothing, changes the instance without its lock and tells
// of success: the sweeps have to see it.
#include <sys/stat.h>

int main() {
  (void)mkdir("/Applications/Quillmere.app/Contents/MacOS/rcp/new", 0755);  // a sweep would tell
  return 0;
}
