#include "platform/files/LinkWalk.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/files/FileSystemCalls.h"
#include "platform/posix/PathSteps.h"

namespace installer {

namespace {

class LinkWalk {
 public:
  LinkWalk(Descriptor start, const LinkJudge& mayFollow)
      : _mayFollow(mayFollow), _folder(std::move(start)) {}

  Place run(const std::string& path) {
    Place place;
    place.error = setOut(path);
    while (place.error == 0 && !_rest.empty()) place.error = step();
    if (place.error != 0) return place;
    place.name = _item.valid() ? _name : ".";
    place.folder = std::move(_folder);
    return place;
  }

 private:
  // From the root, or from the folder that has been reached.
  int setOut(const std::string& path) {
    _path = path;
    _rest = _path;
    if (path.starts_with('/')) return hold(_folder, syscalls::openItem(AT_FDCWD, "/"));
    return _folder.valid() ? 0 : hold(_folder, syscalls::openItem(AT_FDCWD, "."));
  }

  int step() {
    if (_item.valid()) _folder = std::exchange(_item, Descriptor());
    _name = takeComponent(_rest);
    if (_name.empty() || _name == ".") return 0;
    if (_name == "..") return hold(_folder, syscalls::openFolderAbove(_folder.get()));
    if (const int error = hold(_item, syscalls::openItem(_folder.get(), _name.c_str())))
      return error;
    const auto status = statusOf(_item);
    return isLink(status) ? follow(*status) : 0;
  }

  int follow(const struct stat& link) {
    if (++_links > kMaximumLinks) return ELOOP;
    if (!_mayFollow(link)) return EPERM;
    const auto target = targetOf(_item);
    if (!target) return errno;
    _item = Descriptor();
    return setOut(_rest.empty() ? *target : *target + "/" + std::string(_rest));
  }

  static int hold(Descriptor& place, int descriptor) {
    if (descriptor == -1) return errno;
    place = Descriptor(descriptor);
    return 0;
  }

  const LinkJudge& _mayFollow;
  Descriptor _folder;
  Descriptor _item;  // the entry `_name` of the folder; none when the walk stands at the folder
  std::string _name;
  std::string _path;
  std::string_view _rest;  // of the path, behind that
  int _links = 0;
};

}  // namespace

Place openPlaceBehindLinks(Descriptor start, const std::string& path, const LinkJudge& mayFollow) {
  return LinkWalk(std::move(start), mayFollow).run(withoutTrailingSlashes(path));
}

}  // namespace installer
