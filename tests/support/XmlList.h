#pragma once

#include <string>
#include <string_view>

namespace installer::test {

// A whole XML property list around the element, as other programs write it.
inline std::string xmlList(std::string_view element) {
  return std::string(
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
             "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
             "<plist version=\"1.0\">\n")
      .append(element)
      .append("\n</plist>\n");
}

}  // namespace installer::test
