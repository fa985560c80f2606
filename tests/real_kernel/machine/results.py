# SPDX-License-Identifier: MIT
"""How the scenarios ended: one file for each, written at the boot and read when they are reported."""

import json
import shutil
from pathlib import Path

_SKIPPED = "skipped"
_FIGURE = "figure "


class Results:
    def __init__(self, directory):
        self.directory = Path(directory)

    def clear(self):
        shutil.rmtree(self.directory, ignore_errors=True)
        self.directory.mkdir(parents=True)

    def skip(self, reason):
        """Nothing was run."""
        (self.directory / _SKIPPED).write_text(reason)

    def skipped(self):
        """Why nothing was run, or None."""
        file = self.directory / _SKIPPED
        return file.read_text() if file.exists() else None

    def add(self, name, status, milliseconds, text):
        record = {"status": status, "milliseconds": milliseconds, "text": text}
        self._file(name).write_text(json.dumps(record))

    def is_empty(self):
        return not any(self.directory.glob("*.json"))

    def write_summary(self):
        """Writes the measured figures to figures.txt; returns them, after how many scenarios failed."""
        records = [self.get(file.stem) for file in sorted(self.directory.glob("*.json"))]
        figures = [line.removeprefix(_FIGURE) for record in records
                   for line in record["text"].splitlines() if line.startswith(_FIGURE)]
        (self.directory / "figures.txt").write_text("".join(f"{line}\n" for line in figures))
        failed = sum(1 for record in records if record["status"])
        return "\n".join([f"{len(records)} scenarios, {failed} of them failed", *figures])

    def get(self, name):
        """The record, or None when the scenario was not run."""
        file = self._file(name)
        return json.loads(file.read_text()) if file.exists() else None

    def _file(self, name):
        return self.directory / f"{name.replace('/', '_')}.json"
