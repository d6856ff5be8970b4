#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <functional>
#include <vector>

#include "platform/overlay/OverlayFileManager.h"
#include "support/ItemStates.h"
#include "support/OverlayMaker.h"
#include "support/OverlaySnapshot.h"
#include "support/Proves.h"
#include "support/RandomText.h"
#include "unit/platform/files/FileManagerFixture.h"

namespace installer::test {
namespace {

// What one operation answered, as a line.
using Answers = std::vector<std::string>;
// An operation of a case; it answers in words what it was asked.
using Operation = std::function<std::string(FileManager&)>;

std::string words(bool answer, const FileError& error) {
  return answer ? "yes" : "no: " + std::to_string(error.code) + " " + error.description;
}

std::string words(const std::optional<std::string>& bytes, const FileError& error) {
  return bytes ? "\"" + *bytes + "\"" : words(false, error);
}

std::string words(const std::optional<std::vector<std::string>>& names) {
  std::string line = names ? "names" : "no names";
  for (const std::string& name : names.value_or(std::vector<std::string>())) line += " " + name;
  return line;
}

// One machine of few names, so that random operations meet again and again.
class Case {
 public:
  explicit Case(RandomSource& random) : _random(random) {
    layOut();
    chooseHolds();
    for (std::size_t left = 1 + random.below(8); left > 0; --left) _operations.push_back(choose());
  }

  std::string root() const { return _disk.path(); }

  Answers run(FileManager& files) const {
    std::vector<std::shared_ptr<const void>> holds;
    for (const auto& [folder, owner] : _holds) holds.push_back(files.hold(folder, owner));
    Answers answers;
    for (const Operation& operation : _operations) answers.push_back(operation(files));
    return answers;
  }

 private:
  std::string path() {
    const std::vector<std::string> pieces = {"a", "b", "c", ".hotfix-7"};
    std::string path = root();
    for (std::size_t left = 1 + _random.below(3); left > 0; --left)
      path += "/" + _random.oneOf(pieces);
    const std::vector<std::string> ends = {"", "", "", "", "", "", "/", "/.", "/.."};
    return path + _random.oneOf(ends);
  }

  void layOut() {
    for (std::size_t left = _random.below(12); left > 0; --left) putSomething();
  }

  // What is in the way stays.
  void putSomething() {
    const std::string item = path();
    const std::vector<mode_t> modes = {0644, 0600, 0755, 04755, 0777};
    const mode_t mode = _random.oneOf(modes);
    switch (_random.below(7)) {
      case 0:
      case 1:
      case 2:
        (void)::mkdir(item.c_str(), mode | 0700);
        return;
      case 3:
        (void)::symlink(target().c_str(), item.c_str());
        return;
      case 4:
        (void)::link(path().c_str(), item.c_str());
        return;
      case 5:
        if (_random.below(4) == 0) (void)::mkfifo(item.c_str(), mode);
        return;
      default:
        putFile(item, mode);
    }
  }

