// The application of the sample instance. It tells which features it runs with, lets every plug-in
// that has something to say say it, and can stay up for a while, so that it is seen running.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    entries.push_back(at->path());
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

void tellFeatures(const fs::path& eclipse) {
  for (const fs::path& feature : entriesOf(eclipse / "features")) {
    std::cout << "feature " << feature.filename().string() << '\n';
  }
}

void letPluginsSpeak(const fs::path& eclipse) {
  for (const fs::path& plugin : entriesOf(eclipse / "plugins")) {
    std::ifstream message(plugin / "message.txt");
    std::string line;
    if (std::getline(message, line)) {
      std::cout << plugin.filename().string() << " says: " << line << '\n';
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("The application of the sample instance");
  unsigned int seconds = 0;
  app.add_option("--stay", seconds, "Stay up for so many seconds");
  CLI11_PARSE(app, argc, argv);

  std::error_code error;
  const fs::path macOs = fs::read_symlink("/proc/self/exe", error).parent_path();
  tellFeatures(macOs / "rcp/eclipse");
  letPluginsSpeak(macOs / "rcp/eclipse");
  std::cout << "up, process " << getpid() << std::endl;
  sleep(seconds);
  return 0;
}
