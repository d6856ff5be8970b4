"""The systems that there are sources for; shared by the checks beside it. The list of them is in
cmake/System.cmake."""

import platform
import re

ENTRY = re.compile(r"^set\(HOTFIX_SYSTEM_(\w+) (\w+)\)$", re.MULTILINE)


def systemsOf(root):
    """The folder of each system in the repository, by the name that CMake has for the system."""
    return dict(ENTRY.findall((root / "cmake" / "System.cmake").read_text(encoding="utf-8")))


def belongsElsewhere(path, root):
    """Whether a source or test is another system's: it is not built on this one."""
    others = {folder for name, folder in systemsOf(root).items() if name != platform.system()}
    parts = path.parts
    return any(above == "platform" and folder in others for above, folder in zip(parts, parts[1:]))
