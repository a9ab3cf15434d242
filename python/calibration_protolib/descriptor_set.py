"""Where the schema is: the file calibration.desc, which comes with the C++ library.

Uses nothing of the package, so that setup.py can ask as well.
"""

import pathlib
import shutil
import subprocess
import sys
from typing import Iterator, Optional

_NAME = "calibration.desc"
_BELOW_SCHEMAS = pathlib.Path("calibration_common", _NAME)
_BELOW_PREFIX = pathlib.Path("share/calibration_protolib/proto", _BELOW_SCHEMAS)

NOT_FOUND = (
    f"found no {_NAME}: expected it beside the package, in the sources that the package is in, or"
    " installed with the C++ library, where the package's own prefix, pkg-config, Python's prefix,"
    " /usr/local or /usr lead to it"
)


def find() -> Optional[pathlib.Path]:
    """The first there is of the places that NOT_FOUND names, or None."""
    return next((path for path in _places() if path.is_file()), None)


def _places() -> Iterator[pathlib.Path]:
    here = pathlib.Path(__file__).resolve().parent
    yield here / _NAME
    yield here.parents[1] / _BELOW_SCHEMAS
    for prefix in here.parents:
        yield prefix / _BELOW_PREFIX
    yield from _known_to_pkg_config()
    for prefix in (pathlib.Path(sys.prefix), pathlib.Path("/usr/local"), pathlib.Path("/usr")):
        yield prefix / _BELOW_PREFIX


def _known_to_pkg_config() -> Iterator[pathlib.Path]:
    program = shutil.which("pkg-config")
    if program is None:
        return
    asked = subprocess.run([program, "--variable=schemadir", "calibration_protolib"], check=False,
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    folder = asked.stdout.decode(errors="replace").strip()
    if asked.returncode == 0 and folder:
        yield pathlib.Path(folder, _BELOW_SCHEMAS)
