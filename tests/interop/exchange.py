"""The Python side of the exchange (exchange.cc describes the files; interop_test.sh how it goes).

    exchange.py DESCRIPTOR-SET write FOLDER COUNT SEED
    exchange.py DESCRIPTOR-SET check FOLDER

Knows the records from the descriptor set alone.
"""

import math
import pathlib
import random
import struct
import sys

from google.protobuf import descriptor_pb2, message_factory
from google.protobuf.descriptor import FieldDescriptor

PACKAGE = "zarvo.calibration."
INT32 = [-2**31, -1, 0, 1, 127, 128, 16383, 16384, 2**31 - 1]
INT64 = INT32 + [-2**63, 2**63 - 1, 2**35]
DOUBLES = [0.0, -0.0, 1.0, -1.5, 5e-324, 1.7976931348623157e308, math.inf, -math.inf, math.nan]
FLOATS = [0.0, -0.0, 1.0, 0.4064, 1e-45, 3.4028234663852886e38, math.inf, -math.inf, math.nan]
LENGTHS = [0, 0, 1, 7, 20, 127, 128, 300, 16384]


def load(path):
    """The record classes by name, without the package."""
    files = descriptor_pb2.FileDescriptorSet.FromString(pathlib.Path(path).read_bytes())
    classes = message_factory.GetMessages(files.file)
    return {name[len(PACKAGE):]: classes[name] for name in sorted(classes)}


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
    classes = load(sys.argv[1])
    command, folder = sys.argv[2], pathlib.Path(sys.argv[3])
    if command == "write":
        return write(classes, folder, int(sys.argv[4]), int(sys.argv[5]))
    return check(classes, folder)


if __name__ == "__main__":
    sys.exit(main())
