"""Counts the instructions of the benchmarks' cells.

Runs the programs benchmark_instructions and benchmark_probe under valgrind's callgrind, once for
each side, side by side, and reads the counts from what callgrind dumps. Each cell's dump stays in
the build folder, as callgrind/SIDE/OPERATION.PAYLOAD, for callgrind_annotate --threshold=100.
"""

import os
import re
import shutil
import subprocess
import sys

from results import Results

# The same functions of the C library whatever processor this machine has: no vector extensions
# beyond those that every x86-64 has, and no string instructions, which would count once per byte.
_TUNABLES = "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX512BW,-AVX2,-AVX,-ERMS,-FSRM,-SSSE3"


def _start(command, folder, name):
    environment = dict(os.environ, LD_BIND_NOW="1", GLIBC_TUNABLES=_TUNABLES)
    callgrind = ["valgrind", "--tool=callgrind", "--collect-atstart=no",
                 f"--callgrind-out-file={folder}/dump.%p"]
    with open(f"{folder}/{name}.log", "w") as log:
        return subprocess.Popen(callgrind + command, env=environment, stdout=log, stderr=log)


def _finish(process, folder, name):
    if process.wait() != 0:
        with open(f"{folder}/{name}.log") as log:
            sys.exit(f"benchmarks: {name} failed under callgrind:\n{log.read()}")


def _read(folder):
    """Returns {cell: instructions for one run} and gives the dumps the cells' names."""
    counts = {}
    for name in os.listdir(folder):
        if not name.startswith("dump."):
            continue
        path = f"{folder}/{name}"
        label = total = None
        with open(path, errors="replace") as dump:
            for line in dump:
                if line.startswith("desc: Trigger: Client Request: "):
                    label = line.split(": ", 3)[3].strip()
                elif line.startswith(("totals: ", "summary: ")):
                    total = int(line.split()[1])
        if label is None:
            os.remove(path)  # what a process dumps when it ends
            continue
        side, operation, payload, runs = label.split("/")
        os.rename(path, f"{folder}/{operation.replace(' ', '-')}.{payload}")
        counts[side, operation, payload] = total / int(runs)
    return counts


def count(build, wanted, sides=None):
    """Counts the cells that the regular expression `wanted` finds in "operation/payload"; of the
    given sides only, if any are given."""
    def is_wanted(cell):
        return (sides is None or cell[0] in sides) and re.search(wanted, "/".join(cell[1:]))

    all_cells = build.cells()
    cells = [cell for cell in all_cells if is_wanted(cell)]
    folders = {side: f"{build.folder}/callgrind/{side}" for side, _, _ in all_cells}
    indices = {}
    for index, cell in enumerate(all_cells):
        if is_wanted(cell):
            indices.setdefault(cell[0], []).append(str(index))
    probed = {side: build.probe_cells(side) for side in build.libraries
              if any(map(is_wanted, build.probe_cells(side)))}

    running = []
    for side, folder in folders.items():
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        if side in indices:
            name = "benchmark_instructions"
            running.append((_start([build.instructions, *indices[side]], folder, name), folder,
                            name))
    for side in probed:
        folder, name = folders[side], "benchmark_probe"
        running.append((_start(build.probe_command(side), folder, name), folder, name))
        cells += filter(is_wanted, build.probe_cells(side))
    for process in running:
        _finish(*process)
    counts = {}
    for folder in folders.values():
        counts.update(_read(folder))
    valgrind = subprocess.run(["valgrind", "--version"], check=True, capture_output=True, text=True)
    notes = dict(build.notes(), valgrind=valgrind.stdout.strip())
    return Results("instructions", {cell: [counts[cell]] for cell in cells}, notes)
