#include "platform/posix/FilePasteboard.h"

#include "platform/FileManager.h"

namespace installer {
namespace {

constexpr mode_t kMode = 0644;

}  // namespace

void FilePasteboard::clear() {
  (void)_files.remove(_path);  // the channel reports no failure of its own
}

void FilePasteboard::setRecord(const PropertyList::Dictionary& record) {
  const std::optional<std::string> text = PropertyList::serialize(record);
  if (!text) return;
  (void)_files.write(_path, *text, ReplacedFile::forget, kMode);  // nor does it report this one
}

std::optional<PropertyList::Dictionary> FilePasteboard::record() {
  // Anybody may leave a record here.
  const std::optional<std::string> text = _files.readUnlinked(_path, nullptr);
  return text ? PropertyList::parseDictionary(*text) : std::nullopt;
}

}  // namespace installer
