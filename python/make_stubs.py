#!/usr/bin/env python3
"""Makes calibration_protolib/records.pyi, what type checkers and editors know of the records.

    make_stubs.py DESCRIPTOR-SET OUTPUT

Takes the schemas that the generator of the C++ classes takes. Needs the run-time's Python.

Exit status: 0, written; 1, the schema has what there is no stub for, and what it is is told.
"""

import pathlib
import sys
from typing import Iterable, Iterator, List

from google.protobuf import descriptor_pb2
from google.protobuf.descriptor_pb2 import DescriptorProto, FieldDescriptorProto

HEAD = '''\
# Made by make_stubs.py of the schema's descriptor set; `cmake --build BUILD --target python_stubs`
# makes it anew. Fields are described in calibration_common/calibration.proto.
from typing import Any, Iterable, Iterator, List, Literal, NoReturn, Optional, Protocol, TypeVar
from typing import overload

from google.protobuf.message import Message

_V = TypeVar("_V")
_M = TypeVar("_M", bound=Message)

# What a repeated field of numbers or texts is.
class _Values(Protocol[_V]):
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[_V]: ...
    def __contains__(self, value: object) -> bool: ...
    @overload
    def __getitem__(self, index: int) -> _V: ...
    @overload
    def __getitem__(self, index: slice) -> List[_V]: ...
    @overload
    def __setitem__(self, index: int, value: _V) -> None: ...
    @overload
    def __setitem__(self, index: slice, value: Iterable[_V]) -> None: ...
    def __delitem__(self, index: int | slice) -> None: ...
    def append(self, value: _V) -> None: ...
    def extend(self, values: Iterable[_V]) -> None: ...
    def insert(self, index: int, value: _V) -> None: ...
    def pop(self, index: int = ...) -> _V: ...
    def remove(self, value: _V) -> None: ...

# What a repeated field of messages is. Elements are added, not replaced.
class _Messages(Protocol[_M]):
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[_M]: ...
    @overload
    def __getitem__(self, index: int) -> _M: ...
    @overload
    def __getitem__(self, index: slice) -> List[_M]: ...
    def __delitem__(self, index: int | slice) -> None: ...
    def add(self, **fields: Any) -> _M: ...
    def append(self, message: _M) -> None: ...
    def extend(self, messages: Iterable[_M]) -> None: ...
    def pop(self, index: int = ...) -> _M: ...
    def remove(self, message: _M) -> None: ...
'''

_SCALARS = {
    FieldDescriptorProto.TYPE_BOOL: "bool",
    FieldDescriptorProto.TYPE_BYTES: "bytes",
    FieldDescriptorProto.TYPE_DOUBLE: "float",
    FieldDescriptorProto.TYPE_FLOAT: "float",
    FieldDescriptorProto.TYPE_INT32: "int",
    FieldDescriptorProto.TYPE_INT64: "int",
    FieldDescriptorProto.TYPE_STRING: "str",
}


def value_type(message: DescriptorProto, field: FieldDescriptorProto) -> str:
    """Of one value of the field."""
    if field.type == FieldDescriptorProto.TYPE_MESSAGE:
        return field.type_name.rpartition(".")[2]
    if field.type not in _SCALARS:
        sys.exit(f"make_stubs: {message.name}.{field.name}: a field of type {field.type}; expected "
                 "a bool, bytes, double, float, int32, int64, string or message")
    return _SCALARS[field.type]


def one_of(names: Iterable[str]) -> str:
    quoted = ", ".join(f'"{name}"' for name in names)
    return f"Literal[{quoted}]" if quoted else "NoReturn"


def stub_of(message: DescriptorProto) -> Iterator[str]:
    if message.nested_type or message.enum_type or message.extension or message.oneof_decl:
        sys.exit(f"make_stubs: {message.name}: expected a message of fields alone")
    yield f"class {message.name}(Message):"
    parameters: List[str] = []
    for field in sorted(message.field, key=lambda field: field.number):
        value = value_type(message, field)
        is_message = field.type == FieldDescriptorProto.TYPE_MESSAGE
        if field.label == FieldDescriptorProto.LABEL_REPEATED:
            container = "_Messages" if is_message else "_Values"
            yield from ["    @property", f"    def {field.name}(self) -> {container}[{value}]: ..."]
            parameters.append(f"{field.name}: Iterable[{value}] = ...")
            continue
        if is_message:
            yield from ["    @property", f"    def {field.name}(self) -> {value}: ..."]
        else:
            yield f"    {field.name}: {value}"
        parameters.append(f"{field.name}: Optional[{value}] = ...")
    yield "    def __init__("
    yield "        self,"
    if parameters:
        yield "        *,"
    for parameter in parameters:
        yield f"        {parameter},"
    yield "    ) -> None: ..."
    present = one_of(field.name for field in message.field
                     if field.label != FieldDescriptorProto.LABEL_REPEATED)
    cleared = one_of(field.name for field in message.field)
    yield f"    def HasField(self, field_name: {present}) -> bool: ..."
    yield f"    def ClearField(self, field_name: {cleared}) -> None: ..."


def main() -> None:
    if len(sys.argv) != 3:
        sys.exit("usage: make_stubs.py DESCRIPTOR-SET OUTPUT")
    files = descriptor_pb2.FileDescriptorSet.FromString(pathlib.Path(sys.argv[1]).read_bytes())
    messages = [message for file in files.file for message in file.message_type]
    lines = [HEAD, "__all__ = ["]
    lines += [f'    "{name}",' for name in sorted(message.name for message in messages)]
    lines.append("]")
    for message in messages:
        lines += ["", *stub_of(message)]
    pathlib.Path(sys.argv[2]).write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
