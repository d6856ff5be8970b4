"""The replay of the kept inputs runs the fuzzer on each of them and believes its status."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class ReplayTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        shutil.copytree(ROOT / "fuzz", self._root / "fuzz", ignore=lambda *_: ["corpora"])
        self.make("bin/clang++")
        self.make("bin/cmake")
        self.make("fuzzer")
        self._corpus = self._root / "corpus"
        (self._corpus / "more").mkdir(parents=True)

    def make(self, name, script=""):
        """A program that notes its arguments."""
        path = self._root / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(f'#!/bin/bash\nprintf "%s\\n" "$@" >>{path}.arguments\n{script}\n',
                        encoding="utf-8")
        path.chmod(0o755)

    def argumentsOf(self, name):
        return (self._root / f"{name}.arguments").read_text(encoding="utf-8").splitlines()

    def replay(self, *arguments, path=None):
        path = path or f"{self._root}/bin:{os.environ['PATH']}"
        return subprocess.run([self._root / "fuzz" / "replay", *arguments],
                              env={**os.environ, "PATH": path},
                              capture_output=True, text=True, check=False)

    def testTheFuzzerGetsEachInput(self):
        inputs = [self._corpus / name for name in ("a b", "more/c", "z")]
        for path in inputs:
            path.touch()

        result = self.replay(self._root / "fuzzer", self._corpus)

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn(f"3 inputs of {self._corpus}", result.stdout)
        given = self.argumentsOf("fuzzer")
        self.assertEqual([one for one in given if not one.startswith("-")],
                         [str(path) for path in inputs])

    def testAFuzzerThatFailsFailsTheReplay(self):
        (self._corpus / "a").touch()
        self.make("fuzzer", "echo deadly >&2; exit 70")

        result = self.replay(self._root / "fuzzer", self._corpus)

        self.assertEqual(result.returncode, 1)
        self.assertIn("deadly", result.stderr)

    def testAFuzzerThatLacksSomethingIsSkipped(self):
        (self._corpus / "a").touch()
        self.make("fuzzer", "exit 77")

        self.assertEqual(self.replay(self._root / "fuzzer", self._corpus).returncode, 77)

    def testWithoutInputsNothingIsProved(self):
        for corpus in (self._corpus, self._root / "nowhere"):
            with self.subTest(corpus=corpus):
                result = self.replay(self._root / "fuzzer", corpus)

                self.assertEqual(result.returncode, 1)
                self.assertIn(f"no inputs in {corpus}", result.stderr)

    def testTheFuzzersAreBuiltByTheirPreset(self):
        self.assertEqual(self.replay("--build").returncode, 0)

        self.assertEqual(self.argumentsOf("bin/cmake")[:5],
                         ["--preset", "fuzz", "--build", "--preset", "fuzz"])

    def testWithoutClangNothingIsBuilt(self):
        (self._root / "bin" / "clang++").unlink()
        for tool in ("bash", "dirname"):
            os.symlink(shutil.which(tool), self._root / "bin" / tool)

        result = self.replay("--build", path=str(self._root / "bin"))

        self.assertEqual(result.returncode, 1)
        self.assertIn("clang++ is missing", result.stderr)

    def testWithoutClangTheFuzzersOfAnotherBuildAreReplayed(self):
        (self._root / "bin" / "clang++").unlink()
        (self._corpus / "a").touch()
        for tool in ("bash", "dirname", "find", "sort"):
            os.symlink(shutil.which(tool), self._root / "bin" / tool)

        result = self.replay(self._root / "fuzzer", self._corpus, path=str(self._root / "bin"))

        self.assertEqual((result.returncode, result.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
