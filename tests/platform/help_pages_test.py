#!/usr/bin/env python3
"""help_pages_test.py SOURCE: the pages of the help explain what the program says, and their links lead somewhere."""
import html
import pathlib
import re
import sys

SOURCE = pathlib.Path(sys.argv[1])
ROOMS = ["firmware", "link", "programmer", "pages", "wizard/controller", "webupdate"]
# Boxes do not show these: names of devices and models, what the wizard's pages say at rest, the text of files,
# and what is for the record.
SILENT = {"BatchText.cpp", "BootPackages.cpp", "Devices.cpp", "QalWriter.cpp", "Step1.cpp", "SignedFile.cpp",
          "Swap.cpp", "LinkLibrary.cpp", "EarlierSwap.cpp", "HttpCause.cpp", "DeviceRecord.cpp", "RunRecord.cpp",
          "Journal.cpp", "Refusal.cpp", "Release.cpp", "QalLint.cpp", "SignatureLine.h", "Setback.cpp"}
AT_REST = re.compile(r"(About the|DOCTYPE|Blocksize O|Choose |Content-Type|HTTP Client|SendRequest|Make sure|Note: |"
                     r"QAL File:|Status report|platform/|(n<!-- )?tarnwick package)")
NO_TEXT = re.compile(r"\"\s*\"|//.*|(record::\w+|RecordLinkFailure)\([^;]*;")


def pages():
    return {path.name: path.read_text(encoding="utf-8") for path in (SOURCE / "help").rglob("*.htm")}


def shown(page):
    """The text of a page as a reader sees it, each run of blanks one blank."""
    page = re.sub(r"(?s)<head>.*?</head>|<!--.*?-->", " ", page)
    page = re.sub(r"</?(p|d[dtl]|li|[uo]l|h\d|br|t[rdh]|table|div|pre)\b[^>]*>", " ", page)
    return " ".join(html.unescape(re.sub(r"<[^>]*>", "", page)).split())


def texts():
    """Each line of each literal that somebody may read: the file, and the line from its first letter on."""
    for room in ROOMS:
        for path in sorted((SOURCE / room).rglob("*")):
            if path.suffix not in (".cpp", ".h") or path.name in SILENT:
                continue
            for literal in re.findall(r'"([^"\n]*)"', NO_TEXT.sub("", path.read_text(encoding="latin-1"))):
                for line in literal.split("\\r\\n"):
                    line = " ".join(re.sub(r"^[^A-Za-z]*", "", line).split())
                    if " " in line and not AT_REST.match(line):
                        yield path.name, line


def main():
    wrong = []
    told = " ".join(shown(page) for page in pages().values()).lower()
    explained = list(texts())
    wrong += [f"{name}: the help does not explain: {line}" for name, line in explained if line.lower() not in told]
    there, wanted = set(), []
    for name, page in pages().items():
        there |= {name, *(f"{name}#{anchor}" for anchor in re.findall(r'<a name="([^"]*)', page))}
        wanted += [(name, (to or name) + anchor) for to, anchor in re.findall(r'<a href="([^"#]*)([^"]*)', page)]
    wrong += [f"help/{name}: nothing is at {link}" for name, link in wanted if link not in there]
    # Who finds no text and no link has looked in the wrong place.
    wrong += [] if len(explained) > 60 else [f"only {len(explained)} texts are found in {', '.join(ROOMS)}"]
    wrong += [] if len(set(wanted)) > 5 else [f"only {len(set(wanted))} links are found in help"]
    sys.exit("\n".join(wrong) or None)


main()
