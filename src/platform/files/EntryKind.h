#pragma once

#include <sys/stat.h>

namespace installer {

enum class EntryKind { unknown, file, folder, link, other };

EntryKind kindOf(const struct stat& status);

// As a listing tells it, a DT_ value of <dirent.h>: not what a link leads to, and on some file
// systems unknown.
EntryKind kindOfListed(unsigned char type);

}  // namespace installer
