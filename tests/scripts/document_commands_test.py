"""The commands of documents are found, all of them, and judged by how they end."""

import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "tests/documents/run"

DOCUMENT = """# Title

<!-- run
touch seen
-->

Words, and `true` among them.

```sh
test -e seen
# a comment of its own

false   # status 1: what it finds
printf %s \\
  one >one
cat >two <<'END'
two # status 3
END
```

```text
false
```

1. An item:

   ```sh
   cat >three <<'END'
   three
   END
   ```

    false
"""


class DocumentCommandsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._folder = Path(folder.name)

    def script(self, document):
        file = self._folder / "guide.md"
        file.write_text(document, encoding="utf-8")
        return subprocess.run([SCRIPT, "--script", file], capture_output=True, text=True, check=False)

    def run_(self, document):
        script = self.script(document)
        self.assertEqual((script.returncode, script.stderr), (0, ""))
        return subprocess.run(["bash", "-c", script.stdout], cwd=self._folder, capture_output=True,
                              text=True, check=False)

    def testRunsEveryCommandOfItsBlocks(self):
        result = self.run_(DOCUMENT)

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual((self._folder / "one").read_text(), "one")
        self.assertEqual((self._folder / "two").read_text(), "two # status 3\n")
        self.assertEqual((self._folder / "three").read_text(), "three\n")

    def testTellsWhereACommandEndsOtherwise(self):
        for before, after, line in (("test -e seen", "test -e unseen", 10),
                                    ("false   # status 1", "true  # status 1", 13),
                                    ("touch seen", "touch none/seen", 4)):
            with self.subTest(before=before):
                result = self.run_(DOCUMENT.replace(before, after))

                self.assertEqual(result.returncode, 1)
                self.assertRegex(result.stdout, rf"guide\.md:{line}: ended with \d instead of \d\n$")

    def testEndsAtTheFirstSurprise(self):
        self.run_(DOCUMENT.replace("test -e seen", "test -e unseen"))

        self.assertFalse((self._folder / "one").exists())

    def testADocumentWithoutCommandsIsAnError(self):
        self.assertEqual(self.script("# Title\n\n```text\ntrue\n```\n").returncode, 1)


if __name__ == "__main__":
    unittest.main()
