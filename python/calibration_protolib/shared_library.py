"""Finds and loads the shared libraries whose functions for C the package calls.

ctypes calls them, so that the package has nothing to compile: one package serves every version of
Python, and the libraries are those that C++ programs use.
"""

import ctypes
import operator
import pathlib
import shutil
import subprocess
import sys
from typing import Any, Iterator, List, Mapping, Tuple

# Of each function, behind the library's name: what it returns and takes.
Functions = Mapping[str, Tuple[Any, List[Any]]]


def load(name: str, functions: Functions) -> ctypes.CDLL:
    """The library libNAME, its functions declared. Raises ImportError if there is none, or an older
    one."""
    file = f"lib{name}.so.1"
    for place in _places(name, file):
        try:
            library = ctypes.CDLL(place)
        except OSError:
            continue
        try:
            for word, (result, arguments) in functions.items():
                function = getattr(library, f"{name}_{word}")
                function.restype, function.argtypes = result, arguments
        except AttributeError as error:
            raise ImportError(f"{place}: is older than this package: {error}") from error
        return library
    raise ImportError(
        f"cannot load {file}: expected it where the system's loader looks (LD_LIBRARY_PATH), or where"
        " pkg-config, the package's own prefix, Python's prefix or /usr/local lead to it")


def int32(name: str, value: int) -> int:
    """The value, which ctypes would cut down to 32 bits without a word. Raises ValueError, which
    names it, if it has more."""
    number = operator.index(value)
    if not -2**31 <= number < 2**31:
        raise ValueError(f"{name}: {number} is no number of 32 bits")
    return number


def _places(name: str, file: str) -> Iterator[str]:
    yield file
    program = shutil.which("pkg-config")
    if program is not None:
        asked = subprocess.run([program, "--variable=libdir", name], check=False,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        folder = asked.stdout.decode(errors="replace").strip()
        if asked.returncode == 0 and folder:
            yield str(pathlib.Path(folder, file))
    here = pathlib.Path(__file__).resolve()
    for prefix in (*here.parents, pathlib.Path(sys.prefix), pathlib.Path("/usr/local")):
        for path in (prefix / "lib" / file, prefix / "lib64" / file,
                     *sorted(prefix.glob(f"lib/*-linux-*/{file}"))):
            if path.is_file():
                yield str(path)
