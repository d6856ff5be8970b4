"""What programs and libraries ask for when they run."""

import re
import subprocess
from pathlib import Path


def binaries(tree):
    """The programs and shared libraries below a folder, without the links to them."""
    for path in sorted(Path(tree).rglob("*")):
        if path.is_file() and not path.is_symlink():
            with open(path, "rb") as file:
                if file.read(4) == b"\x7fELF":
                    yield path


def dynamic(binary, tag):
    """The names that the dynamic section holds under a tag, NEEDED or SONAME."""
    told = subprocess.run(["readelf", "-dW", binary], check=True, capture_output=True, text=True).stdout
    return set(re.findall(rf"\({tag}\)[^[]*\[([^]]+)\]", told))


def loaded(binary):
    """The libraries that are loaded when they come to be needed: their names are among the texts."""
    texts = set(re.findall(rb"(lib[A-Za-z0-9_+-]+\.so\.[0-9]+)\0", Path(binary).read_bytes()))
    names = {text.decode() for text in texts}
    return names - dynamic(binary, "NEEDED") - dynamic(binary, "SONAME")


def holders(paths):
    """The Debian packages of this machine that hold files with these paths, patterns among them."""
    if not paths:
        return set()
    told = subprocess.run(["dpkg-query", "--search", *sorted(paths)], check=True, capture_output=True,
                          text=True).stdout
    return {line.split(":")[0] for line in told.splitlines() if not line.startswith("diversion ")}


def librariesOf(found, names):
    """The Debian packages of the libraries that binaries name: names is dynamic's or loaded's answer."""
    folder = subprocess.run(["dpkg-architecture", "-qDEB_HOST_MULTIARCH"], check=True,
                            capture_output=True, text=True).stdout.strip()
    return holders({f"*/{folder}/{name}" for binary in found for name in names(binary)})


def versions(packages):
    """Of Debian packages that are installed: name, version, source and its version, architecture."""
    if not packages:
        return []
    fields = "${Package}\\t${Version}\\t${source:Package}\\t${source:Version}\\t${Architecture}\\n"
    told = subprocess.run(["dpkg-query", "--show", f"--showformat={fields}", *sorted(packages)],
                          check=True, capture_output=True, text=True).stdout
    return [tuple(line.split("\t")) for line in told.splitlines()]
