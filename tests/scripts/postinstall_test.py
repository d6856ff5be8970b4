"""The script of a package for macOS starts the installer as that system's installer would have it."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class PostinstallTest(unittest.TestCase):
    """A folder of scripts as the system unpacks it, and stand-ins for the system's programs."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self._scripts = self._root / "Scripts of a package"
        self._bin = self._root / "bin"
        self._logs = self._root / "Logs/Hotfix"
        self._left = self._root / "left"
        self._left.mkdir()
        self._package = self._scripts / "hotfix/install/Fix.pkg"
        self._package.mkdir(parents=True)
        self._bin.mkdir()
        shutil.copy(ROOT / "packaging/macos/postinstall", self._scripts)
        self.make(self._scripts / "HotfixInstaller",
                  f'printf "%s\\n" "USER=$USER" "$@" >{self._root}/started\nexit "${{STATUS:-0}}"')
        self.make(self._bin / "stat", '[[ $* == "-f %Su /dev/console" ]] && echo "${AT_SCREEN-alice}"')
        self.make(self._bin / "id", '[[ $1 == -u ]] && case $2 in alice) echo 501;; root) echo 0;; '
                                    "*) exit 1;; esac")
        self.make(self._bin / "launchctl", f'''
            echo "$1 $2" >>{self._root}/launchctl
            if [[ $1 == print ]]; then exit "${{NO_SESSION:-0}}"; fi
            shift 2; exec "$@"''')

    @staticmethod
    def make(path, script):
        path.write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        path.chmod(0o755)

    def run_(self, *arguments, **variables):
        """Runs it with the variables that the system's installer documents."""
        arguments = arguments or ("/Downloads/Fix flat.pkg", "/Applications", "/", "/")
        environment = {"PATH": f"{self._bin}:{os.environ['PATH']}", "USER": "admin",
                       "PACKAGE_PATH": "/Downloads/Fix flat.pkg", "SCRIPT_NAME": "postinstall",
                       "INSTALLER_TEMP": str(self._root), "HOTFIX_LOGS": str(self._logs),
                       "HOTFIX_TMP": str(self._left)}
        return subprocess.run([self._scripts / "postinstall", *arguments],
                              env={**environment, **variables}, capture_output=True, text=True,
                              check=False)

    def started(self):
        path = self._root / "started"
        return path.read_text(encoding="utf-8").splitlines() if path.exists() else None

    def launchctl(self):
        path = self._root / "launchctl"
        return path.read_text(encoding="utf-8").splitlines() if path.exists() else []

    def testTheHotfixOfThePackageIsInstalledNotThePackagesFile(self):
        result = self.run_()

        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(self.started(), ["USER=alice", str(self._package), "/Applications"])

    def testTheInstallerRunsInTheSessionOfThePersonAtTheScreen(self):
        self.run_()

        self.assertEqual(self.launchctl(), ["print gui/501", "asuser 501"])

    def testWithoutASessionItRunsAsItIs(self):
        self.run_(NO_SESSION="1")

        self.assertEqual(self.launchctl(), ["print gui/501"])
        self.assertEqual(self.started()[0], "USER=alice")

    def testAtTheLoginWindowWhoeverAskedCounts(self):
        for user in ("", "root", "loginwindow", "_mbsetupuser"):
            with self.subTest(user=user):
                self.run_(AT_SCREEN=user)

                self.assertEqual(self.started()[0], "USER=admin")
        self.assertEqual(self.launchctl(), [])

    def testTheStatusIsTheInstallersAndItsReasonsAreKept(self):
        result = self.run_(STATUS="1")

        self.assertEqual(result.returncode, 1)
        kept = list(self._logs.iterdir())
        self.assertEqual(len(kept), 1)
        self.assertEqual((kept[0] / "status").read_text(encoding="utf-8"), "1\n")
        self.assertIn(str(kept[0]), result.stdout)

    def testWhatTheInstallerLeftIsKeptAndWhatWentWrongIsPrinted(self):
        lines = {"Info": "all", "Warning": "odd", "Error": "bad"}
        trace = "".join(f"1 <{level}>: {text}\n" for level, text in lines.items())
        (self._left / "install_trace.log").write_text(trace, encoding="utf-8")
        (self._left / "INSTALLATION_INTERNAL_PASTEBOARD").write_text("record", encoding="utf-8")
        (self._left / "other").write_text("other", encoding="utf-8")

        result = self.run_(STATUS="1")

        kept = {path.name: path.read_text(encoding="utf-8")
                for path in next(self._logs.iterdir()).iterdir()}
        self.assertEqual(kept, {"status": "1\n", "install_trace.log": trace,
                                "INSTALLATION_INTERNAL_PASTEBOARD": "record"})
        self.assertEqual(result.stdout.splitlines()[1:], ["1 <Warning>: odd", "1 <Error>: bad"])

    def testNothingBehindALinkIsKept(self):
        (self._root / "secret").write_text("1 <Error>: secret\n", encoding="utf-8")
        (self._left / "install_trace.log").symlink_to(self._root / "secret")

        result = self.run_(STATUS="1")

        self.assertEqual([path.name for path in next(self._logs.iterdir()).iterdir()], ["status"])
        self.assertNotIn("secret", result.stdout)

    def testSuccessLeavesNothing(self):
        self.run_()

        self.assertFalse(self._logs.exists())

    def testThereMustBeOneHotfix(self):
        (self._scripts / "hotfix/install/Other.pkg").mkdir()
        self.assertEqual(self.run_().returncode, 1)

        shutil.rmtree(self._scripts / "hotfix")
        result = self.run_()

        self.assertEqual(result.returncode, 1)
        self.assertIn("one hotfix package", result.stderr)
        self.assertIsNone(self.started())

    def testWithoutADestinationNothingIsStarted(self):
        self.assertNotEqual(self.run_("/Downloads/Fix flat.pkg").returncode, 0)

        self.assertIsNone(self.started())


if __name__ == "__main__":
    unittest.main()
