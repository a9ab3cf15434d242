"""The Python side of the exchange (exchange.cc describes the files; interop_test.sh how it goes).

    exchange.py write FOLDER COUNT SEED
    exchange.py check FOLDER
    exchange.py damage FOLDER COUNT SEED    writes broken and odd records of all types
    exchange.py judge FOLDER                tells of each file there whether it is a record
"""

import math
import pathlib
import random
import struct
import sys

from google.protobuf.descriptor import FieldDescriptor

import calibration_protolib
from calibration_protolib import records

INT32 = [-2**31, -1, 0, 1, 127, 128, 16383, 16384, 2**31 - 1]
INT64 = INT32 + [-2**63, 2**63 - 1, 2**35]
DOUBLES = [0.0, -0.0, 1.0, -1.5, 5e-324, 1.7976931348623157e308, math.inf, -math.inf, math.nan]
FLOATS = [0.0, -0.0, 1.0, 0.4064, 1e-45, 3.4028234663852886e38, math.inf, -math.inf, math.nan]
LENGTHS = [0, 0, 1, 7, 20, 127, 128, 300, 16384]


# What is no field, or one that no program would write so: to be put into records.
ODD = [
    b"\0", b"\x0c", b"\x0e", b"\x0f",  # tags: zero, the end of a group, two unknown wire types
    b"\x0b\x0c", b"\x0b\x14", b"\x0b", b"\xa3\x06\xa0\x06\1\xa4\x06",  # groups
    b"\x88\x80\0\1", b"\xa0\x86\x80\x80\x70\1",  # long tags
    b"\xa0\6" + b"\xff" * 9 + b"\1", b"\xa0\6" + b"\xff" * 10 + b"\1",  # long varints
    b"\xa2\6\2ab", b"\xa2\6\3ab", b"\xa5\6abcd", b"\xa1\6abcdefgh",  # unknown fields
    b"\xa2\6\x82\x80\0ab", b"\xa2\6" + b"\xff" * 9 + b"\1",  # long lengths
    b"\x0b" * 100 + b"\x0c" * 100, b"\x0b" * 101 + b"\x0c" * 101,
    b"\x32\x10" + bytes(16), b"\x32\x0f" + bytes(15), b"\x32\1\0",  # packed runs
    b"\x0a\x10" + bytes(16), b"\x0a\x09" + b"\x0a\7" + bytes(7), b"\x0a\0",
    b"\x08\1", b"\x09abcdefgh", b"\x0dabcd", b"\x80\1\1", b"\x82\1\x02\x0d\0",
]


def fill(rng, message, percent):
    for field in message.DESCRIPTOR.fields:
        if field.label != FieldDescriptor.LABEL_REQUIRED and rng.randrange(100) >= percent:
            continue
        if field.label == FieldDescriptor.LABEL_REPEATED:
            for _ in range(rng.randrange(1, 4)):
                elements = getattr(message, field.name)
                if field.type == FieldDescriptor.TYPE_MESSAGE:
                    fill(rng, elements.add(), percent)
                else:
                    elements.append(value_of(rng, field))
        elif field.type == FieldDescriptor.TYPE_MESSAGE:
            getattr(message, field.name).SetInParent()
            fill(rng, getattr(message, field.name), percent)
        else:
            setattr(message, field.name, value_of(rng, field))


def value_of(rng, field):
    kind = field.type
    if kind == FieldDescriptor.TYPE_DOUBLE:
        return rng.choice(DOUBLES + [rng.uniform(-1e6, 1e6)])
    if kind == FieldDescriptor.TYPE_FLOAT:
        return rng.choice(FLOATS + [rng.uniform(-1e6, 1e6)])
    if kind == FieldDescriptor.TYPE_INT32:
        return rng.choice(INT32 + [rng.randrange(-2**31, 2**31)])
    if kind == FieldDescriptor.TYPE_INT64:
        return rng.choice(INT64 + [rng.randrange(-2**63, 2**63)])
    if kind == FieldDescriptor.TYPE_BOOL:
        return rng.random() < 0.5
    length = rng.choice(LENGTHS)
    if kind == FieldDescriptor.TYPE_STRING:
        return "".join(rng.choice("abc XYZ~é水\0") for _ in range(length))
    if kind == FieldDescriptor.TYPE_BYTES:
        return rng.randbytes(length)
    raise NotImplementedError(f"{field.full_name}: a field of this type is not served here")


