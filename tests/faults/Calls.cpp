#include "faults/Calls.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

namespace installer::faults {

namespace {

using Errors = std::vector<int>;

const Errors kLook{EIO, EACCES, ENOMEM};
const Errors kOpen{EIO, EACCES, EMFILE, ENOMEM};
const Errors kCreate{ENOSPC, EIO, EACCES, EMFILE, ENOMEM, EROFS};
const Errors kMake{ENOSPC, EIO, EACCES, ENOMEM, EROFS};
const Errors kAlter{EIO, EACCES, ENOMEM, EROFS};
const Errors kRead{EIO, ENOMEM};
const Errors kWrite{ENOSPC, EIO};

CallForm looking(long number, std::string_view name, const Errors& errors) {
  return {.number = number, .name = name, .effect = Effect::looking, .errors = errors};
}

CallForm changing(long number, std::string_view name, const Errors& errors) {
  return {.number = number, .name = name, .effect = Effect::changing, .errors = errors};
}

CallForm on(CallForm form, int descriptor) {
  form.descriptor = descriptor;
  return form;
}

CallForm at(CallForm form, int folder, int path) {
  form.folder = folder;
  form.path = path;
  return form;
}

CallForm andAt(CallForm form, int folder, int path) {
  form.otherFolder = folder;
  form.otherPath = path;
  return form;
}

CallForm sized(CallForm form, int size) {
  form.size = size;
  return form;
}

CallForm flagged(CallForm form, int flags) {
  form.flags = flags;
  return form;
}

std::vector<CallForm> openings() {
  return {
      flagged(at(changing(SYS_open, "open", kCreate), -1, 0), 1),
      at(changing(SYS_creat, "creat", kCreate), -1, 0),
      flagged(at(changing(SYS_openat, "openat", kCreate), 0, 1), 2),
      flagged(at(changing(SYS_openat2, "openat2", kCreate), 0, 1), 2),
  };
}

std::vector<CallForm> lookingCalls() {
  return {
      at(looking(SYS_stat, "stat", kLook), -1, 0),
      at(looking(SYS_lstat, "lstat", kLook), -1, 0),
      on(looking(SYS_fstat, "fstat", kLook), 0),
      at(looking(SYS_newfstatat, "newfstatat", kLook), 0, 1),
      at(looking(SYS_statx, "statx", kLook), 0, 1),
      at(looking(SYS_statfs, "statfs", kLook), -1, 0),
      on(looking(SYS_fstatfs, "fstatfs", kLook), 0),
      on(looking(SYS_getdents64, "getdents64", kRead), 0),
      at(looking(SYS_readlink, "readlink", kLook), -1, 0),
      at(looking(SYS_readlinkat, "readlinkat", kLook), 0, 1),
      at(looking(SYS_access, "access", kLook), -1, 0),
      at(looking(SYS_faccessat, "faccessat", kLook), 0, 1),
      at(looking(SYS_faccessat2, "faccessat2", kLook), 0, 1),
      on(looking(SYS_read, "read", kRead), 0),
      on(looking(SYS_pread64, "pread64", kRead), 0),
  };
}

std::vector<CallForm> writings() {
  return {
      sized(on(changing(SYS_write, "write", kWrite), 0), 2),
      sized(on(changing(SYS_pwrite64, "pwrite64", kWrite), 0), 2),
      on(changing(SYS_writev, "writev", kWrite), 0),
      on(changing(SYS_ftruncate, "ftruncate", {EIO, EROFS}), 0),
      on(changing(SYS_fallocate, "fallocate", kWrite), 0),
      on(changing(SYS_fsync, "fsync", kWrite), 0),
      on(changing(SYS_fdatasync, "fdatasync", kWrite), 0),
      on(changing(SYS_syncfs, "syncfs", kWrite), 0),
      sized(on(changing(SYS_copy_file_range, "copy_file_range", kWrite), 2), 4),
      sized(on(changing(SYS_sendfile, "sendfile", kWrite), 0), 3),
      on(changing(SYS_flock, "flock", {ENOMEM, EIO}), 0),
  };
}

std::vector<CallForm> namings() {
  return {
      andAt(at(changing(SYS_rename, "rename", kMake), -1, 0), -1, 1),
      andAt(at(changing(SYS_renameat, "renameat", kMake), 0, 1), 2, 3),
      andAt(at(changing(SYS_renameat2, "renameat2", kMake), 0, 1), 2, 3),
      andAt(at(changing(SYS_link, "link", kMake), -1, 0), -1, 1),
      andAt(at(changing(SYS_linkat, "linkat", kMake), 0, 1), 2, 3),
      at(changing(SYS_symlink, "symlink", kMake), -1, 1),
      at(changing(SYS_symlinkat, "symlinkat", kMake), 1, 2),
      at(changing(SYS_unlink, "unlink", kAlter), -1, 0),
      at(changing(SYS_unlinkat, "unlinkat", kAlter), 0, 1),
      at(changing(SYS_rmdir, "rmdir", kAlter), -1, 0),
      at(changing(SYS_mkdir, "mkdir", kMake), -1, 0),
      at(changing(SYS_mkdirat, "mkdirat", kMake), 0, 1),
  };
}

std::vector<CallForm> attributes() {
  return {
      at(changing(SYS_chmod, "chmod", kAlter), -1, 0),
      on(changing(SYS_fchmod, "fchmod", kAlter), 0),
      at(changing(SYS_fchmodat, "fchmodat", kAlter), 0, 1),
      at(changing(SYS_chown, "chown", kAlter), -1, 0),
      at(changing(SYS_lchown, "lchown", kAlter), -1, 0),
      on(changing(SYS_fchown, "fchown", kAlter), 0),
      at(changing(SYS_fchownat, "fchownat", kAlter), 0, 1),
      at(changing(SYS_utimensat, "utimensat", kAlter), 0, 1),
      at(changing(SYS_setxattr, "setxattr", kMake), -1, 0),
      at(changing(SYS_lsetxattr, "lsetxattr", kMake), -1, 0),
      on(changing(SYS_fsetxattr, "fsetxattr", kMake), 0),
  };
}

// What a child or another user's rights need.
std::vector<CallForm> processes() {
  return {
      changing(SYS_pipe2, "pipe2", {EMFILE}),         changing(SYS_clone, "clone", {ENOMEM}),
      changing(SYS_clone3, "clone3", {ENOMEM}),       changing(SYS_vfork, "vfork", {ENOMEM}),
      changing(SYS_setresuid, "setresuid", {EACCES}),
  };
}

std::map<long, CallForm> allForms() {
  std::map<long, CallForm> forms;
  for (const auto& group :
       {openings(), lookingCalls(), writings(), namings(), attributes(), processes()})
    for (const CallForm& form : group) forms.emplace(form.number, form);
  return forms;
}

// openat2 takes its flags in a structure, as the first number in it.
bool opensForChange(const CallForm& form, const Call& call, const ReadNumber& numberAt) {
  std::uint64_t flags = call.arguments[static_cast<std::size_t>(form.flags)];
  if (form.number == SYS_openat2) flags = numberAt(flags);
  return (flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0;
}

const std::map<std::string_view, int>& errorNames() {
  static const std::map<std::string_view, int> names{{"ENOSPC", ENOSPC}, {"EIO", EIO},
                                                     {"EACCES", EACCES}, {"EMFILE", EMFILE},
                                                     {"ENOMEM", ENOMEM}, {"EROFS", EROFS}};
  return names;
}

}  // namespace

bool startsChild(const CallForm& form) {
  return form.number == SYS_clone || form.number == SYS_clone3 || form.number == SYS_vfork;
}

std::optional<Call> callOf(long number, const std::array<std::uint64_t, 6>& arguments,
                           const ReadNumber& numberAt) {
  static const std::map<long, CallForm> forms = allForms();
  const auto found = forms.find(number);
  if (found == forms.end()) return std::nullopt;
  const CallForm& form = found->second;
  Call call{&form, form.effect, form.errors, arguments};
  if (form.flags >= 0 && !opensForChange(form, call, numberAt)) {
    call.effect = Effect::looking;
    call.errors = kOpen;
  }
  return call;
}

std::string nameOfError(int error) {
  const auto& names = errorNames();
  const auto found = std::find_if(names.begin(), names.end(),
                                  [&](const auto& entry) { return entry.second == error; });
  return found == names.end() ? std::to_string(error) : std::string(found->first);
}

int errorNamed(std::string_view name) {
  const auto found = errorNames().find(name);
  return found == errorNames().end() ? 0 : found->second;
}

}  // namespace installer::faults
