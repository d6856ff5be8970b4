"""The controller of a roll-out: Ansible with our collection, an inventory of hosts, and what it is told."""

import json
import os
import shutil
import subprocess

from hosts import ROOT, run


def make_instance(build, folder):
    run(ROOT / "sample/make-instance", "--programs", build / "sample", folder, stdout=subprocess.DEVNULL)


def make_hotfix(build, folder, version):
    run(ROOT / "sample/make-hotfix", "--version", version, folder, stdout=subprocess.DEVNULL,
        env={**os.environ, "HOTFIXCTL": str(build / "hotfixctl")})
    return folder


class Controller:
    """Works in FOLDER, beside the fleet's own files; the first two hosts are the canaries."""

    def __init__(self, folder, fleet, forks, programs=None):
        """PROGRAMS is where its own hotfixctl is; it need not have any."""
        self._folder, self._fleet, self._forks, self._programs = folder, fleet, forks, programs
        self.results = folder / "results"
        self.results.mkdir()
        collections = folder / "collections/ansible_collections/kiv"
        collections.mkdir(parents=True)
        shutil.copytree(ROOT / "fleet/ansible", collections / "hotfix")
        self._write_inventory()

    def _write_inventory(self):
        groups = {"canaries": self._fleet.hosts[:2], "others": self._fleet.hosts[2:]}
        common = {"ansible_user": "root", "ansible_ssh_private_key_file": str(self._fleet.key),
                  "ansible_ssh_common_args": "-o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null"
                                             " -o ServerAliveInterval=2 -o ServerAliveCountMax=5",
                  "ansible_python_interpreter": "/usr/bin/python3"}
        children = {name: {"hosts": {host.name: {"ansible_host": host.address} for host in hosts}}
                    for name, hosts in groups.items()}
        (self._folder / "inventory.json").write_text(
            json.dumps({"hosts": {"children": children, "vars": common}}))

    def begin(self, hotfix, playbook=None, arguments=(), **variables):
        variables = {"rollout_hotfix": str(hotfix), "rollout_results": str(self.results),
                     "rollout_notice": ["touch", "/run/asked"], "rollout_deadline": 2,
                     "rollout_interval": 1, "rollout_retry_delay": 1, "rollout_wait": 60, **variables}
        return subprocess.Popen(
            ["ansible-playbook", "-i", self._folder / "inventory.json", "--forks", str(self._forks),
             "-e", json.dumps(variables), *arguments,
             playbook or ROOT / "tests/fleet/rollout.yml"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, text=True,
            start_new_session=True,
            env={**os.environ, "PATH": os.pathsep.join(filter(None, [self._programs, os.environ["PATH"]])),
                 "ANSIBLE_COLLECTIONS_PATH": str(self._folder / "collections"),
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
