#include "ctl/support/Archive.h"

#include <memory>

#include "ctl/support/ArchiveLibrary.h"
#include "hotfix/util/InstallUtil.h"

namespace installer::ctl::support {

namespace {

constexpr mode_t kMode = 0600;

la_ssize_t append(archive* /*writer*/, void* bytes, const void* buffer, std::size_t length) {
  static_cast<std::string*>(bytes)->append(static_cast<const char*>(buffer), length);
  return static_cast<la_ssize_t>(length);
}

// Makes one archive in memory. Each step answers whether it was done.
class Writer {
 public:
  explicit Writer(std::string& bytes) : _bytes(bytes) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() {
    if (_archive != nullptr) (void)_library.archive_write_free(_archive);
  }

  bool begin(ArchiveForm form) {
    if (_archive == nullptr) return false;
    const bool isTar = form == ArchiveForm::tarGzip;
    if (isTar && !(isDone(_library.archive_write_set_format_ustar(_archive)) &&
                   isDone(_library.archive_write_add_filter_gzip(_archive))))
      return false;
    if (!isTar && !isDone(_library.archive_write_set_format_zip(_archive))) return false;
    // What comes into memory needs no whole blocks at its end.
    return isDone(_library.archive_write_set_bytes_in_last_block(_archive, 1)) &&
           isDone(_library.archive_write_open(_archive, &_bytes, nullptr, append, nullptr));
  }

  bool add(const ArchivedFile& file, std::time_t time) {
    const std::unique_ptr<archive_entry, decltype(_library.archive_entry_free)> entry(
        _library.archive_entry_new(), _library.archive_entry_free);
    if (!entry) return false;
    _library.archive_entry_set_pathname(entry.get(), file.path.c_str());
    _library.archive_entry_set_size(entry.get(), static_cast<la_int64_t>(file.bytes.size()));
    _library.archive_entry_set_filetype(entry.get(), AE_IFREG);
    _library.archive_entry_set_perm(entry.get(), kMode);
    _library.archive_entry_set_mtime(entry.get(), time, 0);
    if (!isDone(_library.archive_write_header(_archive, entry.get()))) return false;
    const la_ssize_t written =
        _library.archive_write_data(_archive, file.bytes.data(), file.bytes.size());
    return written == static_cast<la_ssize_t>(file.bytes.size());
  }

  bool end() { return isDone(_library.archive_write_close(_archive)); }

  std::string reason() const {
    const char* const told =
        _archive == nullptr ? nullptr : _library.archive_error_string(_archive);
    return told == nullptr ? "there is not enough memory" : told;
  }

 private:
  static bool isDone(int answer) { return answer == ARCHIVE_OK; }

  const ArchiveLibrary& _library = archiveLibrary();
  std::string& _bytes;
  archive* const _archive = _library.archive_write_new();
};

}  // namespace

std::optional<ArchiveForm> archiveFormOf(std::string_view name) {
  const auto endsWith = [&](std::string_view end) {
    return name.size() >= end.size() &&
           InstallUtil::hasPrefixCaseInsensitive(name.substr(name.size() - end.size()), end);
  };
  if (endsWith(".zip")) return ArchiveForm::zip;
  if (endsWith(".tar.gz") || endsWith(".tgz")) return ArchiveForm::tarGzip;
  return std::nullopt;
}

const std::string& archiveLack() {
  return archiveLibrary().lack();
}

std::optional<std::string> archiveOf(const std::vector<ArchivedFile>& files, ArchiveForm form,
                                     std::time_t time, std::string& reason) {
  std::string bytes;
  Writer writer(bytes);
  bool isDone = writer.begin(form);
  for (const ArchivedFile& file : files) isDone = isDone && writer.add(file, time);
  if (isDone && writer.end()) return bytes;
  reason = writer.reason();
  return std::nullopt;
}

}  // namespace installer::ctl::support
