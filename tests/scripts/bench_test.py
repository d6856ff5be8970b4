"""The benchmarks' scripts take ratios inside a round, growth by item, and draw what was recorded."""

import contextlib
import importlib.machinery
import importlib.util
import io
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from pathlib import Path

BENCH = Path(__file__).resolve().parents[2] / "bench"
sys.path.insert(0, str(BENCH))

import measuring  # pylint: disable=wrong-import-position


def load(name):
    loader = importlib.machinery.SourceFileLoader(name, str(BENCH / name))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(name, loader))
    loader.exec_module(module)
    return module


MEASURE, GROWTH, PLOT, LINES = load("measure"), load("growth"), load("plot"), load("lines")

# A program that notes what it is asked for and answers as a benchmark does.
PROGRAM = """#!/bin/bash
echo "$PEERS_LIVE $*" >>"$0.asked"
if [[ $1 == make-data ]]; then mkdir -p "$2"; exit; fi
echo "VmHWM:	    2048 kB" >&2
{answer}
"""
ANSWER = """echo '{"benchmarks": [{"name": "x", "real_time": 1500, "cpu_time": 250,
                                    "time_unit": "us"}]}'"""


class WorkshopTest(unittest.TestCase):
    def workshop(self, answer=ANSWER, sizes=None):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._program = Path(folder.name) / "bench"
        self._program.write_text(PROGRAM.replace("{answer}", answer), encoding="utf-8")
        self._program.chmod(0o755)
        workshop = measuring.Workshop(self._program, sizes or {"props": [10, 20], "plist": [5]})
        self.addCleanup(workshop.__exit__)
        return workshop

    def asked(self):
        return Path(f"{self._program}.asked").read_text(encoding="utf-8").splitlines()

    def testTheProgramMakesTheData(self):
        workshop = self.workshop()

        self.assertEqual(self.asked(), [f" make-data {workshop.data} props=10,20 plist=5"])

    def testABenchmarksFiguresAreSecondsAndKib(self):
        workshop = self.workshop()

        self.assertEqual(workshop.benchmark("some/5"), {"wall": 0.0015, "cpu": 0.00025,
                                                        "peak": 2048})

        self.assertTrue(self.asked()[-1].startswith(f"{workshop.live} "))
        self.assertIn("^some/5(/iterations:1)?(/real_time)?$", self.asked()[-1])

    def testAnUnknownBenchmarkIsNoFigure(self):
        for answer in ("true", """echo '{"benchmarks": []}'"""):
            with self.subTest(answer=answer):
                with self.assertRaisesRegex(measuring.MeasuringError, "knows no benchmark some/5"):
                    self.workshop(answer).benchmark("some/5")

    def testAFailureIsNoFigure(self):
        failed = ANSWER.replace('"name"', '"error_message": "not saved", "name"')

        with self.assertRaisesRegex(measuring.MeasuringError, "some/5: not saved"):
            self.workshop(failed).benchmark("some/5")
        with self.assertRaisesRegex(measuring.MeasuringError, "out of order"):
            self.workshop("echo out of order >&2; exit 3").benchmark("some/5")

    def testACopyFindsItsSourceAndAMergeItsDestination(self):
        workshop = self.workshop()
        (workshop.data / "tree/1").mkdir(parents=True)
        (workshop.data / "tree/1/file").write_text("text", encoding="utf-8")

        workshop.prepare("merge_copy/1")
        self.assertTrue((workshop.live / "copy/file").exists())

        workshop.prepare("fresh_copy/1")
        self.assertTrue((workshop.live / "src/file").exists())
        self.assertFalse((workshop.live / "copy").exists())

    def testAFolderOfManyLevelsGoesToo(self):
        with self.workshop() as workshop:
            subprocess.run(["mkdir", "-p", workshop.data / ("d/" * 1200)], check=True)

        self.assertFalse(workshop.data.exists())

    def testACommandIsTimedWithItsChildren(self):
        figures = self.workshop().command('i=0; while [ $i -lt "$1" ]; do i=$((i+1)); done', 99999)

        self.assertGreater(figures["cpu"], 0)
        self.assertGreaterEqual(figures["wall"] * 1.5, figures["cpu"])
        self.assertNotIn("peak", figures)


