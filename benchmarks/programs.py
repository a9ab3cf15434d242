"""The programs in the build folder, and what their results depend on."""

import os
import platform
import re
import subprocess
import sys

_TYPE = "calibration.RobotCalibration"


class Build:
    """`linked` says how the opponent is: "shared", as a shared library, or "static"."""

    def __init__(self, folder, linked):
        self.folder = folder
        self.linked = linked
        suffix = "_static" if linked == "static" else ""
        self.time = self.program(f"benchmark_time{suffix}")
        self.instructions = self.program(f"benchmark_instructions{suffix}")
        self.probe = self.program("benchmark_probe")
        # For each side that is a shared library: the library, and the type whose reflection is
        # asked for.
        self.libraries = {"ours": (f"{folder}/libcalibration_protolib.so", f"zarvo.{_TYPE}")}
        opponent = f"{folder}/benchmarks/libcalibration_opponent_shared.so"
        if os.path.exists(opponent):
            self.libraries["opponent"] = (opponent, f"opponent.{_TYPE}")

    def program(self, name):
        """The path of a program; fails if it is not built."""
        path = f"{self.folder}/benchmarks/{name}"
        if not os.path.exists(path):
            sys.exit(f"benchmarks: there is no {path}; expected a folder in which the "
                     "benchmarks are built (scripts/benchmark builds them)")
        return path

    def cells(self):
        """All cells of benchmark_instructions: (side, operation, payload). Fails if the sides do
        not agree about the payloads."""
        listed = subprocess.run([self.instructions, "--list"], stdout=subprocess.PIPE, text=True)
        if listed.returncode != 0:
            sys.exit(listed.returncode)
        return [tuple(name.split("/")) for name in listed.stdout.splitlines()]

    def probe_cells(self, side):
        return [(side, "library load", "-"), (side, "first reflection", "-")]

    def probe_command(self, side):
        return [self.probe, side, *self.libraries[side]]

    def notes(self):
        with open(f"{self.folder}/benchmarks/tools") as tools:
            notes = dict(line.strip().split(": ", 1) for line in tools)
        notes["C library"] = " ".join(platform.libc_ver())
        return notes

    def text_sizes(self):
        """{side: bytes of machine code} of the shared libraries."""
        sizes = {}
        for side, (library, _) in self.libraries.items():
            sections = subprocess.run(["objdump", "-h", library], check=True,
                                      capture_output=True, text=True).stdout
            sizes[side] = int(re.search(r"\s\.text\s+([0-9a-f]+)", sections)[1], 16)
        return sizes
