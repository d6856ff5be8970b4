"""The check of the test files finds those that the build forgot."""

import platform
import subprocess
import tempfile
import unittest
from pathlib import Path

from fakeprogram import makeProgram

ROOT = Path(__file__).resolve().parents[2]
OTHER_SYSTEM = "linux" if platform.system() == "Darwin" else "macos"


class CheckTestFilesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self._tests = self._root / "tests"
        (self._tests / "unit").mkdir(parents=True)

    def write(self, name, text):
        path = self._tests / name
        path.write_text(text, encoding="utf-8")
        return str(path)

    def check(self, *programs):
        names = []
        for number, tests in enumerate(programs, 1):
            names.append(self._root / f"program{number}")
            makeProgram(names[-1], tests)
        return subprocess.run(
            [ROOT / "scripts" / "check-test-files", "--tests", self._tests, *names],
            capture_output=True, text=True, check=False)

    def testFilesWithATestInAProgramAreAccepted(self):
        first = self.write("unit/ATest.cpp", "TEST(A, B) {}\n")
        second = self.write("unit/Grammar.cpp", "TEST_P(G, H) {}\n")
        self.write("unit/helper.cpp", "int helper();\n")

        result = self.check({"A.B": (first, "passed"), "I/G.H/0": (second, "passed")})

        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def testAFileThatNoProgramHoldsIsRefused(self):
        known = self.write("unit/ATest.cpp", "TEST(A, B) {}\n")
        for name, text in (("unit/BTest.cpp", ""), ("unit/B.cpp", "TEST_F(B, C) {}\n"),
                           ("unit/C.cpp", "  TYPED_TEST(B, C) {}\n")):
            with self.subTest(name=name):
                lost = self.write(name, text)

                result = self.check({"A.B": (known, "passed")})

                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stdout, f"{lost}: none of its tests is in a test program\n")
                Path(lost).unlink()

    def testFilesForAnotherSystemAreLeftOut(self):
        known = self.write("unit/ATest.cpp", "TEST(A, B) {}\n")
        for folder, status in ((OTHER_SYSTEM, 0), ("elsewhere", 1)):
            (self._tests / "unit" / "platform" / folder).mkdir(parents=True)
            other = self.write(f"unit/platform/{folder}/BTest.cpp", "TEST(B, C) {}\n")

            self.assertEqual(self.check({"A.B": (known, "passed")}).returncode, status, folder)
            Path(other).unlink()

    def testADisabledTestIsRefused(self):
        for name in ("A.DISABLED_B", "DISABLED_A.B", "I/DISABLED_A.B/0", "I/A.DISABLED_B/0"):
            with self.subTest(name=name):
                known = self.write("unit/ATest.cpp", "TEST(A, B) {}\n")

                result = self.check({name: (known, "passed")})

                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stdout, f"{known}: {name} is disabled\n")

    def testASuiteInTwoProgramsIsRefused(self):
        first = self.write("unit/ATest.cpp", "TEST(A, B) {}\n")
        second = self.write("unit/BTest.cpp", "TEST(A, C) {}\n")
        for name in ("A.C", "I/A.C/0"):
            with self.subTest(name=name):
                result = self.check({"A.B": (first, "passed")}, {name: (second, "passed")})

                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stdout,
                                 f"{second}: program2 has a suite A as program1 has\n")

    def testSuitesThatShareAPartOfTheirNamesAreAccepted(self):
        first = self.write("unit/ATest.cpp", "TEST(A, B) {}\n")
        second = self.write("unit/BTest.cpp", "TEST(AB, B) {}\n")

        result = self.check({"A.B": (first, "passed"), "A.C": (first, "passed")},
                            {"AB.B": (second, "passed"), "A/AB.C/0": (second, "passed")})

        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def testAProgramThatCannotListIsAnError(self):
        result = subprocess.run(
            [ROOT / "scripts" / "check-test-files", "--tests", self._tests, "/bin/false"],
            capture_output=True, text=True, check=False)

        self.assertEqual(result.returncode, 1)
        self.assertIn("/bin/false: cannot list its tests", result.stderr)


if __name__ == "__main__":
    unittest.main()
