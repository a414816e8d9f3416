"""Frames of Modbus RTU as these tests put them on a line."""


def crc(data):
    value = 0xFFFF
    for byte in data:
        value ^= byte
        for _ in range(8):
            value = value >> 1 ^ (0xA001 if value & 1 else 0)
    return value.to_bytes(2, "little")


def with_crc(frame):
    return frame + crc(frame)
