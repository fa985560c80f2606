# SPDX-License-Identifier: MIT
"""Which room may include what. A room reaches others only along this map, so that it stays acyclic."""

import re

from standard_headers import C_HEADERS, SYSTEM_HEADERS
from tree import sources

# The first pattern that matches a file decides. A file may include what one of its patterns
# matches; system headers are named apart: "C", "system", or "any" (libraries of others as well).
RULES = [
    (r"include/KOVASMgrWriteLog\.h", "system", [r"include/.*", r"common/jmutex\.h"]),
    (r"include/.*", "C", [r"include/(?!KOVASMgrWriteLog).*"]),
    (r"common/.*", "system", [r"common/.*"]),
    (r"(support|log)/.*", "system", [r"common/.*", r"include/.*", r"{own}/.*"]),
    (r"devices/(.*\.h|port_book\.cpp)", "system",
     [r"devices/.*\.h", r"include/(?!KOVASMgr(Write)?Log).*"]),
    (r"manager/.*\.h", "system",
     [r"manager/.*", r"devices/.*\.h", r"common/.*", r"include/(?!KOVASMgrWriteLog).*"]),
    (r"(manager|devices)/.*\.cpp", "system",
     [r"manager/.*", r"devices/.*", r"common/.*", r"include/(?!KOVASMgrWriteLog).*"]),
    (r"api/.*", "system",
     [r"api/.*", r"manager/.*", r"common/(jdir|cancel_shield)\.h", r"include/(?!KOVASMgrWriteLog).*"]),
    (r"adapters/.*", "any",
     [r"include/(OSAdapt(Line|Scenario|Spy)?|KOVASMgrLog|KOVASMgrExport)\.h", r"adapters/shared/.*", r"{own}/.*"]),
    (r"tools/.*", "any", [r"include/.*", r"{own}/.*"]),
    (r"bindings/.*", "any", [r"include/.*", r"{own}/.*"]),
    (r"examples/.*", "any", [r"include/.*", r"bindings/cpp/KOVASMgr\.hpp", r"{own}/.*"]),
    (r"tests/(api|system|package)/.*", "any",
     [r"include/.*", r"tests/(fakes|harness)/.*", r"{own}/.*"]),
    (r"(tests|bench)/.*", "any", [r".*"]),
]

# Where an include is looked for, besides the including file's own folder.
SEARCH_PATH = ("", "include", "adapters", "bindings/cpp", "tools", "tools/kovasctl")

_INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*[<"]([^>"\n]+)[>"]', re.MULTILINE)


def _own(path):
    depth = 2 if path.parts[0] in ("adapters", "bindings", "tests", "tools", "examples") else 1
    return "/".join(path.parts[:min(depth, len(path.parts) - 1)])


def _resolve(root, path, name):
    """The path of a header of this project, relative to root; None for one of the system's."""
    for folder in (str(path.parent), *SEARCH_PATH):
        candidate = (root / folder / name).resolve()
        if candidate.is_file() and candidate.is_relative_to(root):
            return candidate.relative_to(root).as_posix()
    return None


def _is_allowed(root, path, name):
    rule = next(rule for rule in RULES if re.fullmatch(rule[0], path.as_posix()))
    target = _resolve(root, path, name)
    if target is None:
        known = {"C": C_HEADERS, "system": SYSTEM_HEADERS}.get(rule[1])
        return known is None or name in known
    own = re.escape(_own(path))
    return any(re.fullmatch(allowed.replace("{own}", own), target) for allowed in rule[2])


def includes(root, path):
    # Not through code(): that blanks the names between the quotes.
    return _INCLUDE.findall((root / path).read_text(encoding="utf-8"))


def violations(root):
    root = root.resolve()
    return [f"{path} must not include {name}" for path in sources(root)
            for name in includes(root, path) if not _is_allowed(root, path, name)]


def cycles(root):
    """Headers that reach themselves."""
    root = root.resolve()
    graph = {path.as_posix(): {_resolve(root, path, name) for name in includes(root, path)} - {None}
             for path in sources(root)}

    def reaches(start):
        seen, ahead = set(), list(graph[start])
        while ahead:
            path = ahead.pop()
            if path not in seen:
                seen.add(path)
                ahead.extend(graph.get(path, ()))
        return start in seen

    return [f"{path} includes itself by way of others" for path in graph if reaches(path)]
