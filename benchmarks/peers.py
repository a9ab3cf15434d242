#!/usr/bin/env python3
"""Prints the peers' tables: this library beside what a user might pick instead; one table for each
payload, in Markdown. scripts/benchmark --peers runs it.

    peers.py --build FOLDER [--instructions] [--cells REGEX]

Each cell is the median of the repetitions, or the instructions of one run, and behind it in
parentheses the peer's ratio to ours in the same run.

Exit status: 0, printed; 1, a program failed, or the peers do not agree about a content.
"""

import argparse
import os
import subprocess
import sys

sys.dont_write_bytecode = True  # nothing but the build folder is written to

import instructions  # noqa: E402
import table  # noqa: E402
import times  # noqa: E402
from programs import Build  # noqa: E402

_NAMES = {
    "ours": "**this library**",
    "opponent": "a schema compiler's classes",
    "flatbuffers": "FlatBuffers, points as structs",
    "flatbuffers tables": "FlatBuffers, points as tables",
    "capnproto": "Cap'n Proto",
    "capnproto packed": "Cap'n Proto, packed",
    "protozero": "protozero, by hand",
    "rapidjson": "JSON, RapidJSON",
    "yaml-cpp": "YAML, yaml-cpp",
}
_FIGURES = ("bytes", "with zstd", "memory after reading")


class PeerBuild(Build):
    """The programs of the peers."""

    def __init__(self, folder):
        super().__init__(folder, "shared")
        self.time = self.program("peers/benchmark_peer_time")
        self.instructions = self.program("peers/benchmark_peer_instructions")
        self.libraries = {}  # what happens once in a process is not asked for

    def figures(self):
        """{(side, payload): (bytes, bytes with zstd, memory)}."""
        # So that a block counts as free as soon as it is freed.
        environment = dict(os.environ, GLIBC_TUNABLES="glibc.malloc.tcache_count=0")
        ran = subprocess.run([self.program("peers/benchmark_peer_figures")], env=environment,
                             stdout=subprocess.PIPE, text=True)
        if ran.returncode != 0:
            sys.exit(1)
        printed = ran.stdout
        rows = (line.split("\t") for line in printed.splitlines())
        return {(side, payload): tuple(map(int, rest)) for side, payload, *rest in rows}


def _number(value):
    return f"{value:,.0f}" if value >= 99.5 else f"{value:.3g}"


def _with_ratio(value, ours):
    ratio = value / ours
    digits = f"{ratio:.2g}" if ratio < 0.1 else f"{ratio:.2f}" if ratio < 9.95 else _number(ratio)
    return f"{_number(value)} ({digits})"


def _row(cells):
    return "| " + " | ".join(cells) + " |"


def print_table(results, figures, payload):
    operations = [operation for operation in results.rows()
                  if ("ours", operation, payload) in results.values]
    print(_row(["", *operations, *_FIGURES]))
    print("|---|" + "---|" * (len(operations) + len(_FIGURES)))
    scale = 1000 if results.kind == "time" else 1  # microseconds
    for side, name in _NAMES.items():
        if (side, payload) not in figures:
            continue
        cells = []
        for operation in operations:
            value = results.median(side, operation, payload)
            ours = results.median("ours", operation, payload)
            cells.append("" if value is None else _with_ratio(value / scale, ours / scale))
        cells += [_with_ratio(value, ours) for value, ours
                  in zip(figures[side, payload], figures["ours", payload])]
        print(_row([name, *cells]))


def print_tables(results, figures):
    unit = "microseconds of processor time" if results.kind == "time" else "instructions"
    print(f"{unit} for one record, bytes; in parentheses the ratio to this library's\n")
    for payload in results.columns():
        print(f"**{payload}**: {table.PAYLOADS[payload]}\n")
        print_table(results, figures, payload)
        print()
    if results.kind != "time":
        return
    spreads = [found[1] for operation in results.rows() for payload in results.columns()
               for side in _NAMES
               if side != "ours" and (found := results.ratio(operation, payload, side))]
    if spreads:
        spreads.sort()
        print(f"The ratios are good to {100 * spreads[len(spreads) // 2]:.0f} % in the middle and to "
              f"{100 * spreads[-1]:.0f} % at worst (load average {results.notes['load']}).")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True)
    parser.add_argument("--instructions", action="store_true")
    parser.add_argument("--cells", default="")
    options = parser.parse_args()

    build = PeerBuild(options.build)
    figures = build.figures()
    take = instructions.count if options.instructions else times.take
    results = take(build, options.cells)
    if not results.values:
        sys.exit(f"benchmarks: no cell's \"operation/payload\" matches '{options.cells}'")
    print_tables(results, figures)
    kept = f"{options.build}/peers_{results.kind}.json"
    results.save(kept)
    print(f"results are in {kept}")


if __name__ == "__main__":
    main()
