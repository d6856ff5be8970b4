"""What the documents list is what there is, where neither a compiler nor a program looks."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def textOf(name):
    return (ROOT / name).read_text(encoding="utf-8")


class LibraryGuideTest(unittest.TestCase):
    def testEveryPublicHeaderIsListedOnce(self):
        section = textOf("docs/library.md").split("\n## What is where\n")[1].split("\n## ")[0]
        rows = [line for line in section.splitlines() if line.startswith("| `")]
        listed = [name for row in rows for name in re.findall(r"`(hotfix/[^`]+)`", row.split("|")[1])]
        include = ROOT / "include"
        headers = [path.relative_to(include).as_posix() for path in include.rglob("*.h")]
        self.assertGreater(len(headers), 20)

        self.assertEqual(sorted(listed), sorted(headers))


class SecurityPageTest(unittest.TestCase):
    def testEveryIdentifierIsAPromises(self):
        pages = (ROOT / "docs/behaviours").glob("*.md")
        promises = {name for page in pages
                    for name in re.findall(r"^- \*\*([A-Z]+-\d+)\*\*", page.read_text(encoding="utf-8"), re.M)}
        self.assertGreater(len(promises), 300)

        named = re.findall(r"\b[A-Z]+-\d+\b", textOf("SECURITY.md"))
        self.assertGreater(len(named), 20)

        self.assertEqual(sorted(set(named) - promises), [])


class OutsideProgramTest(unittest.TestCase):
    def testIncludesEveryPublicHeader(self):
        program = textOf("tests/package/main.cpp")
        included = re.findall(r"^#include <(hotfix/[^>]+)>$", program, re.MULTILINE)
        include = ROOT / "include"
        headers = [path.relative_to(include).as_posix() for path in include.rglob("*.h")]

        self.assertEqual(included, sorted(headers))


if __name__ == "__main__":
    unittest.main()
