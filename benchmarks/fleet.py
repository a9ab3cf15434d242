#!/usr/bin/env python3
"""What calib takes for very many records, beside a program that only reads and parses them.

    fleet.py --build FOLDER [--runs N] [--records N] [--robots N]

Makes two logs in a temporary folder, 10,000 cameras of 30 KB (with sample points) and 700,000 of 340
bytes, and prints for `calib table`, `check` and `log count`: records a second and memory on one
processor, processor time beside that of benchmark_log_limit, and records a second on two processors.
That compares like with like: the limit of `table` makes the same bytes, which is looked at. Of the limit,
two run at once on two processors, which tells what the machine has to gain. Each figure is the least of
N runs (5), which take turns; --records makes all logs so short. With the packages of npm that docs/fleet.md
uses in FOLDER/fleet, prints the seconds of its steps for 10,000 robots, too. scripts/benchmark --fleet
runs it.
"""

import argparse
import os
import pathlib
import random
import struct
import subprocess
import sys
import tempfile
import time

from wire import length_delimited, sample_points, varint

COLUMNS = ("name,serial,intrinsics.fx,intrinsics.fy,intrinsics.cx,intrinsics.cy,intrinsics.k,"
           "intrinsics.width,intrinsics.height,intrinsics.error_per_point,extrinsics.a")
SOURCE = pathlib.Path(__file__).resolve().parent.parent
TO_NOTHING = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
LOGS = (("30 KB", 10000, 1240), ("340 bytes", 700000, 0))

# Doubles behind their tags: fx, fy, skew, cx, cy, six of k, two of p; error_per_point; a[0..15].
LENS = struct.Struct("<" + "Bd" * 13)
LENS_TAGS = [9, 17, 25, 33, 41] + [49] * 6 + [57] * 2
ERROR = struct.Struct("<Bd")
MOUNT = struct.Struct("<" + "Bd" * 16)


def write_log(path, records, points):
    """A log of CameraCalibration records, of which no two are alike."""
    dice = random.Random(records)
    size = b"\x40" + varint(752) + b"\x48" + varint(480)
    points = sample_points(points)
    around = [458, 457, 0, 367, 248, 0, 0, 0, 0, 0, 0, 0, 0]
    mount = [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1]
    with open(path, "wb") as out:
        for number in range(records):
            lens = [value + dice.random() for value in around]
            mount[3] = dice.random()
            intrinsics = LENS.pack(*(x for pair in zip(LENS_TAGS, lens) for x in pair))
            intrinsics += size + ERROR.pack(81, dice.random()) + points
            extrinsics = MOUNT.pack(*(x for value in mount for x in (9, value)))
            record = length_delimited(1, intrinsics)
            record += length_delimited(3, extrinsics)
            record += length_delimited(5, b"cam%d" % (number % 6))
            record += length_delimited(6, b"a camera with a wide and heavy lens")
            record += length_delimited(7, b"C-%08d" % number)
            out.write(varint(len(record)) + record)


def run(command, processors, notes):
    """What the command takes: seconds, processor time in seconds, largest memory in bytes."""
    # Python's own memory would count for a child that it starts itself.
    command = ["/usr/bin/time", "--format=%M", f"--output={notes}"] + command
    os.sched_setaffinity(0, processors)
    begin = time.perf_counter()
    child = os.posix_spawn(command[0], command, os.environ, file_actions=TO_NOTHING)
    _, status, usage = os.wait4(child, 0)
    seconds = time.perf_counter() - begin
    if status != 0:
        sys.exit(f"fleet.py: {' '.join(command)}: ended with {status}")
    return seconds, usage.ru_utime + usage.ru_stime, int(notes.read_text()) * 1024


def run_two(command, processors):
    """How long two take that run at once, each on a processor of its own."""
    begin = time.perf_counter()
    children = []
    for processor in processors:
        os.sched_setaffinity(0, {processor})
        children.append(os.posix_spawn(command[0], command, os.environ, file_actions=TO_NOTHING))
    for child in children:
        os.waitpid(child, 0)
    return time.perf_counter() - begin


