"""The packages of a folder hold what an installation does: contents.py FOLDER BUILD.

BUILD is the build folder that they were made of.
"""

import gzip
import os
import re
import subprocess
import sys
import tarfile
import tempfile
import unittest
from io import BytesIO
from pathlib import Path

BUILD, FOLDER = Path(sys.argv.pop()), Path(sys.argv.pop())
ROOT = Path(__file__).resolve().parents[2]
LICENCE = "No licence has been chosen by the owner yet"

# What each package holds, of paths below usr/ without the folder of the architecture.
HELD = {
    "hotfix-installer": r"bin/hotfixctl|sbin/HotfixInstaller|share/(ansible|bash-completion|fish|hotfix|zsh)/.+"
                        r"|share/man/man./(hotfixctl(-[a-z]+)?|HotfixInstaller|hotfix\.plist|installInfo\.plist)\..+",
    "libhotfix1": r"lib/libhotfix\.so\.[0-9.]+",
    "libhotfix-dev": r"include/.+|lib/(cmake|hotfix|pkgconfig)/.+|lib/libhotfix\.(a|so)",
    "hotfix-testkit": r"bin/hotfix-testkit|libexec/hotfix-testkit/.+|share/man/man1/hotfix-testkit\..+",
}


def members(package):
    """Of what a Debian package holds: the path, its entry, and the bytes of a file."""
    [path] = FOLDER.glob(f"{package}_*.deb")
    packed = subprocess.run(["dpkg-deb", "--fsys-tarfile", path], check=True, capture_output=True).stdout
    with tarfile.open(fileobj=BytesIO(packed)) as archive:
        return [(entry.name.removeprefix("./"), entry,
                 archive.extractfile(entry).read() if entry.isfile() else b"") for entry in archive]


def installed():
    """What cmake --install lays down below a prefix, the sample too: with whether it is a link."""
    with tempfile.TemporaryDirectory() as folder:
        for component in ([], ["--component", "hotfix-testkit"]):
            subprocess.run(["cmake", "--install", BUILD, "--prefix", folder, *component], check=True,
                           stdout=subprocess.DEVNULL)
        return {str(path.relative_to(folder)): path.is_symlink() for path in Path(folder).rglob("*")
                if path.is_symlink() or not path.is_dir()}


def asInstalled(name):
    """The path of an installation for that of a package."""
    name = re.sub(r"^usr/(lib/[^/]+-linux-[^/]+/|)", lambda match: "lib/" if match[1] else "", name)
    if name.startswith("share/man/"):
        name = name.removesuffix(".gz")
    return name.replace("zsh/vendor-completions", "zsh/site-functions")


class ContentsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls._members = {package: members(package) for package in HELD}

    def files(self, package):
        """Without the folders and the documents that all packages have."""
        return [member for member in self._members[package]
                if not member[1].isdir() and not member[0].startswith("usr/share/doc/")]

    def testEachFileOfAnInstallationIsInOnePackage(self):
        found = sorted((asInstalled(name), entry.issym())
                       for package in HELD for name, entry, _ in self.files(package))

        self.assertEqual(found, sorted(installed().items()))

    def testEachPackageHoldsWhatItIsFor(self):
        for package, pattern in HELD.items():
            for name, _, _ in self.files(package):
                with self.subTest(package=package, name=name):
                    self.assertRegex(asInstalled(name), f"^({pattern})$")

    def testEverythingIsRootsAndOnlyProgramsAreStarted(self):
        for package in HELD:
            for name, entry, content in self._members[package]:
                with self.subTest(package=package, name=name):
                    program = content.startswith((b"\x7fELF", b"#!")) and "/lib/" not in name
                    started = entry.isdir() or program and not name.endswith(".py")

                    self.assertEqual((entry.uid, entry.gid, entry.uname, entry.gname),
                                     (0, 0, "root", "root"))
                    if not entry.issym():
                        self.assertEqual(oct(entry.mode), oct(0o755 if started else 0o644))

    def testEverythingIsOfTheHourOfTheSources(self):
        hours = {int(entry.mtime) for package in HELD for _, entry, _ in self._members[package]}
        for package in FOLDER.glob("*.rpm"):
            told = subprocess.run(["rpm", "-qp", "--queryformat", "[%{FILEMTIMES}\n]", package], check=True,
                                  capture_output=True, text=True)
            hours |= {int(line) for line in told.stdout.split()}
        [path] = FOLDER.glob("*.tar.gz")
        with tarfile.open(path) as archive:
            hours |= {int(entry.mtime) for entry in archive}

        self.assertEqual(len(hours), 1, hours)

    def testManualPagesAreCompressedAndThoseOfTheSources(self):
        pages = {Path(name).name: content for package in HELD for name, _, content in self.files(package)
                 if name.startswith("usr/share/man/")}
        sources = list((ROOT / "packaging").rglob("*.[1-9]"))
        self.assertGreater(len(sources), 8)

        self.assertEqual({name: gzip.decompress(content) for name, content in pages.items()},
                         {f"{page.name}.gz": page.read_bytes() for page in sources})

    def testThatThereIsNoLicenceIsSaidOnceEverywhere(self):
        self.assertEqual((ROOT / "README.md").read_text(encoding="utf-8").count(LICENCE), 1)
        for package in HELD:
            [text] = [content.decode() for name, _, content in self._members[package]
                      if name == f"usr/share/doc/{package}/copyright"]

            self.assertIn(f"\nComment: {LICENCE}.\n", text)
        for package in FOLDER.glob("*.rpm"):
            told = subprocess.run(["rpm", "-qp", "--queryformat", "%{LICENSE}", package], check=True,
                                  capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"})

            self.assertEqual(told.stdout, LICENCE)

    def testTheArchiveHoldsAnInstallation(self):
        [path] = FOLDER.glob("*.tar.gz")
        with tarfile.open(path) as archive:
            found = {entry.name.partition("/")[2]: entry.issym() for entry in archive if not entry.isdir()}
        documents = {f"share/doc/hotfix-installer/{name}": False for name in ("CHANGELOG.md", "copyright")}

        self.assertEqual(found, installed() | documents)


if __name__ == "__main__":
    unittest.main()
