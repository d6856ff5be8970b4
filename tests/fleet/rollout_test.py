"""Roll-outs over SSH with the real Ansible: what becomes of each host, whatever comes in between.

    rollout_test.py BUILD [--hosts N] [TEST...]

In a namespace of its own, which tests/fleet/run makes."""

import argparse
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from controller import Controller, make_hotfix, make_instance
from hosts import ROOT, Fleet, folder_in_memory

OPTIONS = argparse.Namespace()
PLAYBOOK = ROOT / "fleet/ansible/playbooks/rollout.yml"
BUNDLE = "/Applications/Quillmere.app"
RCP = f"{BUNDLE}/Contents/MacOS/rcp"


class RolloutTest(unittest.TestCase):
    def setUp(self):
        self._folder = Path(tempfile.mkdtemp(dir=OPTIONS.folder))
        self.addCleanup(shutil.rmtree, self._folder, ignore_errors=True)
        make_instance(OPTIONS.build, self._folder / "template")
        self._fleet = Fleet(self._folder, OPTIONS.build, self._folder / "template", OPTIONS.hosts)
        self.addCleanup(self._fleet.stop)
        self._fleet.start()
        self._first = make_hotfix(OPTIONS.build, self._folder / "hotfix-1", "6.2.3.1")
        self._second = make_hotfix(OPTIONS.build, self._folder / "hotfix-2", "6.2.3.2")
        self._controller = Controller(self._folder, self._fleet, OPTIONS.forks, str(OPTIONS.build))

    def roll_out(self, hotfix, **variables):
        return self._controller.roll_out(hotfix, **variables)

    def versions(self):
        return {host.name: self.recorded(host) for host in self._fleet.hosts}

    def recorded(self, host):
        answer = self._fleet.ssh(host, "hotfixctl", "status", "--json", "--doctor", BUNDLE,
                                 capture_output=True, text=True, check=False)
        instance = json.loads(answer.stdout)["instances"][0]
        self.assertNotIn("left-over-item", [finding["name"] for finding in instance["findings"]])
        return (instance["hotfix"] or {}).get("version")

    def owner(self, host):
        return self._fleet.ssh(host, "stat", "-c", "%U", f"{RCP}/deploy/extras", capture_output=True, text=True,
                               check=True).stdout.strip()

    def result(self, host):
        return json.loads((self._controller.results / f"{host.name}.json").read_text())

    def reported(self):
        """The machines of the page, each with its hotfix and its result."""
        page = (self._controller.results / "report.html").read_text()
        rows = re.findall("<tr class=[^>]*><th scope=row>(.*?)<td>(.*?)<td>.*?<summary>(.*?)</summary>", page)
        return {name: (version, result) for name, version, result in rows}

    def everywhere(self, version):
        return {host.name: version for host in self._fleet.hosts}

    def nothingIsLeft(self):
        for host in self._fleet.hosts:
            found = self._fleet.ssh(host, "find", "/root/.ansible/tmp", "-mindepth", "1", ";",
                                    "find", "/root", "-maxdepth", "1", "-name", ".hotfix*",
                                    capture_output=True, text=True, check=False)
            self.assertEqual(found.stdout, "")
        self.assertEqual(list(self._folder.glob("*.tar.gz")), [])

    def testInstallsEverywhereAndASecondTimeNothing(self):
        owned = self._fleet.hosts[-1]
        owned.command("chown", "-R", "games:games", BUNDLE)

        status, words, counts = self.roll_out(self._first)

        self.assertEqual(status, 0, words)
        self.assertEqual(self.versions(), self.everywhere("6.2.3.1"))
        self.assertEqual({name: count["changed"] for name, count in counts.items()}, self.everywhere("1"))
        self.assertEqual({self.result(host)["cause"] for host in self._fleet.hosts}, {"installed"})
        self.nothingIsLeft()
        self.assertEqual(self.owner(owned), "games")
        self.assertEqual(self.owner(self._fleet.hosts[0]), "root")

        status, words, counts = self.roll_out(self._first)

        self.assertEqual(status, 0, words)
        self.assertEqual({name: count["changed"] for name, count in counts.items()}, self.everywhere("0"))
        self.assertEqual({self.result(host)["cause"] for host in self._fleet.hosts}, {"installed-already"})
        self.assertEqual(self.reported(), self.everywhere(("6.2.3.1", "Hotfix installed")))
        self.assertNotIn("Unpack it there", words)

    def testHostsThatFailAreNamedWithTheirReasonsWhileTheOthersFinish(self):
        running, higher, failing = self._fleet.hosts[1:4]
        application = running.start_command(f"{BUNDLE}/Contents/MacOS/Quillmere", "--stay", "600",
                                            stdout=subprocess.DEVNULL)
        self.addCleanup(application.wait)
        self.addCleanup(application.kill)
        make_hotfix(OPTIONS.build, self._folder / "hotfix-9", "6.2.3.9")
        archive = subprocess.run(["tar", "-c", "-C", self._folder / "hotfix-9", "."], check=True,
                                 stdout=subprocess.PIPE).stdout
        self._fleet.ssh(higher, "mkdir /run/h && tar -x -C /run/h && hotfixctl install /run/h/mac/HF.pkg "
                        "/Applications", input=archive, stdout=subprocess.DEVNULL, check=True)
        fail_to_provision(failing)

        status, words, _ = self.roll_out(self._first)

        self.assertEqual(status, 2, words)
        reasons = {running: "application-running", higher: "higher-hotfix-installed",
                   failing: "provisioning-failed"}
        for host, reason in reasons.items():
            with self.subTest(reason):
                self.assertEqual(self.result(host)["cause"], reason)
                message = self.result(host)["message"]
                self.assertTrue(message)
                self.assertIn(f"fatal: [{host.name}]", words)
        self.assertEqual(self._fleet.ssh(running, "test", "-e", "/run/asked", check=False).returncode, 0)
        others = [host for host in self._fleet.hosts if host not in reasons]
        self.assertEqual({self.recorded(host) for host in others}, {"6.2.3.1"})
        self.assertEqual(self.recorded(higher), "6.2.3.9")
        self.assertEqual(self.reported(), {
            **{host.name: ("6.2.3.1", "Hotfix installed") for host in others},
            running.name: ("none", "Application running"),
            higher.name: ("6.2.3.9", "Higher hotfix installed"),
            failing.name: ("none", "Provisioning failed")})
        self.assertIn("report.html", words)
        self.nothingIsLeft()

    def testFailingCanaryStopsAllOthers(self):
        canary, other = self._fleet.hosts[1:3]
        fail_to_provision(canary)
        of_other = self._controller.results / f"{other.name}.json"
        of_other.write_text("{}")

        status, words, _ = self.roll_out(self._first, playbook=PLAYBOOK)

        self.assertEqual(status, 2, words)
        self.assertEqual(self.result(canary)["cause"], "provisioning-failed")
        self.assertEqual({host: version for host, version in self.versions().items() if version},
                         {self._fleet.hosts[0].name: "6.2.3.1"})
        self.assertFalse(of_other.exists(), "a result of an earlier roll-out")

    def testOthersWaitForCanariesAndForABatchThatFails(self):
        first, failing, last = self._fleet.hosts[0], self._fleet.hosts[2], self._fleet.hosts[-1]

        status, words, _ = self.roll_out(self._first, playbook=PLAYBOOK, arguments=["--limit", "others"])

        self.assertEqual(status, 2, words)
        self.assertIn("has gone first. Without canaries", words)
        self.assertEqual(self.versions(), self.everywhere(None))

        fail_to_provision(failing)
        status, words, _ = self.roll_out(self._first, playbook=PLAYBOOK, rollout_batch=2)

        self.assertEqual(status, 2, words)
        self.assertEqual(self.result(failing)["cause"], "provisioning-failed")
        self.assertEqual((self.recorded(first), self.recorded(last)), ("6.2.3.1", None))

    def testNextRunCompletesWhatAKilledControllerLeft(self):
        process = self._controller.begin(self._first, rollout_batch=1)
        for line in process.stdout:
            if self._fleet.hosts[2].name in line and "changed" in line:
                break
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        self.assertIn(None, self.versions().values())

        status, words, _ = self.roll_out(self._first)

        self.assertEqual(status, 0, words)
        self.assertEqual(self.versions(), self.everywhere("6.2.3.1"))

    def testHostWhoseConnectionBreaksIsWholeAfterTheNextRun(self):
        self.roll_out(self._first)
        host = self._fleet.hosts[1]
        host.command("sh", "-c", f"mv {RCP}/rcplauncher {RCP}/own && printf '#!/bin/sh\\n"
                     "stat -c \"%%a %%U\" /root/.hotfix-rollout.* >/run/reached; sleep 3; exec \"${0%%/*}/own\" \"$@\"\\n' "
                     f">{RCP}/rcplauncher && chmod 755 {RCP}/rcplauncher")

        process = self._controller.begin(self._second)
        while self._fleet.ssh(host, "test", "-e", "/run/reached", check=False).returncode != 0:
            time.sleep(0.1)
        host.connect(False)
        words = process.communicate()[0]
        host.connect(True)
        self.assertEqual(self._fleet.ssh(host, "cat", "/run/reached", capture_output=True, text=True,
                                         check=True).stdout, "700 root\n")

        self.assertIn("unreachable=1", words)
        status, words, _ = self.roll_out(self._second)
        self.assertEqual(status, 0, words)
        self.assertEqual(self.versions(), self.everywhere("6.2.3.2"))

    def testHostPullsItsHotfixItself(self):
        host = self._fleet.hosts[0]
        repository = host.upper / "srv/repository"
        shutil.copytree(ROOT / "fleet/ansible", repository / "collections/ansible_collections/kiv/hotfix")
        shutil.copy(ROOT / "fleet/ansible/playbooks/pull.yml", repository)
        shutil.copytree(self._first, host.upper / "srv/hotfix")
        git = ["git", "-C", "/srv/repository", "-c", "user.name=a", "-c", "user.email=a@example.org"]
        host.command(*git, "init", "-q", "-b", "main")
        host.command(*git, "add", "-A")
        host.command(*git, "commit", "-q", "-m", "The hotfixes of this fleet")

        pull = ["ansible-pull", "-U", "file:///srv/repository", "-C", "main", "-d", "/var/db/pulled",
                "-e", "rollout_share=/srv/hotfix", "pull.yml"]
        words = self._fleet.ssh(host, *pull, capture_output=True, text=True, check=False)

        self.assertEqual(words.returncode, 0, words.stdout + words.stderr)
        self.assertIn("changed=1 ", words.stdout.partition("PLAY RECAP")[2])
        self.assertEqual(self.recorded(host), "6.2.3.1")

        words = self._fleet.ssh(host, *pull, capture_output=True, text=True, check=False)

        self.assertEqual(words.returncode, 0, words.stdout + words.stderr)
        self.assertIn("changed=0 ", words.stdout.partition("PLAY RECAP")[2])


def fail_to_provision(host):
    host.command("sh", "-c", f"printf '#!/bin/sh\\nexit 13\\n' >{RCP}/rcplauncher")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--hosts", type=int, default=5)
    parser.add_argument("--forks", type=int, default=10)
    parser.add_argument("tests", nargs="*")
    parser.parse_args(namespace=OPTIONS)
    with folder_in_memory() as OPTIONS.folder:
        unittest.main(argv=[sys.argv[0], *(f"RolloutTest.{test}" for test in OPTIONS.tests)], verbosity=2)


if __name__ == "__main__":
    main()