def look_at_rows(table, limit, folder):
    """Ends the program unless both print the same."""
    outputs = []
    for command in (table, limit):
        outputs.append(folder / f"rows{len(outputs)}.csv")
        with open(outputs[-1], "wb") as out:
            subprocess.run(command, check=True, stdout=out)
    if subprocess.run(["cmp", *outputs], check=False).returncode != 0:
        sys.exit("fleet.py: calib table and benchmark_log_limit do not print the same rows")
    for output in outputs:
        output.unlink()


def measure(build, path, records, folder, runs):
    calib = str(build / "calib" / "calib")
    limit = str(build / "benchmarks" / "benchmark_log_limit")
    path = str(path)
    limits = {what: [limit, what, path] for what in ("read", "table")}
    commands = {
        "log count": ([calib, "log", "count", path], "read"),
        "check": ([calib, "check", path], "read"),
        "table": ([calib, "table", path, "--to", "csv", "--columns", COLUMNS], "table")}
    look_at_rows(commands["table"][0], limits["table"], folder)
    everywhere = sorted(os.sched_getaffinity(0))
    places = {1: {everywhere[0]}, 2: set(everywhere[:2])}
    taken, two_at_once = {}, {what: [] for what in limits}
    for _ in range(runs):
        for what, command in limits.items():
            taken.setdefault(("limit", what), []).append(run(command, places[1], folder / "notes"))
            two_at_once[what].append(run_two(command, everywhere[:2]))
        for what, (command, _) in commands.items():
            for processors, place in places.items():
                taken.setdefault((what, processors), []).append(
                    run(command, place, folder / "notes"))
    os.sched_setaffinity(0, everywhere)
    best = {key: [min(values) for values in zip(*runs_of)] for key, runs_of in taken.items()}
    print(f"  {'':<16} {'records/s':>11} {'MB':>6} {'time/limit':>11} {'on two':>9} {'gain':>6}")
    for what in limits:
        seconds, _, memory = best["limit", what]
        on_two = min(two_at_once[what]) / len(places[2])
        print(f"  {'limit: ' + what:<16} {records / seconds:>11,.0f} {memory / 1e6:>6.0f} {'':>11} "
              f"{records / on_two:>9,.0f} {seconds / on_two:>6.2f}")
    for what, (_, limit) in commands.items():
        seconds, processor_time, memory = best[what, 1]
        ratio = processor_time / best["limit", limit][1]
        on_two = best[what, 2][0]
        print(f"  {what:<16} {records / seconds:>11,.0f} {memory / 1e6:>6.0f} {ratio:>11.2f} "
              f"{records / on_two:>9,.0f} {seconds / on_two:>6.2f}")


def ask_questions(build, robots, folder):
    """Goes through docs/fleet.md with its own files, and prints how long each step takes."""
    sys.path.insert(0, str(SOURCE / "tests"))
    from guide_test import steps_of  # pylint: disable=import-outside-toplevel
    for step in steps_of(SOURCE / "docs" / "fleet.md"):
        if step.file:
            (folder / step.file).write_text("\n".join(step.lines) + "\n")
    (folder / "node_modules").symlink_to(build / "fleet" / "node_modules")
    environment = dict(os.environ, PATH=f"{build / 'calib'}:{build / 'examples'}:{os.environ['PATH']}")
    print(f"{robots:,} robots")
    for command in (["make_fleet", "fleet", str(robots)], ["bash", "tables.sh", "jsonl"],
                    ["node", "ask.mjs", "jsonl.sql", "views.sql", "questions.sql"]):
        begin = time.perf_counter()
        subprocess.run(command, check=True, cwd=folder, env=environment, stdout=subprocess.DEVNULL)
        print(f"  {' '.join(command):<52} {time.perf_counter() - begin:>6.2f} s")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--records", type=int)
    parser.add_argument("--robots", type=int, default=10000)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for size, records, points in LOGS:
            records = arguments.records or records
            path = folder / "many.CameraCalibration.binpb.log"
            write_log(path, records, points)
            print(f"{records:,} records of {size}, {path.stat().st_size / 1e6:.0f} MB")
            measure(arguments.build, path, records, folder, arguments.runs)
            path.unlink()
        if (arguments.build / "fleet" / "node_modules").exists():
            ask_questions(arguments.build.resolve(), arguments.robots, folder)


if __name__ == "__main__":
    main()
