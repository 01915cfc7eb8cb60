#!/usr/bin/env python3
"""memory_test.py QALINFO: loading a package takes at most three times the file and its images, whatever it holds."""
import itertools
import os
import pathlib
import subprocess
import sys
import tempfile

FILE = 12_000_000
ROOM = 8_000_000  # What qalinfo takes for an empty file, and what the heap rounds up.
DIGITS = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
DEVICE, RECORD = "DEVICE_ADDRESS_VERSION=", ":020002000000FC\r\n"


def many(line):
    """Lines of that size together, each with the next id of four digits, or with the last one."""
    ids = itertools.chain(itertools.product(DIGITS, repeat=4), itertools.repeat("ZZZZ"))
    size = 0
    while size < FILE:
        yield (text := line("".join(next(ids))))
        size += len(text)


def line(begin="", end="\r\n"):
    """One line of that size."""
    return itertools.chain([begin], itertools.repeat("x" * 1000, FILE // 1000), [end])


def first(text, lines):
    return itertools.chain([text], lines)


CASES = {  # What the file holds, and bytes of images for each of its bytes.
    "devices alone": (many(lambda id: f"{DEVICE},,{id}\r\n"), 0),
    "devices without an id": (many(lambda id: DEVICE + "\r\n"), 0),
    "devices of one record": (many(lambda id: f"{DEVICE},,{id}\r\nSTART_HEX={id}\r\n{RECORD}"), 1 / 8),
    "records of nobody": (first("START_HEX=A\r\n", many(lambda id: RECORD)), 0),
    "records of a device without an id": (first(DEVICE + ",,\r\n", many(lambda id: RECORD)), 0),
    "records of one device": (first(f"{DEVICE},,A\r\nSTART_HEX=A\r\n:02FFFE00000001\r\n",
                                    many(lambda id: RECORD)), 0),
    "a line without an end": (line(end=""), 0),
    "a line, and a key": (itertools.chain(line(), line(end="=\r\n")), 0),
    "a value": (line("COMMENTS="), 0),
    "revisions": (line("HWREV="), 0),
    "an id": (line("START_HEX="), 0),
    "a name": (line(DEVICE, ",\r\n"), 0),
}


def peak(path):
    """The most memory that loading the file takes, in bytes."""
    process = subprocess.Popen([sys.argv[1], "--dump", "9999999", path], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    _, status, used = os.wait4(process.pid, 0)
    if not os.WIFEXITED(status):
        sys.exit(f"FAILED: qalinfo ends by a signal, {status}")
    return used.ru_maxrss * 1024


with tempfile.TemporaryDirectory() as folder:
    file = pathlib.Path(folder) / "a.qal"
    for what, (pieces, images) in CASES.items():
        # Nothing large is kept here: a process begins with what its parent has.
        with file.open("w", newline="") as out:
            size = sum(out.write(piece) for piece in pieces)
        taken, allowed = peak(file), int((3 + images) * size) + ROOM
        print(f"{what}: {size} bytes, {taken} taken of {allowed}", flush=True)
        if taken > allowed:
            sys.exit(f"FAILED: {what}: {taken} bytes are taken where {allowed} are allowed")
