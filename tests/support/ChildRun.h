#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace installer::test {

// An account that owns nothing, for tests that run as root.
constexpr uid_t kOrdinaryUser = 65534;
constexpr gid_t kOrdinaryGroup = 65534;

bool isRoot();

// Runs the steps in a forked process, so that they can give up rights and limits; their answer
// comes back. False also when that process does not end by itself.
bool inChild(const std::function<bool()>& steps);

// As inChild(), as the ordinary user when this process is root.
bool asOrdinaryUser(const std::function<bool()>& steps);

// Makes the ordinary user the owner of the entry when this process is root.
void giveToOrdinaryUser(const std::string& path);

}  // namespace installer::test
