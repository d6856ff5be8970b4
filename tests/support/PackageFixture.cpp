#include "support/PackageFixture.h"

namespace installer::test {

PackageFixture::PackageFixture()
    : _description{{"bundleName", "Quillmere"},
                   {"frameworkPath", "Contents/MacOS"},
                   {"version", "6.2.3.1"},
                   {"allowMultiInstance", true}} {
  describe("SKIPRUNNINGCHECK", "false");
  _sandbox.writePlist("HF/HF.pkg/Contents/Info.plist",
                      {{"CFBundleIdentifier", "com.quillmere.hotfix"}});
  _sandbox.write("HF/deploy/install.hotfix.xml", kManifest);
  _sandbox.write("HF/deploy/uninstall.hotfix.xml", "<uninstall url=\"${installer.root}\"/>");
  _sandbox.write("HF/deploy/plugin_customization.ini", "new=1\n");
  _sandbox.write("HF/deploy/.keystore", "new store");
  _sandbox.write("HF/deploy/extras/extra", "extra");
  _sandbox.makeFolder("data/.config");
}

void PackageFixture::describe(const std::string& key,
                              const std::optional<PropertyList::Value>& value) {
  if (value)
    _description.set(key, *value);
  else
    _description.remove(key);
  _sandbox.writePlist("HF/HF.pkg/Contents/Resources/hotfix.plist", _description);
}

std::vector<std::string> PackageFixture::runs() {
  std::vector<std::string> words;
  for (const Command& command : _sandbox.children().started()) {
    if (command.executable != launcher()) continue;
    words.push_back(
        command.arguments[9] == "-DprovisioningOperation=update" ? "hotfix" : command.arguments[4]);
  }
  return words;
}

}  // namespace installer::test
