"""The demo shows that it builds, and is alone in its clone."""

import os
import pty
import shutil
import signal
import subprocess
import tempfile
import termios
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class DemoTest(unittest.TestCase):
    """A clone whose bootstrap, cmake and story are scripts. Each notes how it was started."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        shutil.copy(ROOT / "demo", self._root)
        self.make("scripts/bootstrap", "")
        self.make("tools/cmake", 'if [[ $1 == --build ]]; then echo "[1/2] Building one"; '
                                 'echo "[2/2] Linking two"; else echo "-- Configuring"; fi')
        self.make("sample/tell-story", "echo THE STORY")

    def make(self, name, script):
        path = self._root / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(f'#!/bin/bash\necho "{name} $*" >>{self._root}/notes\n{script}\n',
                        encoding="utf-8")
        path.chmod(0o755)

    def start(self, *arguments, **options):
        path = f"{self._root}/tools:{os.environ['PATH']}"
        return subprocess.Popen([self._root / "demo", *arguments], cwd="/",
                                env={**os.environ, "PATH": path}, text=True, **options)

    def run_(self, *arguments):
        demo = self.start(*arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        output, errors = demo.communicate()
        return demo.returncode, output, errors

    def notes(self):
        return (self._root / "notes").read_text(encoding="utf-8").splitlines()

    def testItBuildsEverythingAndTellsTheStory(self):
        status, output, errors = self.run_()

        self.assertEqual((status, errors), (0, ""))
        self.assertTrue(output.endswith("THE STORY\n"), output)
        bootstrap, configure, build, story = self.notes()
        self.assertEqual(bootstrap, "scripts/bootstrap sample")
        self.assertEqual(configure, "tools/cmake --preset release -DHOTFIX_BUILD_CTL=ON "
                                    "-DHOTFIX_BUILD_SAMPLE=ON")
        self.assertTrue(build.startswith("tools/cmake --build --preset release -j "), build)
        self.assertNotIn("--target", build)
        self.assertEqual(story, "sample/tell-story sample/embedded-story.sh")

    def testTheRealStoryNeedsNoSample(self):
        status, _, _ = self.run_("--real")

        self.assertEqual(status, 0)
        self.assertEqual(self.notes()[1], "tools/cmake --preset release -DHOTFIX_BUILD_CTL=ON")
        self.assertEqual(self.notes()[-1], "sample/tell-story sample/equinox/story.sh")

    def testInAFileTheBuildShowsALineAndHowManyStepsThereWere(self):
        _, output, _ = self.run_()

        self.assertRegex(output, r"\ABuilding \(build/demo\.log\) \.\.\.\n  -- Configuring\n"
                                 r"Steps of the build: 2 of 2, in \d+ s\.\nTHE STORY\n\Z")
        self.assertEqual((self._root / "build" / "demo.log").read_text(encoding="utf-8"),
                         "-- Configuring\n[1/2] Building one\n[2/2] Linking two\n")

    def testABuildWithoutWorkIsSaidToBeOne(self):
        self.make("tools/cmake", 'echo "[0/2] Re-checking"; echo "ninja: no work to do."')

        _, output, _ = self.run_()

        self.assertIn("Steps of the build: none was needed, in ", output)

    def testOnATerminalTheBuildsLinesAreWrittenOneOverTheOther(self):
        self.make("tools/cmake", 'if [[ $1 == --build ]]; then echo "[1/2] Building one"; '
                                 f'echo "[2/2] Linking {"x" * 200}"; fi')
        terminal, other = pty.openpty()
        termios.tcsetwinsize(other, (25, 40))
        demo = self.start(stdout=other, stderr=other)
        os.close(other)
        shown = b""
        try:
            while piece := os.read(terminal, 4096):
                shown += piece
        except OSError:  # the other end is closed
            pass
        os.close(terminal)
        demo.wait()

        self.assertIn(b"\r\x1b[K[1/2] Building one\r\x1b[K[2/2] Linking xxx", shown)
        self.assertIn(b"Linking " + b"x" * 25 + b"\r\x1b[KSteps of the build: 2 of 2, in ", shown)

    def testABuildThatFailsEndsItWithTheEndOfTheLog(self):
        self.make("tools/cmake", 'echo "[1/2] Building"; echo "no such thing" >&2; exit 1')

        status, output, errors = self.run_()

        self.assertEqual(status, 1)
        self.assertEqual(errors, "[1/2] Building\nno such thing\n")
        self.assertNotIn("THE STORY", output)

    def testWhatIsMissingEndsItBeforeTheBuild(self):
        self.make("scripts/bootstrap", "echo cmake is missing >&2; exit 1")

        status, _, errors = self.run_()

        self.assertEqual((status, errors), (1, "cmake is missing\n"))
        self.assertEqual(self.notes(), ["scripts/bootstrap sample"])

    def startWaiting(self):
        """A demo in the middle of its story."""
        os.mkfifo(self._root / "begun")
        self.make("sample/tell-story", f"echo >{self._root}/begun; exec sleep 1000")
        demo = self.start(stdout=subprocess.DEVNULL)
        (self._root / "begun").read_text(encoding="utf-8")
        self.addCleanup(demo.wait)
        self.addCleanup(demo.kill)
        self.make("sample/tell-story", "echo THE STORY")
        return demo

    def testASecondOneInTheSameCloneIsRefused(self):
        self.startWaiting()

        status, output, errors = self.run_()

        self.assertEqual((status, output), (1, ""))
        self.assertEqual(errors, "Another ./demo is at work in this clone: wait until it has ended.\n")
        self.assertEqual(len([line for line in self.notes() if "cmake" in line]), 2)

    def testAKilledOneIsInNobodysWay(self):
        demo = self.startWaiting()
        demo.send_signal(signal.SIGKILL)
        demo.wait()

        status, output, _ = self.run_()

        self.assertEqual(status, 0)
        self.assertTrue(output.endswith("THE STORY\n"), output)

    def testServicesThatWereInstalledDoNotKeepTheLock(self):
        self.make("scripts/bootstrap", "sleep 1000 <&- >&- 2>&- & echo $! >service")
        self.assertEqual(self.run_()[0], 0)
        service = int((self._root / "service").read_text(encoding="utf-8"))
        self.addCleanup(os.kill, service, signal.SIGKILL)
        self.make("scripts/bootstrap", "")

        self.assertEqual(self.run_()[0], 0)

    def testUnknownOptionsAreRefused(self):
        status, _, errors = self.run_("--reel")

        self.assertEqual(status, 2)
        self.assertIn("usage: ./demo", errors)


if __name__ == "__main__":
    unittest.main()
