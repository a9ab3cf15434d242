"""A strict reader of the wire format: says what is wrong with bytes that are no record.

It takes what the C++ library takes and refuses what that refuses. The run-time's own parsers let
some broken input pass, each its own.
"""

from typing import Any, Dict, Optional, Tuple

from google.protobuf.descriptor import Descriptor, FieldDescriptor
from google.protobuf.descriptor_pb2 import FieldDescriptorProto

# How many levels of sub-messages and groups may lie below the record, as in C++.
DEPTH_LIMIT = 100

_VARINT, _FIXED64, _LENGTH_DELIMITED, _START_GROUP, _END_GROUP, _FIXED32 = range(6)
_FIXED_SIZE = {
    FieldDescriptor.TYPE_DOUBLE: 8,
    FieldDescriptor.TYPE_FLOAT: 4,
}

# What the content of a length-delimited field is, by field number: a message, by its own table, or
# a packed run, by the size of its elements or None for varints. Other fields may hold any bytes.
_Table = Dict[int, Any]
_tables: Dict[str, _Table] = {}


class _Defect(Exception):
    pass


def find_defect(data: bytes, descriptor: Descriptor) -> Optional[str]:
    """What is wrong with data as a record of that message, and where; None if nothing is.

    Whether required fields are there is not looked at. Takes time linear in len(data), some
    microseconds for each field.
    """
    try:
        _check_message(data, 0, len(data), _table_of(descriptor), DEPTH_LIMIT)
    except _Defect as defect:
        return str(defect)
    return None


def _table_of(descriptor: Descriptor) -> _Table:
    table = _tables.get(descriptor.full_name)
    if table is None:
        table = _tables[descriptor.full_name] = {}
        for field in descriptor.fields:
            if field.message_type is not None:
                table[field.number] = _table_of(field.message_type)
            elif field.type in (FieldDescriptor.TYPE_STRING, FieldDescriptor.TYPE_BYTES):
                continue
            elif is_repeated(field):
                table[field.number] = _FIXED_SIZE.get(field.type)
    return table


def is_repeated(field: FieldDescriptor) -> bool:
    """Releases of the run-time from 6.31 on have is_repeated, and from 7 on no label."""
    known = getattr(field, "is_repeated", None)
    return field.label == FieldDescriptorProto.LABEL_REPEATED if known is None else bool(known)


def read_varint(data: bytes, position: int, end: int) -> Tuple[int, int]:
    """The value and where it ends."""
    value = 0
    for shift in range(0, 70, 7):
        if position == end:
            raise _Defect(f"byte {position}: a varint is cut off")
        byte = data[position]
        position += 1
        value |= (byte & 0x7F) << shift
        if byte < 0x80:
            return value & 0xFFFFFFFFFFFFFFFF, position
    raise _Defect(f"byte {position}: a varint is longer than ten bytes")


def read_tag(data: bytes, position: int, end: int) -> Tuple[int, int, int]:
    """Field number, wire type, and where the tag ends."""
    start = position
    value, position = read_varint(data, position, end)
    number, wire_type = (value & 0xFFFFFFFF) >> 3, value & 7
    if number == 0:
        raise _Defect(f"byte {start}: a field number is zero")
    if wire_type > _FIXED32:
        raise _Defect(f"byte {start}: field {number} has wire type {wire_type}")
    return number, wire_type, position


def skip(data: bytes, position: int, end: int, number: int, wire_type: int, depth: int) -> int:
    """Where the value of any field but a message or a packed run ends."""
    if wire_type == _VARINT:
        return read_varint(data, position, end)[1]
    if wire_type == _START_GROUP:
        return _check_group(data, position, end, number, depth)
    if wire_type == _LENGTH_DELIMITED:
        length, position = read_varint(data, position, end)
    else:
        length = 8 if wire_type == _FIXED64 else 4
    if length > end - position:
        raise _Defect(f"byte {position}: field {number} has {length} bytes, of which "
                      f"{end - position} are there")
    return position + length


def _check_group(data: bytes, position: int, end: int, group: int, depth: int) -> int:
    if depth == 0:
        raise _Defect(f"byte {position}: nested more than {DEPTH_LIMIT} levels deep")
    while position < end:
        number, wire_type, position = read_tag(data, position, end)
        if wire_type == _END_GROUP:
            if number != group:
                raise _Defect(f"byte {position}: group {group} is closed as {number}")
            return position
        position = skip(data, position, end, number, wire_type, depth - 1)
    raise _Defect(f"byte {position}: group {group} is not closed")


def _check_message(data: bytes, position: int, end: int, table: _Table, depth: int) -> None:
    while position < end:
        number, wire_type, position = read_tag(data, position, end)
        if wire_type == _END_GROUP:
            raise _Defect(f"byte {position}: the end of group {number}, which was not begun")
        value_end = skip(data, position, end, number, wire_type, depth)
        if wire_type == _LENGTH_DELIMITED and number in table:
            _, position = read_varint(data, position, end)
            content = table[number]
            if isinstance(content, dict):
                if depth == 0:
                    raise _Defect(f"byte {position}: nested more than {DEPTH_LIMIT} levels deep")
                _check_message(data, position, value_end, content, depth - 1)
            else:
                _check_run(data, position, value_end, number, content)
        position = value_end


def _check_run(data: bytes, position: int, end: int, number: int, size: Optional[int]) -> None:
    if size is None:
        while position < end:
            _, position = read_varint(data, position, end)
    elif (end - position) % size != 0:
        raise _Defect(f"byte {position}: the packed field {number} has {end - position} bytes, "
                      f"expected a multiple of {size}")
