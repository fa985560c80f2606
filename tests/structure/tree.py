# SPDX-License-Identifier: MIT
"""The source tree as the structure checks see it."""

import re
from pathlib import Path

SUFFIXES = {".h", ".hpp", ".c", ".cpp"}
LIBRARY_ROOMS = ("api", "common", "devices", "log", "manager", "support")
SOURCE_ROOMS = LIBRARY_ROOMS + (
    "adapters", "bench", "bindings", "examples", "include", "tests", "tools")

_TOKENS = re.compile(
    r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.DOTALL)


def sources(root, rooms=SOURCE_ROOMS):
    """All source files of the rooms, as paths relative to root."""
    for room in rooms:
        for path in sorted((root / room).rglob("*")):
            if path.suffix in SUFFIXES and path.is_file():
                yield path.relative_to(root)


def code(root, path):
    """A file's text with comments and the contents of strings blanked; lines stay where they are."""

    def blank(match):
        text = match.group(0)
        if text[0] == "/":
            return " " + "\n" * text.count("\n")
        if text[0] == "'" and text[-1] == "'" and len(text) > 4:
            return text  # what stands between two digit separators is no character
        return text[0] + text[-1]

    return _TOKENS.sub(blank, (root / path).read_text(encoding="utf-8"))


def find(root, path, pattern):
    """Yields 'path:line: text' for each line of code that the pattern is found in."""
    for number, line in enumerate(code(root, path).splitlines(), 1):
        if re.search(pattern, line):
            yield f"{path}:{number}: {line.strip()}"


def write(root, files):
    """Builds a small tree of {path: text} for a check to be tried on; returns its root."""
    root = Path(root)
    for path, text in files.items():
        (root / path).parent.mkdir(parents=True, exist_ok=True)
        (root / path).write_text(text, encoding="utf-8")
    return root
