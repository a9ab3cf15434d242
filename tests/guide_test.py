#!/usr/bin/env python3
"""Follows a document as a reader would, from its first line to its last, and compares.

    guide_test.py DOCUMENT... --source FOLDER [--runtime PREFIX] [--with PATH]...

The documents are one walk: the second goes on where the first ends. What --with names stands in the
folder where it begins.

What counts in a document:

- A ```console block is what a terminal shows. Lines that begin with "$ " are commands (a line that
  ends with a backslash goes on in the next one, behind "> "); the lines below are what a command
  prints, to either stream. A line "..." stands for any number of lines. Every command must succeed.
- A block below a line that ends with a name in backticks and a colon, such as "Put this into
  `robot/write.cc`:", is the text of that file.

All commands run in one shell, in an empty home folder that has the sources in calibration_protolib.
"""

import argparse
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\w*)$")
FILE_NAME = re.compile(r"`([^`]+)`:$")
MARK = "@@guide_test@@"


class Step:
    """A command with its expected output, or a file with its text."""

    def __init__(self, place, command=None, file=None):
        self.place, self.command, self.file = place, command, file
        self.lines = []


def steps_of(path):
    lines = path.read_text().splitlines()
    steps, index, before = [], 0, ""
    while index < len(lines):
        fence = FENCE.match(lines[index])
        if not fence:
            before = lines[index] or before
            index += 1
            continue
        start = index + 1
        end = lines.index("```", start)
        name = FILE_NAME.search(before)
        if fence[1] == "console":
            steps += commands_of(path, lines, start, end)
        elif name:
            step = Step(f"{path.name}:{start}", file=name[1])
            step.lines = lines[start:end]
            steps.append(step)
        before, index = "", end + 1
    return steps


def commands_of(path, lines, start, end):
    steps, index = [], start
    while index < end:
        line = lines[index]
        if line.startswith("$ "):
            command = line[2:]
            while command.endswith("\\"):
                index += 1
                command += "\n" + re.sub("^> ", "", lines[index])
            steps.append(Step(f"{path.name}:{index + 1}", command=command))
        elif steps:
            steps[-1].lines.append(line)
        else:
            sys.exit(f"{path}:{index + 1}: output ahead of the first command of its block")
        index += 1
    return steps


def run(steps, folder, environment):
    """What each command prints and its exit status, in order."""
    script = []
    for step in steps:
        if step.file:
            path = folder / step.file
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("\n".join(step.lines) + "\n")
        else:
            script += [step.command, f'printf "\\n%s %s\\n" {MARK} $?']
    (folder / ".guide.sh").write_text("\n".join(script) + "\n")
    done = subprocess.run(["bash", ".guide.sh"], cwd=folder, env=environment, text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)
    pieces = re.split(rf"\n{MARK} (\d+)\n", done.stdout)
    return [(pieces[i], int(pieces[i + 1])) for i in range(0, len(pieces) - 1, 2)]


def matches(expected, actual):
    if not expected:
        return not actual
    if expected[0] == "...":
        return any(matches(expected[1:], actual[skip:]) for skip in range(len(actual) + 1))
    return bool(actual) and expected[0] == actual[0] and matches(expected[1:], actual[1:])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("documents", nargs="+", type=pathlib.Path)
    parser.add_argument("--source", required=True, type=pathlib.Path)
    parser.add_argument("--runtime")
    parser.add_argument("--with", dest="others", action="append", default=[], type=pathlib.Path)
    arguments = parser.parse_args()

    steps = [step for document in arguments.documents for step in steps_of(document)]
    commands = [step for step in steps if step.command]
    if not commands:
        sys.exit("guide_test: the documents show no command")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "calibration_protolib").symlink_to(arguments.source)
        for path in arguments.others:
            (folder / path.name).symlink_to(path)
        environment = dict(os.environ, HOME=name, LC_ALL="C.UTF-8", PWD=name)
        for variable in ("CMAKE_PREFIX_PATH", "PKG_CONFIG_PATH"):
            environment.pop(variable, None)
        if arguments.runtime:
            environment["CMAKE_PREFIX_PATH"] = arguments.runtime
            environment["PKG_CONFIG_PATH"] = f"{arguments.runtime}/lib/pkgconfig"
            environment["LD_LIBRARY_PATH"] = f"{arguments.runtime}/lib"
        results = run(steps, folder, environment)

    failures = 0
    for step, (output, status) in zip(commands, results):
        actual = output.splitlines()
        if status == 0 and matches(step.lines, actual):
            continue
        failures += 1
        print(f"{step.place}: $ {step.command}\nended with status {status} and printed:")
        print("\n".join(difflib.unified_diff(step.lines, actual, "shown", "printed", lineterm="")))
    if len(results) != len(commands):
        failures += 1
        print(f"the shell ended after {len(results)} of {len(commands)} commands")
    print(f"{len(commands) - failures} of {len(commands)} commands do what is shown")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
