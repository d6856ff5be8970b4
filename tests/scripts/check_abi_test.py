"""The check of the shared library's interface tells what breaks a linked program, and only that."""

import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
RELEASED = """
namespace installer {
struct Form { int size; };
int open(const Form& form) { return form.size; }
int close(int) { return 0; }
}
"""


@unittest.skipUnless(shutil.which("abidw"), "needs abidw")
class CheckAbiTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._folder = Path(folder.name)
        self._baseline = self._folder / "baseline.xml"
        self.assertEqual(self.check(RELEASED, "--update").returncode, 0)

    def check(self, code, *options, flags=("-g",)):
        source, library = self._folder / "code.cpp", self._folder / "libcode.so"
        source.write_text(code, encoding="utf-8")
        subprocess.run(["g++", "-shared", "-fPIC", *flags, source, "-o", library], check=True)
        return subprocess.run(
            [ROOT / "scripts" / "check-abi", *options, library, self._baseline],
            capture_output=True, text=True, check=False)

    def assertRefused(self, result, *words):
        self.assertNotIn(result.returncode, (0, 77), result)
        for word in words:
            self.assertIn(word, result.stdout)

    def testTheSameLibraryPasses(self):
        self.assertEqual(self.check(RELEASED).returncode, 0)

    def testWhatIsNewPasses(self):
        result = self.check(RELEASED + "namespace installer { int more() { return 1; } }")

        self.assertEqual(result.returncode, 0, result)

    def testAMissingFunctionIsRefused(self):
        self.assertRefused(self.check(RELEASED.replace("int close(int) { return 0; }", "")), "close")

    def testAnotherParameterIsRefused(self):
        self.assertRefused(self.check(RELEASED.replace("close(int)", "close(long)")), "close")

    def testAnotherAnswerIsRefused(self):
        self.assertRefused(self.check(RELEASED.replace("int close", "long close")), "close")

    def testAClassThatHasGrownIsRefused(self):
        self.assertRefused(self.check(RELEASED.replace("int size;", "int size; int more;")), "Form")

    def testWithoutDebugInformationNothingIsSaid(self):
        self.assertEqual(self.check(RELEASED, flags=()).returncode, 77)

    def testTheDescriptionKnowsNoPathOfThisMachine(self):
        self.assertNotIn(str(self._folder), self._baseline.read_text(encoding="utf-8"))

    def testTheReleasedDescriptionHoldsTheInterface(self):
        released = (ROOT / "packaging/abi/libhotfix.abi.xml").read_text(encoding="utf-8")

        self.assertIn("name='InstanceService' size-in-bits=", released)
        self.assertIn("_ZN9installer12runInstaller", released)


if __name__ == "__main__":
    unittest.main()
