"""Files of one record, and logs of many."""

import contextlib
import os
from typing import IO, Any, ContextManager, Iterable, Iterator, Optional, Type, Union

from google.protobuf.message import Message

from .parsing import R, RecordError, parse_from, require_complete

# A path, or a file that is open for bytes, which stays open.
File = Union[str, "os.PathLike[str]", IO[bytes]]

_MAX_SIZE = 2**31 - 1
_BLOCK = 2**20


def read(file: File, record_type: Type[R]) -> R:
    """The record of that class that a file holds, all of it.

    Raises RecordError, which names the file, for everything that the C++ library refuses (see
    parse()), and OSError if the file cannot be read.
    """
    with _opened(file, "rb") as stream:
        data = stream.read()
    return parse_from(_name_of(file), data, record_type)


def write(file: File, record: Message) -> None:
    """Writes one record, in place of what a file at that path held.

    Raises RecordError, and has not touched the file, if the record lacks required fields, and
    OSError if the file cannot be written.
    """
    data = _serialized(_name_of(file), record)
    with _opened(file, "wb") as stream:
        _write_all(stream, data, _name_of(file))


def read_log(file: File, record_type: Type[R]) -> Iterator[R]:
    """The records of a log (each behind its length, as a varint), one after the other.

    Opens the file when it is called and reads a record when it is asked for the next. Raises
    RecordError, which names the file and the byte where the record begins, if what is there is no
    record or is cut off; the records ahead of it have been handed out by then. OSError as in
    read().
    """
    return _records(_opened(file, "rb"), _name_of(file), record_type)


def write_log(file: File, records: Iterable[Message]) -> int:
    """Writes a log of these records, in place of what a file at that path held, and returns their
    number. To append, hand it a file that is open for appending.

    Raises RecordError at the first record that lacks required fields; those ahead of it are
    written. OSError as in write().
    """
    count = 0
    with _opened(file, "wb") as stream:
        for record in records:
            data = _serialized(f"{_name_of(file)}: record {count}", record)
            _write_all(stream, _varint(len(data)) + data, _name_of(file))
            count += 1
    return count


def _opened(file: File, mode: str) -> ContextManager[IO[Any]]:
    if isinstance(file, (str, os.PathLike)):
        return open(file, mode)
    return contextlib.nullcontext(file)


def _name_of(file: File) -> str:
    if isinstance(file, (str, os.PathLike)):
        return os.fspath(file)
    return str(getattr(file, "name", "the file"))


def _serialized(source: str, record: Message) -> bytes:
    require_complete(source, "cannot be written: no complete", record)
    return record.SerializeToString()


def _records(opened: ContextManager[IO[bytes]], name: str, record_type: Type[R]) -> Iterator[R]:
    with opened as stream:
        count = position = 0
        while True:
            source = f"{name}: record {count}, byte {position}"
            head = _read_head(stream, source)
            if head is None:
                return
            length = _length_of(head, source)
            data = _read_exactly(stream, length)
            if len(data) < length:
                raise RecordError(f"{source}: ends after {len(data)} of {length} bytes", [])
            yield parse_from(source, data, record_type)
            count += 1
            position += len(head) + length


def _read_head(stream: IO[bytes], source: str) -> Optional[bytes]:
    """The bytes of the length ahead of a record; None where the log ends."""
    head = b""
    while len(head) < 10:
        byte = stream.read(1)
        if not byte and not head:
            return None
        if not byte:
            raise RecordError(f"{source}: ends within its length", [])
        head += byte
        if byte < b"\x80":
            return head
    raise RecordError(f"{source}: its length has more than ten bytes", [])


def _length_of(head: bytes, source: str) -> int:
    length = sum((byte & 0x7F) << 7 * index for index, byte in enumerate(head))
    if length > _MAX_SIZE:
        raise RecordError(f"{source}: a length of {length}, expected at most {_MAX_SIZE}", [])
    return length


def _read_exactly(stream: IO[bytes], size: int) -> bytes:
    """That many bytes, or all there are. Takes no memory for bytes that a length merely claims."""
    pieces = []
    while size > 0:
        piece = stream.read(min(size, _BLOCK))
        if not piece:
            break
        pieces.append(piece)
        size -= len(piece)
    return b"".join(pieces)


def _write_all(stream: IO[bytes], data: bytes, name: str) -> None:
    written = stream.write(data)
    if written is not None and written < len(data):  # a file that is open without a buffer
        raise OSError(f"{name}: only {written} of {len(data)} bytes were written")


def _varint(value: int) -> bytes:
    encoded = bytearray()
    while value >= 0x80:
        encoded.append(value & 0x7F | 0x80)
        value >>= 7
    encoded.append(value)
    return bytes(encoded)
