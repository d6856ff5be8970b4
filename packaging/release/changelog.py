"""CHANGELOG.md in the forms that packages carry it in."""

import re
from datetime import datetime, timezone
from email.utils import format_datetime
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
NAME = "hotfix-installer"


class Release:
    """A version, when it was released (None: not yet), and what is new in it, a line each."""

    def __init__(self, heading, text):
        match = re.fullmatch(r"(\S+) \((?:unreleased|(\d{4}-\d\d-\d\d))\)", heading)
        if not match:
            raise ValueError(f'CHANGELOG.md: "{heading}" is not a version and its date or (unreleased)')
        self.version, date = match.groups()
        self.date = date and datetime.fromisoformat(date + "T00:00:00+00:00")
        paragraphs = re.split(r"\n\n|\n(?=- )", text.strip())
        self.news = [" ".join(paragraph.removeprefix("- ").split()) for paragraph in paragraphs]

    def day(self, epoch):
        """The date; of what is not released that of the sources, in seconds since 1970."""
        return self.date or datetime.fromtimestamp(epoch, timezone.utc)


def releases():
    """From the newest on."""
    sections = (SOURCE / "CHANGELOG.md").read_text(encoding="utf-8").split("\n## ")[1:]
    return [Release(*section.split("\n", 1)) for section in sections]


def wrapped(text, first, others, width=80):
    """The text in lines, each behind its margin."""
    lines, line = [], first
    for word in text.split():
        if len(line) + len(word) >= width and line.strip(" *-"):
            lines.append(line.rstrip())
            line = others
        line += word + " "
    return [*lines, line.rstrip()]


def debian(contact, epoch):
    lines = []
    for release in releases():
        suite = "unstable" if release.date else "UNRELEASED"
        lines += [f"{NAME} ({release.version}) {suite}; urgency=medium", ""]
        for news in release.news:
            lines += wrapped(news, "  * ", "    ")
        lines += ["", f" -- {contact}  {format_datetime(release.day(epoch))}", ""]
    return "\n".join(lines)


def rpm(contact, epoch):
    lines = []
    for release in releases():
        lines.append(f"* {release.day(epoch):%a %b %d %Y} {contact} - {release.version}-1")
        for news in release.news:
            lines += wrapped(news.replace("%", "%%"), "- ", "  ")
        lines.append("")
    return "\n".join(lines)
