#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tables in Markdown of what bench/prove has measured.

    bench/tables.py [PERFORMANCE.JSON]
"""
import json
import pathlib
import statistics
import sys

from comparison import NAMES, PORTS

DEFAULT = "build/release/bench/performance.json"


def _number(value, digits):
    return "" if value is None else f"{value:,.{digits}f}"


def _table(head, rows):
    lines = [f"| {' | '.join(head)} |", f"|{'|'.join(['---'] + ['---:'] * (len(head) - 1))}|"]
    return "\n".join(lines + [f"| {' | '.join(row)} |" for row in rows])


def _rows(result, columns):
    """A row for each library; columns: (run, key, factor, digits)."""
    for library, runs in result["compare"].items():
        cells = []
        for run, key, factor, digits in columns:
            value = runs.get(run, {}).get(key)
            cells.append(_number(None if value is None else value * factor, digits))
        yield [NAMES[library], *cells]


def write(result):
    return _table(["a write", "16 B, ns", "/ `write(2)`", "4,096 B, ns", "/ `write(2)`"],
                  _rows(result, [("write/16", "ns", 1, 0), ("write/16", "to_bare", 1, 3),
                                 ("write/4096", "ns", 1, 0), ("write/4096", "to_bare", 1, 3)]))


def delivery(result):
    return _table(["far end's write to callback, ms", "1 port, p50", "p99", "64 ports, p50", "p99"],
                  _rows(result, [(f"delivery/{ports}", key, 1e-3, 3) for ports in (1, 64)
                                 for key in ("p50_us", "p99_us")]))


def throughput(result):
    columns = [(f"throughput/{ports}", key, factor, digits) for ports in (1, 16, 64)
               for key, factor, digits in (("bytes_per_second", 1e-6 / ports, 3),
                                           ("cpu_ms_per_mb", 1, 2))]
    head = [text for ports in (1, 16, 64) for text in
            (f"{ports} port{'s' if ports > 1 else ''}, MB/s each", "CPU ms a MB")]
    return _table(["far ends that never pause", *head], _rows(result, columns))


def idle(result, key="cpu_ms_per_second", what="CPU ms a second, idle open ports", digits=2):
    return _table([what, *[f"{ports:,}" for ports in PORTS]],
                  _rows(result, [(f"idle/{ports}", key, 1, digits) for ports in PORTS]))


def switches(result):
    return idle(result, "switches_per_second", "context switches a second, idle open ports", 0)


def enumeration(result):
    return _table(["a list of the ports, us", "1 port", "1,024 ports"],
                  [row for row in _rows(result, [("enumeration/1", "us", 1, 1), ("enumeration/1024", "us", 1, 1)])
                   if row[1]])


def _hot_plug_row(what, runs):
    medians, highs, counts = zip(*runs)
    return [what, _number(statistics.median(medians), 1), _number(min(highs), 1), _number(max(highs), 1),
            f"{len(runs)} x {counts[0]}"]


def hot_plug(result):
    return _table(["hot-plug, ms", "p50, median run", "p99, best run", "p99, worst run", "runs"],
                  [_hot_plug_row(what, runs) for what, runs in result["hot_plug"].items()])


def promises(result):
    return _table(["promise", "figure", "target", "verdict"],
                  [[row["what"], f"{row['measured']:.4g} {row['unit']}",
                    f"{'at most' if row['is_most'] else 'at least'} {row['limit']:g} {row['unit']}",
                    "held" if row["held"] else "**missed**"] for row in result["promises"]])


ALL = {"promises": promises, "write": write, "delivery": delivery, "throughput": throughput,
       "idle": idle, "switches": switches, "enumeration": enumeration, "hot_plug": hot_plug}


def markdown(result):
    """{name: table} of all tables, by the names of ALL."""
    return {name: table(result) for name, table in ALL.items()}


def main():
    result = json.loads(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else DEFAULT).read_text())
    print(f"{result['date']}, {result['machine']}")
    for table in markdown(result).values():
        print(f"\n{table}")


if __name__ == "__main__":
    main()
