#!/usr/bin/env python3
"""qalmake_test.py BIN [COUNT [SEED]]: packages made by BIN/qalmake from made-up images.

Each image is written as one or two hex files, its records of any type, length and order. The words of the
package must be those of the image by four readers: the product's (qalinfo --dump), the plain one below, and
srec_cat and objcopy on the package's hex lines. Then what qalmake has to refuse. srec_cat is left out where it
is not installed.
"""
import os
import random
import shutil
import subprocess
import sys
import tempfile

FILLER = (0xFF, 0x3F)


def record(kind, address, data):
    body = bytes([len(data), address >> 8 & 255, address & 255, kind]) + bytes(data)
    return ":" + (body + bytes([-sum(body) & 255])).hex().upper()


def hex_file(draw, image):
    """The bytes of `image` (address to value) as a compiler might write them."""
    pieces, at = [], None
    for address in sorted(image):
        if at == address and len(pieces[-1][1]) < length and address % 0x10000:
            pieces[-1][1].append(image[address])
        else:
            length = draw.choice([2, 16, 16, 32, draw.randrange(2, 256, 2), draw.randrange(1, 40)])
            pieces.append((address, [image[address]]))
        at = address + 1
    if draw.random() < 0.5:
        draw.shuffle(pieces)
    lines, base = [], 0
    for address, data in pieces:
        if draw.random() < 0.1:
            lines.append(record(*draw.choice([(3, 0, [0, 0, 1, 0]), (5, 0, [0, 0, 0, 9])])))
        if address - base not in range(0x10000) or address - base + len(data) > 0x10000 or draw.random() < 0.1:
            segment = address < 0x100000 and draw.random() < 0.5
            base = address & 0xF0000 if segment else address & ~0xFFFF
            high = base >> 4 if segment else base >> 16
            lines.append(record(2 if segment else 4, 0, [high >> 8, high & 255]))
        lines.append(record(0, address - base, data))
    lines.append(record(1, 0, []))
    text = draw.choice(["\n", "\r\n"]).join(lines) + draw.choice(["", "\n", "\r\n\r\n"])
    return text.lower() if draw.random() < 0.2 else text


def image_of(draw):
    """Words with gaps (index to a pair of bytes), none but some at the end beyond what a record can begin at."""
    words = {}
    for _ in range(draw.randrange(1, 6)):
        first = draw.choice([0, draw.randrange(600), draw.randrange(30000), 0x7FFF if draw.random() < 0.1 else 8])
        for index in range(first, min(first + draw.randrange(1, draw.choice([4, 200, 127])), 0x7FFF + 127)):
            words[index] = FILLER if draw.random() < 0.05 else (draw.randrange(256), draw.randrange(256))
    if max(words) > 0x7FFF:
        words = {i: w for i, w in words.items() if i < 0x7FFF} | {i: words.get(i, (1, 2)) for i in range(0x7FFF, max(words) + 1)}
    words.setdefault(1, (0x12, 0x34))
    return words


