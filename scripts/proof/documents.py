# SPDX-License-Identifier: MIT
"""Renews what scripts/prove has seen in the documents: all between <!-- NAME: ... --> and <!-- end -->."""
import json
import re
import subprocess
import sys

import outcome
import promises

_RELIABILITY = "docs/reliability.md"
_PERFORMANCE = "docs/performance.md"


def _promise_rows(verdicts, group):
    lines = ["| Promise | Shown by | Figure of the last run | |", "|---|---|---|---|"]
    for verdict in verdicts:
        if verdict.promise.group == group:
            is_held = "held" if verdict.is_held else "**broken**: " + "; ".join(verdict.reasons)
            shown = verdict.promise.shown_by().replace("|", "\\|")
            lines.append(f"| {verdict.promise.text} | {shown} | {verdict.figure} | {is_held} |")
    return lines


def _stage_rows(seen):
    lines = ["| Stage | What runs | Minutes | Tests passed |", "|---|---|---|---|"]
    total = 0
    for name, title, minutes, passed, is_good in outcome.stage_rows(seen):
        total += minutes
        lines.append(f"| {name} | {title} | {minutes:.1f} | {passed or ''}{'' if is_good else ', failed'} |")
    return [*lines, f"| all | | {total:.1f} | |"]


def _run(seen, verdicts):
    held = sum(verdict.is_held for verdict in verdicts)
    return [f"Run of {seen.date}: {held} of {len(verdicts)} promises held. {seen.machine}."]


def _replace(text, name, lines):
    pattern = re.compile(rf"(<!-- {re.escape(name)}: .*? -->\n).*?(<!-- end -->)", re.DOTALL)
    renewed, count = pattern.subn(lambda match: "\n".join([match[1], *lines, "", match[2]]), text)
    if count != 1:
        raise ValueError(f"there are {count} places for '{name}'")
    return renewed


def _renew(path, blocks):
    text = path.read_text(encoding="utf-8")
    for name, lines in blocks.items():
        text = _replace(text, name, lines)
    path.write_text(text, encoding="utf-8")


def renew(root, results, seen, verdicts):
    """Of one run of all stages. Plots are renewed as well."""
    blocks = {f"promises of {group}": _promise_rows(verdicts, group) for group in promises.groups()}
    speed = [verdict for verdict in verdicts if verdict.promise.group == "speed"]
    others = [verdict for verdict in verdicts if verdict.promise.group != "speed"]
    _renew(root / _RELIABILITY, {"run": _run(seen, others), "stages": _stage_rows(seen), **blocks})

    sys.path.insert(0, str(root / "bench"))
    import tables  # of the benchmarks' own room
    measured = json.loads((results / "performance.json").read_text())
    _renew(root / _PERFORMANCE, {
        "run": _run(seen, speed),
        **{name: [text] for name, text in tables.markdown(measured).items()}})
    subprocess.run([root / "bench" / "plots", results / "performance.json"], cwd=root, check=True)
