"""The check of the list of exported symbols tells what is missing from it, and what is gone."""

import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
VERSION = re.search(r'kVersion = "(.+)"', (ROOT / "include/hotfix/Version.h").read_text(encoding="utf-8"))[1]
LISTED = "libcode.so.1 libcode1 #MINVER#\n close@Base 0.1\n open@Base 0.1\n"


@unittest.skipUnless(shutil.which("dpkg-gensymbols"), "needs dpkg-gensymbols")
class CheckSymbolsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._folder = Path(folder.name)
        self._list = self._folder / "list"
        self._list.write_text(LISTED, encoding="utf-8")

    def check(self, functions, *options):
        source, library = self._folder / "code.c", self._folder / "libcode.so"
        source.write_text("".join(f"int {name}(void) {{ return 0; }}\n" for name in functions),
                          encoding="utf-8")
        subprocess.run(["gcc", "-shared", "-fPIC", "-Wl,-soname,libcode.so.1", source, "-o", library],
                       check=True)
        return subprocess.run([ROOT / "scripts" / "check-symbols", *options, library, self._list],
                              capture_output=True, text=True, check=False)

    def assertRefused(self, result, line):
        self.assertEqual(result.returncode, 1, result)
        self.assertRegex(result.stderr, re.compile("^" + re.escape(line), re.MULTILINE))
        self.assertEqual(self._list.read_text(encoding="utf-8"), LISTED)

    def testWhatIsListedPasses(self):
        result = self.check(["open", "close"])

        self.assertEqual((result.returncode, result.stdout + result.stderr), (0, ""))

    def testAnExportThatIsNotListedIsRefused(self):
        self.assertRefused(self.check(["open", "close", "more"]), f"+ more@Base {VERSION}")

    def testAListedOneThatIsGoneIsRefused(self):
        self.assertRefused(self.check(["open"]), "- close@Base 0.1")

    def testAnUpdateKeepsVersionsAndTakesOverTheRest(self):
        result = self.check(["open", "more"], "--update")

        self.assertEqual(result.returncode, 0, result)
        self.assertEqual(self._list.read_text(encoding="utf-8"),
                         f"libcode.so.1 libcode1 #MINVER#\n more@Base {VERSION}\n open@Base 0.1\n")

    def testTheListOfTheReleaseNamesThisLibrary(self):
        listed = (ROOT / "packaging/release/libhotfix1.symbols").read_text(encoding="utf-8")

        self.assertTrue(listed.startswith("libhotfix.so.1 libhotfix1 #MINVER#\n _ZN9installer"))


if __name__ == "__main__":
    unittest.main()
