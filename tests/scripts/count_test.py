"""The comparison of system calls fails for a kind that is made too often, and for nothing less."""

import json
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COUNT = ROOT / "tests" / "calls" / "count"


class CountTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._counter = Path(folder.name) / "call-count"
        self._record = Path(folder.name) / "record.json"
        self.record({"install": {"total": 106, "fsync": 6, "openat": 100}})

    def record(self, runs):
        self._record.write_text(json.dumps({
            "groups": {"durability": {"for": "flushes", "kinds": ["fsync"]},
                       "opening": {"for": "files", "kinds": ["openat", "close"]}},
            "taken": {"kernel": "Linux 6.6", "library": "glibc 2.36"},
            "runs": runs}), encoding="utf-8")

    def count(self, *options, counts=(), status=0, run="install", taken="Linux 6.6\\tglibc 2.36"):
        lines = f"{taken}\\n" + "".join(f"{run}\\t{kind}\\t{number}\\n" for kind, number in counts)
        self._counter.write_text(f"#!/bin/sh\nprintf '{lines}'\nexit {status}\n", encoding="utf-8")
        self._counter.chmod(0o755)
        return subprocess.run([COUNT, "--counter", self._counter, "--record", self._record, *options],
                              capture_output=True, text=True, check=False)

    def testTheSameAndFewerPass(self):
        for number in (100, 50):
            result = self.count(counts=[("openat", number), ("fsync", 6)])

            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertIn(f"install: {number + 6} calls", result.stdout)

    def testTwoInAHundredMorePassAndThreeFail(self):
        self.assertEqual(self.count(counts=[("openat", 102)]).returncode, 0)

        result = self.count(counts=[("openat", 103)])

        self.assertEqual(result.returncode, 1)
        self.assertIn("install: openat 103 times, recorded are 100 (opening)", result.stdout)

    def testOneMoreOfFewFails(self):
        self.assertEqual(self.count(counts=[("fsync", 7)]).returncode, 1)

    def testAKindThatWasNeverMadeFails(self):
        self.assertEqual(self.count(counts=[("close", 1)]).returncode, 1)

    def testAKindThatNobodyExplainsFails(self):
        for option in ([], ["--update"]):
            result = self.count(*option, counts=[("ptrace", 1)])

            self.assertEqual(result.returncode, 1)
            self.assertIn("ptrace: no group in record.json says what it is for", result.stdout)

    def testARunThatIsMissingFails(self):
        self.assertEqual(self.count(counts=[("openat", 1)], run="upgrade").returncode, 1)
        self.assertNotEqual(self.count().returncode, 0)

    def testTheCountersStatusIsBelieved(self):
        for status in (2, 77):
            result = self.count(counts=[("openat", 1)], status=status)

            self.assertEqual(result.returncode, status)

    def testAnotherKernelIsCompared(self):
        for number, status in ((100, 0), (103, 1)):
            result = self.count(counts=[("openat", number)], taken="Linux 7.0\\tglibc 2.36")

            self.assertEqual(result.returncode, status)

    def testAnotherLibraryIsSkipped(self):
        result = self.count(counts=[("openat", 103)], taken="Linux 6.6\\tglibc 2.41")

        self.assertEqual(result.returncode, 77)
        self.assertIn("skipped: glibc 2.41 is no glibc 2.36", result.stdout)

    def testAnUpdateKeepsTheWordsAndTakesTheCounts(self):
        taken = "Linux 6.12\\tglibc 2.41"
        result = self.count("--update", counts=[("openat", 120), ("close", 3)], taken=taken)

        self.assertEqual(result.returncode, 0)
        record = json.loads(self._record.read_text(encoding="utf-8"))
        self.assertEqual(record["runs"], {"install": {"total": 123, "close": 3, "openat": 120}})
        self.assertEqual(record["taken"], {"kernel": "Linux 6.12", "library": "glibc 2.41"})
        self.assertEqual(record["groups"]["opening"]["for"], "files")
        again = self.count(counts=[("openat", 120), ("close", 3)], taken=taken)
        self.assertEqual(again.returncode, 0)

    def testTheRecordOfTheHouseKnowsFourRuns(self):
        record = json.loads((ROOT / "tests/calls/record.json").read_text(encoding="utf-8"))

        self.assertEqual(set(record["runs"]),
                         {"install", "upgrade", "refusal", "wrong-attributes"})
        self.assertEqual(set(record["taken"]), {"kernel", "library"})
        for counts in record["runs"].values():
            kinds = {kind: number for kind, number in counts.items() if kind != "total"}
            self.assertEqual(counts["total"], sum(kinds.values()))
            self.assertGreater(counts["openat"], 10)


if __name__ == "__main__":
    unittest.main()