def facts(message, path=""):
    for field, value in message.ListFields():
        if field.label == FieldDescriptor.LABEL_REPEATED:
            for index, element in enumerate(value):
                yield from fact(field, element, f"{path}{field.name}[{index}]")
        else:
            yield from fact(field, value, path + field.name)


def fact(field, value, path):
    if field.type == FieldDescriptor.TYPE_MESSAGE:
        yield f"{path}=message"
        yield from facts(value, path + ".")
        return
    if field.type in (FieldDescriptor.TYPE_DOUBLE, FieldDescriptor.TYPE_FLOAT):
        layout = ">d" if field.type == FieldDescriptor.TYPE_DOUBLE else ">f"
        text = "nan" if math.isnan(value) else struct.pack(layout, value).hex()
    elif field.type == FieldDescriptor.TYPE_STRING:
        text = value.encode().hex()
    elif field.type == FieldDescriptor.TYPE_BYTES:
        text = value.hex()
    else:
        text = str(int(value))
    yield f"{path}={text}"


def facts_text(message):
    return "".join(line + "\n" for line in sorted(facts(message)))


def write(classes, folder, count, seed):
    rng = random.Random(seed)
    names = list(classes)
    for i in range(count):
        name = names[i % len(names)]
        record = classes[name]()
        fill(rng, record, 25 if i % 2 else 90)
        (folder / f"{i}.{name}.binpb").write_bytes(record.SerializeToString())
        (folder / f"{i}.{name}.facts").write_text(facts_text(record))


def damage(classes, folder, count, seed):
    rng = random.Random(seed)
    names = list(classes)
    for i in range(count):
        name = names[i % len(names)]
        record = classes[name]()
        fill(rng, record, rng.choice([10, 25, 90]))
        data = damaged(rng, record.SerializeToString(), record.DESCRIPTOR)
        (folder / f"{i}.{name}.binpb").write_bytes(data)


def damaged(rng, data, descriptor):
    """The encoded record with one thing done to it, in it or in a sub-message."""
    below = [field for field in descriptor.fields if field.message_type is not None]
    if below and rng.random() < 0.4:
        field = rng.choice(below)
        inner = getattr(calibration_protolib, field.message_type.name)()
        fill(rng, inner, 25)
        inner = damaged(rng, inner.SerializeToString(), field.message_type)
        return data + varint(field.number << 3 | 2) + varint(len(inner)) + inner
    place = rng.randrange(len(data) + 1)
    kind = rng.randrange(6)
    if kind == 0:
        return data[:place]
    if kind == 1 and data:
        place = rng.randrange(len(data))
        changed = bytes([data[place] ^ 1 << rng.randrange(8)])
        return data[:place] + changed + data[place + 1:]
    if kind == 2:
        return data[:place] + rng.choice(ODD) + data[place:]
    if kind == 3:
        return rng.choice(ODD) + data
    return data + rng.choice(ODD)


def varint(value):
    if value > 0x7F:
        return bytes([value & 0x7F | 0x80]) + varint(value >> 7)
    return bytes([value])


def judge(classes, folder):
    verdicts = []
    for path in folder.iterdir():
        try:
            calibration_protolib.read(path, classes[path.name.split(".")[1]])
            verdicts.append(f"{path.name} accepted")
        except calibration_protolib.RecordError:
            verdicts.append(f"{path.name} refused")
    print("\n".join(sorted(verdicts)))


def check(classes, folder):
    count = failures = 0
    for path in sorted(folder.glob("*.binpb")):
        count += 1
        data = path.read_bytes()
        record = classes[path.name.split(".")[1]].FromString(data)
        if facts_text(record) != path.with_suffix(".facts").read_text():
            wrong = "parses to other values than its .facts"
        elif record.SerializeToString() != data:
            wrong = "is written back as other bytes"
        else:
            continue
        failures += 1
        print(f"{path} {wrong}", file=sys.stderr)
    print(f"{count - failures} of {count} records agree")
    return 1 if failures else 0


def main():
    classes = {name: getattr(calibration_protolib, name) for name in records.__all__}
    command, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    if command in ("write", "damage"):
        making = write if command == "write" else damage
        return making(classes, folder, int(sys.argv[3]), int(sys.argv[4]))
    return judge(classes, folder) if command == "judge" else check(classes, folder)


if __name__ == "__main__":
    sys.exit(main())
