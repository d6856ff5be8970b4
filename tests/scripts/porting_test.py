"""The page for another system lists what the sources ask for, and CMake refuses a system that no
source was written for."""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))

from systems import systemsOf

PLATFORM = ROOT / "src" / "platform"
SYSTEMS = systemsOf(ROOT)
SHARED = ["files", "posix"]
SOURCES = {".cpp", ".mm"}


def rowsBelow(heading, table=1):
    """A table below the heading of the page: one list of cells a row, without the header row."""
    page = (ROOT / "docs" / "porting.md").read_text(encoding="utf-8")
    section = page.split(f"## {heading}\n")[1].split("\n## ")[0]
    tables = re.findall(r"(?:^\|.*\n?)+", section, re.MULTILINE)
    return [[cell.strip() for cell in line.strip("|").split("|")]
            for line in tables[table - 1].splitlines()[2:]]


def names(cell):
    return re.findall(r"`([^`]+)`", cell)


def seamsOf(folder):
    """The sources of the folder that keep the word of a header elsewhere."""
    return {path.stem for path in (PLATFORM / folder).iterdir()
            if path.suffix in SOURCES and not path.with_suffix(".h").exists()}


def functionsOf(header):
    """What a header declares and does not define."""
    code = re.sub(r"//.*", "", header.read_text(encoding="utf-8"))
    code = re.sub(r"\{[^{}]*\breturn\b[^{}]*\}", "", code)
    return set(re.findall(r"(\w+)\([^()]*\);", code))


class PortingTest(unittest.TestCase):
    def testEveryServiceOfThePlatformIsListed(self):
        code = (PLATFORM / "Platform.h").read_text(encoding="utf-8")
        services = re.findall(r"^  (\w+)\* \w+ = nullptr;", code, re.MULTILINE)
        self.assertGreater(len(services), 5)

        listed = [names(row[0])[0] for row in rowsBelow("Services")]

        self.assertEqual(listed, services)

    def testEveryListedServiceIsImplementedWhereThePageSays(self):
        for contract, *cells in rowsBelow("Services"):
            self.assertEqual(len(cells), len(SYSTEMS))
            for cell, system in zip(cells, SYSTEMS.values()):
                [name] = names(cell)
                found = [folder for folder in SHARED + [system]
                         if (PLATFORM / folder / f"{name}.h").exists()]
                self.assertEqual(len(found), 1, name)
                code = (PLATFORM / found[0] / f"{name}.h").read_text(encoding="utf-8")
                self.assertRegex(code, f" : public (Posix)?{names(contract)[0]} ")

    def testEverySystemSuppliesTheSameFunctions(self):
        first, *others = (seamsOf(folder) for folder in SYSTEMS.values())
        self.assertTrue(first)

        for other in others:
            self.assertEqual(other, first)

    def testEveryFunctionThatTheLinkerFindsIsListed(self):
        rows = rowsBelow("Functions found by the linker")
        expected = {name: "each system" for name in seamsOf(next(iter(SYSTEMS.values())))}
        expected |= {name: "posix" for name in seamsOf("posix")}

        self.assertEqual({Path(names(row[0])[0]).stem: row[2] for row in rows}, expected)
        for header, functions, _ in rows:
            declared = functionsOf(ROOT / "src" / names(header)[0])
            self.assertEqual(set(names(functions)), declared, header)

    def testThePageCountsWhatItLists(self):
        page = (ROOT / "docs" / "porting.md").read_text(encoding="utf-8")

        rows = rowsBelow("Services") + rowsBelow("Functions found by the linker")

        self.assertEqual(len(rows), 26)
        self.assertIn("supply the twenty-six things", page)


def sourcesIn(folder):
    return {path.name for path in folder.iterdir()} if folder.is_dir() else set()


class SystemListTest(unittest.TestCase):
    def testEachFolderOfASystemIsListed(self):
        folders = {path.name for path in PLATFORM.iterdir() if path.is_dir()}

        self.assertEqual(folders - {*SHARED, "overlay"}, set(SYSTEMS.values()))
        self.assertEqual(len(SYSTEMS), 2)

    # A new system is named in the list and gets its folders: nothing else of the build, and no
    # script, names one.
    def testTheSystemsAreNamedInTheListOnly(self):
        words = [*SYSTEMS, *SYSTEMS.values(), "APPLE", "LINUX", "UNIX", "CMAKE_SYSTEM_NAME"]
        named = re.compile(r"\b(" + "|".join(words) + r")\b")
        patterns = ("CMakeLists.txt", "CMakePresets.json", "*/CMakeLists.txt", "*/*/CMakeLists.txt",
                    "*/*.cmake", "*/*/*.cmake", "scripts/*")
        files = [path for pattern in patterns for path in ROOT.glob(pattern)
                 if path.is_file() and ROOT / "build" not in path.parents]
        self.assertGreater(len(files), 30)

        holders = [path.relative_to(ROOT).as_posix() for path in files
                   if named.search(path.read_text(encoding="utf-8"))]

        self.assertEqual(holders, ["cmake/System.cmake"])

    # What the tests ask a system for, each beside the one of the others. A source with its header
    # beside it is for the tests of that system alone.
    def testEverySystemSuppliesTheTestsWithTheSame(self):
        for place in ("support", "children"):
            files = [path for path in (ROOT / "tests" / place).glob("*/*")
                     if path.parent.name in SYSTEMS.values()]
            asked = {path.name for path in files
                     if not all(path.with_suffix(suffix) in files for suffix in (".h", ".cpp"))}
            self.assertTrue(asked)
            listed = {Path(names(row[0])[0]) for row in rowsBelow("Services", 2)}
            self.assertEqual({path.name for path in listed if path.parts[1] == place}, asked)
            for folder in SYSTEMS.values():
                self.assertLessEqual(asked, sourcesIn(ROOT / "tests" / place / folder), folder)
        for folder in SYSTEMS.values():
            self.assertIn("Contracts.cpp", sourcesIn(ROOT / "tests/unit/platform" / folder), folder)


class SystemChoiceTest(unittest.TestCase):
    def choose(self, system):
        return subprocess.run(
            ["cmake", f"-DCMAKE_SYSTEM_NAME={system}", "-P", ROOT / "cmake" / "System.cmake"],
            capture_output=True, text=True, check=False)

    def testSystemsWithAFolderAreTaken(self):
        for system, folder in SYSTEMS.items():
            self.assertEqual(self.choose(system).returncode, 0)
            self.assertTrue((PLATFORM / folder).is_dir())

    def testABuildForAnotherSystemIsRefused(self):
        for system in ("FreeBSD", "Windows", ""):
            with tempfile.TemporaryDirectory() as build:
                result = subprocess.run(
                    ["cmake", "-S", ROOT, "-B", build, f"-DCMAKE_SYSTEM_NAME={system}",
                     "-DCMAKE_CXX_COMPILER_FORCED=ON", "-DHOTFIX_BUILD_TESTS=OFF"]
                    if system else ["cmake", "-P", ROOT / "cmake" / "System.cmake"],
                    capture_output=True, text=True, check=False)

            self.assertNotEqual(result.returncode, 0, system)
            self.assertIn(f"There is no platform folder for {system};", result.stderr)


if __name__ == "__main__":
    unittest.main()
