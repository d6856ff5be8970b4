#pragma once

#include <string_view>

namespace installer::judge {

// A difference that is understood, by the beginning of its name, and where it comes from:
//   GNUstep  it differs from macOS itself, as Apple documents it or as its published sources show
//   ours     our design wants another answer than the platform's
struct Known {
  std::string_view what;
  std::string_view why;
};

inline constexpr Known kKnown[] = {
    {"boolValue of a text [signs or blanks behind the first",
     "GNUstep: takes blanks, signs and zeros in any order; Apple's reference has an order"},
    {"hasPrefixCaseInsensitive [more than a small letter]",
     "GNUstep: compares small letters; macOS folds, which makes one sigma of all, say"},
    {"hasPrefixCaseInsensitive [combining mark]",
     "ours: characters are compared as they are written, whatever makes one letter"},
    {"we read Foundation's XML list [carriage return",
     "ours: a bare carriage return, which Foundation writes and keeps, is a line feed to XML"},
    {"stringByAppendingPathComponent [//", "GNUstep: keeps // at the start; macOS collapses"},
    {"stringByAppendingPathComponent [trailing /, component //]",
     "GNUstep: keeps // at the start; macOS collapses"},
    {"stringByAppendingPathComponent [~", "GNUstep: keeps // after ~; macOS collapses"},
    {"stringByAppendingPathComponent [empty, component //",
     "GNUstep: keeps // at the start; macOS collapses"},
    {"stringByAppendingPathComponent [empty, component ~", "GNUstep: ~x/ is a root of its own"},
    {"stringByDeletingLastPathComponent [~]", "GNUstep: ~x/ is a root of its own"},
    {"copyItemAtPath:toPath:, answer [file to dangling link]", "GNUstep: writes through the link"},
    {"copyItemAtPath:toPath:, result [file to dangling link]", "GNUstep: writes through the link"},
    {"copyFolderFrom:to:, answer [folder to dangling link]",
     "ours: an existing item counts as copied"},
    {"copyFolderFrom:to:, answer [link to a folder to dangling link]",
     "ours: an existing item counts as copied"},
    {"copyFolderFrom:to:, result [file to dangling link]", "GNUstep: writes through the link"},
    {"copyFolderFrom:to:, result [link to a folder to nothing]",
     "ours: the folder that a link names is copied, not the link"},
    {"copyFolderFrom:to:, result [link to a folder to link to a folder]",
     "ours: a merge never enters its own source"},
    {"createDirectoryAtPath:, answer [file, intermediates, to]",
     "GNUstep: a file counts as the folder"},
    {"createFileAtPath:, answer [link to a folder]",
     "ours: a link is replaced, never written through"},
    {"createFileAtPath:, result [link to a folder]",
     "ours: a link is replaced, never written through"},
    {"enumeratorAtPath: with changeFileAttributes:, result [link to a folder]",
     "ours: a folder named through a link is not entered"},
    {"createFileAtPath:, result [dangling link]",
     "ours: a link is replaced, never written through"},
};

}  // namespace installer::judge
