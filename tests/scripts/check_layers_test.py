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
        self.write("driver/main.cpp", '#include "driver/Installer.h"', '#include "workflow/W.h"',
                   '#include "platform/P.h"', "#include <vector>", "#include <fmt/format.h>")
        self.write("workflow/W.h", "#pragma once", '#include "instance/I.h"')
        self.write("instance/I.h", '#include "formats/F.h"')
        self.write("formats/F.h", '#include "util/U.h"')
        self.write("util/U.h", '#include "platform/P.h"')

        self.assertAccepted()

    def testEachIncludeOfTheNextHigherFloorIsRefused(self):
        floors = ["platform", "util", "formats", "instance", "workflow", "driver"]
        for lower, upper in zip(floors, floors[1:]):
            with self.subTest(lower=lower):
                self.write(f"{lower}/A.cpp", "// a", f'#include "{upper}/B.h"')

                self.assertRefused(f"{lower}/A.cpp:2", f'{lower}/ includes "{upper}/B.h"')

                (self._root / lower / "A.cpp").unlink()

    def testIncludesThatTryToHideAreRefused(self):
        for line in ('  #  include   "driver/B.h"', "#include <driver/B.h>",
                     '#import "driver/B.h"'):
            with self.subTest(line=line):
                self.write("util/A.h", line)

                self.assertRefused("util/A.h:1", "from a floor above it")

    def testIncludesBesideOrAroundTheFloorsAreRefused(self):
        self.write("util/A.h", '#include "B.h"')
        self.assertRefused("util/A.h:1", "does not begin with a floor")

        self.write("util/A.h", '#include "../driver/B.h"')
        self.assertRefused("util/A.h:1", "does not begin with a floor")

        self.write("util/A.h", '#include "platform/../driver/B.h"')
        self.assertRefused("util/A.h:1", "climbs out")

    def testAFileOnNoFloorIsRefused(self):
        self.write("attic/A.cpp", "")

        self.assertRefused("attic/A.cpp:1", "is on no floor")

    def testConditionsAreRefusedOutsideTheFoldersOfSystems(self):
        for line in ("#if defined(__linux__)", "#ifdef __APPLE__", "# ifndef _WIN32",
                     "#elif __APPLE__"):
            with self.subTest(line=line):
                self.write("platform/A.cpp", line)

                self.assertRefused("platform/A.cpp:1", "conditional compilation")

    def testConditionsAreAcceptedInTheFoldersOfSystems(self):
        for folder in ("posix", "linux", "macos"):
            self.write(f"platform/{folder}/A.cpp", "#ifdef __GLIBC__", "#endif")

        self.assertAccepted()

    def testHeadersOfOneSystemStayWithinThePlatform(self):
        self.write("platform/A.cpp", '#include "platform/posix/Descriptor.h"')
        self.assertAccepted()

        self.write("util/A.cpp", '#include "platform/posix/Descriptor.h"')
        self.assertRefused("util/A.cpp:1", "belongs to one system")

    def testEveryOffenceIsListed(self):
        self.write("util/A.h", '#include "formats/F.h"', '#include "driver/D.h"')
        self.write("platform/B.h", '#include "util/U.h"')

        result = self.check()

        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(result.stdout.splitlines()), 3)

    def testAMissingFolderIsAnError(self):
        self._root /= "nowhere"

        result = self.check()

        self.assertEqual(result.returncode, 1)
        self.assertIn("no such folder", result.stderr)

    def testThisRepositoryIsCheckedByDefault(self):
        result = subprocess.run([ROOT / "scripts" / "check-layers"], cwd="/", check=False)

        self.assertEqual(result.returncode, 0)


if __name__ == "__main__":
    unittest.main()
