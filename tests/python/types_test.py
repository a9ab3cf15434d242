"""The package and its stubs by mypy: they pass its strictest checks; a program that uses the
records as it should passes, too; and of one that does not, each line that says "# error" is found
wrong, and no other.

    types_test.py PYTHON-FOLDER

Ends with 77, for ctest's "Skipped", where mypy or a numpy that has types is not installed.
"""

import importlib.util
import os
import pathlib
import re
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent


def check(folder, cache, *files):
    path = os.pathsep.join([str(folder), str(HERE / "typing")])
    done = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", f"--cache-dir={cache}", *map(str, files)],
        cwd=cache, env=dict(os.environ, MYPYPATH=path), stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT, universal_newlines=True, check=False)
    return done.returncode, done.stdout


def main():
    if importlib.util.find_spec("mypy") is None:
        print("skipped: needs Debian's package mypy")
        sys.exit(77)
    numpy = importlib.util.find_spec("numpy")
    if numpy is None or not pathlib.Path(numpy.origin).with_name("py.typed").exists():
        print("skipped: needs Debian's package python3-numpy, 1.20 or newer")
        sys.exit(77)
    folder = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as cache:
        status, output = check(folder, cache, folder / "calibration_protolib",
                               folder / "make_stubs.py", HERE / "typed_program.py")
        if status != 0:
            sys.exit(f"types_test: {output}")

        program = HERE / "mistaken_program.py"
        _, output = check(folder, cache, program)
    marked = {number for number, line in enumerate(program.read_text().splitlines(), 1)
              if line.endswith("# error")}
    found = {int(number) for number in re.findall(r"^\S+?:(\d+): error:", output, re.MULTILINE)}
    if not marked or found != marked:
        sys.exit(f"types_test: errors expected in lines {sorted(marked)} of {program}, found:\n"
                 f"{output}")


if __name__ == "__main__":
    main()
