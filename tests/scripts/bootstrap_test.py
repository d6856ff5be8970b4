"""What building needs is asked for by name, and only what is missing is installed or complained of."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

# What the script itself runs.
TOOLS = ["awk", "bash", "cat", "cut", "dirname", "env", "grep", "id", "ls", "readlink", "sed"]
COMMANDS = ["c++", "cmake", "ninja", "python3", "git", "clang-format", "plistutil", "xmllint",
            "doxygen", "zsh", "fish", "abidiff", "mandoc", "clang-tidy", "cppcheck", "shellcheck",
            "ansible-playbook", "ansible-lint", "ip", "ssh", "sshd", "clang++", "gcovr",
            "dpkg-shlibdeps", "lintian", "rpmbuild", "chromium", "node", "npm"]
MODULES = ["libxml-2.0", "fmt", "libutf8proc", "CLI11", "nlohmann_json", "libarchive", "gtest",
           "gmock", "benchmark"]
NOBODY = 65534


class BootstrapTest(unittest.TestCase):
    """A machine of files: its commands are empty programs, its modules are lines of a list."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self._root.chmod(0o755)
        for source in ("scripts/bootstrap", "sample/lib.sh", "sample/equinox/common.sh"):
            copy = self._root / source
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / source, copy)
        self._bin = self._root / "bin"
        self._bin.mkdir()
        self._modules = self._root / "modules"
        self._modules.write_text("\n".join(MODULES) + "\n", encoding="utf-8")
        for tool in TOOLS:
            os.symlink(shutil.which(tool), self._bin / tool)
        for command in COMMANDS:
            self.make(command, "exit 0")
        self.make("pkg-config", f'[[ $1 == --exists ]] && grep -q -x -F -e "$2" {self._modules}')

    def make(self, command, script):
        path = self._bin / command
        path.write_text(f"#!{shutil.which('bash')}\n{script}\n", encoding="utf-8")
        path.chmod(0o755)

    def lose(self, *commands):
        for command in commands:
            (self._bin / command).unlink()

    def loseModules(self, *modules):
        left = [module for module in MODULES if module not in modules]
        self._modules.write_text("\n".join(left) + "\n", encoding="utf-8")

    def makeApt(self, effect="exit 0"):
        """An apt-get that notes what it is told, without the options, and then has its effect."""
        self.make("apt-get", f'''
            while [[ $1 == -* ]]; do if [[ $1 == -o ]]; then shift; fi; shift; done
            echo "$@" >>{self._root}/apt
            {effect}''')

    def apt(self):
        noted = self._root / "apt"
        lines = noted.read_text(encoding="utf-8").splitlines() if noted.exists() else []
        # Whether package lists are fetched first depends on the machine.
        return [line for line in lines if line != "update"]

    def bootstrap(self, *sets, **options):
        environment = {"PATH": str(self._bin), "HOME": str(self._root)}
        return subprocess.run([self._root / "scripts" / "bootstrap", *sets], env=environment,
                              capture_output=True, text=True, check=False, **options)

    def assertMissing(self, *lines, sets=("tests",)):
        result = self.bootstrap(*sets)
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stdout, "")
        self.assertEqual(result.stderr.splitlines(),
                         ["scripts/bootstrap: missing, and there is no apt here to install it:",
                          *lines])

    def assertContent(self, *sets):
        result = self.bootstrap(*sets)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def testWhereEverythingIsThereNoAptIsMissed(self):
        self.assertContent("tests", "coverage")

    def testWhereEverythingIsThereAptIsNotAsked(self):
        self.makeApt()

        self.assertContent("tests", "coverage")

        self.assertEqual(self.apt(), [])

    def testAMissingCommandIsNamedWithItsPackage(self):
        self.lose("plistutil")

        self.assertMissing("  plistutil (Debian: libplist-utils)")

    def testAMissingModuleIsNamedWithItsPackage(self):
        self.loseModules("libutf8proc")

        self.assertMissing("  pkg-config's module libutf8proc (Debian: libutf8proc-dev)")

    def testWhatPackagesAreMadeWithIsPartOfTheTests(self):
        self.lose("lintian", "rpmbuild")

        self.assertMissing("  rpmbuild (Debian: rpm)", sets=("package",))
        self.assertMissing("  lintian (Debian: lintian)", "  rpmbuild (Debian: rpm)", sets=("tests",))
        self.assertContent("ctl", "sample")

    def testEverythingThatIsMissingIsNamedOnce(self):
        self.lose("c++", "cppcheck", "python3")
        self.loseModules("benchmark", "gmock")

        self.assertMissing("  c++ (Debian: g++)", "  python3 (Debian: python3)",
                           "  pkg-config's module gmock (Debian: libgmock-dev)",
                           "  cppcheck (Debian: cppcheck)",
                           "  pkg-config's module benchmark (Debian: libbenchmark-dev)")

    def testWithoutPkgConfigItsModulesAreNotCalledMissing(self):
        self.lose("pkg-config", "ninja")

        self.assertMissing("  ninja (Debian: ninja-build)", "  pkg-config (Debian: pkg-config)")

    def testAModuleOfPythonIsAskedOfPython(self):
        self.make("python3", 'test "$*" != "-c import jsonschema"')

        self.assertMissing("  Python's module jsonschema (Debian: python3-jsonschema)")

    def testWhatNeedsTheCompanionProgramAsksForItsLibraries(self):
        self.loseModules("nlohmann_json")

        for name in ("ctl", "sample", "programs", "tidy", "tests", "coverage"):
            with self.subTest(set=name):
                self.assertMissing(
                    "  pkg-config's module nlohmann_json (Debian: nlohmann-json3-dev)",
                    sets=(name,))

    def testAClangThatLinksNoFuzzerIsToldFromNone(self):
        self.make("clang++", "exit 1")

        self.assertMissing("  libFuzzer (Debian: libclang-rt-dev)", sets=("fuzz",))

    def testSetsAskForWhatTheyNeedAlone(self):
        self.lose(*(command for command in COMMANDS if command not in ("c++", "cmake", "ninja")))
        self.loseModules("CLI11", "nlohmann_json", "libarchive", "gtest", "gmock", "benchmark")
        self.assertContent()

        ctl = ["  pkg-config's module CLI11 (Debian: libcli11-dev)",
               "  pkg-config's module nlohmann_json (Debian: nlohmann-json3-dev)",
               "  pkg-config's module libarchive (Debian: libarchive-dev)"]
        for sets, lines in ((["ctl"], ctl), (["sample"], [*ctl, "  python3 (Debian: python3)"]),
                            (["bench"],
                             ["  pkg-config's module benchmark (Debian: libbenchmark-dev)"]),
                            (["fuzz"], ["  clang++ (Debian: clang)",
                                        "  libFuzzer (Debian: libclang-rt-dev)"])):
            with self.subTest(sets=sets):
                self.assertMissing(*lines, sets=sets)

    def testTheTestsAskForTheSetsOfTheirChecksToo(self):
        for command in ("clang-tidy", "shellcheck", "xmllint", "abidiff", "doxygen"):
            with self.subTest(command=command):
                self.lose(command)

                self.assertIn(f"  {command} (Debian: ", self.bootstrap("tests").stderr)

                self.make(command, "exit 0")
        self.loseModules("CLI11", "benchmark")
        self.assertMissing("  pkg-config's module CLI11 (Debian: libcli11-dev)",
                           "  pkg-config's module benchmark (Debian: libbenchmark-dev)")

    def testNoServerIsInstalledWhereItWouldBeStarted(self):
        self.lose("ansible-playbook")
        for state, missed in (("running", False), ("degraded", False), ("offline", True)):
            with self.subTest(state):
                self.make("systemctl", f"[[ $* == is-system-running ]] && echo {state}; exit 1")
                self.assertEqual(self.bootstrap("tests").returncode, int(missed))
                self.assertEqual(self.bootstrap("fleet").returncode, 1)

    def testFilesAreLookedForByPattern(self):
        with open(self._root / "scripts/bootstrap", encoding="utf-8") as file:
            text = file.read()
        patterns = re.findall(r"^cross +file +(\S+) +(\S+)$", text, re.MULTILINE)
        self.assertGreater(len(patterns), 2)
        for pattern, _ in patterns:
            text = text.replace(f" {pattern} ", f" {self._root}{pattern} ")
            (self._root / pattern[1:].replace("*", "some")).parent.mkdir(parents=True)
        (self._root / "scripts/bootstrap").write_text(text, encoding="utf-8")
        for command in ("npm", "ccache", "llvm-config", "lld", "gpbs"):
            self.make(command, "exit 0")
        self.assertMissing(*(f"  {self._root}{pattern} (Debian: {package})"
                             for pattern, package in patterns), sets=("cross",))

        for pattern, _ in patterns:
            (self._root / pattern[1:].replace("*", "some")).touch()

        self.assertContent("cross")

    def testTheTestsReplayTheFuzzersWithoutClang(self):
        self.lose("clang++")

        self.assertContent("tests")

    def testTheCompilerOfJavaIsLookedForWhereverItIs(self):
        home = self._root / "jdk"
        (home / "bin").mkdir(parents=True)
        for name in ("javac", "keytool"):
            os.symlink(self._bin / "cmake", home / "bin" / name)
            os.symlink(home / "bin" / name, self._bin / name)

        self.assertContent("real")

    def testAnUnknownSetIsAnError(self):
        result = self.bootstrap("tests", "everything")

        self.assertEqual(result.returncode, 2)
        self.assertIn("usage: scripts/bootstrap [", result.stderr)

    @unittest.skipIf(os.geteuid() != 0, "an ordinary user's apt is started through sudo")
    def testAptInstallsWhatIsMissingAndNothingElse(self):
        self.lose("cppcheck")
        self.loseModules("fmt")
        self.makeApt(f"ln -s cmake {self._bin}/cppcheck; echo fmt >>{self._modules}")
        os.symlink(shutil.which("ln"), self._bin / "ln")

        result = self.bootstrap("tests")

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertIn("scripts/bootstrap: installing libfmt-dev cppcheck\n", result.stdout)
        self.assertEqual(self.apt(), ["install --no-install-recommends libfmt-dev cppcheck"])

    @unittest.skipIf(os.geteuid() != 0, "an ordinary user's apt is started through sudo")
    def testAFailedInstallationIsTriedOnceMoreWithNewLists(self):
        self.lose("cppcheck")
        self.makeApt(f'[[ $1 == update ]] && touch {self._root}/updated && exit\n'
                     f'[[ -e {self._root}/updated ]] && ln -sf cmake {self._bin}/cppcheck')
        for tool in ("ln", "touch"):
            os.symlink(shutil.which(tool), self._bin / tool)

        result = self.bootstrap("tests")

        self.assertEqual(result.returncode, 0, result)
        self.assertTrue((self._root / "updated").exists())

    @unittest.skipIf(os.geteuid() != 0, "an ordinary user's apt is started through sudo")
    def testWhatAptDoesNotBringIsNamed(self):
        self.lose("cppcheck")
        self.makeApt()

        result = self.bootstrap("tests")

        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr,
                         "scripts/bootstrap: still missing:\n  cppcheck (Debian: cppcheck)\n")

    @unittest.skipIf(os.geteuid() != 0, "only root can become somebody else")
    def testAnOrdinaryUserWithoutSudoIsToldWhatToRun(self):
        self.lose("cppcheck")
        self.makeApt()

        result = self.bootstrap("tests", user=NOBODY, group=NOBODY, extra_groups=[])

        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertEqual(result.stderr,
                         "scripts/bootstrap: run as root: apt-get install cppcheck\n")
        self.assertEqual(self.apt(), [])

    @unittest.skipIf(os.geteuid() != 0, "only root can become somebody else")
    def testAnOrdinaryUserInstallsThroughSudo(self):
        self.lose("cppcheck")
        self.makeApt()
        self.make("sudo", f'echo "$@" >>{self._root}/sudo')
        self._root.chmod(0o777)

        self.bootstrap("tests", user=NOBODY, group=NOBODY, extra_groups=[])

        self.assertIn("env DEBIAN_FRONTEND=noninteractive apt-get",
                      (self._root / "sudo").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
