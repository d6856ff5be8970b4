"""Of a range of commits the first that does not build or whose tests fail is named."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class BuildCommitsTest(unittest.TestCase):
    """The tools are scripts: cmake fails where there is a file "broken", ctest where there is one
    "wrong". Both note the tree that they see."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name) / "repository"
        (self._root / "scripts").mkdir(parents=True)
        shutil.copy(ROOT / "scripts" / "build-commits", self._root / "scripts")
        self._tools = Path(folder.name) / "tools"
        self._tools.mkdir()
        self.makeTool("cmake", "broken")
        self.makeTool("ctest", "wrong")
        self.git("init", "-q", "-b", "main")
        self._base = self.commit("base", ".gitignore", "/build/\n")

    def makeTool(self, name, obstacle):
        notes = self._tools.parent / "notes"
        tool = self._tools / name
        tool.write_text(f'#!/bin/bash\necho "{name} $*"\n'
                        f'echo "{name} $1 $(cat file)" >>{notes}\n[[ ! -e {obstacle} ]]\n',
                        encoding="utf-8")
        tool.chmod(0o755)

    def git(self, *arguments):
        return subprocess.run(["git", "-c", "user.name=N", "-c", "user.email=n@example.com",
                               "-C", self._root, *arguments],
                              check=True, capture_output=True, text=True).stdout.strip()

    def commit(self, subject, name, text):
        (self._root / name).write_text(text, encoding="utf-8")
        self.git("add", ".")
        self.git("commit", "-q", "-m", subject)
        return self.git("rev-parse", "--short", "HEAD")

    def build(self, *arguments):
        path = f"{self._tools}:{os.environ['PATH']}"
        return subprocess.run([self._root / "scripts" / "build-commits", *arguments],
                              env={**os.environ, "PATH": path}, cwd="/",
                              capture_output=True, text=True, check=False)

    def notes(self):
        return (self._tools.parent / "notes").read_text(encoding="utf-8").splitlines()

    def testEachCommitIsConfiguredBuiltAndTestedOldestFirst(self):
        first = self.commit("one", "file", "1")
        second = self.commit("two", "file", "2")

        result = self.build(f"{self._base}..")

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(result.stdout,
                         f"good, 1 of 2: {first} one\ngood, 2 of 2: {second} two\n")
        self.assertEqual(self.notes(),
                         [f"{tool} {content}" for content in "12"
                          for tool in ("cmake --preset", "cmake --build", "ctest --test-dir")])

    def testTheFirstCommitThatDoesNotBuildIsNamedAndTheLast(self):
        first = self.commit("one", "file", "1")
        second = self.commit("two", "broken", "")
        self.commit("three", "file", "3")

        result = self.build(f"{self._base}..")

        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, f"good, 1 of 3: {first} one\n")
        self.assertEqual(result.stderr, f"cmake --preset dev\nfails, 2 of 3: {second} two\n")

    def testACommitWhoseTestsFailIsNamed(self):
        first = self.commit("one", "wrong", "")

        result = self.build(f"{self._base}..")

        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn(f"fails, 1 of 1: {first} one\n", result.stderr)
        self.assertIn("ctest --test-dir build/dev", result.stderr)

    def testTheCallersTreeStaysAsItIs(self):
        self.commit("one", "file", "1")
        (self._root / "file").write_text("changed", encoding="utf-8")
        head = self.git("rev-parse", "HEAD")

        self.assertEqual(self.build("HEAD~1..HEAD").returncode, 0)

        self.assertEqual((self._root / "file").read_text(encoding="utf-8"), "changed")
        self.assertEqual(self.git("rev-parse", "HEAD"), head)
        self.assertEqual(self.git("status", "--short"), "M file")

    def testTheTreeOfTheLastCallIsUsedAgain(self):
        self.commit("one", "file", "1")
        self.build("HEAD~1..")
        kept = self._root / "build" / "commits" / "build" / "object"
        kept.parent.mkdir()
        kept.touch()
        self.commit("two", "file", "2")

        self.assertEqual(self.build("HEAD~1..").returncode, 0)

        self.assertTrue(kept.exists())
        self.assertEqual(self.notes()[-1], "ctest --test-dir 2")

    def testATreeThatWasDeletedByHandIsMadeAnew(self):
        self.commit("one", "file", "1")
        self.build("HEAD~1..")
        shutil.rmtree(self._root / "build")

        self.assertEqual(self.build("HEAD~1..").returncode, 0)

    def testARangeWithoutCommitsIsAnError(self):
        result = self.build("HEAD..HEAD")

        self.assertEqual(result.returncode, 2)
        self.assertIn("no commits in HEAD..HEAD", result.stderr)
        self.assertNotEqual(self.build("nowhere..").returncode, 0)
        self.assertEqual(self.build().returncode, 2)
        self.assertEqual(self.build("--help").returncode, 2)


if __name__ == "__main__":
    unittest.main()
