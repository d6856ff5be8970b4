#include "ctl/lint/PackageView.h"

#include <utility>

#include "ctl/lint/Lines.h"
#include "hotfix/base/Path.h"

namespace installer::ctl::lint {

std::string PackageView::deploy() const {
  return path::appendingComponent(path, "../deploy");
}

bool PackageView::names(std::string_view key) const {
  return !PropertyList::textForKey(entries, key).value_or("").empty();
}

Place PackageView::at(std::string_view key) const {
  return {listFile, std::string(key), lineOfKey(listBytes, listKeys, key)};
}

Place placeOf(std::string file) {
  return {std::move(file), std::nullopt, std::nullopt};
}

}  // namespace installer::ctl::lint
