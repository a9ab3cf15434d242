from typing import List

from google.protobuf.message import Message

class FileDescriptorSet(Message):
    file: List[FileDescriptorProto]

class FileDescriptorProto(Message):
    package: str
    message_type: List[DescriptorProto]

class DescriptorProto(Message):
    name: str
    field: List[FieldDescriptorProto]
    nested_type: List[DescriptorProto]
    enum_type: List[Message]
    extension: List[FieldDescriptorProto]
    oneof_decl: List[Message]

class FieldDescriptorProto(Message):
    LABEL_REPEATED: int
    TYPE_BOOL: int
    TYPE_BYTES: int
    TYPE_DOUBLE: int
    TYPE_FLOAT: int
    TYPE_INT32: int
    TYPE_INT64: int
    TYPE_MESSAGE: int
    TYPE_STRING: int
    name: str
    number: int
    type: int
    label: int
    type_name: str
