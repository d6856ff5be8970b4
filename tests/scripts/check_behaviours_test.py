"""The check of the promised behaviours believes nothing that no test has shown."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from fakeprogram import makeProgram

ROOT = Path(__file__).resolve().parents[2]

TESTS = {
    "Suite.Good": ("a.cpp", "passed"),
    "Suite.Bad": ("a.cpp", "failed"),
    "Suite.Left": ("a.cpp", "not run"),
    "Suite.Skipped": ("a.cpp", "skipped"),
    "Inst/Suite.Each/0": ("a.cpp", "passed"),
    "Inst/Suite.Each/1": ("a.cpp", "passed"),
    "Inst/Suite.Some/0": ("a.cpp", "passed"),
    "Inst/Suite.Some/1": ("a.cpp", "failed"),
}


class CheckBehavioursTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self._program = self._root / "program"
        self._document = self._root / "behaviours.md"
        self._results = self._root / "results"
        self._runs = makeProgram(self._program, TESTS)

    def writeRows(self, *rows, heading="| Behaviour | Proved by |"):
        lines = ["# Title", "", "Text.", "", heading, "|---|---|", *rows, "", "More."]
        self._document.write_text("\n".join(lines) + "\n", encoding="utf-8")

    def check(self, *options):
        return subprocess.run(
            [ROOT / "scripts" / "check-behaviours", "--document", self._document, *options,
             self._program],
            capture_output=True, text=True, check=False)

    def assertAccepted(self, *options):
        result = self.check(*options)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def assertRefused(self, *lines, options=()):
        result = self.check(*options)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.stdout.splitlines(),
                         [f"{self._document}:{line}" for line in lines])

    def testThousandsOfTestsThatLeftNoResultAreRunNow(self):
        names = [f"Suite.{'VeryLong' * 6}{number}" for number in range(3000)]
        makeProgram(self._program, {name: ("a.cpp", "passed") for name in names})
        self.writeRows("| many | `Suite.*` |")

        self.assertAccepted()

    def testTestsThatPassProveTheirRows(self):
        self.writeRows("| one | `Suite.Good` |", "| two | `Suite.Each/*`, `Suite.Good` |",
                       "| a \\| b | `Inst/Suite.Each/0` |", "| wide | `Suite.E*/*` |")

        self.assertAccepted()

    def testATestThatDoesNotExistIsRefused(self):
        self.writeRows("| one | `Suite.Good`, `Suite.Gone` |", "| two | `Suite.Each` |",
                       "| three | `Other.Good` |")

        self.assertRefused("7: Suite.Gone: there is no such test",
                           "8: Suite.Each: there is no such test",
                           "9: Other.Good: there is no such test")

    def testATestThatFailedOrDidNotRunIsRefused(self):
        self.writeRows("| one | `Suite.Bad` |", "| two | `Suite.Left` |", "| three | `Suite.Some/*` |")

        self.assertRefused("7: Suite.Bad: failed", "8: Suite.Left: not run",
                           "9: Inst/Suite.Some/1: failed")

    @unittest.skipIf(os.geteuid() != 0, "an ordinary user's skipped tests are forgiven")
    def testASkippedTestIsRefused(self):
        self.writeRows("| one | `Suite.Skipped` |")

        self.assertRefused("7: Suite.Skipped: skipped")

    def testARowWithoutATestIsRefused(self):
        self.writeRows("| one | `Suite.Good` |", "| two | by looking at it |")

        self.assertRefused("8: names no test")

    def testADocumentWithoutSuchATableIsRefused(self):
        self.writeRows("| one | `Suite.Good` |", heading="| Behaviour | Remark |")

        self.assertRefused('1: no table with a column "proved by"')

    def testOtherTablesNameNoTests(self):
        self.writeRows("| one | `Suite.Good` |")
        with self._document.open("a", encoding="utf-8") as document:
            document.write("\n| Key | File |\n|---|---|\n| `a` | `some.file` |\n")

        self.assertAccepted()

    def record(self, name, body, age=0):
        self._results.mkdir(exist_ok=True)
        suite, case = name.split(".", 1)
        report = self._results / f"{name.replace('/', '-')}.xml"
        report.write_text(
            f'<testsuites><testsuite name="{suite}"><testcase name="{case}" {body}</testcase>'
            "</testsuite></testsuites>", encoding="utf-8")
        built = self._program.stat().st_mtime
        os.utime(report, (built - age, built - age))

    def testARecordedResultCountsWithoutARun(self):
        self.writeRows("| one | `Suite.Good` |")
        self.record("Suite.Good", 'status="run" result="completed">')

        self.assertAccepted("--results", self._results)

        self.assertFalse(self._runs.exists())

    def testARecordedFailureCountsWithoutARun(self):
        self.writeRows("| one | `Suite.Good` |")
        self.record("Suite.Good", 'status="run" result="completed"><failure/>')

        self.assertRefused("7: Suite.Good: failed", options=("--results", self._results))

    def testARecordOlderThanTheProgramIsRunAnew(self):
        self.writeRows("| one | `Suite.Good` |")
        self.record("Suite.Good", 'status="run" result="completed"><failure/>', age=10)

        self.assertAccepted("--results", self._results)

        self.assertEqual(self._runs.read_text(), "Suite.Good\n")

    def testOnlyWhatIsNotRecordedIsRun(self):
        self.writeRows("| one | `Suite.Good` `Suite.Each/*` |")
        self.record("Suite.Good", 'status="run" result="completed">')
        (self._results / "torn.xml").write_text("<testsuites>", encoding="utf-8")

        self.assertAccepted("--results", self._results)

        self.assertEqual(self._runs.read_text(), "Inst/Suite.Each/0 Inst/Suite.Each/1\n")

    def testATestOfCtestItselfIsLookedUpInTheBuild(self):
        self.writeRows("| one | `real.SecondRunWaits` |", "| two | `real.Gone`, `Suite.Good` |")
        (self._root / "CTestTestfile.cmake").write_text(
            'add_test(real.SecondRunWaits "/bin/true")\n', encoding="utf-8")

        self.assertRefused("8: real.Gone: there is no such test", options=("--build", self._root))


if __name__ == "__main__":
    unittest.main()
