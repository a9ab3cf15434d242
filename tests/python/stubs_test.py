"""The committed records.pyi is what make_stubs.py makes of the schema.

    stubs_test.py PYTHON-FOLDER DESCRIPTOR-SET
"""

import difflib
import pathlib
import subprocess
import sys
import tempfile


def main():
    folder, descriptor_set = map(pathlib.Path, sys.argv[1:])
    committed = folder / "calibration_protolib" / "records.pyi"
    with tempfile.TemporaryDirectory() as scratch:
        made = pathlib.Path(scratch, "records.pyi")
        subprocess.run([sys.executable, folder / "make_stubs.py", descriptor_set, made], check=True)
        difference = list(difflib.unified_diff(
            committed.read_text().splitlines(), made.read_text().splitlines(),
            "committed", "made of the schema", lineterm=""))
    if difference:
        print("\n".join(difference))
        sys.exit(f"stubs_test: {committed} is out of date; the target python_stubs makes it anew")


if __name__ == "__main__":
    main()
