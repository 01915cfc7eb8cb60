#!/usr/bin/env python3
"""A second mount on a pseudo terminal, written from docs/link-protocol.md and nothing else.

It shares no code with the library or with tarnwick-mount, so that what the page leaves open, or tells
otherwise than the code does, shows. It simplifies: motors 16 and 17, no boot packages. Commands come on
standard input, as link-campaign gives them to tarnwick-mount.
"""
import argparse
import binascii
import os
import select
import termios
import time
import tty
import zlib

SPEEDS = [9600, 19200, 57600, 115200, 230400, 460800, 921600]
RATES = {getattr(termios, f"B{speed}"): speed for speed in SPEEDS}
REQUEST, DONE, REFUSED = 0x80, 0x40, 0xC0
IDENTIFY, LOCK, SPEED, TIMES = 0x01, 0x02, 0x03, 0x04
STATE, MODEL, REVISION, BOOT_REVISION, BOOT_VERSION = 0x08, 0x09, 0x0A, 0x0B, 0x0C
ENTER, START, END, CHECK, READ = 0x10, 0x11, 0x12, 0x13, 0x14
WRITES = {0x15: 1, 0x16: 2, 0x17: 4}  # words of each
SHORT = 3  # from a Write's code to that of its short form
LENGTHS = {IDENTIFY: 0, LOCK: 0, SPEED: 1, TIMES: 0, STATE: 0, MODEL: 0, REVISION: 0, BOOT_REVISION: 0,
           BOOT_VERSION: 0, ENTER: 0, START: 0, END: 0, CHECK: 4, READ: 3, 0x15: 4, 0x16: 6, 0x17: 10}
WRONG_STATE, OUT_OF_RANGE, NOT_LOCKED = 1, 2, 5
RUNNING, BOOT, PROGRAM = 1, 2, 3
STATES = {RUNNING: "running", BOOT: "boot", PROGRAM: "program"}
GAP, LOST = 0.040, 0.500


def crc16(data):
    return binascii.crc_hqx(bytes(data), 0xFFFF).to_bytes(2, "big")


class Refusal(Exception):
    """Its argument is the reason."""


class Device:
    def __init__(self, revision):
        self.revision = revision
        self.small, self.loader = revision < 4, [0x160A, 0x158A, 0x2F00, 0x3FFF]
        self.state, self.complete = RUNNING, True
        self.image = [(0x1000 + 7 * i) & 0x3FFF for i in range(self.words())]

    def words(self):
        return 0x4000 if self.small else 0x10000

    def power(self):
        self.state = RUNNING if self.complete else BOOT

    def at(self, place):
        if self.small and (place < 4 or place >= 0xFFFC):
            return self.loader[place] if place < 4 else self.image[place - 0xFFFC]
        if place >= self.words():
            raise Refusal(OUT_OF_RANGE)
        return self.image[place]

    def need(self, *states):
        if self.state not in states:
            raise Refusal(WRONG_STATE)

    def handle(self, command, payload):
        if command == STATE:
            return [self.state, 4, 2] if self.state == RUNNING else [self.state, 0, 0]
        if command in (MODEL, REVISION, ENTER):
            self.need(RUNNING)
            self.state = BOOT if command == ENTER else RUNNING
            return {MODEL: [0, 5], REVISION: [self.revision], ENTER: []}[command]
        if command == BOOT_REVISION:
            self.need(BOOT, PROGRAM, *([RUNNING] if self.small else []))
            self.state = BOOT if self.state == RUNNING else self.state
            return [self.revision]
        if command == BOOT_VERSION:
            self.need(BOOT, PROGRAM, *([RUNNING] if self.revision in (5, 6) else []))
            return [2]
        if command == START:
            self.need(BOOT)
            self.image = [0x3FFF if self.small else 0xFFFF] * self.words()
            self.state, self.complete = PROGRAM, False
            return []
        if command == READ:
            return self.read(payload)
        self.need(PROGRAM)
        if command == END:
            self.state, self.complete = BOOT, True
        return [] if command == END else self.check(payload) if command == CHECK else self.write(payload)

    def read(self, payload):
        first, count = payload[0] << 8 | payload[1], payload[2]
        if not 1 <= count <= 64 or first + count > 0x10000:
            raise Refusal(OUT_OF_RANGE)
        words = [self.at(first + i) for i in range(count)]
        return [count] + [byte for word in words for byte in (word >> 8, word & 0xFF)]

    def check(self, payload):
        first, last = payload[0] << 8 | payload[1], payload[2] << 8 | payload[3]
        if first > last or last >= self.words():
            raise Refusal(OUT_OF_RANGE)
        words = self.image[first:last + 1]
        crc = zlib.crc32(bytes(byte for word in words for byte in (word & 0xFF, word >> 8)))
        return list(crc.to_bytes(4, "big"))

    def write(self, payload):
        first, count = payload[0] << 8 | payload[1], len(payload) // 2 - 1
        if first + count > self.words():
            raise Refusal(OUT_OF_RANGE)
        for i in range(count):
            self.image[first + i] = payload[2 + 2 * i] | payload[3 + 2 * i] << 8
        return []


