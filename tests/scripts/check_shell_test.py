"""The check of the shell scripts finds each of them and passes on what shellcheck says."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

FAULT = 'rm $1'  # unquoted


@unittest.skipUnless(shutil.which("shellcheck"), "shellcheck is missing")
class CheckShellTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self.write("good", "#!/bin/bash", 'rm "$1"')

    def write(self, name, *lines):
        path = self._root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(line + "\n" for line in lines), encoding="utf-8")

    def check(self, **options):
        return subprocess.run([ROOT / "scripts" / "check-shell", self._root],
                              capture_output=True, text=True, check=False, **options)

    def assertAccepted(self):
        result = self.check()
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def assertRefused(self, place):
        result = self.check()
        self.assertEqual((result.returncode, result.stderr), (1, ""))
        self.assertEqual(len(result.stdout.splitlines()), 1, result.stdout)
        self.assertIn(f"{place}: ", result.stdout)

    def testAGoodScriptIsAccepted(self):
        self.assertAccepted()

    def testScriptsAreKnownByTheirFirstLine(self):
        for line in ("#!/bin/bash", "#!/bin/sh", "#!/usr/bin/env bash", "#!/bin/sh -e", "#! /bin/dash"):
            with self.subTest(line=line):
                self.write("a/b", line, FAULT)

                self.assertRefused("a/b:2:4")

    def testSourcedFilesAreKnownByTheirName(self):
        self.write("a/b.sh", "# shellcheck shell=bash", FAULT)

        self.assertRefused("a/b.sh:2:4")

    def testFilesThatShellsSourceAreKnownByTheirName(self):
        self.write("a/b.bash", "# shellcheck shell=bash", FAULT)

        self.assertRefused("a/b.bash:2:4")

    def testOtherFilesAreLeftAlone(self):
        self.write("program.py", "#!/usr/bin/env python3", FAULT)
        self.write("notes", FAULT)
        self.write("english", "#!/bin/english", FAULT)
        (self._root / "binary").write_bytes(bytes(range(256)))
        (self._root / "empty").touch()

        self.assertAccepted()

    def testTheBuildFolderIsLeftAlone(self):
        self.write("build/script", "#!/bin/bash", FAULT)
        self.assertAccepted()

        self.write("a/build/script", "#!/bin/bash", FAULT)
        self.assertRefused("a/build/script:2:4")

    def testInARepositoryIgnoredAndDeletedFilesAreLeftAlone(self):
        for command in (["init", "-q"], ["add", "good"]):
            subprocess.run(["git", "-C", self._root, *command], check=True)
        self.write("sub/new", "#!/bin/bash", FAULT)
        self.assertRefused("sub/new:2:4")

        self.write(".gitignore", "/sub/")
        self.write("other", "#!/bin/bash")
        (self._root / "good").unlink()
        self.assertAccepted()

    def testATreeWithoutScriptsIsAnError(self):
        (self._root / "good").unlink()

        result = self.check()

        self.assertEqual((result.returncode, result.stderr), (1, "no scripts found\n"))

    def testWithoutTheToolTheCheckIsSkipped(self):
        tools = self._root / "tools"
        tools.mkdir()
        for name in ("bash", "dirname"):
            os.symlink(shutil.which(name), tools / name)

        result = self.check(env={"PATH": str(tools)})

        self.assertEqual(result.returncode, 77)
        self.assertIn("shellcheck is missing", result.stderr)


if __name__ == "__main__":
    unittest.main()
