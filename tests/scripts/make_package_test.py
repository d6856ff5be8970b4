"""The scripts that make and remove packages on a Mac, with stand-ins for the system's programs."""

import os
import plistlib
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
MACOS = ROOT / "packaging" / "macos"


class MacTest(unittest.TestCase):
    """A folder of stand-ins, each of which notes how it was called."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self._bin = self._root / "bin"
        self._bin.mkdir()

    def make(self, path, script):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        path.chmod(0o755)

    def standIn(self, name, effect=""):
        self.make(self._bin / name,
                  f'{{ printf "%s" {name}; printf "\\t%s" "$@"; echo; }} >>{self._root}/calls\n{effect}')

    def calls(self):
        path = self._root / "calls"
        lines = path.read_text(encoding="utf-8").splitlines() if path.exists() else []
        return [line.split("\t") for line in lines]

    def start(self, script, *arguments, **variables):
        environment = {"PATH": f"{self._bin}:{os.environ['PATH']}", "TMPDIR": str(self._root)}
        return subprocess.run([MACOS / script, *arguments], env={**environment, **variables},
                              capture_output=True, text=True, check=False)


class MakePackageTest(MacTest):
    def setUp(self):
        super().setUp()
        self._program = self._root / "HotfixInstaller"
        self.make(self._program, "exit 0")
        self._hotfix = self._root / "my hotfix"
        self.make(self._hotfix / "install/Fix.pkg/Contents/Resources/hotfix.plist", "")
        self.make(self._hotfix / "updates/platform/site.xml", "")
        self._seen = self._root / "seen"
        self._seen.mkdir()
        self.make(self._bin / "lipo", 'echo "${ARCHITECTURES-x86_64 arm64}"')
        for name in ("codesign", "xcrun"):
            self.standIn(name)
        # What they are handed is gone afterwards.
        self.standIn("pkgbuild", f'cp -R "$6" {self._seen}/scripts; ls -A "$2" >{self._seen}/root;'
                                 ' touch "${@: -1}"')
        self.standIn("pkgutil", f"""
            case $1 in
              --expand)
                [[ -f $2 ]] && mkdir "$3" &&
                  echo '<pkg-info overwrite-permissions="true" auth="root"/>' >"$3/PackageInfo" ;;
              --flatten) cp "$2/PackageInfo" {self._seen}/; touch "$3" ;;
            esac""")
        self.standIn("productbuild", f'ls "$4" >{self._seen}/components; '
                                     f'cp "$2" {self._seen}/distribution.xml; touch "${{@: -1}}"')

    def package(self, *options, title="Fix & more", **variables):
        return self.start("make-package", "--program", self._program, "--identifier", "org.fix",
                          "--version", "2.0", "--title", title, *options, self._hotfix,
                          self._root / "Fix.pkg", **variables)

    def distribution(self):
        return ElementTree.parse(self._seen / "distribution.xml").getroot()

    def testProgramHotfixAndScriptAreWhatThePackageCarries(self):
        result = self.package()

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        scripts = self._seen / "scripts"
        self.assertEqual({path.relative_to(scripts).as_posix() for path in scripts.rglob("*")
                          if path.is_file()},
                         {"postinstall", "HotfixInstaller", "hotfix/updates/platform/site.xml",
                          "hotfix/install/Fix.pkg/Contents/Resources/hotfix.plist"})
        self.assertEqual((scripts / "postinstall").read_bytes(),
                         (MACOS / "postinstall").read_bytes())
        self.assertTrue(os.access(scripts / "postinstall", os.X_OK))
        self.assertEqual((self._seen / "root").read_text(encoding="utf-8"), "")

    def testTheProgramMayHaveAnotherName(self):
        program = self._root / "built"
        self._program.rename(program)
        self._program = program

        result = self.package("--sign-program", "App ID")

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertTrue(os.access(self._seen / "scripts/HotfixInstaller", os.X_OK))
        self.assertFalse((self._seen / "scripts/built").exists())

    def testTheDestinationKeepsItsOwnerAndMode(self):
        self.package()

        self.assertEqual((self._seen / "PackageInfo").read_text(encoding="utf-8"),
                         '<pkg-info overwrite-permissions="false" auth="root"/>\n')
        self.assertIn("hotfix.pkg",
                      (self._seen / "components").read_text(encoding="utf-8").splitlines())

    def testTheScriptIsToldOfTheDestination(self):
        self.package()
        self.package("--destination", "/Applications/Own folder")

        places = [call[call.index("--install-location") + 1] for call in self.calls()
                  if call[0] == "pkgbuild"]
        self.assertEqual(places, ["/Applications", "/Applications/Own folder"])

    def testTheDistributionShowsOneChoiceForTheWholeMachine(self):
        self.package(title='A "fix" & <more> / less\\')

        root = self.distribution()
        self.assertEqual(root.findtext("title"), 'A "fix" & <more> / less\\')
        self.assertEqual([reference.get("id") for reference in root.iter("pkg-ref")], ["org.fix"] * 2)
        [holder] = [reference for reference in root.iter("pkg-ref") if reference.text]
        self.assertEqual((holder.text, holder.get("version"), holder.get("auth")),
                         ("hotfix.pkg", "2.0", "root"))
        self.assertEqual(root.find(".//os-version").get("min"), "11.0")
        self.assertEqual(root.find("domains").attrib,
                         {"enable_anywhere": "false", "enable_currentUserHome": "false",
                          "enable_localSystem": "true"})

    def testWithoutIdentitiesNothingIsSigned(self):
        self.package()

        self.assertEqual([call[0] for call in self.calls()],
                         ["pkgbuild", "pkgutil", "pkgutil", "productbuild"])
        self.assertNotIn("--sign", self.calls()[3])

    def testProgramAndPackageAreSignedBeforeTheyAreSentIn(self):
        self.package("--sign-program", "App ID", "--sign-package", "Installer ID",
                     "--notarize", "profile")

        calls = self.calls()
        self.assertEqual([call[0] for call in calls],
                         ["codesign", "codesign", "pkgbuild", "pkgutil", "pkgutil", "productbuild",
                          "xcrun", "xcrun"])
        sign = calls[0]
        self.assertEqual(sign[sign.index("--sign") + 1], "App ID")
        self.assertEqual(sign[sign.index("--options") + 1], "runtime")
        self.assertEqual(Path(sign[sign.index("--entitlements") + 1]), MACOS / "entitlements.plist")
        self.assertTrue(sign[-1].endswith("/scripts/HotfixInstaller"))
        self.assertEqual(calls[5][calls[5].index("--sign") + 1], "Installer ID")
        package = str(self._root / "Fix.pkg")
        self.assertEqual(calls[6][1:], ["notarytool", "submit", package, "--keychain-profile",
                                        "profile", "--wait"])
        self.assertEqual(calls[7][1:], ["stapler", "staple", package])

    def testThereMustBeOneHotfix(self):
        self.make(self._hotfix / "install/Other.pkg/Contents/Resources/hotfix.plist", "")

        result = self.package()

        self.assertEqual(result.returncode, 1)
        self.assertIn("one hotfix package", result.stderr)
        self.assertEqual(self.calls(), [])

    def testAProgramForOneArchitectureIsRefused(self):
        for architecture in ("arm64", "x86_64"):
            result = self.package(ARCHITECTURES=architecture)

            self.assertEqual(result.returncode, 1)
            self.assertIn(f"is for {architecture} only", result.stderr)
        self.assertEqual(self.calls(), [])

    def testAFailureOfTheSystemsProgramsEndsIt(self):
        self.standIn("pkgbuild", "exit 3")

        self.assertEqual(self.package().returncode, 3)

        self.assertEqual([call[0] for call in self.calls()], ["pkgbuild"])

    def testNothingIsLeftBehind(self):
        before = set(self._root.iterdir())

        self.package()

        self.assertEqual(set(self._root.iterdir()) - before,
                         {self._root / "calls", self._root / "Fix.pkg"})

    def testWhatIsMissingOnTheCommandLineIsAnError(self):
        for arguments in ([], ["--version", "1", self._hotfix, "Fix.pkg"], ["--version"],
                          ["--made-up", "x", self._hotfix, "Fix.pkg"]):
            result = self.start("make-package", *arguments)

            self.assertEqual(result.returncode, 2)
            self.assertIn("--identifier ID", result.stderr)
            self.assertNotIn("set -", result.stderr)

    def testVersionsAreThoseOfTheProject(self):
        def found(pattern, path):
            return re.search(pattern, (ROOT / path).read_text(encoding="utf-8")).group(1)

        self.assertEqual(found(r'version "([^"]+)"', "packaging/macos/hotfix-installer.rb"),
                         found(r'kVersion = "([^"]+)"', "include/hotfix/Version.h"))
        oldest = found(r'"CMAKE_OSX_DEPLOYMENT_TARGET": "([^"]+)"', "CMakePresets.json")
        self.assertEqual([found(pattern, path) for pattern, path in [
            ('os-version min="([^"]+)"', "packaging/macos/distribution.xml.in"),
            ('os-version min="([^"]+)"', "packaging/cpack/CPack.distribution.dist.in"),
            (r'"MACOS_MINIMUM", "([^"]+)"', "tests/macos/check-imports")]], [oldest] * 3)

    def testTheHardenedRuntimeHasNoException(self):
        self.assertEqual(plistlib.loads((MACOS / "entitlements.plist").read_bytes()), {})


class UninstallTest(MacTest):
    FILES = ["sbin/HotfixInstaller", "lib/libhotfix.a", "include/hotfix/Version.h"]
    FOLDERS = ["sbin", "lib", "include", "include/hotfix"]

    def setUp(self):
        super().setUp()
        self._place = self._root / "usr/local"
        for name in self.FILES:
            self.make(self._place / name, "")
        volume = str(self._root)
        self.standIn("pkgutil", f"""
            case $1 in
              --pkg-info)
                [[ $2 == org.hotfix ]] || {{ echo "No receipt for '$2'" >&2; exit 1; }}
                printf 'package-id: %s\\nversion: 1.0\\nvolume: {volume}\\nlocation: usr/local\\n' "$2" ;;
              --only-files) [[ ! -v DAMAGED ]] && printf '%s\\n' {' '.join(self.FILES)} ;;
              --only-dirs) printf '%s\\n' {' '.join(self.FOLDERS)} ;;
            esac""")

    def testFilesFoldersAndReceiptGo(self):
        result = self.start("uninstall", "org.hotfix")

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(list(self._place.iterdir()), [])
        self.assertEqual(self.calls()[-1], ["pkgutil", "--forget", "org.hotfix"])

    def testWhatOthersHavePutThereStays(self):
        self.make(self._place / "lib/other", "")

        self.start("uninstall", "org.hotfix")

        self.assertEqual([path.relative_to(self._place).as_posix()
                          for path in sorted(self._place.rglob("*"))], ["lib", "lib/other"])

    def testAReceiptThatCannotBeReadIsNotForgotten(self):
        result = self.start("uninstall", "org.hotfix", DAMAGED="yes")

        self.assertNotEqual(result.returncode, 0)
        self.assertNotIn("--forget", {call[1] for call in self.calls()})
        self.assertTrue((self._place / self.FILES[0]).exists())

    def testAPackageThatIsNotInstalledIsAnError(self):
        result = self.start("uninstall", "org.unknown")

        self.assertEqual(result.returncode, 1)
        self.assertIn("No receipt", result.stderr)
        self.assertEqual({call[1] for call in self.calls()}, {"--pkg-info"})
        self.assertTrue((self._place / self.FILES[0]).exists())

    def testWithoutAPackageItTellsItsUsage(self):
        result = self.start("uninstall")

        self.assertEqual(result.returncode, 2)
        self.assertIn("IDENTIFIER", result.stderr)


if __name__ == "__main__":
    unittest.main()
