"""The linters see every source of src/, and clang-tidy none twice that has not changed."""

import json
import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

# Both fail for a source that holds "bad".
CLANG_TIDY = '''
if [[ $1 == --version ]]; then cat {root}/version; exit; fi
echo "${{*: -1}}" >>{root}/linted
echo "12 warnings generated." >&2
if grep -q bad "${{*: -1}}"; then echo "${{*: -1}}:1: warning: bad"; exit 1; fi
'''
CPPCHECK = '''
for one in "$@"; do if [[ $one == --project=* ]]; then cp "${{one#*=}}" {root}/checked; fi; done
if grep -q -r bad {root}/src; then echo "bad, says cppcheck" >&2; exit 1; fi
'''


class TidyTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name).resolve()
        for name in ("scripts", "tools"):
            (self._root / name).mkdir()
        shutil.copy(ROOT / "scripts" / "tidy", self._root / "scripts")
        self.makeTool("clang-tidy", CLANG_TIDY)
        self.makeTool("cppcheck", CPPCHECK)
        self.write("version", "14")
        self.write(".clang-tidy", "Checks: '*'")
        self.write("src/a/A.cpp", '#include "a/A.h"\n')
        self.write("src/a/A.h", '#pragma once\n#  include "B.h"\n#include <vector>\n')
        self.write("src/a/B.h", "#pragma once\n")
        self.write("include/a/Public.h", "#pragma once\n")
        self.write("src/c/C.cpp", '#include "a/Public.h"\n')
        self.write("tests/Test.cpp", "bad\n")
        self._build = self._root / "build" / "dev"
        self.compile("src/a/A.cpp", "src/c/C.cpp", "tests/Test.cpp")

    def write(self, name, text):
        path = self._root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def makeTool(self, name, script):
        self.write(f"tools/{name}", "#!/bin/bash\n" + script.format(root=self._root))
        (self._root / "tools" / name).chmod(0o755)

    def compile(self, *sources, flags=""):
        self._build.mkdir(parents=True, exist_ok=True)
        entries = [{"directory": str(self._build), "file": str(self._root / source),
                    "command": f"c++ -I{self._root}/src -I{self._root}/include {flags} "
                               f"-o {self._build}/{source}.o -c {self._root}/{source}"}
                   for source in sources]
        (self._build / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")

    def tidy(self, *arguments, path=None):
        path = path or f"{self._root}/tools:{os.environ['PATH']}"
        return subprocess.run([self._root / "scripts" / "tidy", self._build, *arguments],
                              env={**os.environ, "PATH": path},
                              capture_output=True, text=True, check=False)

    def assertLinted(self, *sources):
        """Nothing is found, and these are the sources that clang-tidy has looked at."""
        notes = self._root / "linted"
        notes.unlink(missing_ok=True)
        result = self.tidy("clang-tidy")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        linted = notes.read_text(encoding="utf-8").split() if notes.exists() else []
        self.assertEqual(sorted(linted), [str(self._root / source) for source in sources])

    def testEverySourceIsLookedAtOnce(self):
        self.assertLinted("src/a/A.cpp", "src/c/C.cpp")
        self.assertLinted()

    def testASourceIsLookedAtAgainWhenItOrWhatItIncludesChanges(self):
        self.assertLinted("src/a/A.cpp", "src/c/C.cpp")
        for name, again in (("src/a/A.cpp", "src/a/A.cpp"), ("src/a/A.h", "src/a/A.cpp"),
                            ("src/a/B.h", "src/a/A.cpp"), ("include/a/Public.h", "src/c/C.cpp")):
            with self.subTest(name=name):
                path = self._root / name
                path.write_text(path.read_text(encoding="utf-8") + "// changed\n", encoding="utf-8")

                self.assertLinted(again)

    def testEverythingIsLookedAtAgainWhenTheChecksChange(self):
        both = ("src/a/A.cpp", "src/c/C.cpp")
        self.assertLinted(*both)
        self.write(".clang-tidy", "Checks: '-*'")
        self.assertLinted(*both)
        self.write("version", "15")
        self.assertLinted(*both)
        self.compile(*both, flags="-DNEW")
        self.assertLinted(*both)

    def testAnotherBuildFolderKnowsWhatWasLookedAt(self):
        self.assertLinted("src/a/A.cpp", "src/c/C.cpp")
        self._build = self._root / "build" / "tidy"
        self.compile("src/a/A.cpp", "src/c/C.cpp")

        self.assertLinted()

    def testWhatIsFoundIsToldEachTime(self):
        self.write("src/c/C.cpp", "bad\n")
        for _ in range(2):
            result = self.tidy("clang-tidy")

            self.assertEqual(result.returncode, 1)
            self.assertEqual(result.stdout, f"{self._root}/src/c/C.cpp:1: warning: bad\n")

    def testAnEndWithoutAWordIsAFindingToo(self):
        self.makeTool("clang-tidy", 'if [[ $1 != --version ]]; then kill -SEGV $$; fi')

        result = self.tidy("clang-tidy")

        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{self._root}/src/a/A.cpp: clang-tidy ends with -11\n", result.stdout)

    def testCppcheckGetsTheSourcesAndNothingElse(self):
        self.assertEqual(self.tidy("cppcheck").returncode, 0)

        entries = json.loads((self._root / "checked").read_text(encoding="utf-8"))
        self.assertEqual([entry["file"] for entry in entries],
                         [str(self._root / name) for name in ("src/a/A.cpp", "src/c/C.cpp")])

    def testWhatCppcheckFindsIsTold(self):
        self.write("src/c/C.cpp", "bad\n")

        result = self.tidy("cppcheck")

        self.assertEqual((result.returncode, result.stdout), (1, "bad, says cppcheck\n\n"))

    def testWithoutANameBothLook(self):
        self.write("src/c/C.cpp", "bad\n")

        result = self.tidy()

        self.assertEqual(result.returncode, 1)
        self.assertIn("warning: bad\n", result.stdout)
        self.assertIn("bad, says cppcheck\n", result.stdout)

    def testWithoutALinterTheCheckIsSkipped(self):
        tools = self._root / "other"
        tools.mkdir()
        for name in ("env", "python3"):
            os.symlink(shutil.which(name), tools / name)

        for name in ("clang-tidy", "cppcheck"):
            with self.subTest(name=name):
                result = self.tidy(name, path=str(tools))

                self.assertEqual(result.returncode, 77)
                self.assertIn(f"{name} is missing", result.stderr)

    def testADatabaseWithoutSourcesIsAnError(self):
        self.compile("tests/Test.cpp")

        result = self.tidy()

        self.assertEqual(result.returncode, 1)
        self.assertIn("compiles nothing of src/", result.stderr)

    def testAnUnknownLinterIsAnError(self):
        self.assertIn("scripts/tidy <build folder>", self.tidy("lint").stderr)


if __name__ == "__main__":
    unittest.main()
