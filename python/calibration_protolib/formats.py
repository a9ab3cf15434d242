"""Cameras in the files of other tools, read into records and written from them, by the shared
library libcalibration_formats: what the commands `calib import` and `calib export` do.

    from calibration_protolib import formats

    robot, format, notes = formats.read("camchain.yaml")
    text, notes = formats.write_camera_info(robot.camera[0])

What is changed in the terms of one tool's convention or another's, and what is not kept, comes back
as notes; a lens that has no place raises FormatsError unless `lossy` is given. The library is loaded
when this module is imported, which raises ImportError if it is not found.
"""

from __future__ import annotations

import ctypes
import enum
import os
from contextlib import contextmanager
from dataclasses import dataclass
from typing import (IO, Any, Callable, Dict, Iterator, List, NamedTuple, Optional, Sequence, Tuple,
                    Union)

from . import formats_library
from .records import CameraCalibration, RobotCalibration
from .shared_library import int32

# A path; a file that is open for bytes, which stays open; or bytes, the contents themselves.
Source = Union[str, "os.PathLike[str]", IO[bytes], bytes]

_library = formats_library.load()
_NO_MEMORY = 2


class NoteKind(enum.IntEnum):
    """What a note tells of."""

    NOT_KEPT = 0  # what has no place in the record or the file
    CONVERTED = 1  # kept, in the terms of another convention
    LOST = 2  # not kept of a lens: points land elsewhere
    REMARK = 3  # what has been made of the rest


class Note(NamedTuple):
    """text: with its place ahead, such as "camchain.yaml:6:15: cam0.rostopic: ..."."""

    kind: NoteKind
    text: str


class FormatsError(ValueError):
    """A file is not read, or a record not written. Says what is wrong, and where."""


# --- Reading -------------------------------------------------------------------------------------


class Read(NamedTuple):
    """format: of readable_formats()."""

    robot: RobotCalibration
    format: str
    notes: List[Note]


def readable_formats() -> List[str]:
    """"ros", "kalibr", ...: what `calib import --from` takes."""
    return _names(_library.calibration_formats_readable)


def read(source: Source, *more: Source, format: str = "", lens: str = "",
         lossy: bool = False) -> Read:
    """The cameras of one file; `more` is for the others of OpenCV's stereo calibration and of
    camodocal.

    format: of readable_formats(); by the content if it is empty. lens: what the coefficients mean
    where a file does not tell, such as "plumb_bob" or "equidistant"; by their number if it is
    empty. lossy: take what a record can hold of a lens that it cannot, and tell. Raises
    FormatsError for what is no such file, and OSError if one cannot be read.
    """
    contents = [_contents(one) for one in (source, *more)]
    files = (formats_library.File * len(contents))(*[
        formats_library.File(_word("a file's name", name),
                             ctypes.create_string_buffer(data, len(data)), len(data))
        for name, data in contents])
    options = formats_library.ReadOptions(_word("format", format), _word("lens", lens), bool(lossy))
    with _result(_library.calibration_formats_read(files, len(files), options)) as result:
        robot = RobotCalibration.FromString(_bytes(result.files[0]))
        return Read(robot, _text(result.format), _notes(result))


def read_ros(source: Source) -> Read:
    """ROS camera_info; see read()."""
    return read(source, format="ros")


def read_kalibr(source: Source) -> Read:
    """A camchain of Kalibr or OpenVINS; see read()."""
    return read(source, format="kalibr")


def read_opencv(source: Source, *more: Source) -> Read:
    """OpenCV's FileStorage, of one camera or a pair; see read()."""
    return read(source, *more, format="opencv")


def read_euroc(source: Source) -> Read:
    """sensor.yaml of the EuRoC data sets; see read()."""
    return read(source, format="euroc")


def read_mrcal(source: Source) -> Read:
    """A cameramodel of mrcal; see read()."""
    return read(source, format="mrcal")


def read_basalt(source: Source) -> Read:
    """A calibration of Basalt; see read()."""
    return read(source, format="basalt")


def read_colmap(source: Source) -> Read:
    """COLMAP's cameras.txt or a configuration of its rigs; see read()."""
    return read(source, format="colmap")


def read_camodocal(source: Source, *more: Source) -> Read:
    """camodocal's cameras, and where they sit; see read()."""
    return read(source, *more, format="camodocal")


def read_depthai(source: Source) -> Read:
    """The calibration of a DepthAI device; see read()."""
    return read(source, format="depthai")


def read_orbslam3(source: Source) -> Read:
    """Settings of ORB-SLAM; see read()."""
    return read(source, format="orbslam3")


def read_nerfstudio(source: Source) -> Read:
    """transforms.json of Nerfstudio; see read()."""
    return read(source, format="nerfstudio")


def read_mcap(source: Source) -> Read:
    """The cameras of an MCAP recording; see read()."""
    return read(source, format="mcap")


# --- Writing -------------------------------------------------------------------------------------


