#include "ctl/support/Listing.h"

#include <fmt/format.h>

#include <string_view>
#include <vector>

#include "ctl/Json.h"
#include "ctl/support/Item.h"
#include "ctl/trace/TraceFile.h"
#include "instance/InstanceLayout.h"
#include "platform/TreeLook.h"

namespace installer::ctl::support {

namespace {

std::string_view nameOf(SeenKind kind) {
  switch (kind) {
    case SeenKind::file:
      return "file";
    case SeenKind::folder:
      return "folder";
    case SeenKind::link:
      return "link";
    case SeenKind::other:
      return "other";
  }
  return "";
}

Json jsonOf(const SeenEntry& entry) {
  Json json = {{"path", entry.path},
               {"kind", nameOf(entry.kind)},
               {"mode", fmt::format("{:04o}", entry.mode)},
               {"owner", entry.owner},
               {"group", entry.group},
               {"size", entry.size},
               {"modified", isoTime(entry.modified)}};
  if (entry.kind == SeenKind::link) json["target"] = entry.target;
  return json;
}

// A folder below the rcp home, and how deep it is looked at.
struct Listed {
  std::string below;
  int depth;
};

std::vector<Listed> listedFolders(const std::string& rcpHome) {
  using namespace InstanceLayout;
  const auto below = [&](const std::string& path) { return path.substr(rcpHome.size() + 1); };
  return {{"", 1},
          {below(deploy(rcpHome)), kDeepestListed},
          {below(links(rcpHome)), 1},
          {below(plugins(rcpHome)), 1},
          {below(workspaceFlag(defaultRcpData(rcpHome))), kDeepestListed}};
}

Json jsonOf(const std::string& rcpHome, const Listed& folder) {
  const auto look = lookBeneath(rcpHome, folder.below, {kMostListed, folder.depth});
  Json entries = Json::array();
  if (look)
    for (const SeenEntry& entry : look->entries) entries.push_back(jsonOf(entry));
  // Of a folder that is looked at alone, nobody misses what is below it.
  const bool hasRoom = entries.size() < kMostListed;
  return {{"folder", folder.below},
          {"read", look.has_value()},
          {"whole", look && (look->isWhole || (folder.depth == 1 && hasRoom))},
          {"entries", std::move(entries)}};
}

}  // namespace

std::string listingOf(const std::string& rcpHome) {
  Json folders = Json::array();
  for (const Listed& folder : listedFolders(rcpHome)) folders.push_back(jsonOf(rcpHome, folder));
  return textOf(Json{{"rcpHome", rcpHome}, {"folders", std::move(folders)}});
}

}  // namespace installer::ctl::support
