#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "base/TextDictionary.h"
#include "hotfix/base/OrderedDictionary.h"

// These definitions come before the C++ library's, so that the tests can refuse memory.
namespace {

int requestsLeft = -1;  // until one is refused; negative when none is

}  // namespace

void* operator new(std::size_t size) {
  if (requestsLeft >= 0 && requestsLeft-- == 0) throw std::bad_alloc();
  if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace installer {
namespace {

// Takes the steps on a copy of the subject while the first request for memory is refused, then the
// second, until all are granted, and looks at each copy, told whether a request was refused.
template <class Subject, class Steps, class Look>
void withEachRequestRefused(const Subject& subject, Steps steps, Look look) {
  for (int granted = 0;; ++granted) {
    Subject copy = subject;
    bool isRefused = false;
    requestsLeft = granted;
    try {
      steps(copy);
    } catch (const std::bad_alloc&) {
      isRefused = true;
    }
    requestsLeft = -1;
    look(copy);
    if (isRefused) continue;
    EXPECT_GT(granted, 0);
    return;
  }
}

// Every entry is to be found, and storing it again makes no second one.
TEST(RefusedMemoryTest, DictionaryStaysWhole) {
  OrderedDictionary<std::string> dictionary{{"a", "1"}, {"b", "2"}};
  const std::string key(100, 'c');

  withEachRequestRefused(
      dictionary, [&](auto& changed) { changed.set(key, std::string(100, 'd')); },
      [&](auto& changed) {
        changed.set(key, "3");
        EXPECT_EQ(changed.size(), 3U);
        EXPECT_EQ(changed, (OrderedDictionary<std::string>{{"a", "1"}, {"b", "2"}, {key, "3"}}));
      });
}

TEST(RefusedMemoryTest, DictionaryOfTextsStaysWhole) {
  TextDictionary dictionary;
  dictionary.set("a", "1");
  dictionary.set("b", std::string(3000, 'b'));

  withEachRequestRefused(
      dictionary,
      [](TextDictionary& changed) {
        changed.set("c", std::string(2000, 'c'));
        changed.set("b", "2");  // the texts are brought together
        changed.keep(std::string(5000, 'k'));
        changed.remove("c");
      },
      [](TextDictionary& changed) {
        for (const auto& [key, value] : changed) EXPECT_EQ(changed.find(key), value);
        changed.set("b", "2");
        changed.set("c", "3");
        EXPECT_EQ(changed.size(), 3U);
        EXPECT_EQ(changed.find("a"), "1");
        EXPECT_EQ(changed.find("b"), "2");
        EXPECT_EQ(changed.find("c"), "3");
      });
}

}  // namespace
}  // namespace installer
