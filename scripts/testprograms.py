"""What GoogleTest programs hold and how their tests ended; shared by the checks beside it."""

import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree
from collections import namedtuple
from pathlib import Path

# One test: its full name ("Inst/Suite.Name/0"), the source file, the program that holds it.
Test = namedtuple("Test", "name file program")
# How a test ended: "passed", "failed", "skipped" or "not run"; and the promises that it proves.
Result = namedtuple("Result", "name outcome proves")


def _cases(document):
    for suite in document.getroot().iter("testsuite"):
        for case in suite.iter("testcase"):
            yield f"{suite.get('name')}.{case.get('name')}", case


def testsOf(program):
    with tempfile.TemporaryDirectory() as folder:
        report = Path(folder) / "report.xml"
        subprocess.run(
            [program, f"--gtest_output=xml:{report}", "--gtest_list_tests"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=False)
        if not report.exists():
            raise SystemExit(f"{program}: cannot list its tests")
        return [Test(name, case.get("file"), program)
                for name, case in _cases(ElementTree.parse(report))]


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
