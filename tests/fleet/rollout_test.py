"""Roll-outs over SSH with the real Ansible: what becomes of each host, whatever comes in between.

    rollout_test.py BUILD [--hosts N] [TEST...]

In a namespace of its own, which tests/fleet/run makes."""

import argparse
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from hosts import ROOT, Fleet, run

OPTIONS = argparse.Namespace()
BUNDLE = "/Applications/Quillmere.app"
RCP = f"{BUNDLE}/Contents/MacOS/rcp"


def make_instance(folder):
    run(ROOT / "sample/make-instance", "--programs", OPTIONS.build / "sample", folder,
        stdout=subprocess.DEVNULL)


def make_hotfix(folder, version):
    run(ROOT / "sample/make-hotfix", "--version", version, folder, stdout=subprocess.DEVNULL,
        env={**os.environ, "HOTFIXCTL": str(OPTIONS.build / "hotfixctl")})
    return folder


class RolloutTest(unittest.TestCase):
    def setUp(self):
        self._folder = Path(tempfile.mkdtemp(dir=OPTIONS.folder))
        self.addCleanup(shutil.rmtree, self._folder, ignore_errors=True)
        make_instance(self._folder / "template")
        self._fleet = Fleet(self._folder, OPTIONS.build, self._folder / "template", OPTIONS.hosts)
        self.addCleanup(self._fleet.stop)
        self._fleet.start()
        self._first = make_hotfix(self._folder / "hotfix-1", "6.2.3.1")
        self._second = make_hotfix(self._folder / "hotfix-2", "6.2.3.2")
        self._results = self._folder / "results"
        self._results.mkdir()
        collections = self._folder / "collections/ansible_collections/kiv"
        collections.mkdir(parents=True)
        shutil.copytree(ROOT / "fleet/ansible", collections / "hotfix")
        self.write_inventory()

    def write_inventory(self):
        canaries, others = self._fleet.hosts[:1], self._fleet.hosts[1:]
        common = {"ansible_user": "root", "ansible_ssh_private_key_file": str(self._fleet.key),
                  "ansible_ssh_common_args": "-o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null"
                                             " -o ServerAliveInterval=1 -o ServerAliveCountMax=2",
                  "ansible_python_interpreter": "/usr/bin/python3"}
        (self._folder / "inventory.json").write_text(json.dumps({"hosts": {
            "children": {"canaries": {"hosts": {host.name: {"ansible_host": host.address} for host in canaries}},
                         "others": {"hosts": {host.name: {"ansible_host": host.address} for host in others}}},
            "vars": common}}))

    def begin(self, hotfix, playbook=None, **variables):
        variables = {"rollout_hotfix": str(hotfix), "rollout_results": str(self._results),
                     "rollout_notice": ["touch", "/run/asked"], "rollout_deadline": 2,
                     "rollout_interval": 1, "rollout_retry_delay": 1, "rollout_wait": 60, **variables}
        return subprocess.Popen(
            ["ansible-playbook", "-i", self._folder / "inventory.json", "--forks", str(OPTIONS.forks),
             "-e", json.dumps(variables), playbook or ROOT / "tests/fleet/rollout.yml"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, text=True,
            start_new_session=True,
            env={**os.environ, "ANSIBLE_COLLECTIONS_PATH": str(self._folder / "collections"),
                 "ANSIBLE_HOME": str(self._folder / "ansible"), "ANSIBLE_LOCALHOST_WARNING": "False",
                 "ANSIBLE_STDOUT_CALLBACK": "default", "ANSIBLE_NOCOLOR": "1", "ANSIBLE_PIPELINING": "True",
                 "LC_ALL": "C.UTF-8", "TMPDIR": str(self._folder)})

    def roll_out(self, hotfix, **variables):
        """The status, the words, and the counts of each host."""
        process = self.begin(hotfix, **variables)
        words = process.communicate()[0]
        recap = words.partition("PLAY RECAP")[2]
        counts = {}
        for line in recap.splitlines():
            name, colon, values = line.partition(" :")
            if colon:
                counts[name.strip()] = dict(value.split("=") for value in values.split())
        return process.returncode, words, counts

    def versions(self):
        return {host.name: self.recorded(host) for host in self._fleet.hosts}

    def recorded(self, host):
        answer = self._fleet.ssh(host, "hotfixctl", "status", "--json", "--doctor", BUNDLE,
                                 capture_output=True, text=True, check=False)
        instance = json.loads(answer.stdout)["instances"][0]
        self.assertNotIn("left-over-item", [finding["name"] for finding in instance["findings"]])
        return (instance["hotfix"] or {}).get("version")

    def result(self, host):
        return json.loads((self._results / f"{host.name}.json").read_text())

    def everywhere(self, version):
        return {host.name: version for host in self._fleet.hosts}

    def nothingIsLeft(self):
        for host in self._fleet.hosts:
            found = self._fleet.ssh(host, "ls", "-A", "/var/tmp/hotfix-rollout", "/root/.ansible/tmp",
                                    capture_output=True, text=True, check=False)
            self.assertEqual(found.stdout.replace("/root/.ansible/tmp:\n", ""), "")
        self.assertEqual(list(self._folder.glob("*.tar.gz")), [])

    def testInstallsEverywhereAndASecondTimeNothing(self):
        status, words, counts = self.roll_out(self._first)

        self.assertEqual(status, 0, words)
        self.assertEqual(self.versions(), self.everywhere("6.2.3.1"))
        self.assertEqual({name: count["changed"] for name, count in counts.items()}, self.everywhere("1"))
        self.assertEqual({self.result(host)["cause"] for host in self._fleet.hosts}, {"installed"})
        self.nothingIsLeft()

        status, words, counts = self.roll_out(self._first)

        self.assertEqual(status, 0, words)
        self.assertEqual({name: count["changed"] for name, count in counts.items()}, self.everywhere("0"))
        self.assertEqual({self.result(host)["cause"] for host in self._fleet.hosts}, {"installed-already"})

    def testHostsThatFailAreNamedWithTheirReasonsWhileTheOthersFinish(self):
        running, higher, failing = self._fleet.hosts[1:4]
        application = running.start_command(f"{BUNDLE}/Contents/MacOS/Quillmere", "--stay", "600",
                                            stdout=subprocess.DEVNULL)
        self.addCleanup(application.wait)
        self.addCleanup(application.kill)
        make_hotfix(self._folder / "hotfix-9", "6.2.3.9")
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
        self.nothingIsLeft()

    def testFailingCanaryStopsAllOthers(self):
        canary = self._fleet.hosts[0]
        fail_to_provision(canary)

        status, words, _ = self.roll_out(self._first, playbook=ROOT / "fleet/ansible/playbooks/rollout.yml")

        self.assertEqual(status, 2, words)
        self.assertEqual(self.result(canary)["cause"], "provisioning-failed")
        self.assertEqual(self.versions(), self.everywhere(None))
        self.assertFalse((self._results / f"{self._fleet.hosts[1].name}.json").exists())

    def testNextRunCompletesWhatAKilledControllerLeft(self):
        process = self.begin(self._first, rollout_batch=1)
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
                     "touch /run/reached; sleep 3; exec \"${0%%/*}/own\" \"$@\"\\n' "
                     f">{RCP}/rcplauncher && chmod 755 {RCP}/rcplauncher")

        process = self.begin(self._second)
        while self._fleet.ssh(host, "test", "-e", "/run/reached", check=False).returncode != 0:
            time.sleep(0.1)
        host.connect(False)
        words = process.communicate()[0]
        host.connect(True)

        self.assertIn("unreachable=1", words)
        status, words, _ = self.roll_out(self._second)
        self.assertEqual(status, 0, words)
        self.assertEqual(self.versions(), self.everywhere("6.2.3.2"))


def fail_to_provision(host):
    host.command("sh", "-c", f"printf '#!/bin/sh\\nexit 13\\n' >{RCP}/rcplauncher")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--hosts", type=int, default=5)
    parser.add_argument("--forks", type=int, default=10)
    parser.add_argument("tests", nargs="*")
    parser.parse_args(namespace=OPTIONS)
    # In memory, so that the hosts' roots can be made where the machine's own cannot carry others.
    OPTIONS.folder = tempfile.mkdtemp(prefix="hotfix-fleet-")
    run("mount", "--make-rprivate", "/")
    run("mount", "-t", "tmpfs", "tmpfs", OPTIONS.folder)
    try:
        unittest.main(argv=[sys.argv[0], *(f"RolloutTest.{test}" for test in OPTIONS.tests)], verbosity=2)
    finally:
        run("umount", "--lazy", OPTIONS.folder)
        os.rmdir(OPTIONS.folder)


if __name__ == "__main__":
    main()
