"""Fields of records as numpy arrays.

Messages of numbers, of which a record may hold 100,000, are not gone through one by one: where all
elements hold the same fields, what the run-time writes is as regular as an array, and is taken for
one.
"""

from typing import TYPE_CHECKING, Any, Dict, List, Optional, Tuple

from google.protobuf.descriptor import FieldDescriptor
from google.protobuf.message import Message

from . import wire

if TYPE_CHECKING:
    import numpy

    Array = numpy.ndarray[Any, numpy.dtype[Any]]

_DTYPES = {FieldDescriptor.TYPE_DOUBLE: "f8", FieldDescriptor.TYPE_FLOAT: "f4"}
_IMAGE = "zarvo.calibration.CalibrationImage.imgdata"


def to_numpy(record: Message, field: str) -> "Array":
    """A field of the record as an array, for three kinds of fields:

    Repeated numbers (`k` and `p` of CameraIntrinsics, `a` of CameraExtrinsics, `bins`, ...): shape
    (n,), dtype float64 for double and float32 for float. The format records no matrix layout;
    reshape `a` as the program that wrote it meant it.

    Repeated messages of numbers: shape (n, fields), a column for each field by ascending number,
    NaN where an element does not hold it. `sample_points` of CameraIntrinsics: img_x, img_y, tgt_x,
    tgt_y, dtype float32. `samples` of PTZIntrinsics: zoom, fxy, cx, cy, k1, k4, p1, p2,
    error_per_point, dtype float64. Elements that do not all hold the same fields are gone through
    one by one in Python, which takes some microseconds for each.

    `imgdata` of CalibrationImage: shape (height, stride), dtype uint8: the rows of the image, each
    with all its bytes. Without a stride, it is what height divides imgdata into. The array shares
    the bytes' memory and is read-only, where the others are copies. The format records no
    vocabulary of pixels; `format` says what the bytes are.

    Raises ImportError without numpy, ValueError if the record has no such field or imgdata is not
    of the size that height and stride tell, and TypeError for fields of other kinds.
    """
    import numpy

    descriptor = record.DESCRIPTOR.fields_by_name.get(field)
    if descriptor is None:
        raise ValueError(f"{record.DESCRIPTOR.name} has no field '{field}'")
    if descriptor.full_name == _IMAGE:
        return _rows(record)
    if wire.is_repeated(descriptor):
        if descriptor.type in _DTYPES:
            values = getattr(record, field)
            return numpy.fromiter(values, dtype=_DTYPES[descriptor.type], count=len(values))
        columns = descriptor.message_type.fields if descriptor.message_type is not None else []
        if len({column.type for column in columns}) == 1 and columns[0].type in _DTYPES:
            return _table(record, descriptor, sorted(columns, key=lambda column: column.number))
    raise TypeError(f"{descriptor.full_name}: expected repeated floating-point numbers, repeated "
                    "messages of such of one type, or imgdata of CalibrationImage")


def _rows(image: Any) -> "Array":
    import numpy

    data, height = image.imgdata, image.height
    if height <= 0:
        raise ValueError(f"imgdata: the image's height is {height}, expected at least 1")
    stride = image.stride if image.HasField("stride") else len(data) // height
    if stride < 0 or height * stride != len(data):
        raise ValueError(f"imgdata: has {len(data)} bytes, expected {height} rows (height) of "
                         f"{stride} (stride)")
    return numpy.frombuffer(data, dtype=numpy.uint8).reshape(height, stride)


def _table(record: Message, field: FieldDescriptor, columns: List[FieldDescriptor]) -> "Array":
    import numpy

    elements = getattr(record, field.name)
    table = numpy.full((len(elements), len(columns)), numpy.nan, _DTYPES[columns[0].type])
    if len(elements) > 0 and not _copy_regular_run(record, field, columns, table):
        for row, element in zip(table, elements):
            for index, column in enumerate(columns):
                if element.HasField(column.name):
                    row[index] = getattr(element, column.name)
    return table


def _copy_regular_run(record: Message, field: FieldDescriptor, columns: List[FieldDescriptor],
                      table: "Array") -> bool:
    """Copies the elements out of the encoded record; False if one does not look like the first."""
    import numpy

    data = record.SerializePartialToString()
    start, begin, end = _first_occurrence(data, field.number)
    places = _places(data, begin, end, {column.number: i for i, column in enumerate(columns)},
                     table.itemsize)
    size, count = end - start, len(table)
    if places is None or start + size * count > len(data):
        return False
    run = numpy.frombuffer(data, numpy.uint8, size * count, start).reshape(count, size)
    # All but the values, that is tags and length, must be the same.
    frame = numpy.ones(size, dtype=bool)
    for _, place in places:
        frame[place - start:place - start + table.itemsize] = False
    if not all((run[:, index] == run[0, index]).all() for index in frame.nonzero()[0]):
        return False
    values = numpy.dtype({"names": [f"{column}" for column, _ in places],
                          "formats": [table.dtype.newbyteorder("<")] * len(places),
                          "offsets": [place - start for _, place in places], "itemsize": size})
    elements = numpy.frombuffer(data, values, count, start)
    for column, _ in places:
        table[:, column] = elements[f"{column}"]
    return True


def _first_occurrence(data: bytes, number: int) -> Tuple[int, int, int]:
    """Of the field with that number: where its tag, its value and what is behind it begin."""
    position = 0
    while True:
        start = position
        found, wire_type, position = wire.read_tag(data, position, len(data))
        end = wire.skip(data, position, len(data), found, wire_type, wire.DEPTH_LIMIT)
        if found == number:
            return start, wire.read_varint(data, position, len(data))[1], end
        position = end


def _places(data: bytes, position: int, end: int, columns: Dict[int, int],
            size: int) -> Optional[List[Tuple[int, int]]]:
    """The columns that an element holds, and where their values are; None if it holds more."""
    places = []
    while position < end:
        number, wire_type, position = wire.read_tag(data, position, end)
        value_end = wire.skip(data, position, end, number, wire_type, wire.DEPTH_LIMIT)
        if number not in columns or value_end - position != size:
            return None
        places.append((columns[number], position))
        position = value_end
    return places
