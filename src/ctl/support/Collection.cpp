#include "ctl/support/Collection.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "base/XmlRewriting.h"
#include "ctl/support/Redaction.h"
#include "platform/Interruption.h"

namespace installer::ctl::support {

namespace {

void leaveOut(Collected& collected, std::string reason) {
  collected.fate = Fate::leftOut;
  collected.reason = std::move(reason);
  collected.bytes.clear();
}

// A file that was emptied under somebody who goes on writing begins with a hole.
std::string withoutZeros(std::string text) {
  std::erase(text, '\0');
  return text;
}

std::string_view wholeLinesAtTheBegin(std::string_view text) {
  const std::size_t feed = text.rfind('\n');
  return text.substr(0, feed == std::string_view::npos ? 0 : feed + 1);
}
// Neither the half line, nor the next one, whose name may stand in the lost half, nor what
// continues them.
std::string_view wholeLinesAtTheEnd(std::string_view text) {
  for (int lost = 2; lost > 0 && !text.empty();) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (!goesOn(line)) --lost;
  }
  return text;
}

// What stands at a cut could be half of a secret, with the name that tells it in the other half:
// only whole lines stay.
void takeLines(const FileEnds& ends, Collected& collected) {
  const std::string head = withoutZeros(ends.head);
  if (ends.leftOut == 0) {
    Redacted all = redactText(head);
    collected.redactions = all.count;
    collected.bytes = std::move(all.text);
    return;
  }
  const std::string tail = withoutZeros(ends.tail);
  const Redacted first = redactText(wholeLinesAtTheBegin(head));
  const Redacted last = redactText(wholeLinesAtTheEnd(tail));
  collected.fate = Fate::cut;
  collected.reason =
      fmt::format("{} bytes or more between its beginning and its end are left out", ends.leftOut);
  collected.redactions = first.count + last.count;
  collected.bytes = fmt::format("{}[hotfixctl: {}]\n{}", first.text, collected.reason, last.text);
}

// Other encodings would hide a name from those who look for it.
bool isMarkup(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const std::size_t begin = bytes.find_first_not_of(" \t\r\n");
  return begin != std::string_view::npos && bytes[begin] == '<' &&
         bytes.find('\0') == std::string_view::npos;
}

bool redactWhole(Content content, std::string_view bytes, Redacted& redacted) {
  switch (content) {
    case Content::lines:
      break;
    case Content::document:
      if (!isMarkup(bytes) || !xml::parse(std::string(bytes))) return false;
      redacted = redactDocument(bytes);
      return true;
    case Content::propertyList:
      return redactPropertyList(bytes, redacted);
    case Content::json:
      return redactJson(bytes, redacted);
  }
  return false;
}

void takeWhole(Content content, const FileEnds& ends, Collected& collected) {
  if (ends.leftOut > 0) {
    leaveOut(collected, fmt::format("it is longer than {} bytes", kEnds.head + kEnds.tail));
    return;
  }
  Redacted redacted;
  if (!redactWhole(content, ends.head, redacted)) {
    leaveOut(collected, "it cannot be read as what it should be, so that secrets in it could stay");
    return;
  }
  collected.redactions = redacted.count;
  collected.bytes = std::move(redacted.text);
}

void takeFile(const WantedFile& file, Collected& collected) {
  FileError error;
  const auto ends = readEnds(file.folder, file.below, kEnds, error);
  if (!ends) {
    const bool isMissing = error.code == FileError::kMissing;
    leaveOut(collected, isMissing ? "" : error.description);
    if (isMissing) collected.fate = Fate::missing;
    return;
  }
  collected.size = ends->size;
  if (ends->hasOtherNames) {
    leaveOut(collected, "it has other names: it may be a file that is nobody's business");
    return;
  }
  collected.fate = Fate::taken;
  if (file.content == Content::lines)
    takeLines(*ends, collected);
  else
    takeWhole(file.content, *ends, collected);
}

void take(Collected& collected) {
  if (collected.item.file) {
    takeFile(*collected.item.file, collected);
    return;
  }
  Redacted made = collected.item.make();
  collected.redactions = made.count;
  collected.bytes = std::move(made.text);
  collected.size = collected.bytes.size();
  collected.fate = collected.bytes.empty() ? Fate::missing : Fate::taken;
}

}  // namespace

std::vector<Collected> collect(const std::vector<Item>& items, std::size_t most) {
  std::vector<Collected> all;
  std::size_t used = 0;
  for (const Item& item : items) {
    checkInterruption();
    Collected collected;
    collected.item = item;
    take(collected);
    if (collected.bytes.size() > most - used)
      leaveOut(collected, fmt::format("the archive has no room for it: it holds {} bytes", most));
    used += collected.bytes.size();
    all.push_back(std::move(collected));
  }
  return all;
}

}  // namespace installer::ctl::support
