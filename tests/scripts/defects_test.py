"""Each change that takes a defence out of the installer still finds what it changes."""

import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPT = "tests/faults/defects"
DEFECTS = ["flush", "rename", "no-follow", "beneath", "lock-order", "reason-lines"]


def changed():
    """What the script changes: the sources of its patterns, and words that each of them needs."""
    return [("src/platform/files/FileChanges.cpp", "flushFile(file)", "flush"),
            ("src/platform/files/FileReplacement.cpp", "error = fill(", "rename"),
            ("src/platform/files/Opening.cpp", "O_DIRECTORY | O_NOFOLLOW", "no-follow"),
            ("src/platform/files/Opening.cpp", "openSeen(folder, name, O_NOFOLLOW)", "no-follow"),
            ("src/platform/files/Opening.cpp", "AT_SYMLINK_NOFOLLOW, O_NOFOLLOW", "no-follow"),
            ("src/platform/linux/FileSystemCalls.cpp", "how.resolve = ", "beneath"),
            ("src/driver/Installer.cpp", "lock = lockInstances();", "lock-order"),
            ("src/driver/Installer.cpp", "checked = rcpHomePassingChecks();", "lock-order"),
            ("src/platform/Reported.cpp", "logOnce(LogLevel::error,", "reason-lines")]


class DefectsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        (self._root / SCRIPT).parent.mkdir(parents=True)
        shutil.copy(ROOT / SCRIPT, self._root / SCRIPT)
        shutil.copytree(ROOT / "src", self._root / "src")

    def check(self, *names):
        return subprocess.run([self._root / SCRIPT, "--check", *names],
                              capture_output=True, text=True, check=False)

    def testEveryDefectCanBeMade(self):
        for names in ([], DEFECTS, ["none"]):
            result = self.check(*names)

            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def testTheSourcesStayAsTheyAre(self):
        before = {path: path.read_bytes() for path in (self._root / "src").rglob("*.cpp")}

        self.check()

        self.assertEqual({path: path.read_bytes() for path in before}, before)

    def testWhatIsNotThereAnyMoreIsToldWithItsDefect(self):
        for name, words, defect in changed():
            with self.subTest(words=words):
                path = self._root / name
                source = path.read_text(encoding="utf-8")
                self.assertIn(words, source)
                path.write_text(source.replace(words, "gone("), encoding="utf-8")

                result = self.check()

                path.write_text(source, encoding="utf-8")
                self.assertEqual(result.returncode, 2)
                self.assertIn(f"{defect}: {name} has nothing like ", result.stderr)

    def testEachChangeIsLookedAt(self):
        script = (ROOT / SCRIPT).read_text(encoding="utf-8")

        self.assertEqual(len(re.findall(r"\breplace [$s]", script)), len(changed()))

    def testADefectThatNobodyKnowsIsAnError(self):
        result = self.check("other")

        self.assertEqual((result.returncode, result.stderr), (2, "no such defect: other\n"))


if __name__ == "__main__":
    unittest.main()
