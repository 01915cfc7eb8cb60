"""at_terminal.py FLASH: tarnwick-flash with a person at a terminal, who answers, presses Ctrl-C, or goes away."""
import os
import pty
import select
import sys
import time

FLASH = sys.argv[1]


class Terminal:
    """A run of flash at a terminal of its own."""

    def __init__(self, *arguments):
        self.process, self.line = pty.fork()
        if self.process == 0:
            os.execv(FLASH, [FLASH, *arguments])
        self.seen = ""

    def wait_for(self, text, seconds=20):
        end = time.monotonic() + seconds
        while text not in self.seen:
            if time.monotonic() > end or not select.select([self.line], [], [], seconds)[0]:
                raise SystemExit(f"{text!r} does not come; there is: {self.seen!r}")
            self.seen += os.read(self.line, 4096).decode(errors="replace")

    def type(self, text):
        self.seen = ""
        os.write(self.line, text.encode())

    def status(self):
        return os.waitstatus_to_exitcode(os.waitpid(self.process, 0)[1])


def expect(found, wanted, what):
    if found != wanted:
        raise SystemExit(f"{what}: {found!r} instead of {wanted!r}")


run = Terminal("program", "MC_0512", "--port", "COM5", "--device", "azm")
run.wait_for("%")
run.type("\x03")
run.wait_for("Are you sure you want to Cancel Programming?")
run.wait_for("[y/n]")
run.type("n\n")
run.wait_for("%")
run.type("\x03")
run.wait_for("[y/n]")
run.type("y\n")
expect(run.status(), 4, "a run that was cancelled")

run = Terminal("program", "MC_0512", "--port", "COM5", "--device", "azm", "--yes=model")
run.wait_for("Programming: ")
os.close(run.line)
expect(run.status(), 0, "a run whose terminal went away")
