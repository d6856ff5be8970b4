"""The check of the promises believes nothing that no test has shown, and no name that is none."""

import os
import re
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "scripts"

# The script as it runs for a certain user, whoever runs this test.
AS_USER = ("import os, runpy, sys; os.geteuid = lambda user=int(sys.argv[1]): user; "
           "sys.argv[:2] = []; "
           "sys.path.insert(0, os.path.dirname(sys.argv[0])); "
           "runpy.run_path(sys.argv[0], run_name='__main__')")

PASSED = 'status="run" result="completed">'
FAILED = 'status="run" result="completed"><failure/>'
SKIPPED = 'status="run" result="skipped"><skipped/>'
NOT_RUN = 'status="notrun" result="suppressed">'


class CheckPromisesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self._results = self._root / "results"
        self._built = time.time() - 1000
        self._retired = []
        self._rows = {}
        self.write("tests/support/Proves.h", "template <typename... Names>\n"
                   "void proves(const Names&... names) {}\n")

    def write(self, path, text):
        file = self._root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
        return file

    def promise(self, *items, page="locks"):
        if page == "README":
            self._retired = items
        else:
            self.page(page, items)
            words = re.findall(r"^- \*\*([A-Z]+)-[1-9]", "\n".join(items), re.MULTILINE)
            self._rows[page] = ", ".join(dict.fromkeys(words))
        rows = [f"| [{name}]({name}.md) | {words} | About it |" for name, words in self._rows.items()]
        self.page("README", [*self._retired, "", "| Page | Identifiers | About |", "|---|---|---|", *rows])

    def page(self, name, lines):
        return self.write(f"docs/{name}.md", "\n".join(["# Locks", "", "Text.", "", *lines, ""]))

    def list(self, page, words):
        """The page's row of the index says so."""
        index = self._root / "docs/README.md"
        text = index.read_text(encoding="utf-8")
        row = f"| [{page}]({page}.md) | {self._rows[page]} |"
        self.write("docs/README.md", text.replace(row, f"| [{page}]({page}.md) | {words} |"))

    def claims(self, *calls):
        """A source with the tests LockTest.Number0, LockTest.Number1 ... that call this."""
        bodies = [f"TEST_F(LockTest, Number{number}) {{\n  {call}\n  EXPECT_TRUE(true);\n}}\n"
                  for number, call in enumerate(calls)]
        return self.write("tests/LockTest.cpp", "\n".join(bodies))

    def program(self, name="lock-tests"):
        file = self.write(name, "")
        os.utime(file, (self._built, self._built))
        return file

    def result(self, test, ending, proves, kind="lock-tests", age=0):
        suite, case = test.split(".", 1)
        file = self.write(
            f"results/{kind}/{test}.xml",
            f'<testsuites><testsuite name="{suite}"><testcase name="{case}" {ending}<properties>'
            f'<property name="proves" value="{proves}"/></properties></testcase></testsuite>'
            "</testsuites>")
        os.utime(file, (self._built + 10 - age, self._built + 10 - age))

    def check(self, *options, user=0):
        return subprocess.run(
            [sys.executable, "-B", "-c", AS_USER, str(user), SCRIPTS / "check-promises", "--pages",
             self._root / "docs", "--tests", self._root / "tests", *options],
            capture_output=True, text=True, check=False)

    def checkRun(self, *options, programs=("lock-tests",), user=0):
        made = [self.program(name) for name in programs]
        return self.check("--results", self._results, *options, *made, user=user)

    def assertAccepted(self, result):
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def assertRefused(self, result, *lines):
        self.assertEqual(result.stderr, "")
        self.assertEqual(result.stdout.replace(f"{self._root}/", "").splitlines(), list(lines))
        self.assertEqual(result.returncode, 1)

    # --- The index ---

    def testPageIsListedWithTheWordsOfItsPromises(self):
        self.promise("- **LOCK-1** One.", "- **WAIT-1** Two.", "- **LOCK-2** Three.")
        self.claims('proves("LOCK-1", "LOCK-2", "WAIT-1");')

        self.assertAccepted(self.check())
        for words, missing in (("LOCK", "LOCK, WAIT"), ("WAIT, LOCK", "LOCK, WAIT"),
                               ("LOCK, WAIT, MORE", "LOCK, WAIT"), ("", "LOCK, WAIT")):
            self.promise("- **LOCK-1** One.", "- **WAIT-1** Two.", "- **LOCK-2** Three.")
            self.list("locks", words)

            self.assertRefused(self.check(), f"docs/README.md: locks.md is to be listed with {missing}")

    def testPageThatIsNotListedIsNamed(self):
        self.promise("- **LOCK-1** One.")
        self.page("README", [])
        self.claims('proves("LOCK-1");')

        self.assertRefused(self.check(), "docs/README.md: locks.md is to be listed with LOCK")

    def testListedPageThatIsNoneIsNamed(self):
        self.promise("- **OTHER-1** One.", page="other")
        self.promise("- **LOCK-1** One.")
        (self._root / "docs/other.md").unlink()
        self.claims('proves("LOCK-1");')

        self.assertRefused(self.check(), "docs/README.md: lists other.md, which holds no promises")

    # --- Names ---

    def testPromisesThatTestsNameAreAccepted(self):
        self.promise("- **LOCK-1** A sentence", "  on two lines.", "- **LOCK-2** Another.")
        self.promise("- **OTHER-12** One more.", page="other")
        self.claims('proves("LOCK-1");', 'proves("LOCK-2",\n         "OTHER-12");')

        self.assertAccepted(self.check())

    def testAnUnknownIdentifierIsToldWithTheNearestOne(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.", "- **OTHER-1** Three.")
        self.claims('proves("LOCK-1", "LOCK-2", "OTHER-1");', 'proves("LOKC-2");')

        self.assertRefused(self.check(),
                           "tests/LockTest.cpp:7: there is no promise LOKC-2; LOCK-2?")

    def testAnIdentifierUnlikeAnyOtherIsToldToo(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1", "x");')

        self.assertRefused(self.check(), "tests/LockTest.cpp:2: there is no promise x; LOCK-1?")

    def testAPromiseThatNoTestNamesIsRefused(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.claims('proves("LOCK-2");')

        self.assertRefused(self.check(), "docs/locks.md:5: no test proves LOCK-1")

    def testAnIdentifierIsDefinedOnce(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-1** Two.")
        self.promise("- **LOCK-1** Three.", page="other")
        self.claims('proves("LOCK-1");')

        self.assertRefused(self.check(), "docs/locks.md:6: LOCK-1 is taken: docs/locks.md:5",
                           "docs/other.md:5: LOCK-1 is taken: docs/locks.md:5")

    def testAnIdentifierThatWasGivenUpIsNeverUsedAgain(self):
        self.promise("- **LOCK-1** One.", page="README")
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.", "- **LOCK-3** Three.")
        self.promise("- **LOCK-2** Two.", page="zoo")
        self.claims('proves("LOCK-1", "LOCK-2", "LOCK-3");')

        self.assertRefused(self.check(), "docs/zoo.md:5: LOCK-2 is taken: docs/locks.md:6",
                           "docs/locks.md:5: LOCK-1 was given up: docs/README.md:5")

    def testATestOfAPromiseThatWasGivenUpIsRefused(self):
        self.promise("- **LOCK-1** One.", page="README")
        self.promise("- **LOCK-2** Two.")
        self.claims('proves("LOCK-1", "LOCK-2");')

        self.assertRefused(self.check(),
                           "tests/LockTest.cpp:2: LOCK-1 was given up: docs/README.md:5")

    def testEveryItemOfAPageBeginsWithAnIdentifier(self):
        self.promise("- **LOCK-1** One.", "- Two.", "- **lock-3** Three.", "- **LOCK-04** Four.",
                     "- **LOCK-5**", "- *LOCK-6* Six.")
        self.claims('proves("LOCK-1");')

        self.assertRefused(self.check(), *(
            f'docs/locks.md:{line}: does not begin like "- **LOCK-1** A run"'
            for line in range(6, 11)))

    def testAFolderWithoutPromisesIsRefused(self):
        self.assertRefused(self.check(), "docs: holds no promises")

    def testIdentifiersAreSpelledOut(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");', "proves(GetParam().promise);", "proves();")

        self.assertRefused(self.check(),
                           "tests/LockTest.cpp:7: an identifier is not spelled out",
                           "tests/LockTest.cpp:7: names no promise",
                           "tests/LockTest.cpp:12: names no promise")

    def testWhatAProseOrAnotherNameHoldsIsNoClaim(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");', '// proves("LOCK-7")', 'disproves("LOCK-8");')

        self.assertAccepted(self.check())

    def testScenariosOfShellScriptsNameWhatTheyProve(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.write("tests/real/some.sh", "# proves: LOCK-1 LOCK-2\nscenario_Waits() {\n  true\n}\n"
                   "# proves: LOCK-22\nscenario_Stops() {\n  true\n}\n")

        self.assertRefused(self.check(),
                           "tests/real/some.sh:5: there is no promise LOCK-22; LOCK-2?")

    def testANoteStandsAboveAScenarioAndNamesAPromise(self):
        self.promise("- **LOCK-1** One.")
        self.write("tests/some.sh", "# proves: LOCK-1\n\nscenario_Waits() {\n}\n"
                   "# proves:\nscenario_Stops() {\n}\n")

        self.assertRefused(self.check(), "tests/some.sh:1: stands above no scenario",
                           "tests/some.sh:5: names no promise")

    def testTestsThatCMakeMakesNameWhatTheyProve(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.write("tests/some.cmake", 'parse(test "" "" "PROVES;COMMAND" ${ARGN})\n'
                   "make(real PROVES ${proves} COMMAND run)\n"
                   "# step(none PROVES LOCK-9)\n"
                   "step(install PROVES LOCK-1\n  LOCK-2)\n")
        self.write("tests/CMakeLists.txt", "step(headers PROVES LOCK-3)\nstep(guide PROVES )\n")

        self.assertRefused(self.check(),
                           "tests/CMakeLists.txt:2: names no promise",
                           "tests/CMakeLists.txt:1: there is no promise LOCK-3; LOCK-2?")

    # --- Proofs ---

    def testPromisesWhoseTestsPassedAreAccepted(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.claims('proves("LOCK-1", "LOCK-2");')
        self.result("LockTest.Number0", PASSED, "LOCK-1 LOCK-2")

        self.assertAccepted(self.checkRun())

    def testATestThatFailedIsRefusedThoughAnotherOnePassed(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");', 'proves("LOCK-1");', 'proves("LOCK-1");')
        self.result("LockTest.Number0", PASSED, "LOCK-1")
        self.result("LockTest.Number1", FAILED, "LOCK-1")
        self.result("LockTest.Number2", FAILED, "LOCK-1")

        self.assertRefused(self.checkRun(),
                           "docs/locks.md:5: LOCK-1: LockTest.Number1 of lock-tests failed, "
                           "LockTest.Number2 of lock-tests failed")

    def testATestThatHasNotRunProvesNothing(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.", "- **LOCK-3** Three.")
        self.claims('proves("LOCK-1");', 'proves("LOCK-2");', 'proves("LOCK-3");')
        self.result("LockTest.Number0", PASSED, "LOCK-1")
        self.result("LockTest.Number1", NOT_RUN, "LOCK-2")

        self.assertRefused(self.checkRun(),
                           "docs/locks.md:6: LOCK-2: no test of it passed: "
                           "LockTest.Number1 of lock-tests not run",
                           "docs/locks.md:7: LOCK-3: no test of it passed: "
                           "LockTest.Number2 (tests/LockTest.cpp:12) left no proof")

    def testASkippedTestProvesNothingButToAnOrdinaryUser(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");')
        self.result("LockTest.Number0", SKIPPED, "LOCK-1")

        self.assertRefused(self.checkRun(), "docs/locks.md:5: LOCK-1: no test of it passed: "
                           "LockTest.Number0 of lock-tests skipped")
        self.assertAccepted(self.checkRun(user=1000))

    def testATestThatWasSkippedBeforeItsFirstStatementIsKnownByItsName(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.claims('proves("LOCK-1");', 'proves("LOCK-2");')
        self.result("LockTest.Number0", SKIPPED, "")
        self.result("All/LockTest.Number1/0", SKIPPED, "")

        self.assertRefused(self.checkRun(), "docs/locks.md:5: LOCK-1: no test of it passed: "
                           "LockTest.Number0 of lock-tests skipped",
                           "docs/locks.md:6: LOCK-2: no test of it passed: "
                           "All/LockTest.Number1/0 of lock-tests skipped")
        self.assertAccepted(self.checkRun(user=1000))

    def testATestThatFailedBeforeItsFirstStatementIsKnownByItsName(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");', 'proves("LOCK-1");')
        self.result("LockTest.Number0", FAILED, "")
        self.result("LockTest.Number1", PASSED, "LOCK-1")

        self.assertRefused(self.checkRun(),
                           "docs/locks.md:5: LOCK-1: LockTest.Number0 of lock-tests failed")

    def testATestThatPassedWithoutReachingItsClaimProvesNothing(self):
        self.promise("- **LOCK-1** One.")
        self.claims('if (no) proves("LOCK-1");')
        self.result("LockTest.Number0", PASSED, "")

        self.assertRefused(self.checkRun(), "docs/locks.md:5: LOCK-1: no test of it passed: "
                           "LockTest.Number0 (tests/LockTest.cpp:2) left no proof")

    def testASkippedTestBesideOneThatPassedIsAccepted(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");', 'proves("LOCK-1");')
        self.result("LockTest.Number0", SKIPPED, "LOCK-1")
        self.result("LockTest.Number1", PASSED, "LOCK-1")

        self.assertAccepted(self.checkRun())

    def testEveryCaseOfAParameterisedTestHasToPass(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.claims('proves("LOCK-1");', 'proves("LOCK-2");')
        self.result("All/LockTest.Number0/0", PASSED, "LOCK-1")
        self.result("All/LockTest.Number0/1", PASSED, "LOCK-1")
        self.result("LockTest/0.Number1", PASSED, "LOCK-2")
        self.result("LockTest/1.Number1", FAILED, "LOCK-2")

        self.assertRefused(self.checkRun(),
                           "docs/locks.md:6: LOCK-2: LockTest/1.Number1 of lock-tests failed")

    def testTheSameNameInTwoProgramsIsTwoTests(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");')
        self.result("LockTest.Number0", FAILED, "LOCK-1")
        self.result("LockTest.Number0", PASSED, "LOCK-1", kind="other-tests")

        self.assertRefused(self.checkRun(programs=("lock-tests", "other-tests")),
                           "docs/locks.md:5: LOCK-1: LockTest.Number0 of lock-tests failed")

    def testWithoutResultsThatIsToldAndNothingElse(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.claims('proves("LOCK-1", "LOCK-2");')

        self.assertRefused(self.checkRun(), "results/lock-tests: no results since lock-tests was "
                           "built; run all tests first")

    def testAProgramWithoutResultsIsToldAlone(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");')
        self.result("LockTest.Number0", PASSED, "LOCK-1")

        self.assertRefused(self.checkRun(programs=("lock-tests", "other-tests")),
                           "results/other-tests: no results since other-tests was built; "
                           "run all tests first")

    def testResultsOfAnOlderProgramDoNotCount(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");')
        self.result("LockTest.Number0", PASSED, "LOCK-1", age=20)
        self.result("LockTest.Number1", PASSED, "")

        self.assertRefused(self.checkRun(), "docs/locks.md:5: LOCK-1: no test of it passed: "
                           "LockTest.Number0 (tests/LockTest.cpp:2) left no proof")

    def testATornResultIsPassedOver(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");')
        self.result("LockTest.Number0", PASSED, "LOCK-1")
        self.write("results/lock-tests/torn.xml", "<testsuites>")

        self.assertAccepted(self.checkRun())

    def testResultsOfOtherTestsCountWhenTheyAreNewerThanEveryProgram(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.", "- **LOCK-3** Three.")
        self.write("tests/some.sh", "# proves: LOCK-1\nscenario_Waits() {\n}\n"
                   "# proves: LOCK-2\nscenario_Stops() {\n}\n")
        self.write("tests/some.cmake", "step(headers PROVES LOCK-3)\n")
        self.result("LockTest.Number0", PASSED, "")
        self.result("real.Waits", PASSED, "LOCK-1", kind="real")
        self.result("real.Stops", PASSED, "LOCK-2", kind="real", age=20)

        self.assertRefused(self.checkRun(), "docs/locks.md:6: LOCK-2: no test of it passed: "
                           "real.Stops (tests/some.sh:4) left no proof",
                           "docs/locks.md:7: LOCK-3: no test of it passed: "
                           "headers (tests/some.cmake:1) left no proof")

    def testResultsOfOtherTestsThatAreOlderThanOneOfTheProgramsDoNotCount(self):
        self.promise("- **LOCK-1** One.")
        self.write("tests/some.cmake", "step(headers PROVES LOCK-1)\n")
        older, newer = self.program("older-tests"), self.program("newer-tests")
        os.utime(newer, (self._built + 5, self._built + 5))
        self.result("LockTest.Number0", PASSED, "", kind="older-tests")
        self.result("LockTest.Number0", PASSED, "", kind="newer-tests")
        self.result("package.headers", PASSED, "LOCK-1", kind="package", age=7)

        result = self.check("--results", self._results, older, newer)

        self.assertRefused(result, "docs/locks.md:5: LOCK-1: no test of it passed: "
                           "headers (tests/some.cmake:1) left no proof")

    def testNamesAreCheckedBesideProofs(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1", "LOCK-2");')
        self.result("LockTest.Number0", FAILED, "LOCK-1 LOCK-2")

        self.assertRefused(self.checkRun(),
                           "tests/LockTest.cpp:2: there is no promise LOCK-2; LOCK-1?",
                           "docs/locks.md:5: LOCK-1: LockTest.Number0 of lock-tests failed")

    def testAPromiseThatNoTestNamesIsToldOnce(self):
        self.promise("- **LOCK-1** One.", "- **LOCK-2** Two.")
        self.claims('proves("LOCK-1");')
        self.result("LockTest.Number0", PASSED, "LOCK-1")

        self.assertRefused(self.checkRun(), "docs/locks.md:6: no test proves LOCK-2")

    def testResultsAndProgramsBelongTogether(self):
        for options in (["--results", self._results], [self.program()]):
            result = self.check(*options)

            self.assertEqual(result.returncode, 2)
            self.assertIn("belong together", result.stderr)

    # --- Table ---

    def testTheTableTellsTheTestsOfEachPromise(self):
        self.promise("- **LOCK-1** One of `a | b`,", "  wrapped.", "- **LOCK-2** Two.")
        self.promise("- **OTHER-1** Three.", page="other")
        self.claims('proves("LOCK-1", "LOCK-2", "OTHER-1");')
        self.result("LockTest.Number0", PASSED, "LOCK-1 LOCK-2")
        self.result("All/LockTest.Each/0", PASSED, "LOCK-2")
        self.result("All/LockTest.Each/1", PASSED, "LOCK-2")
        self.result("real.Waits", SKIPPED, "LOCK-2", kind="real")

        result = self.checkRun("--table", self._root / "proofs.md")

        self.assertRefused(result, "docs/other.md:5: OTHER-1: no test of it passed: "
                           "LockTest.Number0 (tests/LockTest.cpp:2) left no proof")
        self.assertEqual((self._root / "proofs.md").read_text(encoding="utf-8"), """\
# What the last run of the tests has shown

## locks

| | Promise | Proved by |
|---|---|---|
| LOCK-1 | One of `a \\| b`, wrapped. | `LockTest.Number0` (lock-tests) |
| LOCK-2 | Two. | `All/LockTest.Each` (lock-tests, 2 cases)<br>`LockTest.Number0` (lock-tests)<br>\
`real.Waits` (real, skipped) |

## other

| | Promise | Proved by |
|---|---|---|
| OTHER-1 | Three. |  |
""")

    def testTheTableIsPrintedOnRequest(self):
        self.promise("- **LOCK-1** One.")
        self.claims('proves("LOCK-1");')
        self.result("LockTest.Number0", PASSED, "LOCK-1")

        result = self.checkRun("--table", "-")

        self.assertEqual(result.returncode, 0)
        self.assertIn("| LOCK-1 | One. | `LockTest.Number0` (lock-tests) |\n", result.stdout)


if __name__ == "__main__":
    unittest.main()
