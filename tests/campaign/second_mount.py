#!/usr/bin/env python3
"""A second mount on a pseudo terminal, written from docs/link-protocol.md and nothing else.

It shares no code with the library or with tarnwick-mount, so that what the page leaves open, or tells
otherwise than the code does, shows. It simplifies: motors 16 and 17, no boot packages. Commands come on
standard input, as link-campaign gives them to tarnwick-mount.
"""
import argparse
import binascii
import math
import os
import select
import struct
import termios
import time
import tty
import zlib

SPEEDS = [9600, 19200, 57600, 115200, 230400, 460800, 921600]
RATES = {getattr(termios, f"B{speed}"): speed for speed in SPEEDS}
REQUEST, DONE, REFUSED = 0x80, 0x40, 0xC0
IDENTIFY, LOCK, SPEED, TIMES = range(0x01, 0x05)
STATE, MODEL, REVISION, BOOT_REVISION, BOOT_VERSION = range(0x08, 0x0D)
ENTER, START, END, CHECK, READ = range(0x10, 0x15)
WRITES = {0x15: 1, 0x16: 2, 0x17: 4}  # words of each
SHORT = 3  # from a Write's code to that of its short form
PLAIN = (IDENTIFY, LOCK, TIMES, STATE, MODEL, REVISION, BOOT_REVISION, BOOT_VERSION, ENTER, START, END)
LENGTHS = dict.fromkeys(PLAIN, 0) | {SPEED: 1, CHECK: 4, READ: 3, 0x15: 4, 0x16: 6, 0x17: 10}
WRONG_STATE, OUT_OF_RANGE, BUSY, NOT_LOCKED = 1, 2, 3, 5
RUNNING, BOOT, PROGRAM = 1, 2, 3
STATES = {RUNNING: "running", BOOT: "boot", PROGRAM: "program"}
GAP, LOST = 0.040, 0.500
TIMED = {START: "start", END: "end", CHECK: "check"}


def crc16(data):
    return binascii.crc_hqx(data, 0xFFFF).to_bytes(2, "big")


class Refusal(Exception):
    """Its argument is the reason."""


class Device:
    def __init__(self, revision):
        self.revision, self.small = revision, revision < 4
        self.words = 0x4000 if self.small else 0x10000
        self.loader = [0x160A, 0x158A, 0x2F00, 0x3FFF]
        self.state, self.complete = RUNNING, True
        self.image = [(0x1000 + 7 * i) & 0x3FFF for i in range(self.words)]

    def power(self):
        self.state = RUNNING if self.complete else BOOT

    def at(self, place):
        if self.small and (place < 4 or place >= 0xFFFC):
            return self.loader[place] if place < 4 else self.image[place - 0xFFFC]
        if place >= self.words:
            raise Refusal(OUT_OF_RANGE)
        return self.image[place]

    def need(self, *states):
        if self.state not in states:
            raise Refusal(WRONG_STATE)

    def handle(self, command, payload):
        if command == STATE:
            return bytes([self.state, 4, 2] if self.state == RUNNING else [self.state, 0, 0])
        if command in (MODEL, REVISION, ENTER):
            self.need(RUNNING)
            self.state = BOOT if command == ENTER else RUNNING
            return bytes({MODEL: [0, 5], REVISION: [self.revision], ENTER: []}[command])
        if command == BOOT_REVISION:
            self.need(BOOT, PROGRAM, *([RUNNING] if self.small else []))
            self.state = BOOT if self.state == RUNNING else self.state
            return bytes([self.revision])
        if command == BOOT_VERSION:
            self.need(BOOT, PROGRAM, *([RUNNING] if self.revision in (5, 6) else []))
            return b"\2"
        if command == START:
            self.need(BOOT)
            self.image = [0x3FFF if self.small else 0xFFFF] * self.words
            self.state, self.complete = PROGRAM, False
            return b""
        if command == READ:
            first, count = struct.unpack(">HB", payload)
            if not 1 <= count <= 64 or first + count > 0x10000:
                raise Refusal(OUT_OF_RANGE)
            return struct.pack(f">B{count}H", count, *(self.at(first + i) for i in range(count)))
        self.need(PROGRAM)
        if command == END:
            self.state, self.complete = BOOT, True
            return b""
        return self.check(payload) if command == CHECK else self.write(payload)

    def check(self, payload):
        first, last = struct.unpack(">HH", payload)
        if first > last or last >= self.words:
            raise Refusal(OUT_OF_RANGE)
        words = self.image[first:last + 1]
        return zlib.crc32(struct.pack(f"<{len(words)}H", *words)).to_bytes(4, "big")

    def write(self, payload):
        first, words = payload[0] << 8 | payload[1], struct.unpack(f"<{len(payload) // 2 - 1}H", payload[2:])
        if first + len(words) > self.words:
            raise Refusal(OUT_OF_RANGE)
        self.image[first:first + len(words)] = words
        return b""


