#include "platform/overlay/PathWalk.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>
#include <vector>

#include "platform/posix/PathSteps.h"

namespace installer::overlay {

namespace {

class Walk {
 public:
  Walk(Tree& tree, NodePtr start, LastLink last, const LinkJudge& mayFollow)
      : _tree(tree), _last(last), _mayFollow(mayFollow) {
    standAt(std::move(start));
  }

  void stayBeneath() { _boundary = _found.node; }

  Found run(std::string_view path) {
    setOut(path);
    while (_found.error == 0 && !_steps.empty()) step();
    if (_found.error != 0 && !_steps.empty()) _found.folder = nullptr;
    return std::move(_found);
  }

 private:
  void standAt(NodePtr folder) {
    _found.folder = folder;
    _found.name = ".";
    _found.node = std::move(folder);
  }

  // The steps stand in reverse. An end of the path that is empty asks for a folder.
  void setOut(std::string_view path) {
    if (path.starts_with('/') && _boundary) return fail(EXDEV);
    if (path.starts_with('/')) standAt(_tree.root());
    const std::size_t known = _steps.size();
    const bool mustBeFolder = path.ends_with('/');
    while (!path.empty()) {
      if (const auto component = takeComponent(path); !component.empty())
        _steps.emplace_back(component);
    }
    if (mustBeFolder) _steps.emplace_back(".");
    std::reverse(_steps.begin() + static_cast<std::ptrdiff_t>(known), _steps.end());
  }

  void step() {
    const std::string name = std::move(_steps.back());
    _steps.pop_back();
    if (!_found.node->isFolder()) return fail(ENOTDIR);
    if (name == ".") return standAt(_found.node);
    if (name == ".." && _found.node == _boundary) return fail(EXDEV);
    if (name == "..") return standAt(Tree::above(_found.node));
    _found.folder = _found.node;
    _found.name = name;
    Look look = _tree.look(_found.folder, name);
    _found.node = std::move(look.node);
    _found.error = look.error;
    const bool isOnTheWay = !_steps.empty() || _last == LastLink::follow;
    if (_found.node && _found.node->isLink() && isOnTheWay) follow();
  }

  void follow() {
    const NodePtr link = _found.node;
    if (++_links > kMaximumLinks) return fail(ELOOP);
    if (_mayFollow && !_mayFollow(*link)) return fail(EPERM);
    standAt(_found.folder);
    setOut(link->target);
  }

  void fail(int error) {
    _found.node = nullptr;
    _found.folder = nullptr;
    _found.error = error;
  }

  Tree& _tree;
  const LastLink _last;
  const LinkJudge& _mayFollow;
  NodePtr _boundary;                // null where the walk may leave any folder
  std::vector<std::string> _steps;  // still to be taken, the next one last
  Found _found;
  int _links = 0;
};

}  // namespace

Found walkBeneath(Tree& tree, const NodePtr& start, std::string_view path) {
  const LinkJudge all;
  Walk walk(tree, start, LastLink::follow, all);
  walk.stayBeneath();
  return walk.run(path);
}

Found walk(Tree& tree, const NodePtr& start, std::string_view path, LastLink last,
           const LinkJudge& mayFollow) {
  if (path.size() >= PATH_MAX)
    return {.folder = nullptr, .name = {}, .node = nullptr, .error = ENAMETOOLONG, .owner = {}};
  return Walk(tree, start, last, mayFollow).run(path);
}

}  // namespace installer::overlay
