#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// What a started program left behind.
struct Outcome {
  int status = -1;     // exit status; -1 when it did not exit by itself
  std::string output;  // standard output, without the line break at its end
};

// A folder of its own with one sample instance and any number of hotfixes; gone with the object.
class SampleWorld {
 public:
  explicit SampleWorld(const std::vector<std::string>& instanceOptions = {},
                       const std::string& folderName = "Applications");
  SampleWorld(const SampleWorld&) = delete;
  SampleWorld& operator=(const SampleWorld&) = delete;
  ~SampleWorld();

  const std::filesystem::path& root() const { return _root; }
  std::filesystem::path app() const;
  std::filesystem::path rcpHome() const { return app() / "Contents/MacOS/rcp"; }
  std::filesystem::path eclipse() const { return rcpHome() / "eclipse"; }
  std::filesystem::path manifest(const std::string& name) const {
    return rcpHome() / "deploy" / name;
  }

  // The package's path, as the script prints it. Every hotfix gets a folder of that name.
  std::filesystem::path makeHotfix(const std::string& folder,
                                   const std::vector<std::string>& options = {}) const;

  // The vectors that the installer starts; the launcher's exit status.
  int update(const std::string& operation = "update") const;
  int install(const std::string& siteList) const;
  int launch(const std::vector<std::string>& arguments) const;

  // Puts the package's manifest in force as the installer does, without resolving its root.
  void provide(const std::filesystem::path& package, const std::string& manifestName) const;
  void provideText(const std::string& features) const;
  void stamp(const std::string& version) const;

  // "rc=..." as the last run left it; nullopt when there is no result.
  std::optional<std::string> result() const;
  std::string log() const;
  std::vector<std::string> features() const;
  std::vector<std::string> plugins() const;
  // The application's own words about what it runs with.
  std::string applicationOutput() const;

 private:
  std::filesystem::path _root;
  std::string _folderName;
};

// Runs a program to its end.
Outcome run(const std::vector<std::string>& command);

std::string contentOf(const std::filesystem::path& file);
void writeText(const std::filesystem::path& file, const std::string& text);
std::vector<std::string> namesIn(const std::filesystem::path& folder);

// The arguments of an update start with the given pieces in the places where starts differ.
std::vector<std::string> updateVector(const std::string& operation,
                                      const std::vector<std::string>& beforeMemory,
                                      const std::vector<std::string>& behindMemory);
