"""The manual pages are sound, and every page that they refer to is there."""

import re
import shutil
import subprocess
import unittest
from pathlib import Path

PAGES = Path(__file__).resolve().parents[2] / "packaging"


class ManualTest(unittest.TestCase):
    def pages(self):
        pages = sorted(PAGES.rglob("*.[1-9]"))
        self.assertGreater(len(pages), 3)
        return pages

    def testPagesAreWithoutWarnings(self):
        if not shutil.which("mandoc"):
            self.skipTest("mandoc is missing; scripts/bootstrap tests installs it")
        for page in self.pages():
            with self.subTest(page=page.name):
                result = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", page],
                                        capture_output=True, text=True, check=False)

                self.assertEqual((result.returncode, result.stdout + result.stderr), (0, ""))

    def testPagesReferToPagesThatThereAre(self):
        for page in self.pages():
            for name, section in re.findall(r"^\.Xr (\S+) (\d)", page.read_text(encoding="utf-8"),
                                            re.MULTILINE):
                with self.subTest(page=page.name, name=name):
                    self.assertTrue((PAGES / f"{name}.{section}").is_file())


if __name__ == "__main__":
    unittest.main()
