"""Makes what many machines told of themselves, as hotfixctl and the roll-out write it:

    fleet.py FOLDER NUMBER

Of each kind of file some, with ends of every kind, and names that mean harm. The same number makes
the same bytes."""

import json
import sys
from datetime import datetime, timedelta, timezone
from pathlib import Path

BUNDLE = "/Applications/Quillmere.app"
BEGIN = datetime(2026, 11, 22, 8, 0, 0, tzinfo=timezone.utc)
HOSTILE = "</td><script>window.harmed=1</script>\"'&<img src=x onerror=window.harmed=1>"

# Phases with their beginning and length, in seconds.
CHECKS = [("read-package", 0, 0), ("check-paths", 0, 0), ("check-instance", 0, 0)]
RUNNING = [*CHECKS, ("check-application", 0, 0), ("recover", 0, 6), ("collect-logs", 6, 1)]
HIGHER = [*CHECKS, ("check-application", 0, 0), ("check-versions", 0, 0), ("recover", 0, 5),
          ("collect-logs", 5, 1)]
WHOLE = [*CHECKS, ("check-application", 0, 0), ("check-versions", 0, 0), ("remove-older", 0, 9),
         ("update-untouched", 9, 6), ("bring-files", 15, 1), ("provision", 16, 14), ("record", 30, 2),
         ("collect-logs", 32, 1)]
CAUSES = {
    "installed": (0, WHOLE, None),
    "application-running": (6, RUNNING, "The application Quillmere is running."),
    "higher-hotfix-installed": (7, HIGHER, "6.2.3.9 is installed."),
    "provisioning-failed": (2, WHOLE, "Provisioning failed, rc 13"),
}


def iso(time):
    return time.isoformat(timespec="seconds")


def result(number, cause):
    status, phases, line = CAUSES[cause]
    before = "6.2.3.9" if cause == "higher-hotfix-installed" else "6.2.3.1"
    after = {"installed": "6.2.3.2", "provisioning-failed": None}.get(cause, before)
    length = phases[-1][1] + phases[-1][2]
    return {
        "schema": "hotfixctl/install/1", "status": status, "cause": cause, "line": line,
        "instance": {"bundle": BUNDLE, "rcpHome": f"{BUNDLE}/Contents/MacOS/rcp"},
        "versions": {"package": "6.2.3.2", "before": before, "after": after},
        "keptRun": "/var/lib/hotfix/20261122T080000.000Z-Quillmere",
        "began": iso(BEGIN + timedelta(seconds=7 * number)), "seconds": length + 0.4,
        "phases": [{"phase": name, "at": at, "seconds": seconds} for name, at, seconds in phases],
    }


def status(number):
    findings = [] if number % 50 else [
        {"name": "left-over-item", "text": f'A run that was killed left "{BUNDLE}/.hotfix-12".',
         "remedy": "The next installation removes it."}]
    return {
        "schema": "hotfixctl/status/1", "status": 2 if findings else 0,
        "instances": [{
            "rcpHome": f"{BUNDLE}/Contents/MacOS/rcp", "bundle": BUNDLE,
            "state": "needs-attention" if findings else "hotfix-installed",
            "hotfix": {"version": "6.2.3.1", "identifier": "com.example.fix"}, "findings": findings}],
        "lastRun": {"modified": iso(BEGIN - timedelta(days=1, seconds=number)), "ageSeconds": 86400,
                    "run": {"began": "Nov 21 07:00:00", "ending": "installed", "cause": None,
                            "firstError": None}},
    }


def causeOf(number):
    return {3: "application-running", 5: "higher-hotfix-installed", 11: "provisioning-failed"}.get(
        number % 20, "installed")


def make(folder, number):
    """Three of four machines are a roll-out's hosts, the others were asked for their status."""
    folder.mkdir(parents=True, exist_ok=True)
    for index in range(number):
        name = HOSTILE if index == 7 else f"host{index:05}.example.test"
        if index % 4 == 0:
            document = status(index)
        else:
            answer = result(index, causeOf(index))
            document = {"host": name, "changed": True, "cause": answer["cause"], "message": "",
                        "answer": answer}
        (folder / f"host{index:05}.example.test.json").write_text(json.dumps(document),
                                                                  encoding="utf-8")


if __name__ == "__main__":
    make(Path(sys.argv[1]), int(sys.argv[2]))
