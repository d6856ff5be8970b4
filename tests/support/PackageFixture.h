#pragma once

#include <string>
#include <vector>

#include "support/InstanceFixture.h"

namespace installer::test {

// Beside the instance, a hotfix package with everything that one can bring, in HF/HF.pkg with
// HF/deploy beside it. Its description allows several instances until a test says otherwise.
class PackageFixture : public InstanceFixture {
 protected:
  static constexpr const char* kManifest =
      "<manifest>\n  <domain-object>\n    <object-data>\n      <install>\n"
      "        <installfeature>\n          <requirements>\n"
      "            <feature id=\"f\" url=\"${installer.root}/site\"/>\n"
      "          </requirements>\n        </installfeature>\n      </install>\n"
      "    </object-data>\n  </domain-object>\n</manifest>\n";

  PackageFixture();

  std::string package() const { return _sandbox.path("HF/HF.pkg"); }
  std::string destination() const { return _sandbox.path("Applications"); }
  std::string data() const { return _sandbox.path("data"); }

  // Sets or, for an absent value, removes one key of the description.
  void describe(const std::string& key, const std::optional<PropertyList::Value>& value);

  // The names and operation words of the launcher's runs so far: "update", "cleanup", and "hotfix"
  // for the run that has update sites of its own.
  std::vector<std::string> runs();

 private:
  PropertyList::Dictionary _description;
};

}  // namespace installer::test
