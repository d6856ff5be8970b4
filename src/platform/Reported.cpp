#include "platform/Reported.h"

#include "platform/Log.h"

namespace installer::reported {

namespace {

FileManager& files() {
  return *Platform::current().files;
}

bool answer(bool done, const FileError& error) {
  if (!done) tell(error);
  return done;
}

bool answerUnlessMissing(bool done, const FileError& error) {
  return done || error.code == FileError::kMissing ? done : answer(done, error);
}

}  // namespace

void tell(const FileError& error) {
  logOnce(LogLevel::error, "{}", error.description);
}

void tellUnreadable(const std::optional<FileError>& error) {
  if (error && error->code != FileError::kMissing) tell(*error);
}

bool exists(const std::string& path) {
  FileError error;
  const bool there = files().exists(path, &error);
  return answerUnlessMissing(there, error);
}

bool write(const std::string& path, std::string_view bytes, ReplacedFile replaced,
           std::optional<mode_t> mode) {
  FileError error;
  const bool written = files().write(path, bytes, replaced, mode, &error);
  return answer(written, error);
}

bool copy(const CopySource& from, const std::string& to, ExistingItem existing) {
  FileError error;
  const bool copied = files().copy(from, to, existing, &error);
  return answer(copied, error);
}

bool flush(const std::string& folder) {
  FileError error;
  const bool flushed = files().flush(folder, &error);
  return answer(flushed, error);
}

bool remove(const std::string& path) {
  FileError error;
  const bool removed = files().remove(path, &error);
  return answerUnlessMissing(removed, error);
}

}  // namespace installer::reported
