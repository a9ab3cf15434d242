"""Records from bytes, as strictly as in C++."""

from typing import List, Type, TypeVar

from google.protobuf.message import DecodeError, Message

from .wire import find_defect

R = TypeVar("R", bound=Message)

_MAX_SIZE = 2**31 - 1
_MAX_NAMES = 5


class RecordError(ValueError):
    """Bytes are no complete record, or a record cannot be written. Says which file it is about,
    what is wrong and where.

    missing: the required fields that are not there, as paths such as "camera[0].intrinsics.cy".
    """

    def __init__(self, text: str, missing: List[str]) -> None:
        super().__init__(text)
        self.missing = missing


def parse(data: bytes, record_type: Type[R]) -> R:
    """A record of that class, from its encoding. Raises RecordError for everything that the C++
    library refuses: malformed or truncated bytes, and a record that lacks required fields.

    Costs a serialization on top of the run-time's parsing. Bytes that another program spelled in
    its own way, and records with fields that the schema does not know, are gone through in Python
    as well, which takes a microsecond or two for each field.
    """
    return parse_from("the data", bytes(data), record_type)


def parse_from(source: str, data: bytes, record_type: Type[R]) -> R:
    """parse(), and errors begin with what the data came from."""
    name = record_type.DESCRIPTOR.name
    if len(data) > _MAX_SIZE:
        raise RecordError(f"{source}: holds no {name}: has {len(data)} bytes, "
                          f"expected at most {_MAX_SIZE}", [])
    try:
        record = record_type.FromString(data)
    except (DecodeError, RecursionError, RuntimeWarning, ValueError) as error:
        defect = find_defect(data, record_type.DESCRIPTOR) or f"the run-time says: {error}"
        raise RecordError(f"{source}: holds no {name}: {defect}", []) from error
    # What is written as it was read holds nothing odd. Unknown fields do not count: some run-times
    # write them as they came.
    record.DiscardUnknownFields()
    if record.SerializePartialToString() != data:
        odd = find_defect(data, record_type.DESCRIPTOR)
        if odd is not None:
            raise RecordError(f"{source}: holds no {name}: {odd}", [])
        record = record_type.FromString(data)
    require_complete(source, "holds no complete", record)
    return record


def require_complete(source: str, what: str, record: Message) -> None:
    """Raises RecordError if the record lacks required fields."""
    if record.IsInitialized():
        return
    missing = list(record.FindInitializationErrors())
    names = ", ".join(missing[:_MAX_NAMES])
    if len(missing) > _MAX_NAMES:
        names += f" and {len(missing) - _MAX_NAMES} more"
    raise RecordError(f"{source}: {what} {record.DESCRIPTOR.name}: missing: {names}", missing)
