#include "support/InstanceFixture.h"

namespace installer::test {

InstanceFixture::InstanceFixture() {
  _sandbox.makeFolder(inHome("deploy"));
  _sandbox.makeFolder(inHome("eclipse/plugins"));
  _sandbox.write(inHome("deploy/install.xml"), "<manifest/>\n");
  _sandbox.write(inHome("rcplauncher.properties"),
                 "provisioning.manifest.version=0101130000\nrcp.install.id=0101130000\n");
  _sandbox.children().onStart([this](const Command& command) {
    if (command.executable == launcher() && !_result.empty())
      _sandbox.write(inHome("../.provisioning_rc"), _result);
  });
}

std::vector<std::string> InstanceFixture::linesAt(LogLevel level) const {
  std::vector<std::string> texts;
  for (const LogLine& line : _sandbox.log())
    if (line.level == level) texts.push_back(line.text);
  return texts;
}

std::vector<std::string> InstanceFixture::numberedLines() const {
  std::vector<std::string> lines;
  for (const LogLine& line : _sandbox.log())
    lines.push_back(std::to_string(static_cast<int>(line.level)) + " " + line.text);
  return lines;
}

}  // namespace installer::test
