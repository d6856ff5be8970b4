"""The check of what a program for macOS imports finds what the system lacks or got later."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

LIST = """--- !tapi-tbd
targets:         [ x86_64-macos, arm64e-macos ]
exports:
  - targets:         [ x86_64-macos, arm64e-macos ]
    symbols:         [ _open, '_realpath$DARWIN_EXTSN',
                       _old ]
  - targets:         [ x86_64-macos ]
    symbols:         [ _intel ]
--- !tapi-tbd
targets:         [ x86_64-macos, arm64e-macos ]
exports:
  - targets:         [ arm64e-macos, x86_64-maccatalyst ]
    weak-symbols:    [ _apple ]
"""


class CheckImportsTest(unittest.TestCase):
    """Stand-ins for LLVM's programs and zig's tell of a program that there is not."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        stub = self._root / "lib/libc/darwin/libSystem.tbd"
        stub.parent.mkdir(parents=True)
        stub.write_text(LIST, encoding="utf-8")
        self.make("llvm-lipo", "echo $ARCHITECTURE")
        self.make("llvm-otool", 'echo "  minos $OLDEST"')
        # Its compiler complains of each function that is called young or unknown.
        self.make("zig", fr"""
            if [[ $1 == env ]]; then echo '.lib_dir = "{self._root}/lib",'; exit; fi
            sed -nE "s/.*&(young)[;].*/-:1:1: error: '\1' is only available on macOS 13.0 or newer/p
                     s/.*&(unknown)[;].*/-:1:1: error: use of undeclared identifier '\1'/p" >&2""")

    def make(self, name, script):
        path = self._root / name
        path.write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        path.chmod(0o755)

    def check(self, *imports, architecture="arm64", oldest="11.0"):
        lines = "\n".join(f"                 (undefined) external {symbol} (from {library})"
                          for symbol, library in imports)
        self.make("llvm-nm", f"cat <<'END'\n{lines}\nEND")
        return subprocess.run(
            [ROOT / "tests/macos/check-imports", "Program"], capture_output=True, text=True,
            check=False, env={"PATH": f"{self._root}:{os.environ['PATH']}", "ARCHITECTURE": architecture,
                              "OLDEST": oldest, "ZIG": str(self._root / "zig")})

    def assertWrong(self, result, *lines):
        self.assertEqual(result.stderr.splitlines(), [f"Program: {line}" for line in lines])
        self.assertEqual(result.returncode, 1)

    def testWhatTheSystemHasIsTold(self):
        result = self.check(("_open", "libSystem"), ("_realpath$DARWIN_EXTSN", "libSystem"),
                            ("_CFRelease", "CoreFoundation"))

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(result.stdout,
                         "Program: arm64, macOS 11.0, 1 from CoreFoundation, 2 from libSystem\n")

    def testWhatTheSystemLacksIsNamed(self):
        self.assertWrong(self.check(("_open", "libSystem"), ("_made_up", "libSystem")),
                         "the system has no _made_up")

    def testAnotherArchitecturesSymbolDoesNotCount(self):
        for symbol, architecture, other in (("_intel", "x86_64", "arm64"),
                                            ("_apple", "arm64", "x86_64")):
            with self.subTest(symbol=symbol):
                result = self.check((symbol, "libSystem"), architecture=architecture)
                self.assertEqual(result.returncode, 0, result.stderr)

                self.assertWrong(self.check((symbol, "libSystem"), architecture=other),
                                 f"the system has no {symbol}")

    def testWhatIsYoungerThanTheOldestSystemIsNamed(self):
        stub = self._root / "lib/libc/darwin/libSystem.tbd"
        stub.write_text(LIST.replace("_old", "_young"), encoding="utf-8")

        self.assertWrong(self.check(("_young", "libSystem")), "young is there since macOS 13.0")

    def testWhatNoHeaderDeclaresIsJudgedByTheListAlone(self):
        stub = self._root / "lib/libc/darwin/libSystem.tbd"
        stub.write_text(LIST.replace("_old", "_unknown"), encoding="utf-8")

        result = self.check(("_unknown", "libSystem"))

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("known by the list only: unknown\n", result.stdout)

    def testAProgramForAYoungerSystemIsRefused(self):
        self.assertWrong(self.check(("_open", "libSystem"), oldest="13.0"),
                         "is for macOS 13.0, not 11.0")

    def testAFileWithoutImportsIsNoProgram(self):
        self.assertWrong(self.check(), "nothing is imported at all")


if __name__ == "__main__":
    unittest.main()