class Mount:
    def __init__(self, revision):
        self.devices = {16: Device(revision), 17: Device(revision)}
        self.hand_control, self.fastest = False, 115200
        self.power()

    def power(self):
        for device in self.devices.values():
            device.power()
        self.locked, self.last, self.block = False, None, None
        self.speed = min(19200, self.fastest)
        self.buffer, self.heard, self.strange = bytearray(), 0.0, None

    def receive(self, data, now):
        """Takes bytes; gives those to be sent."""
        self.buffer += data
        self.heard = now
        if self.strange is None and data:
            self.strange = now
        return self.answers(now)

    def tick(self, now):
        out = b""
        if self.buffer and now - self.heard >= GAP:
            while self.buffer:
                del self.buffer[0]
                out += self.answers(now)
        if self.strange is not None and now - self.strange >= LOST:
            self.speed, self.strange = min(19200, self.fastest), None
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
                out += self.answer(*request)
                self.strange = now if self.speed != before else None
        return out

    def frame(self):
        """Length and request that the buffer begins with: no length while it may go on; 1 and no request
        where it begins with none."""
        head = self.buffer[0]
        command = head & 0x3F
        if head & 0xC0 != REQUEST:
            return 1, None
        if command - SHORT in WRITES and command not in LENGTHS:
            return self.short_frame(head, command - SHORT)
        if command not in LENGTHS:
            return 1, None
        length = 3 + LENGTHS[command] + 2
        if len(self.buffer) < length:
            return None, None
        body = bytes(self.buffer[:length - 2])
        if crc16(body) != self.buffer[length - 2:length]:
            return 1, None
        return length, (command, body[1], body[2], body[3:], None)

    def short_frame(self, head, command):
        if self.block is None:
            return 1, None
        length = 1 + 2 * WRITES[command] + 4
        if len(self.buffer) < length:
            return None, None
        words = bytes(self.buffer[1:length - 4])
        sequence, address, first, count = self.block
        for number, device, place in ((sequence + 1 & 0xFF, address, first + count), (sequence, address, first)):
            known = bytes([number, device]) + (place & 0xFFFF).to_bytes(2, "big")
            if zlib.crc32(known + bytes([head]) + words).to_bytes(4, "big") == self.buffer[length - 4:length]:
                return length, (command, number, device, known[2:] + words, known)
        return 1, None

    def answer(self, command, sequence, address, payload, known):
        request = (command, sequence, address, payload)
        kind = DONE
        if request == self.last:
            result = self.last_result
        else:
            try:
                result = self.itself(command, payload) if address == 0 else self.device(command, address, payload)
            except Refusal as refusal:
                kind, result = REFUSED, [refusal.args[0]]
            if result is None:  # a device that is not there
                self.block = None
                return b""
            if kind == DONE and address != 0:
                self.last, self.last_result = request, result
        written = kind == DONE and command in WRITES
        self.block = (sequence, address, payload[0] << 8 | payload[1], WRITES[command]) if written else None
        if known is not None:
            sent = bytes([kind | command + SHORT] + result)
            return sent + crc16(known + sent)
        sent = bytes([kind | command, sequence, address] + result)
        return sent + crc16(sent)

    def itself(self, command, payload):
        if command == IDENTIFY:
            self.last = None
            flags = 1 | (2 if self.locked else 0) | 4 | 8
            return [0x54, 0x57, 1, 1 if self.hand_control else 0, flags, SPEEDS.index(self.fastest)]
        if command == TIMES:
            return [0, 0, 0]
        if command == LOCK and self.hand_control:
            self.locked = True
            return []
        if command != SPEED:
            raise Refusal(WRONG_STATE)
        if payload[0] > SPEEDS.index(self.fastest):
            raise Refusal(OUT_OF_RANGE)
        self.speed = SPEEDS[payload[0]]
        return [payload[0]]

    def device(self, command, address, payload):
        if address not in self.devices:
            return None
        if command < STATE:
            raise Refusal(WRONG_STATE)
        if self.hand_control and not self.locked and (command in (ENTER, START, END, CHECK) or command in WRITES):
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
    pending = b""
    while True:
        due = [mount.heard + GAP] if mount.buffer else []
        due += [mount.strange + LOST] if mount.strange is not None else []
        wait = max(0, min(due) - time.monotonic()) if due else None
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
            data = os.read(0, 4096)
            if not data:
                os.remove(options.link)
                return
            *lines, pending = (pending + data).split(b"\n")
            for line in lines:
                print(mount.command(line.decode().split()), end="", flush=True)


main()