class Mount:
    def __init__(self, revision):
        self.devices = {16: Device(revision), 17: Device(revision)}
        self.hand_control, self.fastest = False, 115200
        self.busy = {"start": "0", "end": "0", "check": "0", "deaf": "off"}
        self.power()

    def power(self):
        for device in self.devices.values():
            device.power()
        self.locked, self.last, self.block = False, None, None
        self.speed = min(19200, self.fastest)
        self.buffer, self.heard, self.lost = bytearray(), 0.0, math.inf
        self.held, self.ready = b"", math.inf  # the answer to what the mount is busy with, and its time

    def due(self):
        """When there is something to do though nothing comes in."""
        return min(self.lost, self.ready, self.heard + GAP if self.buffer else math.inf)

    def receive(self, data, now):
        """Takes bytes; gives those to be sent."""
        if self.held and self.busy["deaf"] == "on":
            return b""
        self.buffer += data
        self.heard, self.lost = now, min(self.lost, now + LOST)
        return self.answers(now)

    def tick(self, now):
        out = b""
        if now >= self.ready:
            out, self.held, self.ready = self.held, b"", math.inf
        if self.buffer and now - self.heard >= GAP:
            while self.buffer:
                del self.buffer[0]
                out += self.answers(now)
        if now >= self.lost:
            self.speed, self.lost = min(19200, self.fastest), math.inf
        return out

    def answers(self, now):
        out = b""
        while self.buffer:
            length, request = self.frame()
            if length is None:
                break
            del self.buffer[:length]
            if request is not None:
                before = self.speed
                out += self.answer(*request, now)
                self.lost = now + LOST if self.speed != before else math.inf
        return out

    def frame(self):
        """Length and request that the buffer begins with: no length while it may go on; 1 and no request
        where it begins with none."""
        head, command = self.buffer[0], self.buffer[0] & 0x3F
        short = command - SHORT in WRITES and self.block is not None
        if head & 0xC0 != REQUEST or not (short or command in LENGTHS):
            return 1, None
        length = 1 + 2 * WRITES[command - SHORT] + 4 if short else 3 + LENGTHS[command] + 2
        if len(self.buffer) < length:
            return None, None
        data = bytes(self.buffer[:length])
        if short:
            return self.short_frame(data, command - SHORT)
        if crc16(data[:-2]) != data[-2:]:
            return 1, None
        return length, (command, data[1], data[2], data[3:-2], None)

    def short_frame(self, data, command):
        sequence, address, first, count = self.block
        for number, place in ((sequence + 1 & 0xFF, first + count & 0xFFFF), (sequence, first)):
            known = struct.pack(">BBH", number, address, place)
            if zlib.crc32(known + data[:-4]).to_bytes(4, "big") == data[-4:]:
                return len(data), (command, number, address, known[2:] + data[1:-4], known)
        return 1, None

    def answer(self, command, sequence, address, payload, known, now):
        request = (command, sequence, address, payload)
        kind, takes = DONE, 0
        try:
            if self.held:
                raise Refusal(BUSY)
            if request == self.last:
                result = self.last_result
            elif address == 0:
                result = self.itself(command, payload)
            elif address not in self.devices:
                self.block = None
                return b""
            else:
                result = self.device(command, address, payload)
                self.last, self.last_result = request, result
                takes = int(self.busy[TIMED[command]]) / 1000 if command in TIMED else 0
        except Refusal as refusal:
            kind, result = REFUSED, bytes(refusal.args)
        written = kind == DONE and command in WRITES
        self.block = (sequence, address, payload[0] << 8 | payload[1], WRITES[command]) if written else None
        sent = bytes([kind | command, sequence, address]) + result
        sent += crc16(sent)
        if known is not None:
            sent = bytes([kind | command + SHORT]) + result
            sent += crc16(known + sent)
        if takes == 0:
            return sent
        self.held, self.ready = sent, now + takes
        return b""

    def itself(self, command, payload):
        if command == IDENTIFY:
            self.last = None
            flags = 1 | (2 if self.locked else 0) | 4 | 8
            return b"TW" + bytes([1, 1 if self.hand_control else 0, flags, SPEEDS.index(self.fastest)])
        if command == TIMES:
            return bytes((int(self.busy[name]) + 99) // 100 for name in TIMED.values())
        if command == LOCK and self.hand_control:
            self.locked = True
            return b""
        if command != SPEED:
            raise Refusal(WRONG_STATE)
        if payload[0] > SPEEDS.index(self.fastest):
            raise Refusal(OUT_OF_RANGE)
        self.speed = SPEEDS[payload[0]]
        return payload

    def device(self, command, address, payload):
        if command < STATE:
            raise Refusal(WRONG_STATE)
        if self.hand_control and not self.locked and command in (ENTER, START, END, CHECK, *WRITES):
            raise Refusal(NOT_LOCKED)
        return self.devices[address].handle(command, payload)

    def command(self, words):
        if words[0] == "state":
            return "".join(f"{a} state={STATES[d.state]} complete={'yes' if d.complete else 'no'}\n"
                           for a, d in self.devices.items()) + "end\n"
        if words[0] == "dump":
            words = [f"{word:04X}" for word in self.devices[int(words[1])].image[:int(words[2])]]
            return "".join(" ".join(words[i:i + 16]) + "\n" for i in range(0, len(words), 16)) + "end\n"
        if words[0] == "poke":
            self.devices[int(words[1])].image[int(words[2])] = int(words[3])
        elif words[0] == "power":
            self.power()
        elif words[0] == "hand-control":
            self.hand_control, self.locked = words[1] == "real", False
        elif words[0] == "busy":
            self.busy.update(pair.split("=") for pair in words[1].split(","))
        elif words[0] == "baud":
            self.fastest = int(words[1])
            self.power()
        else:
            return "error: not a command\n"
        return "ok\n"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--link", required=True)
    parser.add_argument("--revision", type=int, default=2)
    parser.add_argument("--until-eof", action="store_true")
    options = parser.parse_args()
    mount = Mount(options.revision)
    master, slave = os.openpty()
    tty.setraw(slave)
    if os.path.islink(options.link):
        os.remove(options.link)
    os.symlink(os.ttyname(slave), options.link)
    print("ready", os.ttyname(slave), flush=True)
    while True:
        wait = min(max(0, mount.due() - time.monotonic()), 60)
        ready = select.select([master, 0], [], [], wait)[0]
        now = time.monotonic()
        far = RATES.get(termios.tcgetattr(slave)[5])
        out = mount.tick(now)
        if master in ready:
            data = os.read(master, 4096)
            # Ends at different speeds hear each other as noise.
            out += mount.receive(data if far == mount.speed else bytes(len(data)), now)
        if out:
            os.write(master, out)
        if 0 in ready:
            line = os.read(0, 4096)  # each command waits for the answer to the one before
            if not line:
                os.remove(options.link)
                return
            print(mount.command(line.decode().split()), end="", flush=True)


main()
