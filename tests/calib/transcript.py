#!/usr/bin/env python3
"""Runs the commands of a transcript and compares what they print with what the transcript shows.

    transcript.py --calib CALIB [--refresh] TRANSCRIPT.md...

A transcript is a Markdown file. In its ```console blocks a line that begins with "$ " is a command
for bash (lines that begin with "> " continue it), the lines below are what it prints on standard
output and standard error; "[exit N]" follows if the exit status is not 0. The commands of one file
run one after another in one folder of their own, which starts as a copy of inputs/ beside this
file; bin/ beside this file and the folder of CALIB are in the PATH.

With --refresh the files are rewritten with what the commands print now: look at the difference.
"""

import argparse
import difflib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
FENCE = "```"


def run(command, folder, environment):
    """What a command prints, as lines."""
    done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, timeout=300, check=False)
    lines = done.stdout.decode("utf-8", "backslashreplace").splitlines()
    if done.returncode != 0:
        lines.append(f"[exit {done.returncode}]")
    return lines


def replay(text, execute):
    """The transcript with each command's output replaced by what execute(command) returns."""
    result, command, inside, commands = [], None, False, 0
    for line in text.splitlines() + [None]:
        if command is not None and (line is None or not line.startswith("> ")):
            result += execute(command)
            command, commands = None, commands + 1
        if line is None:
            break
        if line.startswith(FENCE):
            inside = line == FENCE + "console" and not inside
        elif inside and line.startswith("$ "):
            command = line[2:]
        elif inside and line.startswith("> "):
            command += "\n" + line[2:]
        elif inside:
            continue  # what was printed before
        result.append(line)
    if commands == 0:
        sys.exit("transcript.py: found no command to run")
    return "\n".join(result) + "\n"


def check(path, calib, refresh):
    """Whether the transcript is as it should be."""
    expected = path.read_text(encoding="utf-8")
    environment = {key: value for key, value in os.environ.items()
                   if key not in ("NO_COLOR", "COLUMNS", "LS_COLORS")}
    environment.update(PATH=f"{calib.parent}:{HERE / 'bin'}:{os.environ['PATH']}",
                       LC_ALL="C.UTF-8", TERM="xterm", PYTHONDONTWRITEBYTECODE="1")
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(HERE / "inputs", folder, dirs_exist_ok=True)
        actual = replay(expected, lambda command: run(command, folder, environment))
    if actual == expected:
        return True
    if refresh:
        path.write_text(actual, encoding="utf-8")
        print(f"refreshed {path}")
        return True
    sys.stdout.writelines(difflib.unified_diff(
        expected.splitlines(True), actual.splitlines(True), f"{path} shows", "it prints now"))
    return False


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--calib", type=pathlib.Path, required=True)
    parser.add_argument("--refresh", action="store_true")
    parser.add_argument("transcripts", type=pathlib.Path, nargs="+")
    arguments = parser.parse_args()
    calib = arguments.calib.resolve()
    if calib.name != "calib" or not os.access(calib, os.X_OK):
        sys.exit(f"transcript.py: {calib}: is no program called calib")
    good = [check(path, calib, arguments.refresh) for path in arguments.transcripts]
    sys.exit(0 if all(good) else 1)


if __name__ == "__main__":
    main()
