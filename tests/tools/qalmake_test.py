#!/usr/bin/env python3
"""qalmake_test.py BIN [COUNT [SEED]]: packages made by BIN/qalmake from made-up images.

Each image is written as one or two hex files, its records of any type, length and order. The words of the
package must be those of the image by four readers: the product's (qalinfo --dump), the plain one below, and
srec_cat and objcopy on the package's hex lines. Then what qalmake has to refuse. srec_cat is left out where it
is not installed.
"""
import os
import random
import shlex
import shutil
import subprocess
import sys
import tempfile

FILLER = (0xFF, 0x3F)
BATCH = 100       # Packages that are made and read together.
PLACE = 0x20000   # Bytes from one block to the next where outside readers read many.


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


def laid(words, size, gap):
    """The words as `size` bytes, `gap` for each that is not there."""
    data = bytearray(bytes(gap) * (size // 2))
    for index, pair in words.items():
        data[2 * index : 2 * index + 2] = bytes(pair)
    return data


def run(*command):
    done = subprocess.run(command, capture_output=True)
    assert done.returncode == 0, (command, done.returncode, done.stdout, done.stderr)
    return done


def make(tools, number):
    """Writes the hex files of seed `number`; its images, and the commands that make and load its package."""
    draw = random.Random(number)
    images = [image_of(draw) for _ in range(draw.choice([1, 1, 2]))]
    left = draw.random() < 0.3
    files = []
    for image in images:
        data = {2 * i + half: pair[half] for i, pair in image.items() for half in (0, 1)}
        if left:  # Configuration words, elsewhere.
            data |= {0x10200: 1, 0x10201: 2, 0x10202: 3, 0x10203: 4, 0x600007: 5}
        files.append(f"{number}.{len(files)}.hex")
        with open(files[-1], "w", newline="") as out:
            out.write(hex_file(draw, data))
    commands = [[f"{tools}/qalmake", "--model", "5", "--name", "CORVANE", "--version", "5.14", "--comments",
                 "für \u20ac", "--date", "2024.03.05", *(["--hwrev", "5,6"] if draw.random() < 0.5 else []),
                 *(["--leave-out", "0x8100-0x400000"] if left else []), f"{number}.qal", *files]]
    commands += [[f"{tools}/qalinfo", "--dump", str(device), f"{number}.qal"] for device in (1, 2)]
    script = [f"{shlex.join(command)} >{number}.{name}" for command, name in zip(commands, ("out", 1, 2))]
    return images, left, [f"seed={number}", *script]


def by_package(number, images, left):
    """Holds one package by the plain reader and by the loader; the hex lines of each of its blocks."""
    with open(f"{number}.out") as said:
        told = [line for line in said if "left out" in line]
    assert told == [f"{number}.{i}.hex: 3 words left out: 0x8100-0x8101, 0x300003\n" for i in range(len(images) * left)], told
    with open(f"{number}.qal", "rb") as file:
        package = file.read()
    for device, address in ((1, 16), (2, 17)):
        words = images[(device - 1) % len(images)]
        assert plainly_read(package, address) == words, "the plain reader"
        read, base = bytearray(), 0
        with open(f"{number}.{device}") as dump:
            for line in dump:
                data = bytes.fromhex(line[9:-3])
                base = data[1] << 16 if line[7:9] == "04" else base
                assert line[7:9] != "00" or base + int(line[3:7], 16) == len(read), "the order of qalinfo"
                read += data if line[7:9] == "00" else b""
        assert read == laid(words, (max(words) + 4) // 4 * 8, FILLER), "qalinfo"
    blocks = package.split(b"START_HEX=FW_")[1:]
    assert len(blocks) == len(images), "blocks"
    return [block[block.index(b"\n") + 1 : block.index(b"END_HEX")] for block in blocks]


def by_peers(blocks):
    """Holds the hex lines of blocks, each of them (seed, words, lines), by the outside readers: in one file,
    each block at a place of its own."""
    with open("blocks.hex", "wb") as out:
        out.write(f"{record(0, 0, [0, 0])}\n".encode())
        for place, (_, _, lines) in enumerate([*blocks, (0, {}, f"{record(0, 0, [0, 0])}\n".encode())], 1):
            out.write(f"{record(4, 0, (place * PLACE >> 16).to_bytes(2, 'big'))}\n".encode() + lines)
    readers = {"objcopy": ["objcopy", "-I", "ihex", "-O", "binary", "blocks.hex", "blocks.bin"],
               "srec_cat": ["srec_cat", "-disable-sequence-warnings", "blocks.hex", "-intel", "-o", "blocks.bin", "-binary"]}
    for name, command in readers.items():
        if not shutil.which(name):
            continue
        run(*command)
        with open("blocks.bin", "rb") as got:
            got.seek(PLACE)
            for seed, words, _ in blocks:
                assert got.read(PLACE) == laid(words, PLACE, (0, 0)), f"seed {seed}: {name}"


def judge(tools, seeds):
    """All that is made of `seeds`, in one run of each outside reader."""
    made = {number: make(tools, number) for number in seeds}
    with open("batch.sh", "w") as out:
        out.write("trap '[ $? = 0 ] || echo \"seed $seed\" >&2' EXIT\n")
        out.writelines(line + "\n" for _, _, script in made.values() for line in script)
    run("sh", "-e", "batch.sh")
    blocks = []
    for number, (images, left, _) in made.items():
        try:
            blocks += zip([number] * 2, images, by_package(number, images, left))
        except AssertionError as error:
            raise AssertionError(f"seed {number}: {error}") from error
    by_peers(blocks)


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
    memory = "/dev/shm" if os.path.isdir("/dev/shm") else None  # Nothing here is to outlive a power cut.
    for first in range(seed, seed + count, BATCH):
        with tempfile.TemporaryDirectory(dir=memory) as folder:
            os.chdir(folder)
            if first == seed:
                refusals(tools)
            try:
                judge(tools, range(first, min(first + BATCH, seed + count)))
            except AssertionError as error:
                sys.exit(str(error))
            os.chdir("/")
    print(f"{count} packages: all readers agree.")


main()
