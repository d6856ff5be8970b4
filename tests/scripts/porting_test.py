"""The page for another system lists what the sources ask for, and CMake refuses a system that no
source was written for."""

import re
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PLATFORM = ROOT / "src" / "platform"
SYSTEMS = {"Linux": "linux", "Darwin": "macos"}
SHARED = ["files", "posix"]
SOURCES = {".cpp", ".mm"}


def rowsBelow(heading):
    """The table below the heading of the page: one list of cells a row, without the header row."""
    page = (ROOT / "docs" / "porting.md").read_text(encoding="utf-8")
    section = page.split(f"## {heading}\n")[1].split("\n## ")[0]
    lines = [line for line in section.splitlines() if line.startswith("|")]
    return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines[2:]]


def names(cell):
    return re.findall(r"`([^`]+)`", cell)


def seamsOf(folder):
    """The sources of the folder that keep the word of a header elsewhere."""
    return {path.stem for path in (PLATFORM / folder).iterdir()
            if path.suffix in SOURCES and not path.with_suffix(".h").exists()}


def functionsOf(header):
    """What a header of plain functions declares."""
    code = re.sub(r"//.*", "", header.read_text(encoding="utf-8"))
    return set(re.findall(r"(\w+)\([^()]*\);", code))


class PortingTest(unittest.TestCase):
    def testEveryServiceOfThePlatformIsListed(self):
        code = (PLATFORM / "Platform.h").read_text(encoding="utf-8")
        services = re.findall(r"^  (\w+)\* \w+ = nullptr;", code, re.MULTILINE)
        self.assertGreater(len(services), 5)

        listed = [names(row[0])[0] for row in rowsBelow("Services")]

        self.assertEqual(listed, services)

    def testEveryListedServiceIsImplementedWhereThePageSays(self):
        for contract, linux, macos in rowsBelow("Services"):
            for cell, system in ((linux, "linux"), (macos, "macos")):
                [name] = names(cell)
                found = [folder for folder in SHARED + [system]
                         if (PLATFORM / folder / f"{name}.h").exists()]
                self.assertEqual(len(found), 1, name)
                code = (PLATFORM / found[0] / f"{name}.h").read_text(encoding="utf-8")
                self.assertIn(f" : public {names(contract)[0]} ", code)

    def testEverySystemSuppliesTheSameFunctions(self):
        linux, macos = (seamsOf(folder) for folder in SYSTEMS.values())
        self.assertTrue(linux)

        self.assertEqual(linux, macos)

    def testEveryFunctionThatTheLinkerFindsIsListed(self):
        rows = rowsBelow("Functions found by the linker")
        expected = {name: "each system" for name in seamsOf("linux")}
        expected |= {name: "posix" for name in seamsOf("posix")}

        self.assertEqual({Path(names(row[0])[0]).stem: row[2] for row in rows}, expected)
        for header, functions, _ in rows:
            declared = functionsOf(ROOT / "src" / names(header)[0])
            self.assertEqual(set(names(functions)), declared, header)

    def testThePageCountsWhatItLists(self):
        page = (ROOT / "docs" / "porting.md").read_text(encoding="utf-8")

        rows = rowsBelow("Services") + rowsBelow("Functions found by the linker")

        self.assertEqual(len(rows), 13)
        self.assertIn("supply the thirteen things", page)


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
