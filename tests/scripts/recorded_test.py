"""A test that is none of GoogleTest's leaves a result that the checks understand."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from testprograms import Result, resultsIn


class RecordedTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._results = Path(folder.name) / "results"

    def ended(self, script, identifiers=""):
        return subprocess.run(
            [ROOT / "tests" / "recorded", self._results / "real" / "Waits.xml", "real", "Waits",
             identifiers, "sh", "-c", script, "name", "an argument"],
            capture_output=True, text=True, check=False)

    def assertLeft(self, outcome, *identifiers):
        self.assertEqual(list(resultsIn(self._results, 0)),
                         [Result("real.Waits", outcome, list(identifiers))])

    def testASuccessIsRecordedWithWhatItProves(self):
        result = self.ended("exit 0", "LOCK-1 LOCK-2")

        self.assertEqual(result.returncode, 0)
        self.assertLeft("passed", "LOCK-1", "LOCK-2")

    def testATestMayProveNothing(self):
        self.ended("exit 0")

        self.assertLeft("passed")

    def testAFailureIsRecordedAndItsStatusAnswered(self):
        result = self.ended("exit 3", "LOCK-1")

        self.assertEqual(result.returncode, 3)
        self.assertLeft("failed", "LOCK-1")

    def testASkippedTestIsRecordedAndItsStatusAnswered(self):
        result = self.ended("exit 77", "LOCK-1")

        self.assertEqual(result.returncode, 77)
        self.assertLeft("skipped", "LOCK-1")

    def testACommandThatIsKilledHasFailed(self):
        result = self.ended("kill -9 $$", "LOCK-1")

        self.assertEqual(result.returncode, 128 + 9)
        self.assertLeft("failed", "LOCK-1")

    def testTheCommandGetsItsArgumentsAndIsHeard(self):
        result = self.ended('echo "$#: $1"; echo complaint >&2')

        self.assertEqual((result.stdout, result.stderr), ("1: an argument\n", "complaint\n"))

    def testTheResultOfAnEarlierRunIsGoneMeanwhile(self):
        self.ended("exit 0")

        result = self.ended(f'test ! -e "{self._results}/real/Waits.xml"')

        self.assertEqual(result.returncode, 0)


if __name__ == "__main__":
    unittest.main()
