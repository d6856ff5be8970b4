"""Makes programs that answer like GoogleTest programs, for the tests of the checks."""

import stat
import sys

PROGRAM = '''#!{python}
import sys
from xml.sax.saxutils import quoteattr

TESTS = {tests!r}  # name -> (file, outcome)
RUNS = {runs!r}

options = dict(argument.split("=", 1) for argument in sys.argv[1:] if "=" in argument)
report = options["--gtest_output"].split(":", 1)[1]
listing = "--gtest_list_tests" in sys.argv
wanted = options.get("--gtest_filter", "*").split(":")
if not listing:
    with open(RUNS, "a") as runs:
        runs.write(" ".join(wanted) + "\\n")
with open(report, "w") as out:
    out.write("<testsuites>")
    for name, (file, outcome) in TESTS.items():
        if not listing and wanted != ["*"] and name not in wanted:
            continue
        suite, case = name.split(".", 1)
        out.write("<testsuite name=%s><testcase name=%s file=%s" % tuple(
            map(quoteattr, (suite, case, file))))
        if listing:
            out.write("/>")
        elif outcome == "skipped":
            out.write(' status="run" result="skipped"><skipped/></testcase>')
        elif outcome == "failed":
            out.write(' status="run" result="completed"><failure/></testcase>')
        elif outcome == "not run":
            out.write(' status="notrun" result="suppressed"/>')
        else:
            out.write(' status="run" result="completed"/>')
        out.write("</testsuite>")
    out.write("</testsuites>")
'''


def makeProgram(path, tests):
    """Makes the program; answers the file that receives one line for each run of tests."""
    runs = path.with_suffix(".runs")
    path.write_text(PROGRAM.format(python=sys.executable, tests=tests, runs=str(runs)),
                    encoding="utf-8")
    path.chmod(path.stat().st_mode | stat.S_IXUSR)
    return runs
