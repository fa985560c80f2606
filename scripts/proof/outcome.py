# SPDX-License-Identifier: MIT
"""What a run of scripts/prove has seen."""
import json
import re
import xml.etree.ElementTree
from dataclasses import dataclass, field


@dataclass
class Tests:
    passed: int = 0
    failed: list = field(default_factory=list)
    skipped: int = 0


@dataclass
class Seen:
    date: str
    machine: str
    is_long: bool
    stages: dict  # name -> title, seconds, status, failed
    figures: dict  # stage -> name -> values in the order seen
    tests: dict  # stage -> [(name, "run", "fail" or "notrun")]

    def figure(self, name):
        """The values of "<stage>:<figure>", none when it was not noted."""
        stage, figure = name.split(":", 1)
        return self.figures.get(stage, {}).get(figure, [])

    def tests_of(self, stage, pattern):
        counts = Tests()
        for name, status in self.tests.get(stage, []):
            if not re.search(pattern, name):
                continue
            if status == "run":
                counts.passed += 1
            elif status == "fail":
                counts.failed.append(name)
            else:
                counts.skipped += 1
        return counts


def _figures(path):
    figures = {}
    if path.exists():
        for line in path.read_text().splitlines():
            noted = json.loads(line)
            figures.setdefault(noted["figure"], []).append(noted["value"])
    return figures


def _tests(path):
    if not path.exists():
        return []
    cases = xml.etree.ElementTree.parse(path).getroot().iter("testcase")
    return [(case.get("name"), case.get("status")) for case in cases]


def read(results, names):
    """The last run's, of these stages; a stage that did not run is missing."""
    report = json.loads((results / "run.json").read_text())
    ran = [name for name in names if name in report["stages"]]
    return Seen(report["date"], report["machine"], report["long"], {name: report["stages"][name] for name in ran},
                {name: _figures(results / f"{name}.jsonl") for name in ran},
                {name: _tests(results / f"{name}.xml") for name in ran})


def stage_rows(seen):
    """(name, title, minutes, tests passed, ended well)"""
    for name, stage in seen.stages.items():
        passed = seen.tests_of(name, ".").passed
        yield name, stage["title"], stage["seconds"] / 60, passed, stage["status"] == 0


def stage_table(seen):
    lines = [f"{'stage':10} {'minutes':>8} {'tests passed':>13}"]
    for name, _, minutes, passed, is_good in stage_rows(seen):
        lines.append(f"{name:10} {minutes:8.1f} {passed or '':>13}{'' if is_good else '  FAILED'}")
    total = sum(stage["seconds"] for stage in seen.stages.values()) / 60
    return "\n".join([*lines, f"{'all':10} {total:8.1f}", ""])
