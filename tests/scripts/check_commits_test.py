"""The check of commit messages refuses what does not belong into the history."""

import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "scripts" / "check-commits"

GOOD = "formats: Keep an unreadable property list untouched\n\nIt is worth more than our entry.\n"


class CheckCommitsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name) / "repository"
        self._root.mkdir()
        self.git("init", "-q", "-b", "main")

    def git(self, *arguments, **options):
        return subprocess.run(["git", "-c", "user.name=N", "-c", "user.email=n@example.com",
                               "-C", self._root, *arguments],
                              check=True, capture_output=True, text=True, **options).stdout.strip()

    def commit(self, message):
        self.git("commit", "-q", "--allow-empty", "--cleanup=verbatim", "-F", "-", input=message)
        return self.git("rev-parse", "--short", "HEAD")

    def check(self, *arguments, script=SCRIPT, folder=None):
        return subprocess.run([script, *arguments], cwd=folder or self._root,
                              capture_output=True, text=True, check=False)

    def assertAccepted(self, message):
        self.commit(message)
        result = self.check("HEAD")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def assertRefused(self, message, *reasons):
        commit = self.commit(message)
        result = self.check("-1")
        self.assertEqual((result.returncode, result.stderr), (1, ""))
        subject = message.split("\n")[0]
        self.assertEqual(result.stdout.splitlines(),
                         [f"{commit}: {reason}: {subject}" for reason in reasons])

    def testGoodMessagesAreAccepted(self):
        for subject in ("formats: Keep it", "sample/equinox: Take the same options", "docs: Feed it",
                        "tests: Read, compare", "platform: Process it", "util: Let WIPE wipe",
                        "build: Use C++20 (again)", "a" * 59 + ": Fill line"):
            with self.subTest(subject=subject):
                self.assertAccepted(f"{subject}\n\nWhy.\n")

    def testSubjectsWithoutAreaOrSentenceAreRefused(self):
        form = 'the subject is not of the form "area: Imperative sentence"'
        for subject in ("Keep it", "formats Keep it", "formats: keep it", "Formats: Keep it",
                        "formats:Keep it", "formats: ", 'Revert "formats: Keep it"'):
            with self.subTest(subject=subject):
                self.assertRefused(f"{subject}\n\nWhy.\n", form)

    def testOtherMoodsAreRefused(self):
        for word in ("Keeps", "Added", "Adding", "Fixes", "Copied", "Storing", "Tries"):
            with self.subTest(word=word):
                self.assertRefused(f"formats: {word} it\n\nWhy.\n", f'"{word}" is no imperative')

    def testLongSubjectsAreRefused(self):
        self.assertRefused("formats: " + "X" * 64 + "\n\nWhy.\n",
                           "the subject has 73 columns, more than 72")
        self.assertRefused("formats: Keep " + "修" * 30 + "\n\nWhy.\n",
                           "the subject has 74 columns, more than 72")

    def testAFullStopIsRefused(self):
        self.assertRefused("formats: Keep it.\n\nWhy.\n", "the subject ends with a full stop")

    def testCommitsToBeMeltedAreRefused(self):
        reason = "is to be melted into another commit"
        form = 'the subject is not of the form "area: Imperative sentence"'
        for subject, *more in (("fixup! formats: Keep it", form), ("squash! formats: Keep it", form),
                               ("amend! formats: Keep it", form), ("formats: WIP, keep it",),
                               ("formats: Fix-up of the list",), ("formats: Fixup for it",)):
            with self.subTest(subject=subject):
                self.assertRefused(f"{subject}\n\nWhy.\n", reason, *more)

    def testAMissingBodyIsRefused(self):
        for rest in ("", "\n\n", "\n\n \n", "\n\nSigned-off-by: N <n@example.com>\n",
                     "\n\n(cherry picked from commit 1234)\n"):
            with self.subTest(rest=rest):
                self.assertRefused("formats: Keep it" + rest, "no body that says why")

    def testABodyWithoutABlankLineBeforeItIsRefused(self):
        self.assertRefused("formats: Keep it\nWhy.\n", "no blank line behind the subject")

    def testEveryCommitOfTheRangeIsLookedAtOldestFirst(self):
        base = self.commit("older")
        first, last = self.commit("first"), self.commit("last\n\nWhy.\n")

        result = self.check(f"{base}..HEAD")

        names = [line.split(":")[0] for line in result.stdout.splitlines()]
        self.assertEqual(names, [first, first, last])
        self.assertEqual(self.check(f"{last}..HEAD").returncode, 0)

    def testMergesAreNotLookedAt(self):
        self.commit(GOOD)
        self.git("switch", "-q", "-c", "side")
        self.commit(GOOD)
        self.git("switch", "-q", "main")
        self.git("merge", "-q", "--no-ff", "-m", "Merge it", "side")

        self.assertEqual(self.check("HEAD").returncode, 0)

    def fromHere(self, base):
        """The script with another commit to begin from."""
        text = SCRIPT.read_text(encoding="utf-8")
        known = next(line for line in text.splitlines() if line.startswith("BASE = "))
        script = self._root.parent / "check-commits"
        script.write_text(text.replace(known, f'BASE = "{base}"'), encoding="utf-8")
        script.chmod(0o755)
        return script

    def testWhatIsOlderThanTheNamedCommitIsLeftAlone(self):
        self.commit("older")
        self.commit("named")
        script = self.fromHere(self.git("rev-parse", "HEAD"))
        self.commit(GOOD)

        result = self.check(script=script)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

        self.commit("newer\n\nWhy.\n")
        self.assertEqual(self.check(script=script).returncode, 1)

    def testInAShallowCloneWhatIsThereIsLookedAt(self):
        self.commit("named")
        base = self.git("rev-parse", "HEAD")
        self.commit(GOOD)
        self.commit(GOOD)
        shallow = self._root.parent / "shallow"
        subprocess.run(["git", "clone", "-q", "--depth", "2", f"file://{self._root}", shallow],
                       check=True)

        result = self.check(script=self.fromHere(base), folder=shallow)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(result.stdout, f"{base} is not there: looking at the commits that are\n")

        self.commit("newer\n\nWhy.\n")
        subprocess.run(["git", "-C", shallow, "pull", "-q"], check=True)
        self.assertEqual(self.check(script=self.fromHere(base), folder=shallow).returncode, 1)

    def testOutsideOfARepositoryTheCheckIsSkipped(self):
        result = self.check(folder=self._root.parent)

        self.assertEqual((result.returncode, result.stdout), (77, "no repository, no commits\n"))

    def testAnUnknownRangeIsAnError(self):
        self.commit(GOOD)

        result = self.check("nowhere..HEAD")

        self.assertEqual(result.returncode, 1)
        self.assertIn("no such commits: nowhere..HEAD", result.stderr)


if __name__ == "__main__":
    unittest.main()