def plainly_read(package, address):
    """Words of the device at `address`, straight from docs/package-format.md."""
    words, block, wanted = {}, None, None
    for line in package.split(b"\r\n"):
        key, equals, value = line.decode("cp1252").partition("=")
        if key == "DEVICE_ADDRESS_VERSION" and int(value.split(",")[1]) == address:
            wanted = value.split(",")[2].strip()
        elif key == "START_HEX":
            block = value
        elif key == "END_HEX":
            block = None
        elif key.startswith(":") and not equals and block == wanted and key[7:9] == "00":
            data = bytes.fromhex(key[9:-2])
            for i in range(0, len(data), 2):
                words[int(key[3:7], 16) // 2 + i // 2] = (data[i], data[i + 1])
    return words


def whole(words):
    """The image with its padding, as bytes."""
    count = (max(words) + 4) // 4 * 4
    return b"".join(bytes(words.get(i, FILLER)) for i in range(count))


def run(*command, status=0):
    done = subprocess.run(command, capture_output=True)
    assert done.returncode == status, (command, done.returncode, done.stdout, done.stderr)
    return done


def by_peers(package, words, start):
    """Holds the hex lines of one block against `words` by the outside readers."""
    block = package[package.index(start):]
    with open("block.hex", "wb") as out:
        out.writelines(line + b"\n" for line in block[: block.index(b"END_HEX")].split(b"\r\n") if line.startswith(b":"))
    run("objcopy", "-I", "ihex", "-O", "binary", "block.hex", "block.bin")
    with open("block.bin", "rb") as got:
        first, top = min(words), max(words) + 1
        assert got.read() == b"".join(bytes(words.get(i, (0, 0))) for i in range(first, top)), "objcopy"
    if shutil.which("srec_cat"):
        size = len(whole(words))
        got = run("srec_cat", "-disable-sequence-warnings", "block.hex", "-intel", "-generate", "0", str(size),
                  "-repeat-data", "0xFF", "0x3F", "-exclude", "-within", "block.hex", "-intel", "-o", "-", "-binary")
        assert got.stdout == whole(words), "srec_cat"


def one(tools, draw):
    images = [image_of(draw) for _ in range(draw.choice([1, 1, 2]))]
    left = draw.random() < 0.3
    for number, image in enumerate(images):
        data = {2 * i + half: pair[half] for i, pair in image.items() for half in (0, 1)}
        if left:  # Configuration words, elsewhere.
            data |= {0x10200: 1, 0x10201: 2, 0x600007: 5}
        with open(f"{number}.hex", "w", newline="") as out:
            out.write(hex_file(draw, data))
    out = run(f"{tools}/qalmake", "--model", "5", "--name", "CORVANE", "--version", "5.14", "--comments", "für \u20ac",
              "--date", "2024.03.05", *(["--hwrev", "5,6"] if draw.random() < 0.5 else []),
              *(["--leave-out", "0x8100-0x400000"] if left else []),
              "a.qal", *(f"{i}.hex" for i in range(len(images))))
    assert (b"2 words left out" in out.stdout) == left, out.stdout
    with open("a.qal", "rb") as file:
        package = file.read()
    for device, address in ((1, 16), (2, 17)):
        words = images[(device - 1) % len(images)]
        assert plainly_read(package, address) == words, "the plain reader"
        dump = run(f"{tools}/qalinfo", "--dump", str(device), "a.qal").stdout.decode()
        read, base = {}, 0
        for line in dump.split():
            data = bytes.fromhex(line[9:-2])
            base = data[1] << 16 if line[7:9] == "04" else base
            read |= {base + int(line[3:7], 16) + i: b for i, b in enumerate(data)} if line[7:9] == "00" else {}
        assert bytes(read[i] for i in range(len(read))) == whole(words), "qalinfo"
        if device <= len(images):
            by_peers(package, words, b"START_HEX=FW_" + (b"%d_" % device if len(images) > 1 else b""))


def refusals(tools):
    good = [record(0, 0, range(16)), record(1, 0, [])]
    rows = [
        ("x.hex: 1: no record", ["S00600004844521B"], []),
        ("x.hex: 1: no record", [":1"], []),
        ("x.hex: 1: the record has another length", [good[0][:-2]], []),
        ("x.hex: 1: the checksum differs", [good[0][:-1] + "9"], []),
        ("x.hex: 1: records of the type 6", [record(6, 0, [])], []),
        ("x.hex: 1: a record of its type", [record(4, 0, [1])], []),
        ("x.hex: 1: the record goes on behind", [record(0, 0xFFFF, [1, 2])] + good, []),
        ("x.hex: 2: another record gives another", [good[0], record(0, 2, [9])], []),
        ("x.hex: 3: a line behind the end", good + good, []),
        ("the end-of-file record is missing", good[:1], []),
        ("words 0x807F to 0x10000 lie behind", None, []),
        ("word 0x807C can be told together", [good[0], record(4, 0, [0, 1]), record(0, 0xF8, [1, 2]), good[1]], []),
        ("of word 0x0008 there is one byte alone", [good[0], record(0, 16, [1]), good[1]], []),
        ("no word above word 0", [record(0, 0, [1, 2]), good[1]], []),
        ("no word above word 0", good, ["--leave-out", "1-7"]),
        ("cannot be told as it is", good, ["--comments", " x"]),
        ("cannot be told: a package is text", good, ["--name", "a\tb"]),
        ("cannot be told: a package is text", good, ["--comments", "\u65e5"]),
        ('no mount has a device at the address "61"', good, ["--device", "M,61"]),
        ('HWREV "5;6" is no list', good, ["--hwrev", "5;6"]),
        ("--version wants", good, ["--version", "5.1"]),
        ("--model wants", good, ["--model", "0"]),
        ("--leave-out wants", good, ["--leave-out", "9-1"]),
        ("there is no option", good, ["--modle", "1"]),
    ]
    for what, lines, options in rows:
        if lines is None:
            lines = [good[0], record(4, 0, [0, 1]), record(0, 0xFE, [1, 2]), record(4, 0, [0, 2]), record(0, 0, [1, 2]), good[1]]
        with open("x.hex", "w") as out:
            out.write("\n".join(lines))
        done = subprocess.run([f"{tools}/qalmake", "--model", "5", "--version", "5.14", *options, "no.qal", "x.hex"],
                              capture_output=True)
        assert done.returncode in (1, 2) and what in done.stderr.decode(), (what, done)
        assert not os.path.exists("no.qal"), what


def main():
    tools, count, seed = os.path.abspath(sys.argv[1]), int((sys.argv + ["", "10000"])[2] or 10000), int((sys.argv[3:] or [1])[0])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        refusals(tools)
        for number in range(seed, seed + count):
            try:
                one(tools, random.Random(number))
            except AssertionError as error:
                sys.exit(f"seed {number}: {error}")
    print(f"{count} packages: all readers agree.")


main()
