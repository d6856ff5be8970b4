#pragma once

namespace installer::test {

// As long as one lives, listings of folders tell no entry's kind, as those of some file systems.
class UntypedListings {
 public:
  UntypedListings();
  UntypedListings(const UntypedListings&) = delete;
  UntypedListings& operator=(const UntypedListings&) = delete;
  ~UntypedListings();
};

}  // namespace installer::test
