#!/usr/bin/env python3
"""What it takes to load the library and to come to the first record in a new process, beside the
opponent; one table, in Markdown. scripts/benchmark --startup runs it.

    startup.py --build FOLDER

Three programs do the same (startup.cc): one with this library, one with the opponent as a shared
library, one with the run-time alone, which both of the others load, too. What counts is therefore also
given above that: ours less the run-time alone, to the opponent less the run-time alone.

Time is processor time, the kernel's for the process included, the programs by turns; instructions are
those of the whole process, the dynamic linker's among them (callgrind); relocations are what the
library's file asks of the dynamic linker, a packed list of them being one for each word of it. Of the
memory, what is the library's file is shared with other processes, and what is anonymous is not.

Exit status: 0, printed; 1, a program failed.
"""

import argparse
import os
import re
import statistics
import subprocess
import sys

RUNS = 300
SIDES = ("runtime", "ours", "opponent")


def fail(text):
    sys.exit(f"startup.py: {text}")


def processor_time(program):
    """Milliseconds."""
    child = os.posix_spawn(program, [program], os.environ)
    _, status, usage = os.wait4(child, 0)
    if status != 0:
        fail(f"{program} ended with {status}")
    return 1000 * (usage.ru_utime + usage.ru_stime)


def resident(program):
    """KiB: all, anonymous, of the library."""
    printed = subprocess.run([program, "--memory"], check=True, capture_output=True, text=True)
    return tuple(map(int, printed.stdout.split()))


def by_turns(function, programs, runs):
    """{side: what the function returns for its program each time}."""
    taken = {side: [] for side in programs}
    for _ in range(runs):
        for side, program in programs.items():
            taken[side].append(function(program))
    return taken


def instructions(program):
    ran = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program],
                         capture_output=True, text=True)
    found = re.search(r"Collected : (\d+)", ran.stderr)
    if ran.returncode != 0 or not found:
        fail(f"{program} failed under callgrind:\n{ran.stderr}")
    return int(found[1])


def relocations(library):
    """How many there are, and how many of them name what is to be searched."""
    printed = subprocess.run(["readelf", "-rW", library], check=True, capture_output=True,
                             text=True).stdout
    rows = [line.split() for line in printed.splitlines() if re.match(r"[0-9a-f]{12,} ", line)]
    packed = re.search(r"'\.relr\.dyn' .* contains (\d+) entries", printed)
    return len(rows) + (int(packed[1]) if packed else 0), sum(len(row) > 4 for row in rows)


def print_row(what, values, form, above=True):
    ratio = f"{values['ours'] / values['opponent']:.2f}"
    cells = [f"{values[side]:{form}}" if side in values else "" for side in SIDES]
    beyond = ""
    if above:
        base = values["runtime"]
        beyond = f"{(values['ours'] - base) / (values['opponent'] - base):.2f}"
    print("| " + " | ".join([what, *cells, ratio, beyond]) + " |")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--build", required=True)
    folder = parser.parse_args().build

    programs = {side: f"{folder}/benchmarks/benchmark_startup_{side}" for side in SIDES}
    for program in programs.values():
        if not os.path.exists(program):
            fail(f"there is no {program}; it is built where there is an opponent")
    libraries = {"ours": f"{folder}/libcalibration_protolib.so",
                 "opponent": f"{folder}/benchmarks/libcalibration_opponent_shared.so"}
    times = {side: statistics.median(values)
             for side, values in by_turns(processor_time, programs, RUNS).items()}
    memory = by_turns(resident, programs, RUNS // 10)
    counted = {side: instructions(program) for side, program in programs.items()}
    found = {side: relocations(library) for side, library in libraries.items()}

    print("| | run-time alone | ours | opponent | ours/opponent | above the run-time |")
    print("|---|---|---|---|---|---|")
    print_row("milliseconds of processor time", times, ".2f")
    print_row("instructions", counted, ",d")
    print_row("relocations of the library", {side: n for side, (n, _) in found.items()}, ",d", False)
    print_row("of them searches by name", {side: n for side, (_, n) in found.items()}, ",d", False)
    for index, what in enumerate(["KiB resident", "of them anonymous", "of them the library's file"]):
        values = {side: statistics.median(row[index] for row in rows)
                  for side, rows in memory.items()}
        if index == 2:
            del values["runtime"]
        print_row(what, values, ",.0f", False)
    load = " ".join(f"{value:.1f}" for value in os.getloadavg())
    print(f"\nmedians of {RUNS} processes each, by turns; load average {load}")


if __name__ == "__main__":
    main()
