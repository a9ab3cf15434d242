"""Takes the time of the benchmarks' cells.

benchmark_time repeats its cells in random order, all sides of a cell next to each other;
benchmark_probe is started once for each repetition and side, by turns.
"""

import json
import os
import re
import subprocess
import sys

from results import Results

# Enough for quartiles; a cell's repetition takes a few hundredths of a second.
REPETITIONS = 15


def _probe(build, wanted, values):
    sides = [side for side in build.libraries
             if any(re.search(wanted, "/".join(cell[1:])) for cell in build.probe_cells(side))]
    for _ in range(REPETITIONS if sides else 0):
        for side in sides:
            printed = subprocess.run(build.probe_command(side), check=True, text=True,
                                     stdout=subprocess.PIPE,
                                     env=dict(os.environ, LD_BIND_NOW="1"))
            for line in printed.stdout.splitlines():
                name, nanoseconds = line.rsplit(" ", 1)
                cell = tuple(name.split("/"))
                if re.search(wanted, "/".join(cell[1:])):
                    values.setdefault(cell, []).append(float(nanoseconds))


def take(build, wanted):
    """Takes the time of the cells that the regular expression `wanted` finds in
    "operation/payload"."""
    all_cells = build.cells()
    sides = {cell[0] for cell in all_cells}
    names = {"/".join(cell[1:]) for cell in all_cells if re.search(wanted, "/".join(cell[1:]))}
    values = {cell: [] for cell in all_cells if "/".join(cell[1:]) in names}
    if names:
        path = f"{build.folder}/google_benchmark.json"
        pattern = "^(" + "|".join(sorted(names)) + ")/manual_time$"
        ran = subprocess.run(
            [build.time, f"--benchmark_filter={pattern}", "--benchmark_min_time=0.01",
             f"--benchmark_repetitions={REPETITIONS}", "--benchmark_enable_random_interleaving=true",
             f"--benchmark_out={path}", "--benchmark_out_format=json"],
            stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        if ran.returncode != 0:
            sys.exit(f"benchmarks: benchmark_time failed ({ran.returncode}):\n{ran.stderr}")
        with open(path) as file:
            runs = json.load(file)["benchmarks"]
        for run in sorted(runs, key=lambda run: run.get("repetition_index", -1)):
            if run["run_type"] != "iteration":
                continue
            operation, payload, _ = run["run_name"].split("/")
            for side in sides:
                if side in run:
                    values[side, operation, payload].append(run[side])
        for cell, taken in values.items():
            if len(taken) != REPETITIONS:
                sys.exit(f"benchmarks: {'/'.join(cell)} was repeated {len(taken)} times, "
                         f"expected {REPETITIONS}")
    _probe(build, wanted, values)
    notes = dict(build.notes(), load="%.1f, %.1f, %.1f" % os.getloadavg())
    return Results("time", values, notes)
