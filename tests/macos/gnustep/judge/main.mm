// judge [ROUNDS [SEED]]: our operations beside Foundation's on the same random inputs. Prints how many
// comparisons were made of what, and one line for each kind of difference, with its first example;
// 0 when all of them are known.

#import "Judge.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

// Exported by GNUstep and documented, but declared in no header.
extern "C" const char* GSPathHandling(const char* mode);

int main(int argc, char** argv) {
  namespace judge = installer::judge;
  const long rounds = argc > 1 ? std::atol(argv[1]) : 5000;
  judge::generator.seed(argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 20130305);
  NSAutoreleasePool* pool = [NSAutoreleasePool new];
  GSPathHandling("unix");  // macOS knows no drives
  umask(022);
  std::string root = (std::filesystem::temp_directory_path() / "judge-XXXXXX").string();
  if (mkdtemp(root.data()) == nullptr) return 2;
  for (long round = 0; round < rounds; ++round) {
    NSAutoreleasePool* inner = [NSAutoreleasePool new];
    judge::judgePaths();
    judge::judgeTexts();
    judge::judgePropertyList();
    // Inside an application, where a merge follows links as Foundation does.
    if (round % 10 == 0) judge::judgeFiles(root + "/X.app/Contents/MacOS/side");
    [inner drain];
  }
  std::filesystem::remove_all(root);
  const bool allKnown = judge::tell();
  [pool drain];
  return allKnown ? 0 : 1;
}
