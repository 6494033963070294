#!/usr/bin/python3
"""Prints each file below the folders whose bytes name the marker: as they are, as UTF-16 text, and
inside the compressed stores the browsers write (Firefox's mozLz4 files, the snappy blocks of
LevelDB tables), so no trace hides from a plain search.

Usage: traces.py MARKER FOLDER...
"""
import os
import struct
import sys

import lz4.block
import snappy


def varint(data, at):
    value, shift = 0, 0
    while True:
        byte = data[at]
        value |= (byte & 0x7F) << shift
        at += 1
        if byte < 0x80:
            return value, at
        shift += 7


def block(data, offset, size):
    """A LevelDB table block, uncompressed; its trailer's first byte says how it was stored."""
    raw = data[offset:offset + size]
    return snappy.decompress(raw) if data[offset + size] == 1 else raw


def leveldb_blocks(data):
    """Every data block of a LevelDB table (".ldb"), through the index the footer points to."""
    if len(data) < 48 or data[-8:] != struct.pack("<Q", 0xDB4775248B80FB57):
        return []
    at = len(data) - 48
    _, at = varint(data, at)  # the meta index
    _, at = varint(data, at)
    index_offset, at = varint(data, at)
    index_size, _ = varint(data, at)
    index = block(data, index_offset, index_size)
    restarts = struct.unpack("<I", index[-4:])[0]
    end = len(index) - 4 - 4 * restarts
    blocks, at = [], 0
    while at < end:
        _, at = varint(index, at)  # the key's shared part
        unshared, at = varint(index, at)
        value_size, at = varint(index, at)
        at += unshared
        offset, next_at = varint(index, at)
        size, _ = varint(index, next_at)
        blocks.append(block(data, offset, size))
        at += value_size
    return blocks


def mozlz4(data):
    """The contents of a Firefox mozLz4 file: "mozLz40\\0", the size, one LZ4 block."""
    return lz4.block.decompress(data[12:], uncompressed_size=struct.unpack("<I", data[8:12])[0])


def readings(path, data):
    yield data
    if data.startswith(b"mozLz40\0"):
        yield mozlz4(data)
    if path.endswith(".ldb"):
        yield from leveldb_blocks(data)


def main():
    marker = sys.argv[1].encode()
    needles = (marker, sys.argv[1].encode("utf-16-le"))
    for root in sys.argv[2:]:
        for folder, _, files in os.walk(root):
            for name in files:
                path = os.path.join(folder, name)
                if os.path.islink(path):  # a lock; a link is never followed
                    continue
                try:
                    with open(path, "rb") as f:
                        data = f.read()
                    found = any(needle in text for text in readings(path, data) for needle in needles)
                except Exception as error:  # unreadable, or a store that does not decompress
                    found = True
                    print(f"{path}: could not be searched ({error})", file=sys.stderr)
                if found:
                    print(path)


if __name__ == "__main__":
    main()
