#!/usr/bin/env python3
"""remarks_test.py QALINFO: what is remarked of a package, by line. A "!" stands behind the line of a harmful one."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

HEAD = "FILENAME=a.qal\r\nMODELNUMBER=5\r\n"
DEVICE = "DEVICE_ADDRESS_VERSION=M, 16, X0100\r\n"
START, END = "START_HEX=X0100\r\n", "END_HEX=X0100\r\n"
RECORD, RECORD8 = ":080000000102030405060708D4\r\n", ":080010000102030405060708C4\r\n"
GOOD = HEAD + DEVICE + START + RECORD + END
LEFT, NO_BLOCK = HEAD + DEVICE + START + RECORD, HEAD + DEVICE + RECORD + START
SIGNATURE = "\n<!-- tarnwick package " + "A" * 88 + " -->\n"
PIECE = 1 << 16  # Of a file that is read at once.


def other(old, new):
    return GOOD.replace(old, new)


def above_device(line):
    return other(DEVICE, line + "\r\n" + DEVICE)


CASES = [  # A package, and the beginnings of what is said, in that order; nothing for one without a remark.
    (GOOD, []),
    (GOOD + SIGNATURE, []),
    ("; a = b\r\n;:x\r\n\r\n" + GOOD, []),
    (other("\r\n", "\n"), ["0! no MODELNUMBER", "0! no device", "1! what stands behind", "1! 6 line ends"]),
    (other("\r\n", "\r"), ["0! no MODELNUMBER", "0! no device", "1! what stands behind", "1! 6 line ends"]),
    (HEAD + "COMMENTS=a\nb\r\n" + GOOD[len(HEAD):], ["3! 1 line ends"]),
    (GOOD.encode("utf-16"),
     ["0! no MODELNUMBER", "0! no device", "1! the file is UTF-16", "1! what stands behind", "1! 12 line ends"]),
    (GOOD.encode("utf-16-le"),
     ["0! no MODELNUMBER", "0! no device", "1! bytes of 0", "1! what stands behind", "1! 12 line ends"]),
    ("\xEF\xBB\xBF" + GOOD, ["1! the file begins with a byte order mark"]),
    ("", ["0! the file is empty", "0! no MODELNUMBER", "0! no device"]),
    (LEFT, ['4! the block "X0100" is left open']),
    (LEFT + START + RECORD + END, ['4! the block "X0100" is left open']),
    (HEAD, ["0! no device"]),
    (GOOD + "END", ["7! what stands behind the last CR LF"]),
    (GOOD + SIGNATURE[1:], ["7! what stands behind the last CR LF", "7! 1 line ends"]),
    (other(":", " :"), ["5! a record with something in front"]),
    (other(RECORD, RECORD + "\t" + RECORD8), ["6! a record with something in front"]),
    (other("MODELNUMBER=5", "MODELNUMBER=0"), ["2! the MODELNUMBER 0"]),
    (other("MODELNUMBER=5", "MODELNUMBER=5b"), ['2! MODELNUMBER "5b" is not all digits']),
    (other("MODELNUMBER", "MODEL"), ["0! no MODELNUMBER", '2 the key "MODEL" is not known']),
    (other(" 16,", " 61,"), ['3! no mount has a device at the address "61"']),
    (other("a.qal", "b.qal"), ['1 FILENAME is "b.qal", the file\'s name is "a.qal"']),
    (other(RECORD, RECORD + RECORD8), ["3 4 words inside the image of device 1 (M)"]),
    (above_device("HWREF=5"), ['3 the key "HWREF" is not known']),
    (above_device("HWREV=5;6"), ['3! HWREV "5;6" is no list']),
    (above_device("HWREV=5,"), ['3! HWREV "5," is no list']),
    (above_device("FILEVER=1.2"), ['3 FILEVER "1.2" is not two digits']),
    (above_device("COMMENTS=f\xC3\xBCr"), ["3 COMMENTS holds UTF-8"]),
    (GOOD + "START_HEX=Y0100\r\n" + RECORD + "END_HEX=Y0100\r\n", ['7! no device above has the record id "Y0100"']),
    (NO_BLOCK + RECORD + END, ["4! records outside of any block"]),
    (other("X0100", "boot"), ['3 the record id "boot" does not end in the four digits']),
    (other(RECORD, RECORD + DEVICE + RECORD),
     ["6! another device above has the address", "6! the device is declared below"]),
    (other(RECORD, ":080001000102030405060708D3\r\n"), ["5! the record begins at an odd address"]),
    (other(RECORD, RECORD + ":0100080001F6\r\n"), ["6! the record has an odd number of bytes"]),
    ("x" * 5000 + "\r\n" + GOOD, ['1 the line is passed over, and no comment: "xxx']),
    (GOOD + "a=b\r\n" * 200 + "b", [f'{line} the key "A" is not known' for line in range(7, 106)] + ["106! there is more"]),
]


def said(package):
    """What qalinfo remarks of the package, as in the table."""
    file = pathlib.Path("a.qal")
    file.write_bytes(package if isinstance(package, bytes) else package.encode("latin-1"))
    told = json.loads(subprocess.run([QALINFO, "--json", file], capture_output=True).stdout)
    return [(each["line"], ("! " if each["harmful"] else " ") + each["what"]) for each in told["remarks"]]


def expect(package, wanted, lines=0):
    """`lines` of a comment stand above the package."""
    found = [f"{line - lines if line else line}{what}" for line, what in said(package)]
    if len(found) != len(wanted) or not all(each.startswith(begin) for each, begin in zip(found, wanted)):
        sys.exit(f"FAILED: of {package[-200:]!r}\nis said    {found}\ninstead of {wanted}")


QALINFO = pathlib.Path(sys.argv[1]).resolve()
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    for package, wanted in CASES:
        expect(package, wanted)
        # A file of two pieces, of which the first ends anywhere in the package.
        if package and isinstance(package, str) and not package.startswith("\xEF"):
            for end in (len(package) // 3, len(package) - 1):
                expect(";" * (PIECE - end - 2) + "\r\n" + package, wanted, 1)
