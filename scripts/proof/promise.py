# SPDX-License-Identifier: MIT
"""A promise, and how it is judged by what a run has seen."""
import re
from dataclasses import dataclass, field

AGGREGATES = {"sum": sum, "max": max, "min": min, "last": lambda values: values[-1]}

_PLACEHOLDER = re.compile(r"\{([a-z]+:[a-z0-9_.]+)(?:\|(\w+))?(?::(\d))?\}")


def _value(seen, name, aggregate):
    values = seen.figure(name)
    return AGGREGATES[aggregate or "sum"](values) if values else None


@dataclass
class Verdict:
    promise: "Promise"
    figure: str
    reasons: list  # why it is broken

    @property
    def is_held(self):
        return not self.reasons


@dataclass
class Promise:
    """text: what is promised. tests: "stage:regex" of the tests that show it, all of which must pass; or
    "stage:" where the whole stage must. figure: a text with {stage:figure|aggregate:digits} in it.
    limits: "stage:figure|aggregate <= bound", or >=; limits_when_long: likewise, in addition."""
    group: str
    text: str
    tests: list
    figure: str = ""
    limits: list = field(default_factory=list)
    limits_when_long: list = field(default_factory=list)

    def stages(self):
        named = [*self.tests, *self.limits, *(match[1] for match in _PLACEHOLDER.finditer(self.figure))]
        return {name.split(":", 1)[0] for name in named}

    def judge(self, seen):
        reasons = [*self._failed_tests(seen), *self._broken_limits(seen)]
        return Verdict(self, self._figure_text(seen, reasons), reasons)

    def _failed_tests(self, seen):
        for shown_by in self.tests:
            stage, pattern = shown_by.split(":", 1)
            if not pattern:
                ran = seen.stages.get(stage, {"status": 1, "failed": "it was not run"})
                if ran["status"] != 0:
                    yield f"{stage}: {ran['failed']}"
                continue
            counts = seen.tests_of(stage, pattern)
            if counts.failed:
                yield f"{stage}: {', '.join(counts.failed[:3])} failed"
            elif not counts.passed:
                yield f"{stage}: no test was run" + (" (skipped)" if counts.skipped else "")

    def _broken_limits(self, seen):
        for limit in self.limits + (self.limits_when_long if seen.is_long else []):
            name, aggregate, sign, bound = re.fullmatch(
                r"([a-z]+:[a-z0-9_.]+)(?:\|(\w+))? (<=|>=) ([\d.]+)", limit).groups()
            value = _value(seen, name, aggregate)
            if value is None:
                yield f"{name} was not measured"
            elif (value > float(bound)) if sign == "<=" else (value < float(bound)):
                yield f"{name.split('.')[-1]} is {value:.6g}, promised {sign} {bound}"

    def _figure_text(self, seen, reasons):
        def replace(match):
            value = _value(seen, match[1], match[2])
            if value is None:
                missing = f"{match[1]} was not measured"
                if missing not in reasons:
                    reasons.append(missing)
                return "?"
            return f"{value:,.{match[3] or 0}f}"
        counts = [seen.tests_of(*shown_by.split(":", 1)) for shown_by in self.tests if shown_by[-1] != ":"]
        passed, skipped = sum(each.passed for each in counts), sum(each.skipped for each in counts)
        parts = [_PLACEHOLDER.sub(replace, self.figure)] if self.figure else []
        parts += [f"{passed:,} tests passed"] if passed else []
        parts += [f"{skipped:,} skipped"] if skipped else []
        return "; ".join(parts)

    def shown_by(self):
        """"AllocationSweep.* (release, asan)" """
        stages = {}
        for shown_by in self.tests:
            stage, pattern = shown_by.split(":", 1)
            stages.setdefault(pattern or "the whole stage", []).append(stage)
        return ", ".join(f"`{pattern}` ({', '.join(names)})" for pattern, names in stages.items())
