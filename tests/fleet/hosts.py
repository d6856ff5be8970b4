"""Hosts for tests of roll-outs: each a namespace of this machine with its own root, processes, network,
ssh server and sample instance, on a bridge that nothing else is on."""

import contextlib
import json
import os
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
BRIDGE = "hotfix"
PREFIX = "10.77.0."

SSHD = """\
HostKey /etc/ssh/fleet_key
AuthorizedKeysFile /etc/ssh/fleet_authorized
StrictModes no
UsePAM no
PermitRootLogin yes
PasswordAuthentication no
Subsystem sftp internal-sftp
PidFile none
"""


def run(*command, **options):
    return subprocess.run([str(word) for word in command], check=True, **options)


@contextlib.contextmanager
def folder_in_memory():
    """A folder where the hosts' roots can be made even if the machine's own cannot carry others."""
    folder = tempfile.mkdtemp(prefix="hotfix-fleet-")
    run("mount", "--make-rprivate", "/")
    run("mount", "-t", "tmpfs", "tmpfs", folder)
    try:
        yield Path(folder)
    finally:
        run("umount", "--lazy", folder)
        os.rmdir(folder)


class Host:
    """One host; its files are seen below "root" from outside."""

    def __init__(self, fleet, number):
        self.name = f"host{number:02}"
        self.address = f"{PREFIX}{number + 1}"
        self._fleet = fleet
        self._folder = fleet.folder / self.name
        self._link = f"hf{number}"
        self.process = None

    @property
    def upper(self):
        return self._folder / "upper"

    def prepare(self):
        etc = self.upper / "etc/ssh"
        etc.mkdir(parents=True)
        (etc / "fleet_config").write_text(SSHD)
        run("ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", etc / "fleet_key")
        shutil.copy(self._fleet.key.with_suffix(".pub"), etc / "fleet_authorized")
        for program, place in (("HotfixInstaller", "sbin"), ("hotfixctl", "bin")):
            folder = self.upper / "usr/local" / place
            folder.mkdir(parents=True, exist_ok=True)
            shutil.copy2(self._fleet.programs / program, folder)
        for folder in ("Library", "Users", "var/lib/hotfix"):
            (self.upper / folder).mkdir(parents=True)
        run("cp", "-a", self._fleet.template, self.upper / "Applications")
        for folder in (self._folder, self.upper, self.upper / "var", self.upper / "var/lib",
                       self.upper / "usr", self.upper / "etc"):
            folder.chmod(0o755)

    def start(self):
        ready = self._folder / "ready"
        os.mkfifo(ready)
        with open(self._folder / "log", "wb") as log:
            self.process = subprocess.Popen(
                ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", HERE / "host",
                 self._folder, ready], stdout=log, stderr=log, stdin=subprocess.DEVNULL)
        peer = self._link + "p"
        run("ip", "link", "add", self._link, "type", "veth", "peer", "name", peer)
        run("ip", "link", "set", self._link, "master", BRIDGE, "up")
        space = self._space()
        run("ip", "link", "set", peer, "netns", space)
        self._inside("-n", "ip", "link", "set", "lo", "up")
        self._inside("-n", "ip", "address", "add", f"{self.address}/24", "dev", peer)
        self._inside("-n", "ip", "link", "set", peer, "up")
        ready.write_bytes(b"1")

    def _space(self):
        """The process whose network is the host's, as soon as it has one."""
        own = os.readlink("/proc/self/ns/net")
        while True:
            with contextlib.suppress(OSError):
                if os.readlink(f"/proc/{self.process.pid}/ns/net") != own:
                    return self.process.pid
            time.sleep(0.01)

    def _first(self):
        """The first process of the host: the ssh server."""
        children = Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children").read_text()
        return int(children.split()[0])

    def _inside(self, what, *command, **options):
        return run("nsenter", "-t", self.process.pid, what, *command, **options)

    def command(self, *command, **options):
        """A command on the host, as its own root."""
        with self.start_command(*command, **options) as process:
            if process.wait() != 0:
                raise RuntimeError(f"{self.name}: {command} ended with {process.returncode}")

    def start_command(self, *command, **options):
        first = self._first()
        return subprocess.Popen(["nsenter", "-t", str(first), "-m", "-p", "-n", "-r", "-w/", *command], **options)

    def processor_time(self):
        """Seconds that the host's processes took since it began, and those that they waited for."""
        space = os.readlink(f"/proc/{self._first()}/ns/pid")
        ticks = 0
        for process in Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if os.readlink(process / "ns/pid") == space:
                    ticks += sum(map(int, (process / "stat").read_text().rpartition(")")[2].split()[11:15]))
        return ticks / os.sysconf("SC_CLK_TCK")

    def bytes_moved(self):
        """Bytes that it got and that it sent, since it began, with all that its network adds."""
        link = json.loads(run("ip", "-json", "-statistics", "link", "show", self._link, capture_output=True).stdout)
        counts = link[0]["stats64"]
        return counts["tx"]["bytes"], counts["rx"]["bytes"]

    def connect(self, is_connected):
        run("ip", "link", "set", self._link, "up" if is_connected else "down")

    def stop(self):
        if self.process:
            self.process.kill()
            self.process.wait()
        subprocess.run(["ip", "link", "delete", self._link], capture_output=True, check=False)


class Fleet:
    """So many hosts. To be made in a network namespace of its own."""

    def __init__(self, folder, programs, template, number):
        self.folder, self.programs, self.template = Path(folder), Path(programs), Path(template)
        self.key = self.folder / "key"
        self.hosts = [Host(self, index + 1) for index in range(number)]

    def start(self):
        run("ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.key)
        run("ip", "link", "set", "lo", "up")
        run("ip", "link", "add", BRIDGE, "type", "bridge")
        run("ip", "address", "add", f"{PREFIX}1/24", "dev", BRIDGE)
        run("ip", "link", "set", BRIDGE, "up")
        for host in self.hosts:
            host.prepare()
            host.start()
        for host in self.hosts:
            self._await(host)

    def ssh(self, host, *command, **options):
        return subprocess.run(
            ["ssh", "-i", self.key, "-o", "StrictHostKeyChecking=no", "-o", "UserKnownHostsFile=/dev/null",
             "-o", "LogLevel=ERROR", "-o", "ConnectTimeout=2", f"root@{host.address}", *command],
            **{"stdin": subprocess.DEVNULL, **options} if "input" not in options else options)

    def _await(self, host):
        for _ in range(100):
            if self.ssh(host, "true", capture_output=True, check=False).returncode == 0:
                return
            time.sleep(0.1)
        raise RuntimeError(f"{host.name} does not answer: {(self.folder / host.name / 'log').read_text()}")

    def stop(self):
        for host in self.hosts:
            host.stop()
        subprocess.run(["ip", "link", "delete", BRIDGE], capture_output=True, check=False)
