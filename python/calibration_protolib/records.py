"""The record classes, RobotCalibration and the others, made from the descriptor set.

They are in a descriptor pool of their own: a program may hold other versions of the schema beside
them. What type checkers know of them is in records.pyi.
"""

from google.protobuf import descriptor_pb2, descriptor_pool, message_factory

from . import descriptor_set


def _make_classes():
    path = descriptor_set.find()
    if path is None:
        raise ImportError(descriptor_set.NOT_FOUND)
    files = descriptor_pb2.FileDescriptorSet.FromString(path.read_bytes())
    pool = descriptor_pool.DescriptorPool()
    # Releases of Python's run-time from 4.22 on have the first name, up to then the second.
    make = getattr(message_factory, "GetMessageClass", None)
    if make is None:
        make = message_factory.MessageFactory(pool).GetPrototype
    classes = {}
    for file in files.file:
        pool.AddSerializedFile(file.SerializeToString())
        for message in file.message_type:
            made = make(pool.FindMessageTypeByName(f"{file.package}.{message.name}"))
            made.__module__ = __name__  # for pickle, which looks a class up by its name
            classes[message.name] = made
    return classes


_classes = _make_classes()
globals().update(_classes)
__all__ = sorted(_classes)
