#!/usr/bin/env python3
"""Runs the benchmarks that stand built in a folder and reports; see scripts/benchmark.

Exit status: 0, reported (with --check: no cell needs more than it may); 1, a cell does, or a
program failed; 2, wrong command line.
"""

import argparse
import os
import sys

sys.dont_write_bytecode = True  # nothing but the build folder is written to

import baseline  # noqa: E402
import instructions  # noqa: E402
import table  # noqa: E402
import times  # noqa: E402
from programs import Build  # noqa: E402

_BASELINE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "instructions_baseline.txt")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True)
    parser.add_argument("--instructions", action="store_true")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--cells", default="")
    parser.add_argument("--against", default="opponent", choices=["opponent", "dynamic", "limit"])
    parser.add_argument("--opponent", default="shared", choices=["shared", "static"])
    parser.add_argument("--absolute", action="store_true")
    options = parser.parse_args()

    build = Build(options.build, options.opponent)
    if options.instructions:
        ours_only = options.check or options.update
        results = instructions.count(build, options.cells, ["ours"] if ours_only else None)
    else:
        results = times.take(build, options.cells)
    if not results.values:
        sys.exit(f"benchmarks: no cell's \"operation/payload\" matches '{options.cells}'")
    kept = f"{options.build}/{results.kind}_{options.opponent}.json"
    results.save(kept)

    if options.check:
        sys.exit(0 if baseline.check(_BASELINE, results, complete=not options.cells) else 1)
    if options.update:
        baseline.write(_BASELINE, results)
        print(f"{_BASELINE} holds {len(results.values)} cells")
        return
    if options.absolute:
        for side in dict.fromkeys(cell[0] for cell in results.values):
            table.print_absolute(results, side)
    if "opponent" in build.libraries:
        print("the opponent is " + {"shared": "a shared library, as ours is",
                                    "static": "linked into the program"}[build.linked])
    table.print_results(results, options.against)
    if len(build.libraries) == 2:
        sizes = build.text_sizes()
        print(f"machine code (.text of the shared libraries): {sizes['ours']} bytes, "
              f"{sizes['ours'] / sizes['opponent']:.2f} of the opponent's {sizes['opponent']}")
    print(f"results are in {kept}")


if __name__ == "__main__":
    main()
