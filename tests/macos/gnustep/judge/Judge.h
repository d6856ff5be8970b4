#pragma once

#import <Foundation/Foundation.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

// What the comparisons share: one source of random input, and the record of what differed.
namespace installer::judge {

extern std::mt19937_64 generator;

std::size_t below(std::size_t bound);

template <class Container>
const auto& anyOf(const Container& container) {
  return container[below(container.size())];
}

// Up to `longest` of the pieces, one behind the other.
std::string randomText(const std::vector<std::string>& pieces, std::size_t longest);

// Counts a comparison of the operation `what`, and notes a difference. Differences are told apart
// by the operation and the kind of its input; one of each is shown.
void compare(const std::string& what, const std::string& kind, const std::string& input,
             const std::string& ours, const std::string& theirs);
// The same without a comparison: a case that Foundation itself cannot be asked about.
void passOver(const std::string& why);

// Prints the counts and each difference. Whether all of them are known.
[[nodiscard]] bool tell();

// In quotes, with control characters as numbers.
std::string shown(const std::string& text);
std::string tell(bool flag);

// nil for bytes that are no UTF-8.
NSString* objc(const std::string& text);
std::string cpp(NSString* text);  // "(nil)" for none

std::string joined(const std::vector<std::string>& parts);
std::string joined(NSArray* parts);
std::vector<std::string> sorted(NSArray* names);

// One round of each kind.
void judgePaths();
void judgeTexts();
void judgePropertyList();
// Works in the folder, which is made and emptied.
void judgeFiles(const std::string& folder);

}  // namespace installer::judge