@dataclass
class WriteOptions:
    """What a record does not say.

    lens: what k and p mean, as in read(). lossy: write what the file can hold of a lens that it
    cannot, and tell. from_camera: extrinsics map from the camera to the frame of reference. width,
    height: in pixels, where the record has none. name: of the camera, where it has none and is the
    only one. frame: of "tf" and "urdf", what the frame of reference is called; rig if it is empty.
    rectification, projection: of "ros" and "mcap" and a single camera, R and 3x4 P by rows.
    """

    lens: str = ""
    lossy: bool = False
    from_camera: bool = False
    width: int = 0
    height: int = 0
    name: str = ""
    frame: str = ""
    rectification: Optional[Sequence[float]] = None
    projection: Optional[Sequence[float]] = None


class Written(NamedTuple):
    """files: their bytes by their names, as they would be in a folder."""

    files: Dict[str, bytes]
    notes: List[Note]


class WrittenText(NamedTuple):
    """text: of the only file."""

    text: str
    notes: List[Note]


def writable_formats() -> List[str]:
    """"ros", "kalibr", ...: what `calib export --to` takes."""
    return _names(_library.calibration_formats_writable)


def write(robot: RobotCalibration, format: str,
          options: WriteOptions = WriteOptions()) -> Written:
    """All files of the record's cameras in that format; nothing is written to disk. Raises
    FormatsError for a record that cannot be written so."""
    with _written(_library.calibration_formats_write, robot, format, options) as result:
        files = {_text(file.name): _bytes(file) for file in result.files[:result.file_count]}
        return Written(files, _notes(result))


def write_text(robot: RobotCalibration, format: str,
               options: WriteOptions = WriteOptions()) -> WrittenText:
    """The text of the only file, as write() has it. Raises FormatsError, too, if there would be
    several files, or one that is no text (mcap)."""
    with _written(_library.calibration_formats_write_text, robot, format, options) as result:
        try:
            return WrittenText(_bytes(result.files[0]).decode(), _notes(result))
        except UnicodeDecodeError as error:
            raise FormatsError(f"{format}: is no text; write() gives the bytes") from error


def write_camera_info(camera: CameraCalibration,
                      options: WriteOptions = WriteOptions()) -> WrittenText:
    """ROS camera_info of one camera; see write()."""
    return write_text(RobotCalibration(camera=[camera]), "ros", options)


# --- To and from the library ---------------------------------------------------------------------


def _contents(source: Source) -> Tuple[str, bytes]:
    """What errors and notes call a file, and what is in it."""
    if isinstance(source, (bytes, bytearray, memoryview)):
        return "the text", bytes(source)
    if isinstance(source, (str, os.PathLike)):
        with open(source, "rb") as stream:
            return os.fspath(source), stream.read()
    data = source.read()
    if isinstance(data, str):
        raise TypeError("expected a file that is open for bytes, not for text")
    return str(getattr(source, "name", "the file")), data


def _word(what: str, word: str) -> bytes:
    if "\0" in word:
        raise ValueError(f"{what}: holds a zero byte")
    return os.fsencode(word)


def _list(what: str, values: Optional[Sequence[float]], size: int) -> Any:
    if values is None:
        return None
    numbers = [float(value) for value in values]
    if len(numbers) != size:
        raise ValueError(f"{what}: has {len(numbers)} numbers, expected {size}")
    return (ctypes.c_double * size)(*numbers)


@contextmanager
def _written(function: Callable[..., Any], robot: RobotCalibration, format: str,
             options: WriteOptions) -> Iterator[Any]:
    c = formats_library.WriteOptions(
        _word("lens", options.lens), bool(options.lossy), bool(options.from_camera),
        int32("width", options.width), int32("height", options.height), _word("name", options.name),
        _word("frame", options.frame), _list("rectification", options.rectification, 9),
        _list("projection", options.projection, 12))
    record = robot.SerializePartialToString()
    with _result(function(_word("format", format), record, len(record), c)) as result:
        yield result


@contextmanager
def _result(pointer: Any) -> Iterator[Any]:
    """What is pointed to, as long as it is used. Raises what it tells."""
    try:
        result = pointer.contents
        if result.status == _NO_MEMORY:
            raise MemoryError
        if result.status != 0:
            raise FormatsError(_text(result.error))
        yield result
    finally:
        _library.calibration_formats_free(pointer)


def _names(function: Callable[[int], Optional[bytes]]) -> List[str]:
    names: List[str] = []
    while True:
        name = function(len(names))
        if name is None:
            return names
        names.append(name.decode())


def _text(text: bytes) -> str:
    return text.decode(errors="backslashreplace")


def _bytes(file: Any) -> bytes:
    return ctypes.string_at(file.bytes, file.size)


def _notes(result: Any) -> List[Note]:
    return [Note(NoteKind(note.kind), _text(note.text))
            for note in result.notes[:result.note_count]]
