# SPDX-License-Identifier: MIT
"""Figures for machines: what the tests' NoteFigure writes, written by the benchmarks."""
import json
import os
import re


def name_of(what, unit):
    """"write, one port / bare" in ns: performance.write_one_port_to_bare_ns"""
    text = re.sub(r"[^a-z0-9]+", "_", what.lower().replace(",000", "000").replace("1,024", "1024")
                  .replace(" / ", " to ")).strip("_")
    unit = {"x": "ratio", "/s": "per_second", "%": "percent"}.get(unit, unit.lower())
    return f"performance.{text}_{unit}" if unit else f"performance.{text}"


def note(name, value):
    """Appends a figure to the file that KOVASMGR_FIGURES names, if it names one."""
    path = os.environ.get("KOVASMGR_FIGURES")
    if path:
        with open(path, "a", encoding="utf-8") as file:
            file.write(json.dumps({"figure": name, "value": value}) + "\n")
