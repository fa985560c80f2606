# SPDX-License-Identifier: MIT
"""An installed tree, and hosts that are built against it as people do."""

import os
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EXAMPLES = ROOT / "examples"
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]
STANDARDS = {"C": ["-x", "c", "-std=gnu11"], "CXX": ["-x", "c++", "-std=c++17"]}


class ProgramFailed(AssertionError):
    pass


def run(*command, directory, timeout=120, **environment):
    result = subprocess.run([str(word) for word in command], cwd=directory, text=True,
                            capture_output=True, timeout=timeout, check=False,
                            env={**os.environ, **{k: str(v) for k, v in environment.items()}})
    if result.returncode != 0:
        raise ProgramFailed(f"{command[0]}: status {result.returncode}\n"
                            f"{result.stdout}{result.stderr}")
    return result.stdout


class InstalledTree:
    def __init__(self, prefix, scratch, cmake, compilers):
        """compilers: by language, C and CXX."""
        self.prefix, self.scratch = Path(prefix), Path(scratch)
        self.cmake, self.compilers = cmake, compilers
        found = [path for path in self.prefix.glob("lib*/**/libKOVASMgr.so")]
        assert len(found) == 1, found
        self.libraries = found[0].parent
        self.headers = self.prefix / "include/kovasmgr"
        self.adapters = self.libraries / "kovasmgr"

    def pkg_config(self, *words):
        return run("pkg-config", *words, "kovasmgr", directory=self.scratch,
                   PKG_CONFIG_LIBDIR=self.libraries / "pkgconfig").split()

    def build_by_pkg_config(self, language, source=EXAMPLES / "quick_start.c"):
        program = self.scratch / f"{Path(source).stem}_{language}"
        run(self.compilers[language], *STANDARDS[language], *WARNINGS, *self.pkg_config("--cflags"),
            source, "-x", "none", *self.pkg_config("--libs"), "-o", program,
            directory=self.scratch)
        return program

    def build_by_find_package(self, language):
        """The build directory."""
        build = self.scratch / f"build_{language}"
        run(self.cmake, "-S", ROOT / "tests/package/host", "-B", build, "-G", "Ninja",
            f"-DHOST_LANGUAGE={language}", f"-DEXAMPLES={EXAMPLES}",
            f"-DCMAKE_PREFIX_PATH={self.prefix}",
            f"-DCMAKE_{language}_COMPILER={self.compilers[language]}", directory=self.scratch)
        run(self.cmake, "--build", build, directory=self.scratch)
        return build

    def run_host(self, program, adapter):
        """What the host prints, in a directory that holds this adapter alone (None: nothing)."""
        place = Path(tempfile.mkdtemp(dir=self.scratch))
        if adapter is not None:
            (place / "libOSAdapt.so").symlink_to(adapter)
        return run(program, directory=place, LD_LIBRARY_PATH=self.libraries)
