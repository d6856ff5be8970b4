#include "platform/PrivateRun.h"

// Without mounts of a process's own there are no such runs here; whoever asks first goes no
// further.
namespace installer::privately {

namespace {

constexpr const char* kLack = "macOS has no mounts of a process's own, which a rehearsal needs";

}  // namespace

std::optional<std::string> lack() {
  return kLack;
}

std::optional<std::string> makeWorkFolder(const std::string& /*folder*/, std::string& reason) {
  reason = kLack;
  return std::nullopt;
}

bool removeWorkFolder(const std::string& /*folder*/) {
  return true;
}

std::optional<Copied> copyTree(const std::string& /*from*/, const std::string& /*to*/,
                               std::string& reason) {
  reason = kLack;
  return std::nullopt;
}

bool isAsCopied(const Copied& /*copied*/, const std::string& /*folder*/,
                const std::string& /*path*/) {
  return false;
}

std::string resolved(const std::string& path) {
  return path;
}

std::optional<End> run(const View& /*view*/, const std::function<int()>& /*work*/,
                       std::string& reason) {
  reason = kLack;
  return std::nullopt;
}

std::optional<std::vector<Difference>> differences(const std::string& /*before*/,
                                                   const std::string& /*after*/,
                                                   std::string& reason) {
  reason = kLack;
  return std::nullopt;
}

}  // namespace installer::privately
