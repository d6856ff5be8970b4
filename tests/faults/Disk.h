#pragma once

#include <string>

namespace installer::faults {

// A file that holds an ext4 file system, mounted on a folder as long as this lives.
class Disk {
 public:
  // Makes the file new.
  Disk(std::string image, std::string folder);
  Disk(const Disk&) = delete;
  Disk& operator=(const Disk&) = delete;
  ~Disk();

  bool isMounted() const { return _mounted; }

  // Copies what of the disk is safe at this moment.
  bool copyTo(const std::string& image) const;

 private:
  std::string _image;
  std::string _folder;
  bool _mounted = false;
};

// Mounts the image and unmounts it again; whether both could be done.
bool mountDisk(const std::string& image, const std::string& folder);
void unmountDisk(const std::string& folder);

}  // namespace installer::faults
