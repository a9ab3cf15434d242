"""The guard against sliding back: the instructions that our side needed when last written down."""

import os
import sys

TOLERANCE = 0.03
_PERCENT = f"{100 * TOLERANCE:.0f} %"

_HEADER = (
    "# Instructions for one run of each cell, ours: operation, payload, count. scripts/benchmark\n"
    f"# --instructions --check fails where a cell needs over {_PERCENT} more, and --update writes "
    "this file anew.\n")


def write(path, results):
    with open(path, "w") as file:
        file.write(_HEADER)
        for key, value in results.notes.items():
            file.write(f"# {key}: {value}\n")
        for (side, operation, payload), values in results.values.items():
            if side == "ours":
                file.write(f"{operation}\t{payload}\t{values[0]:.1f}\n")


def _read(path):
    notes, counts = {}, {}
    with open(path) as file:
        for number, line in enumerate(file.read().splitlines(), 1):
            if line in _HEADER.splitlines():
                continue
            try:
                if line.startswith("# "):
                    key, value = line[2:].split(": ", 1)
                    notes[key] = value
                else:
                    operation, payload, count = line.split("\t")
                    counts[operation, payload] = float(count)
            except ValueError:
                sys.exit(f"benchmarks: {path}:{number}: '{line}' is neither '# NOTE: VALUE' nor "
                         "operation, payload and count with tabs between; --update writes the "
                         "file anew")
    return notes, counts


def check(path, results, complete):
    """Prints what differs; returns whether no cell needs more than it may. `complete` says that
    the results should have every cell of the baseline."""
    if not os.path.exists(path):
        print(f"FAILED: there is no baseline {path}; --update writes one.")
        return False
    notes, counts = _read(path)
    for key in sorted(set(notes) | set(results.notes)):
        if notes.get(key) != results.notes.get(key):
            print(f"NOTE: the baseline was counted with {key} '{notes.get(key)}', this is "
                  f"'{results.notes.get(key)}'; differences below may come from that.")
    measured = {cell[1:]: values[0] for cell, values in results.values.items()
                if cell[0] == "ours"}
    problems = []
    for cell, value in measured.items():
        name = "/".join(cell)
        if cell not in counts:
            problems.append(f"{name} is not in the baseline")
        elif value > counts[cell] * (1 + TOLERANCE):
            problems.append(f"{name} needs {value:.1f} instructions, "
                            f"{100 * (value / counts[cell] - 1):.1f} % more than the baseline's "
                            f"{counts[cell]:.1f}")
    if complete:
        problems += [f"{'/'.join(cell)} of the baseline was not run"
                     for cell in counts if cell not in measured]
    better = sum(value < counts[cell] * (1 - TOLERANCE) for cell, value in measured.items()
                 if cell in counts)
    for problem in problems:
        print(f"FAILED: {problem}")
    print(f"{len(measured)} cells checked against {os.path.basename(path)}: "
          f"{len(problems)} failed, {better} need over {_PERCENT} less"
          + (" (--update writes that down)" if better else ""))
    if not measured:
        print("FAILED: no cell was run")
        return False
    return not problems
