"""What the scripts beside this file share: data, one benchmark in a process of its own, tables."""

import grp
import json
import os
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
PROGRAM = ROOT / "build" / "release" / "bench"


class MeasuringError(Exception):
    """What is told instead of figures."""


class Workshop:
    """A temporary folder with the data that benchmarks read and the folder that they write."""

    def __init__(self, program, sizes):
        """`sizes` as the program takes them: {"props": [1000]}."""
        self.program = Path(program)
        self._root = Path(tempfile.mkdtemp(prefix="hotfix-bench-"))
        self.data = self._root / "data"
        self.live = self._root / "live"
        self.make(sizes)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        # Python's own way goes no deeper than its calls do.
        subprocess.run(["rm", "-rf", self._root], check=True)

    def make(self, sizes):
        kinds = [f"{kind}={','.join(map(str, numbers))}" for kind, numbers in sizes.items()
                 if kind != "processes"]
        if not kinds:
            return
        subprocess.run([self.program, "make-data", self.data, *kinds], check=True)
        for path in self.data.glob("plist/*.xml.plist"):
            with path.open("rb") as text:
                values = plistlib.load(text)
            binary = path.with_name(path.name.replace(".xml.", ".bin."))
            binary.write_bytes(plistlib.dumps(values, fmt=plistlib.FMT_BINARY, sort_keys=False))

    def prepare(self, name):
        """The state that the benchmark and its reference start from, flushed."""
        piece, size = name.split("/")[:2]
        shutil.rmtree(self.live, ignore_errors=True)
        shutil.rmtree(self.data / "bigcopy", ignore_errors=True)
        self.live.mkdir()
        if piece in ("fresh_copy", "merge_copy") and not size.startswith("big"):
            copies = ["src"] + ["copy"] * (piece == "merge_copy")
            for copy in copies:
                subprocess.run(["cp", "-a", self.data / "tree" / size, self.live / copy],
                               check=True)
        if piece.startswith("change_attributes"):
            self._setAttributes(name)
        os.sync()

    def attributesRoot(self, name):
        piece, size = name.split("/")[:2]
        kind = {"change_attributes_wide": "wide", "change_attributes_deep": "deep"}
        return self.data / kind.get(piece, "attrs") / size

    def _setAttributes(self, name):
        root = self.attributesRoot(name)
        if name.endswith("/cold"):
            subprocess.run(["chown", "-R", "0:0", root], check=True)
            subprocess.run(["chmod", "-R", "u=rwX,go=rX", root], check=True)
        else:
            self.benchmark(name)

    def benchmark(self, name):
        """Seconds of wall clock and processor an iteration; KiB that the process had at most."""
        pattern = f"^{name}(/iterations:1)?(/real_time)?$"
        text, errors, _ = runWatched([self.program, "--benchmark_format=json",
                                      f"--benchmark_filter={pattern}"],
                                     self._environment())
        runs = json.loads(text).get("benchmarks", []) if text.strip() else []
        if len(runs) != 1:
            raise MeasuringError(f"{self.program} knows no benchmark {name}")
        if "error_message" in runs[0]:
            raise MeasuringError(f"{name}: {runs[0]['error_message']}")
        unit = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1}[runs[0]["time_unit"]]
        return {"wall": runs[0]["real_time"] * unit, "cpu": runs[0]["cpu_time"] * unit,
                "peak": peakIn(errors)}

    def idleMemory(self):
        """KiB of the program that runs no benchmark."""
        _, errors, _ = runWatched([self.program, "--benchmark_list_tests"], self._environment())
        return peakIn(errors)

    def _environment(self):
        return {**os.environ, "USER": "daemon", "PEERS_DATA": str(self.data),
                "PEERS_LIVE": str(self.live)}

    def command(self, script, *arguments):
        """Seconds that a shell script takes. Its memory is not known: what the kernel counts for a
        child begins with its parent's."""
        begin = time.monotonic()
        _, _, used = runWatched(["sh", "-c", script, "sh", *map(str, arguments)], os.environ)
        return {"wall": time.monotonic() - begin, "cpu": used.ru_utime + used.ru_stime}


def peakIn(errors):
    """KiB, as the program tells them at its end; none where its system does not count them."""
    told = re.search(r"VmHWM:\s*(\d+)", errors)
    return int(told[1]) if told else 0


def runWatched(command, environment):
    """What the command prints and complains of, and the resources that it and its children used."""
    with tempfile.TemporaryFile() as errors:
        with subprocess.Popen(command, env=environment, stdout=subprocess.PIPE,
                              stderr=errors) as child:
            text = child.stdout.read()
            _, status, used = os.wait4(child.pid, 0)
            child.returncode = os.waitstatus_to_exitcode(status)
        errors.seek(0)
        complaints = errors.read().decode(errors="replace").strip()
    if child.returncode != 0:
        raise MeasuringError(complaints or f"{command[0]} ended with {child.returncode}")
    return text.decode(), complaints, used


def enterPrivateGroups():
    """The process starts again where the group "admin" exists, which the walks give files to. Only
    root can; without it every entry keeps its group and the figures are of less work."""
    try:
        grp.getgrnam("admin")
        return
    except KeyError:
        if os.geteuid() != 0 or "HOTFIX_PRIVATE_GROUPS" in os.environ:
            return
    with tempfile.NamedTemporaryFile("w") as groups:
        groups.write(Path("/etc/group").read_text(encoding="utf-8") + "admin:x:4242:\n")
        groups.flush()
        os.environ["HOTFIX_PRIVATE_GROUPS"] = "1"
        script = 'mount --bind "$0" /etc/group && exec "$@"'
        sys.exit(subprocess.run(["unshare", "-m", "sh", "-c", script, groups.name, sys.executable,
                                 "-B", *sys.argv], check=False).returncode)


def printTable(head, rows):
    """In Markdown, the first column to the left."""
    print(f"| {' | '.join(head)} |")
    print(f"|---|{'--:|' * (len(head) - 1)}")
    for row in rows:
        print(f"| {' | '.join(row)} |")
