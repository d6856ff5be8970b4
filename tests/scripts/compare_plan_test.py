"""The comparison of a plan with the run that followed finds what only one of them did."""

import json
import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "sample" / "compare-plan"
RCP = "Contents/MacOS/rcp"
INFO = f"{RCP}/installInfo.plist"
KEYS = f"{RCP}/deploy/.keystore"
EXTRA = f"{RCP}/deploy/extras/notes"


class ComparePlanTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._root = Path(folder.name)
        self._changes = {f"/apps/Q.app/{INFO}": "replaced", f"/apps/Q.app/{KEYS}": "removed",
                         f"/apps/Q.app/{EXTRA}": "created", f"/apps/Q.app/{RCP}/same": "rewritten",
                         "/tmp/install_trace.log": "replaced"}
        self._before = {INFO: "1", KEYS: "1", f"{RCP}/same": "1"}
        self._after = {INFO: "2", EXTRA: "1", f"{RCP}/same": "1"}

    def listing(self, name, entries):
        path = self._root / name
        path.write_text("".join(f"./{entry}\t{content}\n" for entry, content in entries.items()))
        return path

    def compare(self, planned=0, status="0"):
        plan = self._root / "plan"
        plan.write_text(json.dumps({"status": planned, "changes": [
            {"path": path, "change": change} for path, change in self._changes.items()]}))
        result = subprocess.run([SCRIPT, plan, self.listing("before", self._before),
                                 self.listing("after", self._after), "/apps/Q.app", status],
                                capture_output=True, text=True, check=False)
        self.assertEqual(result.stderr, "")
        return result.returncode, result.stdout

    def test_what_was_foreseen_and_done_is_counted(self):
        self.assertEqual(self.compare(), (0, "3 changes foreseen and done, 0 more by the launcher itself\n"))

    def test_what_the_launcher_does_is_its_own(self):
        self._after[f"{RCP}/eclipse/plugins/new"] = "1"
        self._after[f"{RCP}/launcher.log"] = "1"
        self._before[f"{RCP}/deploy/install.xml"] = "1"
        self.assertEqual(self.compare(), (0, "3 changes foreseen and done, 3 more by the launcher itself\n"))

    def test_what_was_done_and_not_foreseen_fails(self):
        self._after[f"{RCP}/same"] = "2"
        self.assertEqual(self.compare(), (1, f"done and not foreseen: ./{RCP}/same\n"))

    def test_what_was_foreseen_and_not_done_fails(self):
        for change, undone in ((INFO, {INFO: "1"}), (KEYS, {KEYS: "1"})):
            with self.subTest(change):
                kept = dict(self._after)
                self._after.update(undone)
                self.assertEqual(self.compare(), (1, f"foreseen and not done: ./{change}\n"))
                self._after = kept
        del self._after[EXTRA]
        self.assertEqual(self.compare(), (1, f"foreseen and not done: ./{EXTRA}\n"))

    def test_another_status_fails(self):
        self.assertEqual(self.compare(status="1"), (1, "status 1 instead of 0\n"))
        self.assertEqual(self.compare(planned=1), (1, "status 0 instead of 1\n"))


if __name__ == "__main__":
    unittest.main()
