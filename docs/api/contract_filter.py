# SPDX-License-Identifier: MIT
"""Shows doxygen the contracts of the public headers, which are plain comments.

    contract_filter.py HEADER

Prints the header with its comments marked as documentation, line for line: the text of a file stays
laid out as it is, parameters, results, threads and notes become what doxygen calls them.
"""

import re
import sys
from pathlib import Path

PLAIN = ("clang-format", "SPDX-License-Identifier")
BLOCK = re.compile(r"(?P<before>[^\n]*?)/\*(?P<text>.*?)\*/", re.DOTALL)
PARAMETER = re.compile(r"(\w+) {2,}(\S.*)")
RESULT = re.compile(r"  (\S.*?) {2,}(\S.*)")
SECTIONS = (("Returns, ", "@return In"), ("Returns ", "@return "), ("Return ", "@return "),
            ("Threads: ", "@threads "), ("Note: ", "@note "))


def escaped(text):
    return re.sub(r"([\\@<>&#%])", r"\\\1", text)


def described(line):
    """One line of a function's contract."""
    if line == "Returns, in the order of the checks:" or line == "Returns, in this order:":
        return "@return " + line.removeprefix("Returns, ")
    for word, command in SECTIONS:
        if line.startswith(word):
            return command + escaped(line.removeprefix(word))
    if parameter := PARAMETER.fullmatch(line):
        return f"@param {parameter[1]} {escaped(parameter[2])}"
    if result := RESULT.fullmatch(line):
        return f"  - <tt>{escaped(result[1])}</tt> {escaped(result[2])}"
    return escaped(line)


def contract(lines):
    return [described(line) for line in lines]


def overview(lines):
    """A file's own text: the first paragraph, and the rest as it is laid out."""
    end = next((i for i, line in enumerate(lines) if i > 1 and not line.strip()), len(lines) - 1)
    marked = [escaped(line) for line in lines[:end]]
    if end < len(lines) - 1:
        return ["@file", *marked[1:], "@verbatim", *lines[end + 1:-1], lines[-1] + "@endverbatim "]
    return ["@file", *marked[1:], *lines[end:]]


def plain(line):
    return re.sub(r"^ \* ?", "", line)


def documented(text, change):
    lines = "\n * ".join(change([plain(line) for line in text.split("\n")]))
    before, verbatim, laid_out = lines.partition(" * @verbatim")
    return before + verbatim + laid_out.replace("\n * ", "\n")


class CComments:
    """Changes /* */ comments; the second one of a file is the file's."""

    def __init__(self):
        self.count = 0

    def __call__(self, match):
        before, text = match["before"], match["text"]
        self.count += 1
        if any(word in text for word in PLAIN):
            return match[0]
        if before.strip():
            return f"{before}/**<{escaped(text)}*/"
        change = overview if self.count == 2 and "\n" in text else contract
        return f"{before}/**{documented(text, change)}*/"


def cpp_comments(text):
    """Changes // comments: those that begin a file, and the words in /// comments."""
    text = re.sub(r"^template <> struct std::.*$", "", text, flags=re.MULTILINE)  # not followed
    text = re.sub(r"^(\s*///) Threads: ", r"\1 @threads ", text, flags=re.MULTILINE)
    head = re.match(r"// SPDX[^\n]*\n//\n((?://[^\n]*\n)+)", text)
    if not head:
        return text
    shown = overview(["", *(line[3:] for line in head[1].splitlines()), ""])
    first_line = text.split("\n", 1)[0]
    return f"{first_line}\n/** " + "\n".join(shown[:-1]) + f"{shown[-1]}*/\n" + text[head.end():]


def siblings(text):
    """Declarations that share a comment share their documentation."""
    found = re.compile(r"^(KOVASMGR_API [^;\n]*?(\w+)\([^;\n]*;\n)(?=KOVASMGR_API )", re.MULTILINE)
    return found.sub(r"\1/** @copydoc \2 */ ", text)


def main():
    text = Path(sys.argv[1]).read_text(encoding="utf-8")
    if text.startswith("/* SPDX"):
        text = siblings(BLOCK.sub(CComments(), text))
    else:
        text = cpp_comments(text)
    sys.stdout.write(text)


if __name__ == "__main__":
    main()
