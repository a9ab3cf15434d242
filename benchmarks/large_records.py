#!/usr/bin/env python3
"""What calib takes for large records, beside a program that reads and parses them.

    large_records.py --build FOLDER [--megabytes N]

For a record with an image and for one with sample points, each of N MB (500), prints the memory of
each command as a multiple of the file's size and of the record's memory, and its processor time as
a multiple of that of the reading program. What calib writes goes to a file in a temporary folder.
scripts/benchmark --calib runs it.
"""

import argparse
import os
import pathlib
import struct
import sys
import tempfile

from wire import sample_points, varint

BLOCK = 1 << 20


def write_image(path, size):
    """A CalibrationImage whose octets are each as likely as the others."""
    with open(path, "wb") as out:
        out.write(b"\x08" + varint(size >> 10) + b"\x10" + varint(1024) + b"\x2a" + varint(size))
        block = bytes(range(256)) * (BLOCK // 256)
        for _ in range(size // BLOCK):
            out.write(block)
        out.write(block[:size % BLOCK])


def write_points(path, size):
    """CameraIntrinsics with as many sample points as make the size."""
    block = sample_points(1000)
    with open(path, "wb") as out:
        for field in range(1, 6):
            out.write(bytes([8 * field + 1]) + struct.pack("<d", 400))
        for _ in range(size // len(block)):
            out.write(block)


def run(command):
    """The command's processor time in seconds and its largest memory in bytes."""
    to_nothing = [(os.POSIX_SPAWN_OPEN, 1, os.devnull, os.O_WRONLY, 0)]
    child = os.posix_spawn(command[0], command, os.environ, file_actions=to_nothing)
    _, status, usage = os.wait4(child, 0)
    if status != 0:
        sys.exit(f"large_records.py: {' '.join(command)}: ended with {status}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024


def measure(build, path, record_type, folder):
    calib = str(build / "calib" / "calib")
    size = path.stat().st_size
    reading = [str(build / "benchmarks" / "benchmark_reading"), record_type, str(path)]
    time_to_read, memory_to_read = min(run(reading) for _ in range(3))
    record = memory_to_read - size  # the program holds the file and the record
    print(f"{record_type} of {size / 1e6:.0f} MB, {record / 1e6:.0f} MB in memory, "
          f"read in {time_to_read:.2f} s")
    print(f"  {'':<18} {'memory/file':>12} {'memory/record':>14} {'time/reading':>13}")
    commands = {"show": ["show", str(path)], "check": ["check", str(path)]}
    for name, extension in ("to text", "txtpb"), ("to JSON", "json"):
        output = str(folder / f"written.{record_type}.{extension}")
        commands[name] = ["convert", str(path), output]
    for name, arguments in commands.items():
        time, memory = min(run([calib] + arguments) for _ in range(2))
        print(f"  {name:<18} {memory / size:>12.2f} {memory / record:>14.2f} "
              f"{time / time_to_read:>13.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--megabytes", type=int, default=500)
    arguments = parser.parse_args()
    size = arguments.megabytes * 1000000
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for write, record_type in ((write_image, "CalibrationImage"),
                                   (write_points, "CameraIntrinsics")):
            path = folder / f"large.{record_type}.binpb"
            write(path, size)
            measure(arguments.build, path, record_type, folder)
            path.unlink()


if __name__ == "__main__":
    main()
