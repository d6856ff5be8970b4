"""The SPDX document beside the packages of a folder tells what is in them: sbom.py FOLDER."""

import hashlib
import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import jsonschema

FOLDER = Path(sys.argv.pop(1))


def record(required, **properties):
    return {"type": "object", "required": required, "properties": properties}


def matching(pattern):
    return {"type": "string", "pattern": f"^{pattern}$"}


# What SPDX 2.3 asks of the fields that we use.
IDENTIFIER = matching("SPDXRef-[A-Za-z0-9.-]+")
LICENSE = matching("(NOASSERTION|NONE)")
PACKAGE = record(
    ["SPDXID", "name", "downloadLocation"],
    SPDXID=IDENTIFIER,
    downloadLocation=matching("(NOASSERTION|NONE|https?://.+)"),
    filesAnalyzed={"const": False},  # else there would have to be a verification code
    licenseConcluded=LICENSE,
    licenseDeclared=LICENSE,
    primaryPackagePurpose={"enum": ["INSTALL", "LIBRARY"]},
    checksums={"type": "array", "items": record(["algorithm", "checksumValue"],
                                                algorithm={"const": "SHA256"},
                                                checksumValue=matching("[0-9a-f]{64}"))},
    externalRefs={"type": "array", "items": record(
        ["referenceCategory", "referenceType", "referenceLocator"],
        referenceCategory={"const": "PACKAGE-MANAGER"}, referenceType={"const": "purl"},
        referenceLocator=matching(r"pkg:deb/debian/([a-z0-9.-]|%2B)+@([A-Za-z0-9.:~-]|%2B)+\?arch=[a-z0-9]+"))})
RELATIONSHIP = record(["spdxElementId", "relationshipType", "relatedSpdxElement"],
                      relationshipType={"enum": ["DESCRIBES", "DYNAMIC_LINK", "STATIC_LINK"]})
DOCUMENT = record(
    ["spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo"],
    spdxVersion={"const": "SPDX-2.3"},
    dataLicense={"const": "CC0-1.0"},
    SPDXID={"const": "SPDXRef-DOCUMENT"},
    documentNamespace=matching("https://[^#]+"),
    creationInfo=record(["created", "creators"],
                        created=matching(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ"),
                        creators={"type": "array", "minItems": 1,
                                  "items": matching("(Person|Organization|Tool): .+")}),
    packages={"type": "array", "items": PACKAGE},
    relationships={"type": "array", "items": RELATIONSHIP})


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class DocumentTest(unittest.TestCase):
    def setUp(self):
        [path] = FOLDER.glob("*.spdx.json")
        self._document = json.loads(path.read_text(encoding="utf-8"))
        self._packages = {each["SPDXID"]: each for each in self._document["packages"]}

    def related(self, package, kind, comment):
        [own] = [each["SPDXID"] for each in self._packages.values() if each["name"] == package]
        return {self._packages[each["relatedSpdxElement"]]["name"]
                for each in self._document["relationships"]
                if (each["spdxElementId"], each["relationshipType"], each.get("comment")) ==
                (own, kind, comment)}

    def deb(self, name):
        [path] = FOLDER.glob(f"{name}_*.deb")
        return path

    def testItIsASpdxDocument(self):
        jsonschema.validate(self._document, DOCUMENT)

    def testItDescribesEachOfTheFiles(self):
        described = {each["relatedSpdxElement"] for each in self._document["relationships"]
                     if (each["spdxElementId"], each["relationshipType"]) ==
                     ("SPDXRef-DOCUMENT", "DESCRIBES")}

        self.assertEqual(described, {each["SPDXID"] for each in self._packages.values()
                                     if "packageFileName" in each})

    def testEachFileIsNamedWithItsSum(self):
        described = {each["packageFileName"]: each["checksums"][0]["checksumValue"]
                     for each in self._packages.values() if "packageFileName" in each}
        files = {path.name: hashlib.sha256(path.read_bytes()).hexdigest()
                 for path in FOLDER.iterdir() if not path.name.endswith(".json")}
        self.assertGreater(len(files), 8)

        self.assertEqual(described, files)

    def testWhatIsLinkedIsWhatTheLoaderFinds(self):
        for name, program in (("hotfix-installer", "usr/bin/hotfixctl"),
                              ("hotfix-testkit", "usr/libexec/hotfix-testkit/programs/rcplauncher")):
            with tempfile.TemporaryDirectory() as tree:
                subprocess.run(["dpkg-deb", "-x", self.deb(name), tree], check=True)
                needed = re.findall(r"NEEDED.*\[(.+)\]", output("readelf", "-d", f"{tree}/{program}"))
                found = dict(re.findall(r"(\S+) => (\S+)", output("ldd", f"{tree}/{program}")))
            holders = {output("dpkg-query", "-S", f"*{found[library]}").split(":")[0]
                       for library in needed}

            self.assertEqual(self.related(self.deb(name).name, "DYNAMIC_LINK", "linked"), holders)

    def testLibrariesThatAreLoadedOrCompiledInAreNamed(self):
        package = self.deb("hotfix-installer").name

        self.assertLessEqual({"libxml2"},
                             self.related(package, "DYNAMIC_LINK", "loaded when it is needed"))
        self.assertLessEqual({"libfmt-dev", "libcli11-dev", "nlohmann-json3-dev"},
                             self.related(package, "STATIC_LINK", "its headers are compiled in"))

    def testVersionsAreThoseOfThisMachine(self):
        for each in self._packages.values():
            if "packageFileName" not in each:
                self.assertEqual(each["versionInfo"],
                                 output("dpkg-query", "-W", "-f${Version}\n", each["name"]).split()[0])

    def testNothingIsNamedThatIsNotDescribed(self):
        known = {"SPDXRef-DOCUMENT", *self._packages}
        self.assertEqual(len(self._packages), len(self._document["packages"]))

        for each in self._document["relationships"]:
            self.assertLessEqual({each["spdxElementId"], each["relatedSpdxElement"]}, known)


if __name__ == "__main__":
    unittest.main()
