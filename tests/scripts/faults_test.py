"""The sweep of everything takes each point once and ends with what came of all of them."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

SWEEP = """
echo "$@" >>{root}/swept
for word in "$@"; do
  if [[ $word == --part ]]; then echo 'VIOLATION of a part'; exit 1; fi
done
echo 'VIOLATION of all'
exit {status}
"""


class FaultsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name).resolve()
        shutil.copy(ROOT / "test", self._root)
        for name in ("scripts/bootstrap", "bin/cmake"):
            self.make(name)
        self.make("bin/nproc", "echo 3")
        self.make("build/dev/HotfixInstaller")

    def make(self, name, script=""):
        path = self._root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        path.chmod(0o755)

    def sweep(self, status=0):
        """What is said, and the arguments of each sweep."""
        self.make("build/dev/tests/fault-sweep", SWEEP.format(root=self._root, status=status))
        notes = self._root / "swept"
        notes.unlink(missing_ok=True)
        path = f"{self._root}/bin:{os.environ['PATH']}"
        result = subprocess.run([self._root / "test", "faults"], env={**os.environ, "PATH": path},
                                capture_output=True, text=True, check=False)
        return result, [line.split() for line in notes.read_text(encoding="utf-8").splitlines()]

    def testEachProcessorTakesItsPartAndOneTellsOfAll(self):
        result, sweeps = self.sweep()

        state = sweeps[-1][1]
        self.assertEqual(sweeps[-1], ["--resume", state])
        self.assertEqual(sorted(sweeps[:-1]), [["--resume", state, "--part", f"{part}/3"]
                                               for part in (1, 2, 3)])
        self.assertEqual((result.returncode, result.stdout), (0, "VIOLATION of all\n"))

    def testWhatCameOfAllIsTheStatus(self):
        self.assertEqual(self.sweep(status=1)[0].returncode, 1)

    def testNothingOfAnotherSweepIsTold(self):
        _, sweeps = self.sweep()
        (self._root / f"{sweeps[-1][1]}.7").write_text("VIOLATION of before\n", encoding="utf-8")

        result, _ = self.sweep()

        self.assertNotIn("before", result.stdout)

    def testAnotherProgramIsSweptAnew(self):
        _, before = self.sweep()
        self.make("build/dev/HotfixInstaller", "exit 1")

        _, after = self.sweep()

        self.assertNotEqual(before[-1], after[-1])


if __name__ == "__main__":
    unittest.main()
