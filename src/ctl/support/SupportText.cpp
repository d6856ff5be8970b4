#include "ctl/support/SupportText.h"

#include <fmt/format.h>

#include <string_view>

#include "ctl/Shown.h"

namespace installer::ctl::support {

namespace {

std::string_view nameOf(Fate fate) {
  switch (fate) {
    case Fate::listed:
      return "listed";
    case Fate::taken:
      return "taken";
    case Fate::cut:
      return "cut";
    case Fate::missing:
      return "missing";
    case Fate::leftOut:
      return "left-out";
  }
  return "";
}

bool isIn(const Collected& one) {
  return one.fate == Fate::taken || one.fate == Fate::cut;
}

Json jsonOf(const Collected& one) {
  const bool isTold = one.fate != Fate::listed;
  return {{"entry", one.item.entry},
          {"what", one.item.what},
          {"path", ctl::jsonOf(pathOf(one.item))},
          {"fate", nameOf(one.fate)},
          {"reason", one.reason.empty() ? Json(nullptr) : Json(one.reason)},
          {"size", isTold ? Json(one.size) : Json(nullptr)},
          {"bytes", isIn(one) ? Json(one.bytes.size()) : Json(nullptr)},
          {"redactions", one.redactions}};
}

std::string placeOf(const Item& item) {
  const auto path = pathOf(item);
  return path ? fmt::format("{}: {}", item.what, shown(*path)) : item.what;
}

}  // namespace

std::string listText(const std::vector<Item>& items, const Style& style) {
  constexpr std::size_t kMeanings = 40;
  std::string text = style.strong("What goes into the archive, where it is there") + "\n";
  for (const Item& item : items)
    text += entry(fmt::format("  {}", item.entry), placeOf(item), {style.width, kMeanings});
  return text +
         broken("Secrets are taken out of all of it. Nothing else is opened.", {style.width, 0});
}

std::string resultText(const std::vector<Collected>& collected, const std::string& archive,
                       const Style& style) {
  std::string text;
  std::size_t files = 0;
  std::size_t redactions = 0;
  for (const Collected& one : collected) {
    files += isIn(one) ? 1 : 0;
    redactions += one.redactions;
    if (one.reason.empty()) continue;
    const std::string mark = one.fate == Fate::cut ? style.faint("cut") : style.warning("left out");
    text += broken(fmt::format("{} {}: {}", mark, one.item.entry, shown(one.reason)),
                   {style.width, 4}, "  ");
  }
  return text + broken(fmt::format("{} files are in {}; {} secrets were taken out.", files,
                                   shown(archive), redactions),
                       {style.width, 0});
}

Json documentOf(const std::vector<Collected>& collected, const std::optional<std::string>& archive,
                int status) {
  Json items = Json::array();
  for (const Collected& one : collected) items.push_back(jsonOf(one));
  return {{"schema", "hotfixctl/support/1"},
          {"status", status},
          {"archive", ctl::jsonOf(archive)},
          {"items", std::move(items)}};
}

}  // namespace installer::ctl::support
