"""Pieces of records in the wire format, of which the benchmarks of calib make large files."""

import struct


def varint(value):
    digits = []
    while value >= 0x80:
        digits.append(value & 0x7F | 0x80)
        value >>= 7
    return bytes(digits + [value])


def length_delimited(field, value):
    """The field with that number, which is below 16, with its tag."""
    return varint(8 * field + 2) + varint(len(value)) + value


def sample_points(count):
    """Fields sample_points of CameraIntrinsics, 23 bytes each."""
    points = []
    for i in range(count):
        values = (i % 40 * 18.25 + 0.125, i // 40 * 18.75 + 0.375, i % 40 * 0.03, i // 40 * 0.03)
        point = b"".join(bytes([8 * n + 13]) + struct.pack("<f", v) for n, v in enumerate(values))
        points.append(b"\x82\x01" + varint(len(point)) + point)
    return b"".join(points)
