"""The layer check finds what it is there for and is content with a good tree."""

import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class CheckLayersTest(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self._root = Path(self._folder.name)

    def write(self, name, *lines):
        path = self._root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(line + "\n" for line in lines), encoding="utf-8")

    def check(self):
        return subprocess.run(
            [ROOT / "scripts" / "check-layers", self._root],
            capture_output=True, text=True, check=False)

    def assertRefused(self, place, reason):
        result = self.check()
        self.assertEqual(result.returncode, 1, result)
        self.assertEqual(result.stderr, "")
        self.assertEqual(len(result.stdout.splitlines()), 1, result.stdout)
        self.assertIn(f"{self._root}/{place}: ", result.stdout)
        self.assertIn(reason, result.stdout)

    def assertAccepted(self):
        result = self.check()
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def testIncludesOfTheSameAndLowerFloorsAreAccepted(self):
        self.write("src/ctl/plan/P.cpp", '#include "ctl/Command.h"', '#include "driver/D.h"')
        self.write("src/driver/main.cpp", '#include "hotfix/driver/Installer.h"', '#include "workflow/W.h"',
                   '#include "platform/P.h"', "#include <vector>", "#include <fmt/format.h>")
        self.write("src/workflow/W.h", "#pragma once", '#include "instance/I.h"')
        self.write("src/instance/I.h", '#include "formats/F.h"')
        self.write("src/formats/F.h", '#include "util/U.h"')
        self.write("src/util/U.h", '#include "platform/P.h"')
        self.write("src/platform/P.h", '#include "base/B.h"', "#include <sys/stat.h>")

        self.assertAccepted()

    def testEachIncludeOfTheNextHigherFloorIsRefused(self):
        floors = ["base", "platform", "util", "formats", "instance", "workflow", "driver", "ctl"]
        for lower, upper in zip(floors, floors[1:]):
            with self.subTest(lower=lower):
                self.write(f"src/{lower}/A.cpp", "// a", f'#include "{upper}/B.h"')

                self.assertRefused(f"src/{lower}/A.cpp:2", f'{lower}/ includes "{upper}/B.h"')

                (self._root / "src" / lower / "A.cpp").unlink()

    def testIncludesThatTryToHideAreRefused(self):
        for line in ('  #  include   "driver/B.h"', "#include <driver/B.h>",
                     '#import "driver/B.h"'):
            with self.subTest(line=line):
                self.write("src/util/A.h", line)

                self.assertRefused("src/util/A.h:1", "from a floor above it")

    def testIncludesBesideOrAroundTheFloorsAreRefused(self):
        self.write("src/util/A.h", '#include "B.h"')
        self.assertRefused("src/util/A.h:1", "does not begin with a floor")

        self.write("src/util/A.h", '#include "../driver/B.h"')
        self.assertRefused("src/util/A.h:1", "does not begin with a floor")

        self.write("src/util/A.h", '#include "platform/../driver/B.h"')
        self.assertRefused("src/util/A.h:1", "climbs out")

    def testAFileOnNoFloorIsRefused(self):
        self.write("src/attic/A.cpp", "")

        self.assertRefused("src/attic/A.cpp:1", "is on no floor")

    def testConditionsAreRefusedOutsideTheFoldersOfSystems(self):
        for line in ("#if defined(__linux__)", "#ifdef __APPLE__", "# ifndef _WIN32",
                     "#elif __APPLE__"):
            with self.subTest(line=line):
                self.write("src/platform/A.cpp", line)

                self.assertRefused("src/platform/A.cpp:1", "conditional compilation")

    def testConditionsAreAcceptedInTheFoldersOfSystems(self):
        for folder in ("files", "posix", "linux", "a-new-one"):
            self.write(f"src/platform/{folder}/A.cpp", "#ifdef __GLIBC__", "#endif")

        self.assertAccepted()

    def testHeadersOfOneSystemStayWithinThePlatform(self):
        self.write("src/platform/A.cpp", '#include "platform/posix/Descriptor.h"')
        self.assertAccepted()

        self.write("src/util/A.cpp", '#include "platform/posix/Descriptor.h"')
        self.assertRefused("src/util/A.cpp:1", "belongs to one system")

    def testPublicHeadersAreOnFloorsToo(self):
        self.write("src/util/A.cpp", '#include "hotfix/util/A.h"', '#include "hotfix/base/B.h"')
        self.write("include/hotfix/util/A.h", '#include "hotfix/base/B.h"', "#include <string>")
        self.assertAccepted()

        self.write("src/util/A.cpp", '#include "hotfix/formats/F.h"')
        self.assertRefused("src/util/A.cpp:1", 'util/ includes "hotfix/formats/F.h"')
        self.write("src/util/A.cpp", "#include <hotfix/formats/F.h>")
        self.assertRefused("src/util/A.cpp:1", 'util/ includes "hotfix/formats/F.h"')
        self.write("src/util/A.cpp")

        self.write("include/hotfix/util/A.h", '#include "hotfix/formats/F.h"')
        self.assertRefused("include/hotfix/util/A.h:1", "from a floor above it")

        self.write("include/hotfix/util/A.h")
        self.write("include/hotfix/A.h")
        self.assertAccepted()

    def testAPublicHeaderBesideTheFloorsStandsOnTheGround(self):
        self.write("src/base/B.cpp")
        self.write("include/hotfix/A.h", '#include "hotfix/base/B.h"')
        self.write("src/util/U.cpp", '#include "hotfix/A.h"')
        self.assertAccepted()

        self.write("include/hotfix/A.h", '#include "hotfix/platform/B.h"')
        self.assertRefused("include/hotfix/A.h:1", "from a floor above it")

    def testAPublicHeaderNamesNothingThatIsPrivate(self):
        self.write("src/util/A.cpp")
        self.write("include/hotfix/util/A.h", '#include "base/B.h"')
        self.assertRefused("include/hotfix/util/A.h:1", "is private")

        for header in ("fmt/format.h", "sys/types.h", "libxml/tree.h", "unistd.h"):
            with self.subTest(header=header):
                self.write("include/hotfix/platform/A.h", f"#include <{header}>")
                self.write("include/hotfix/util/A.h")
                self.assertRefused("include/hotfix/platform/A.h:1", "public header")

    def testHeadersOfTheSystemStayBelowThePlatform(self):
        for header in ("unistd.h", "sys/stat.h", "stdio.h", "filesystem", "fstream",
                       "libxml/tree.h", "utf8proc.h"):
            with self.subTest(header=header):
                self.write("src/util/A.cpp", f"#include <{header}>")
                self.assertRefused("src/util/A.cpp:1", f"<{header}>")

        self.write("src/util/A.cpp", "#include <ranges>", "#include <fmt/format.h>")
        self.write("src/base/A.cpp", "#include <libxml/tree.h>", "#include <utf8proc.h>")
        self.write("src/platform/A.cpp", "#include <unistd.h>", "#include <filesystem>")
        self.assertAccepted()

    def testLibrariesOfTheCompanionProgramStayOnItsFloor(self):
        for header in ("CLI/CLI.hpp", "nlohmann/json.hpp"):
            with self.subTest(header=header):
                self.write("src/driver/A.cpp", f"#include <{header}>")
                self.assertRefused("src/driver/A.cpp:1", f"<{header}>")

        self.write("src/driver/A.cpp")
        self.write("src/ctl/A.cpp", "#include <CLI/CLI.hpp>", "#include <nlohmann/json.hpp>")
        self.assertAccepted()

        self.write("src/ctl/A.cpp", "#include <unistd.h>")
        self.assertRefused("src/ctl/A.cpp:1", "<unistd.h>")

    def testCallsOfTheSystemStayBelowThePlatform(self):
        for line in ("  ::close(file);", "return ::unlink (path);", "if (!::open(a, b)) c();",
                     "x = std::fopen(a, b);", "std::rename(a, b);"):
            with self.subTest(line=line):
                self.write("src/util/A.cpp", line)
                self.assertRefused("src/util/A.cpp:1", "is the system's")

        self.write("src/util/A.cpp", "// not ::close(file)", "a::close(b);", "a<b>::close(c);",
                   "path->files.rename(a, b);", "::testing::close(a);")
        self.write("src/platform/A.cpp", "::close(file);")
        self.assertAccepted()

    def testEveryOffenceIsListed(self):
        self.write("src/util/A.h", '#include "formats/F.h"', '#include "driver/D.h"')
        self.write("src/platform/B.h", '#include "util/U.h"')

        result = self.check()

        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(result.stdout.splitlines()), 3)

    def testAMissingFolderIsAnError(self):
        self.write("include/hotfix/base/B.h")

        result = self.check()

        self.assertEqual(result.returncode, 1)
        self.assertIn("src: no such folder", result.stderr)

    def testThisRepositoryIsCheckedByDefault(self):
        result = subprocess.run([ROOT / "scripts" / "check-layers"], cwd="/", check=False)

        self.assertEqual(result.returncode, 0)


if __name__ == "__main__":
    unittest.main()
