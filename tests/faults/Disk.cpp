#include "faults/Disk.h"

#include <fcntl.h>
#include <linux/loop.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace installer::faults {

namespace {

constexpr off_t kSize = off_t{12} << 20;  // bytes; room for a small journal

// Opens a loop device over the file, which goes when the last user does. -1 without one.
int openLoop(const std::string& image, std::string& device) {
  const int control = open("/dev/loop-control", O_RDWR | O_CLOEXEC);
  const int number = control < 0 ? -1 : ioctl(control, LOOP_CTL_GET_FREE);
  close(control);
  if (number < 0) return -1;
  device = "/dev/loop" + std::to_string(number);
  const int loop = open(device.c_str(), O_RDWR | O_CLOEXEC);
  const int file = open(image.c_str(), O_RDWR | O_CLOEXEC);
  loop_config config{};
  config.fd = static_cast<unsigned>(file);
  config.info.lo_flags = LO_FLAGS_AUTOCLEAR;
  const bool configured = loop >= 0 && file >= 0 && ioctl(loop, LOOP_CONFIGURE, &config) == 0;
  close(file);
  if (configured) return loop;
  close(loop);
  return -1;
}

bool format(const std::string& image) {
  const int file = open(image.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const bool sized = file >= 0 && ftruncate(file, kSize) == 0;
  close(file);
  const std::string command =
      "PATH=$PATH:/usr/sbin:/sbin mkfs.ext4 -q -b 1024 -J size=1 '" + image + "' >/dev/null 2>&1";
  return sized && std::system(command.c_str()) == 0;
}

}  // namespace

bool mountDisk(const std::string& image, const std::string& folder) {
  std::string device;
  // Another process may have taken the free device in between.
  for (int turn = 0; turn < 10; ++turn) {
    const int loop = openLoop(image, device);
    if (loop < 0) continue;
    const bool mounted = mount(device.c_str(), folder.c_str(), "ext4", 0, nullptr) == 0;
    close(loop);
    return mounted;
  }
  return false;
}

void unmountDisk(const std::string& folder) {
  (void)umount2(folder.c_str(), 0);  // the next mount would tell
}

Disk::Disk(std::string image, std::string folder)
    : _image(std::move(image)), _folder(std::move(folder)) {
  _mounted = format(_image) && mountDisk(_image, _folder);
}

Disk::~Disk() {
  if (_mounted) unmountDisk(_folder);
  unlink(_image.c_str());
}

bool Disk::copyTo(const std::string& image) const {
  const int from = open(_image.c_str(), O_RDONLY | O_CLOEXEC);
  const int to = open(image.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  ssize_t count = from < 0 || to < 0 ? -1 : 1;
  while (count > 0) count = sendfile(to, from, nullptr, kSize);
  close(from);
  close(to);
  return count == 0;
}

}  // namespace installer::faults
