"""The search for new inputs runs each fuzzer for its time and tells what came of it."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

STATISTICS = """
echo 'stat::number_of_executed_units: 1234' >&2
echo 'stat::average_exec_per_sec:     56' >&2
"""


class FuzzRunTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        (self._root / "fuzz").mkdir()
        for name in ("run", "options.sh"):
            shutil.copy(ROOT / "fuzz" / name, self._root / "fuzz" / name)

    def make(self, name, script=STATISTICS):
        """A fuzzer with a source and a corpus, which notes its arguments."""
        (self._root / "fuzz" / f"{name}.cpp").touch()
        (self._root / "fuzz" / "corpora" / name).mkdir(parents=True)
        path = self._root / "build" / "fuzz" / "fuzzers" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f'#!/bin/bash\nprintf "%s\\n" "$@" >{path}.arguments\n{script}\n',
                        encoding="utf-8")
        path.chmod(0o755)

    def argumentsOf(self, name):
        path = self._root / "build" / "fuzz" / "fuzzers" / f"{name}.arguments"
        return path.read_text(encoding="utf-8").splitlines() if path.exists() else None

    def run_(self, *arguments):
        return subprocess.run([self._root / "fuzz" / "run", *arguments], env=os.environ,
                              capture_output=True, text=True, check=False)

    def rows(self, result):
        return [line.split() for line in result.stdout.splitlines() if "Fuzzer " in line]

    def testEachFuzzerRunsAMinuteOnItsCorpus(self):
        self.make("AFuzzer")
        self.make("BFuzzer")

        result = self.run_()

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        for name in ("AFuzzer", "BFuzzer"):
            arguments = self.argumentsOf(name)
            self.assertIn("-max_total_time=60", arguments)
            self.assertEqual(arguments[-2:], [f"build/found/{name}/corpus", f"fuzz/corpora/{name}"])
        self.assertEqual(self.rows(result), [["AFuzzer", "1234", "56", "0"],
                                             ["BFuzzer", "1234", "56", "0"]])

    def testSecondsAndFuzzersAreTheCallers(self):
        self.make("AFuzzer")
        self.make("BFuzzer")

        result = self.run_("7", "BFuzzer")

        self.assertEqual(result.returncode, 0)
        self.assertIsNone(self.argumentsOf("AFuzzer"))
        self.assertIn("-max_total_time=7", self.argumentsOf("BFuzzer"))

    def testADictionaryIsUsed(self):
        self.make("AFuzzer")
        (self._root / "fuzz" / "dictionaries").mkdir()
        (self._root / "fuzz" / "dictionaries" / "AFuzzer").touch()

        self.run_()

        self.assertIn("-dict=fuzz/dictionaries/AFuzzer", self.argumentsOf("AFuzzer"))

    def testWhatIsFoundFailsAndDoesNotStopTheOthers(self):
        self.make("AFuzzer", "echo deadly >&2; exit 70")
        self.make("BFuzzer")

        result = self.run_()

        self.assertEqual(result.returncode, 1)
        self.assertIn("deadly", result.stderr)
        self.assertEqual(self.rows(result), [["AFuzzer", "-", "-", "1"],
                                             ["BFuzzer", "1234", "56", "0"]])

    def testAFuzzerThatLacksSomethingIsSkipped(self):
        self.make("AFuzzer", "exit 77")

        result = self.run_()

        self.assertEqual(result.returncode, 0)
        self.assertEqual(self.rows(result), [["AFuzzer", "-", "-", "skipped"]])


if __name__ == "__main__":
    unittest.main()
