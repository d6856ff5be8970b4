"""What GoogleTest programs hold and how their tests ended; shared by the checks beside it."""

import os
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree
from collections import namedtuple
from pathlib import Path

# One test: its full name ("Inst/Suite.Name/0"), the source file, the program that holds it.
Test = namedtuple("Test", "name file program")
# How a test ended: "passed", "failed", "skipped" or "not run"; and the promises that it proves.
Result = namedtuple("Result", "name outcome proves")

NAMES_AT_ONCE = 500  # a single argument holds 128 KiB


def _cases(document):
    for suite in document.getroot().iter("testsuite"):
        for case in suite.iter("testcase"):
            yield f"{suite.get('name')}.{case.get('name')}", case


def _run(program, *arguments):
    """The parsed report of one run of the program; None when it left none."""
    with tempfile.TemporaryDirectory() as folder:
        report = Path(folder) / "report.xml"
        subprocess.run(
            [program, f"--gtest_output=xml:{report}", *arguments],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=False)
        return ElementTree.parse(report) if report.exists() else None


def testsOf(program):
    document = _run(program, "--gtest_list_tests")
    if document is None:
        raise SystemExit(f"{program}: cannot list its tests")
    return [Test(name, case.get("file"), program) for name, case in _cases(document)]


def outcomeOf(case):
    if case.find("failure") is not None or case.find("error") is not None:
        return "failed"
    if case.get("result") == "skipped" or case.find("skipped") is not None:
        return "skipped"
    return "passed" if case.get("status") == "run" else "not run"


def _provesOf(case):
    return [identifier for entry in case.iter("property") if entry.get("name") == "proves"
            for identifier in entry.get("value").split()]


def resultsIn(folder, since):
    """The results that were left in the folder at this time, in seconds, or later."""
    for report in sorted(Path(folder).rglob("*.xml")):
        if report.stat().st_mtime < since:
            continue
        try:
            document = ElementTree.parse(report)
        except ElementTree.ParseError:  # being written, or the test ended in the middle
            continue
        for name, case in _cases(document):
            yield Result(name, outcomeOf(case), _provesOf(case))


def recordedOutcomes(folder, program):
    """The outcomes that runs of this very program have left in the folder, by test name."""
    built = os.stat(program).st_mtime
    outcomes = {}
    for report in Path(folder).rglob("*.xml"):
        if report.stat().st_mtime < built:
            continue
        try:
            document = ElementTree.parse(report)
        except ElementTree.ParseError:  # being written, or the test ended in the middle
            continue
        outcomes.update((name, outcomeOf(case)) for name, case in _cases(document))
    return outcomes


def runTests(program, names):
    """Runs these tests of the program: their outcomes by name."""
    outcomes = {}
    for begin in range(0, len(names), NAMES_AT_ONCE):
        document = _run(program, "--gtest_filter=" + ":".join(names[begin:begin + NAMES_AT_ONCE]))
        if document is not None:
            outcomes.update((name, outcomeOf(case)) for name, case in _cases(document))
    return outcomes
