"""What a roll-out takes of the controller, of the network and of each host.

    measure.py BUILD [--hosts N] [--forks N]...

In a namespace of its own, which tests/fleet/run --measure makes. Controller and hosts share this
machine's processors: seconds on the clock are those of all of them together, so it is the processor
time of each side, and the bytes, that say what other machines need. A row is one roll-out to hosts
that have no hotfix, followed by one that finds nothing to do."""

import argparse
import resource
import tempfile
import time
from pathlib import Path

from controller import Controller, make_hotfix, make_instance
from hosts import Fleet, folder_in_memory

# Two lines for each call: the processor times of the script, and of hotfixctl with all that it starts.
COUNTED = """#!/bin/bash
/usr/local/bin/hotfixctl "$@"
status=$?
times >>/var/log/hotfixctl-times
exit $status
"""


def children_time():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def seconds(word):
    minutes, _, rest = word.rstrip("s").partition("m")
    return int(minutes) * 60 + float(rest)


class Counts:
    """Of a fleet: the sums over its hosts up to now."""

    def __init__(self, fleet):
        self.clock = time.monotonic()
        self.controller = children_time()
        self.host = sum(host.processor_time() for host in fleet.hosts)
        moved = [host.bytes_moved() for host in fleet.hosts]
        self.got = sum(to_host for to_host, _ in moved)
        self.sent = sum(from_host for _, from_host in moved)
        self.ours = sum(self._ours(host) for host in fleet.hosts)

    @staticmethod
    def _ours(host):
        times = host.upper / "var/log/hotfixctl-times"
        lines = times.read_text().splitlines()[1::2] if times.exists() else []
        return sum(seconds(word) for line in lines for word in line.split())


def row(name, before, after, hosts):
    def each(value):
        return (getattr(after, value) - getattr(before, value)) / hosts

    print(f"| {name} | {after.clock - before.clock:.1f} | {each('clock'):.2f} | {each('controller'):.2f} "
          f"| {each('host'):.2f} | {each('ours') * 1000:.0f} | {each('got') / 1000:.0f} | {each('sent') / 1000:.0f} |",
          flush=True)


def measure(folder, options, forks):
    make_instance(options.build, folder / "template")
    fleet = Fleet(folder, options.build, folder / "template", options.hosts)
    try:
        for host in fleet.hosts:
            counted = host.upper / "usr/local/bin/counted"
            counted.parent.mkdir(parents=True)
            counted.write_text(COUNTED)
            counted.chmod(0o755)
        fleet.start()
        hotfix = make_hotfix(options.build, folder / "hotfix", "6.2.3.1")
        controller = Controller(folder, fleet, forks)
        for what in ("installs", "nothing to do"):
            before = Counts(fleet)
            status, words, _ = controller.roll_out(hotfix, rollout_hotfixctl="/usr/local/bin/counted")
            if status != 0:
                raise SystemExit(words)
            row(f"{forks} forks, {what}", before, Counts(fleet), options.hosts)
    finally:
        fleet.stop()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--hosts", type=int, default=20)
    parser.add_argument("--forks", type=int, action="append")
    options = parser.parse_args()
    print("| | seconds | seconds a host | controller, CPU s a host | host, CPU s | hotfixctl and its children, CPU ms "
          "| kB to a host | kB from a host |\n|---|---|---|---|---|---|---|---|")
    with folder_in_memory() as memory:
        for forks in options.forks or [5, 10, 20]:
            measure(Path(tempfile.mkdtemp(dir=memory)), options, forks)


if __name__ == "__main__":
    main()
