#pragma once

#include <string>

#include "platform/Pasteboard.h"

namespace installer {

class FileManager;

// The pasteboard as an XML property list file whose root is the record, readable by everybody; no
// file when it is cleared.
class FilePasteboard : public Pasteboard {
 public:
  FilePasteboard(FileManager& files, std::string path) : _files(files), _path(std::move(path)) {}

  void clear() override;
  void setRecord(const PropertyList::Dictionary& record) override;
  [[nodiscard]] std::optional<PropertyList::Dictionary> record() override;

 private:
  FileManager& _files;
  const std::string _path;
};

}  // namespace installer