  void putFile(const std::string& item, mode_t mode) {
    const int file = ::open(item.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (file == -1) return;
    const std::string bytes = "bytes " + std::to_string(_random.below(1000));
    EXPECT_EQ(::write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    const bool isStrangers = ::geteuid() == 0 && _random.below(4) == 0;
    if (isStrangers) {
      EXPECT_EQ(::fchown(file, 1, 1), 0);
    }
    EXPECT_EQ(::fchmod(file, mode), 0);
    EXPECT_EQ(::close(file), 0);
  }

  std::string target() {
    const std::vector<std::string> targets = {"a", "b", "../a", "../b/c", "c/..", "nowhere", "."};
    return _random.below(4) == 0 ? path() : _random.oneOf(targets);
  }

  std::optional<std::string> somebody() {
    const std::vector<std::string> names = {"self", "stranger", "nobody knows"};
    if (_random.below(2) == 0) return std::nullopt;
    return _random.oneOf(names);
  }

  void chooseHolds() {
    for (std::size_t left = _random.below(3); left > 0; --left)
      _holds.emplace_back(_random.below(3) == 0 ? root() : path(), somebody());
  }

  FileAttributes attributes() {
    const std::vector<mode_t> modes = {0775, 0640, 0777};
    return {.owner = somebody().value_or("self"), .group = "own", .mode = _random.oneOf(modes)};
  }

  ExistingItem existing() {
    return _random.oneOf<ExistingItem>(
        {ExistingItem::keep, ExistingItem::fail, ExistingItem::replace});
  }

  Operation choose() {
    switch (_random.below(15)) {
      case 0:
        return exists(path());
      case 1:
        return read(path());
      case 2:
        return readUnlinked(path());
      case 3:
        return list(path());
      case 4:
      case 5:
        return write(path(),
                     _random.oneOf<ReplacedFile>({ReplacedFile::takeOver, ReplacedFile::forget}));
      case 6:
      case 7:
        return copy(path(), path(), existing());
      case 8:
        return copyContent(path(), path(), path(), existing());
      case 9:
        return merge(path(), path(), _random.below(2) == 0 ? root() : path());
      case 10:
        return remove(path());
      case 11:
        return makeFolder(path(), _random.below(2) == 0);
      case 12:
        return createFile(path(), attributes());
      case 13:
        return removeLeftOvers(path(), _random.below(2) == 0);
      default:
        return changeAttributes({path(), path()}, attributes());
    }
  }

  static Operation exists(const std::string& item) {
    return [=](FileManager& files) {
      FileError error;
      const bool there = files.exists(item, &error);
      return "exists " + item + ": " + words(there, error) +
             (files.isDirectory(item) ? " folder" : "") +
             (files.mayEnter(item) ? " may be entered" : "") + " of " +
             std::to_string(files.owner(item).value_or(99));
    };
  }

  static Operation read(const std::string& item) {
    return [=](FileManager& files) {
      FileError error;
      const auto bytes = files.read(item, &error);
      return "read " + item + ": " + words(bytes, error);
    };
  }

  static Operation readUnlinked(const std::string& item) {
    return [=](FileManager& files) {
      FileError error;
      FileOrigin origin;
      const auto bytes = files.readUnlinked(item, &origin, &error);
      return "read unlinked " + item + ": " + words(bytes, error) + " of " +
             std::to_string(origin.owner) + (origin.hasOtherNames ? " among others" : "");
    };
  }

  static Operation list(const std::string& item) {
    return [=](FileManager& files) {
      FileError error;
      const auto names = files.list(item, "");
      const bool isFlushed = files.flush(item, &error);
      return "list " + item + ": " + words(names) + ", flushed " + words(isFlushed, error);
    };
  }

  static Operation write(const std::string& item, ReplacedFile replaced) {
    return [=](FileManager& files) {
      FileError error;
      const bool written = files.write(item, "written", replaced, {}, &error);
      return "write " + item + ": " + words(written, error);
    };
  }

  static Operation copy(const std::string& from, const std::string& to, ExistingItem taken) {
    return [=](FileManager& files) {
      FileError error;
      const bool copied = files.copy(from, to, taken, &error);
      return "copy " + from + " to " + to + ": " + words(copied, error);
    };
  }

  static Operation copyContent(const std::string& from, const std::string& within,
                               const std::string& to, ExistingItem taken) {
    return [=](FileManager& files) {
      FileError error;
      CopySource source(from, {within});
      source.mayOwn = [](uid_t owner) { return owner == ::geteuid(); };
      const std::string content = files.hasContent(source) ? " has content" : "";
      const bool copied = files.copy(source, to, taken, &error);
      return "copy content " + from + " to " + to + ": " + words(copied, error) + content;
    };
  }

  static Operation merge(const std::string& from, const std::string& to,
                         const std::string& boundary) {
    return [=](FileManager& files) {
      files.merge(from, to, boundary);
      return "merge " + from + " into " + to + " within " + boundary;
    };
  }

  static Operation remove(const std::string& item) {
    return [=](FileManager& files) {
      FileError error;
      const bool removed = files.remove(item, &error);
      return "remove " + item + ": " + words(removed, error);
    };
  }

  static Operation makeFolder(const std::string& item, bool withFoldersAbove) {
    return [=](FileManager& files) {
      FileError error;
      const auto above = withFoldersAbove ? Intermediates::create : Intermediates::refuse;
      const bool made = files.createDirectory(item, above, {}, &error);
      return "make folder " + item + ": " + words(made, error);
    };
  }

  static Operation createFile(const std::string& item, const FileAttributes& attributes) {
    return [=](FileManager& files) {
      const bool made = files.createFile(item, "created", attributes);
      return "create " + item + ": " + words(made, {});
    };
  }

  static Operation removeLeftOvers(const std::string& item, bool isDeep) {
    return [=](FileManager& files) {
      files.removeLeftOvers(item, isDeep ? LeftOvers::below : LeftOvers::within);
      return "left-overs in " + item;
    };
  }

  static Operation changeAttributes(const std::vector<std::string>& items,
                                    const FileAttributes& attributes) {
    return [=](FileManager& files) {
      return "attributes of " + items[0] + " and " + items[1] + ": " +
             words(files.changeAttributesBelowAll(items, attributes), {});
    };
  }

  RandomSource& _random;
  TemporaryFolder _disk{memoryFolder()};
  std::vector<std::pair<std::string, std::optional<std::string>>> _holds;
  std::vector<Operation> _operations;
};

class OverlayAgreementTest : public ::testing::Test {
 protected:
  OverlayAgreementTest() { _users.add({"stranger", 1, 1, "/home/stranger"}); }

  MadeUpUsers _users;
};

// The same operations first over the glass, then on the disk: the same answers and the same tree,
// and the disk untouched in between.
TEST_F(OverlayAgreementTest, RandomOperationsComeOutAsOnTheDisk) {
  constexpr std::uint64_t kCases = 400;  // with a folder on a disk each
  const auto check = [&](RandomSource& random) {
    const Case given(random);
    const TreeSnapshot before = snapshotOf(given.root());
    const auto states = statesBelow(given.root());

    overlay::OverlayFileManager foreseeing(_users, ownMaker());
    const Answers foreseen = given.run(foreseeing);
    const TreeSnapshot predicted = snapshotOf(foreseeing.tree(), given.root());

    EXPECT_TRUE(TreeDiff(before, snapshotOf(given.root())).empty());
    EXPECT_EQ(statesBelow(given.root()), states);

    PosixFileManager real(_users);
    const Answers done = given.run(real);
    for (std::size_t index = 0; index < done.size(); ++index)
      EXPECT_EQ(done[index], foreseen[index]) << "of " << ::testing::PrintToString(done);
    EXPECT_TRUE(TreeDiff(snapshotOf(given.root()), predicted).empty())
        << TreeDiff(snapshotOf(given.root()), predicted) << ::testing::PrintToString(foreseen);
  };
  forRandomCases(check, kCases);
}

}  // namespace
}  // namespace installer::test