class MeasureTest(unittest.TestCase):
    def testRatiosAreTakenInsideARound(self):
        rounds = [({"wall": wall, "cpu": cpu, "peak": 10}, {"wall": other, "cpu": 1})
                  for wall, cpu, other in ((2, 1, 1), (30, 3, 10), (800, 2, 100))]

        result = MEASURE.summary("piece/1", rounds)

        self.assertEqual(result["wall"], 30)
        self.assertEqual(result["reference_wall"], 10)
        self.assertEqual(result["wall_ratio"], 3)
        self.assertEqual(result["cpu_ratio"], 2)
        self.assertIsNone(result["peak_ratio"])

    def testAReferenceTooShortToMeasureHasNoRatio(self):
        result = MEASURE.summary("piece/1", [({"wall": 1, "cpu": 1, "peak": 1},
                                              {"wall": 1, "cpu": 0})])

        self.assertIsNone(result["cpu_ratio"])
        self.assertEqual(MEASURE.shown(result)[-2:], ["-", "-"])


class GrowthTest(unittest.TestCase):
    def testAnItemsFiguresAreThoseOfTheSizeBeyondAnIdleProcess(self):
        taken = {10: [{"wall": 10e-6, "cpu": 20e-6, "peak": 110}],
                 100: [{"wall": 300e-6, "cpu": 100e-6, "peak": 300}]}

        self.assertEqual(GROWTH.row("piece/N", [10, 100], taken, 100),
                         ["`piece/N`", "10", "2", "1", "1.00", "3.00", "1024", "2048", "2.00"])

    def testWithoutAFigureOfTheSmallestNothingGrows(self):
        taken = {10: [{"wall": 0, "cpu": 0, "peak": 100}]}

        self.assertEqual(GROWTH.row("piece/N", [10], taken, 100),
                         ["`piece/N`", "10", "0", "-", "-", "0", "-"])

    def testProcessesAreThereMeanwhile(self):
        with GROWTH.sleepers(20) as processes:
            programs = [os.readlink(f"/proc/{one.pid}/exe") for one in processes]
        self.assertEqual(programs, [os.path.realpath(shutil.which("sleep"))] * 20)
        self.assertNotIn(None, [one.returncode for one in processes])


class PlotTest(unittest.TestCase):
    def draw(self, *records):
        with tempfile.TemporaryDirectory() as folder:
            for number, record in enumerate(records):
                (Path(folder) / f"{number}.json").write_text(json.dumps(record), encoding="utf-8")
            with contextlib.redirect_stdout(io.StringIO()) as output:
                PLOT.main(Path(folder))
        return output.getvalue()

    @staticmethod
    def record(commit, date, **ratios):
        return {"commit": commit, "commit_date": date,
                "results": [{"name": name, "cpu_ratio": ratio} for name, ratio in ratios.items()]}

    def testEachBenchmarkIsALineOverTheCommitsInTheirOrder(self):
        text = self.draw(self.record("second0", "2026-02-02", a=0.5, b=2.0),
                         self.record("first00", "2026-01-01", a=5.0))

        root = xml.etree.ElementTree.fromstring(text)
        space = "{http://www.w3.org/2000/svg}"
        words = [one.text for one in root.iter(space + "text")]
        self.assertLess(words.index("first00"), words.index("second0"))
        self.assertIn("a  0.50", words)
        self.assertIn("b  2.00", words)
        self.assertEqual(len(list(root.iter(space + "circle"))), 3)

    def testLabelsKeepTheirDistance(self):
        self.assertEqual(PLOT.spread([30, 10, 12, 14]), [10, 25, 40, 55])

    def testWithoutResultsNothingIsDrawn(self):
        with self.assertRaisesRegex(SystemExit, "no results in"):
            self.draw()


class LinesTest(unittest.TestCase):
    # As callgrind writes it: costs by line, calls with what they cost in all.
    PROFILE = """
fl=/src/src/base/Path.cpp
fn=normalized
10 5
fi=/usr/include/string_view
99 40
fe=/src/src/base/Path.cpp
12 1
cfn=memchr
calls=2 0
12 60
cfi=/src/src/platform/Log.h
cfn=log
calls=1 0
14 200
fl=/src/src/platform/Log.h
fn=log
7 200
fl=./elf/dl-lookup.c
fn=do_lookup_x
1 300
fl=./string/memchr.S
fn=memchr
3 60
"""

    def testALineCostsWhatItTakesAndWhatLibrariesDoForIt(self):
        lines, total = LINES.costs(self.PROFILE)

        self.assertEqual(total, 5 + 40 + 1 + 200 + 300 + 60)
        self.assertEqual(lines, {"base/Path.cpp:10": 5 + 40, "base/Path.cpp:12": 1 + 60,
                                 "platform/Log.h:7": 200, LINES.LOADER: 300})


if __name__ == "__main__":
    unittest.main()
