from typing import Dict, List, Optional

class Descriptor:
    name: str
    full_name: str
    fields: List[FieldDescriptor]
    fields_by_name: Dict[str, FieldDescriptor]

class FieldDescriptor:
    TYPE_BYTES: int
    TYPE_DOUBLE: int
    TYPE_FLOAT: int
    TYPE_STRING: int
    name: str
    full_name: str
    number: int
    type: int
    label: int
    message_type: Optional[Descriptor]
