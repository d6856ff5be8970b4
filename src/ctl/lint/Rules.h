#pragma once

#include <optional>
#include <string>

#include "ctl/lint/Finding.h"
#include "ctl/lint/PackageView.h"

// The rules as code, by subject. Each looks at the package and adds what it finds. `rcpHome` is
// that of an instance, where one was given.
namespace installer::ctl::lint {

void lintDescription(const PackageView& package, Findings& findings);
// `hasOlder`: whether lintOlder() is asked, too.
void lintVersion(const PackageView& package, bool hasOlder, Findings& findings);
void lintLocations(const PackageView& package, Findings& findings);
void lintDeployFolder(const PackageView& package, Findings& findings);
void lintUpdateSites(const PackageView& package, const std::optional<std::string>& rcpHome,
                     Findings& findings);
void lintManifests(const PackageView& package, Findings& findings);
void lintCustomization(const PackageView& package, Findings& findings);
void lintKeyStores(const PackageView& package, const std::optional<std::string>& rcpHome,
                   Findings& findings);
void lintExtras(const PackageView& package, const std::optional<std::string>& rcpHome,
                Findings& findings);
void lintIdentity(const PackageView& package, Findings& findings);
void lintPath(const std::string& package, Findings& findings);
void lintInstance(const PackageView& package, const std::string& bundle, Findings& findings);
void lintOlder(const PackageView& package, const PackageView& older, Findings& findings);

}  // namespace installer::ctl::lint
