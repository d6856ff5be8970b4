"""A benchmark that cannot read its made file says so, and has no figures: unread_test.py PROGRAM.

The files are longer than files may be that the installer reads, and the copies have no source.
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TOO_LONG = (64 << 20) + 1  # bytes
FILES = ["props/7.properties", "plist/7.xml.plist", "plist/7.bin.plist", "manifest/7.xml"]
ERRORS = {
    "properties_roundtrip/7": "not read",
    "plist_set_key/7/xml": "not read",
    "plist_set_key/7/bin": "not read",
    "manifest_rewrite/7": "not read",
    "fresh_copy/7": "not copied",
    "merge_copy/7": "not copied",
    "base_version/7": "no base plug-in",
}
PROGRAM = Path(sys.argv.pop(1)).resolve()


class UnreadTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self._data = Path(folder.name) / "data"
        for name in FILES:
            path = self._data / name
            path.parent.mkdir(parents=True, exist_ok=True)
            with path.open("wb") as file:
                file.truncate(TOO_LONG)
        (self._data / "props/7.merge.properties").write_text("key=value\n", encoding="ascii")
        for name in ("tree/7", "plugins/7/eclipse/plugins", "live"):
            (self._data / name).mkdir(parents=True)

    def results(self, name):
        environment = {**os.environ, "PEERS_DATA": str(self._data),
                       "PEERS_LIVE": str(self._data / "live")}
        done = subprocess.run([PROGRAM, "--benchmark_format=json",
                               f"--benchmark_filter=^{name}(/iterations:1)?(/real_time)?$"],
                              env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              check=True)
        return json.loads(done.stdout)["benchmarks"]

    def testNothingIsMeasured(self):
        for name, error in ERRORS.items():
            with self.subTest(name=name):
                self.assertEqual([one.get("error_message") for one in self.results(name)], [error])

    def testWhatIsToBeMergedIsReadToo(self):
        (self._data / "props/7.properties").write_text("key=value\n", encoding="ascii")
        with (self._data / "props/7.merge.properties").open("wb") as file:
            file.truncate(TOO_LONG)

        self.assertEqual(self.results("properties_roundtrip/7")[0].get("error_message"), "not read")


if __name__ == "__main__":
    unittest.main()
