# SPDX-License-Identifier: MIT
"""Stands for the program of scenarios on this side of the guest.

    result.py RESULTS PROGRAM --gtest_filter=NAME ...    reports how the scenario ended in the guest
    result.py RESULTS PROGRAM --gtest_list_tests         has the program list them
"""

import os
import sys

from results import Results

SKIPPED = 77
FILTER = "--gtest_filter="


def _report(results, name):
    skipped = results.skipped()
    if skipped:
        print(f"skipped: {skipped}")
        return SKIPPED
    record = results.get(name)
    if record is None:
        print(f"{name} was not run: see console.log in {results.directory}")
        return 1
    print(record["text"])
    print(f"{name}: {record['milliseconds']} ms in the guest, status {record['status']}")
    return 1 if record["status"] else 0


def main():
    directory, *command = sys.argv[1:]
    chosen = [word for word in command if word.startswith(FILTER)]
    if not chosen or "--gtest_list_tests" in command:
        os.execv(command[0], command)
    return _report(Results(directory), chosen[0].removeprefix(FILTER))


if __name__ == "__main__":
    sys.exit(main())
