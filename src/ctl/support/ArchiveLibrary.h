#pragma once

#include <archive.h>
#include <archive_entry.h>

#include <string>

namespace installer::ctl::support {

// The archive library's functions, by its own names. It is loaded when an archive is written: with
// the libraries that it brings along it would take longer to load than most commands need for all
// of their own work. It stays loaded.
class ArchiveLibrary {
  void* const _handle;  // comes first: all others are looked up in it
  std::string _lack;

 public:
  ArchiveLibrary();
  ArchiveLibrary(const ArchiveLibrary&) = delete;
  ArchiveLibrary& operator=(const ArchiveLibrary&) = delete;

  // Why it cannot be used; empty when it can.
  const std::string& lack() const { return _lack; }

  decltype(&::archive_write_new) archive_write_new = symbol("archive_write_new");
  decltype(&::archive_write_free) archive_write_free = symbol("archive_write_free");
  decltype(&::archive_write_set_format_ustar) archive_write_set_format_ustar =
      symbol("archive_write_set_format_ustar");
  decltype(&::archive_write_set_format_zip) archive_write_set_format_zip =
      symbol("archive_write_set_format_zip");
  decltype(&::archive_write_add_filter_gzip) archive_write_add_filter_gzip =
      symbol("archive_write_add_filter_gzip");
  decltype(&::archive_write_set_bytes_in_last_block) archive_write_set_bytes_in_last_block =
      symbol("archive_write_set_bytes_in_last_block");
  decltype(&::archive_write_open) archive_write_open = symbol("archive_write_open");
  decltype(&::archive_write_header) archive_write_header = symbol("archive_write_header");
  decltype(&::archive_write_data) archive_write_data = symbol("archive_write_data");
  decltype(&::archive_write_close) archive_write_close = symbol("archive_write_close");
  decltype(&::archive_error_string) archive_error_string = symbol("archive_error_string");

  decltype(&::archive_entry_new) archive_entry_new = symbol("archive_entry_new");
  decltype(&::archive_entry_free) archive_entry_free = symbol("archive_entry_free");
  decltype(&::archive_entry_set_pathname) archive_entry_set_pathname =
      symbol("archive_entry_set_pathname");
  decltype(&::archive_entry_set_size) archive_entry_set_size = symbol("archive_entry_set_size");
  decltype(&::archive_entry_set_filetype) archive_entry_set_filetype =
      symbol("archive_entry_set_filetype");
  decltype(&::archive_entry_set_perm) archive_entry_set_perm = symbol("archive_entry_set_perm");
  decltype(&::archive_entry_set_mtime) archive_entry_set_mtime = symbol("archive_entry_set_mtime");

 private:
  // Becomes whatever function it is assigned to.
  struct Symbol {
    void* address;
    template <class Function>
    operator Function*() const {
      return reinterpret_cast<Function*>(address);
    }
  };
  Symbol symbol(const char* name);
};

// Loads it at the first call.
const ArchiveLibrary& archiveLibrary();

}  // namespace installer::ctl::support
