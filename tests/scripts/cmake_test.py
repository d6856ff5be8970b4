"""What the build computes by itself: which libraries a program may need, which symbols leave the
library where the linker takes no version script."""

import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class NeededLibrariesTest(unittest.TestCase):
    def needed(self, *libraries):
        with tempfile.TemporaryDirectory() as folder:
            tool = Path(folder) / "otool"
            lines = "".join(f"\t{library} (compatibility version 1.0.0)\n" for library in libraries)
            tool.write_text(f"#!/bin/sh\n[ $1 = -L ] && cat <<'END'\n$2:\n{lines}END\n",
                            encoding="utf-8")
            tool.chmod(0o755)
            return subprocess.run(
                ["cmake", "-D", f"TOOL={tool}", "-D", "PROGRAM=Program", "-D",
                 "ALLOWED=^(/usr/lib|/System)/", "-P", ROOT / "cmake/NeededLibraries.cmake"],
                capture_output=True, text=True, check=False)

    def testLibrariesOfTheSystemPass(self):
        result = self.needed("/usr/lib/libSystem.B.dylib",
                             "/System/Library/Frameworks/AppKit.framework/Versions/C/AppKit")

        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def testAnyOtherLibraryFailsAndIsNamed(self):
        for library in ("/opt/homebrew/lib/libutf8proc.3.dylib", "@rpath/libfmt.9.dylib",
                        "/usr/local/usr/lib/libx.dylib"):
            with self.subTest(library=library):
                result = self.needed("/usr/lib/libSystem.B.dylib", library)

                self.assertNotEqual(result.returncode, 0)
                self.assertIn(f"Program needs what not everybody has: {library}",
                              " ".join(result.stderr.split()))

    def testAFileThatNeedsNothingIsNoProgram(self):
        self.assertNotEqual(self.needed().returncode, 0)


class ExportListTest(unittest.TestCase):
    def testTheListNamesWhatTheVersionScriptNames(self):
        with tempfile.TemporaryDirectory() as folder:
            script = Path(folder) / "map"
            script.write_text('/* A. */\n{\n  global:\n    extern "C++" {\n'
                              "      installer::StringUtil::*;\n      installer::xml::Deleter::*;\n"
                              "      installer::runInstaller*;\n    };\n  local:\n    *;\n};\n",
                              encoding="utf-8")
            listing = Path(folder) / "list"
            caller = Path(folder) / "caller.cmake"
            caller.write_text(f"include({ROOT}/cmake/Exports.cmake)\n"
                              f"hotfix_write_export_list({script} {listing})\n", encoding="utf-8")

            subprocess.run(["cmake", "-P", caller], check=True)

            self.assertEqual(listing.read_text(encoding="utf-8").splitlines(),
                             ["__ZN9installer10StringUtil*", "__ZNK9installer10StringUtil*",
                              "__ZN9installer3xml7Deleter*", "__ZNK9installer3xml7Deleter*",
                              "__ZN9installer12runInstaller*", "__ZNK9installer12runInstaller*"])


if __name__ == "__main__":
    unittest.main()
