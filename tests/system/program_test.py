#!/usr/bin/env python3
"""program_test.py PROGRAM: the program in a folder of its own, without its library, started in bad places."""
import os
import pathlib
import pty
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PROGRAM = sys.argv[1]


def expect(holds, what):
    if not holds:
        sys.exit(f"FAILED: {what}")


def comes(look, seconds):
    """Whether `look` gives true within that time."""
    end = time.monotonic() + seconds
    while not (seen := look()) and time.monotonic() < end:
        time.sleep(0.02)
    return bool(seen)


def told(path):
    return path.read_text(encoding="latin-1") if path.exists() else ""


def runs_where_it_finds_no_library_and_can_write_nothing(folder, start):
    (folder / "Tarnwick.ini").write_text("[TARNWICK]\r\nDebugFilter10 = True\r\n", newline="")
    folder.chmod(0o555)
    start.chmod(0o777)
    # Root, whom no mode stops, becomes nobody.
    who = {"user": 65534} if os.geteuid() == 0 else {}
    program = subprocess.Popen([folder / "Tarnwick"], cwd=start, **who)
    expect(comes(lambda: "DomainDir" in told(start / "debugexe.txt"), 20), "it does not start")
    expect(not comes(lambda: program.poll() is not None, 0.3), "it ended by itself")
    program.kill()
    program.wait()
    found = sorted(path.name for path in folder.iterdir())
    folder.chmod(0o755)
    expect(found == ["Tarnwick", "Tarnwick.ini"], f"its folder holds {found}")


def outlives_the_terminal_that_it_was_started_from(folder, start):
    unread = os.pipe()
    process, terminal = pty.fork()
    if process == 0:
        os.dup2(unread[1], 2)
        os.close(1)
        os.closerange(3, 100)
        os.chdir(start)
        os.execv(folder / "Tarnwick", ["Tarnwick"])
    for end in unread:
        os.close(end)  # What the window system says has no reader now.
    ended = []

    def over():
        ended.extend([] if ended or not os.waitpid(process, os.WNOHANG)[0] else [True])
        return ended

    expect(comes(lambda: "start:" in told(folder / "Tarnwick.log") or over(), 20) and not ended, "it does not start")
    expect(os.readlink(f"/proc/{process}/fd/1") == "/dev/null", "its output leads to a file that it opened itself")
    os.close(terminal)
    expect(not comes(over, 0.5), "it ended with its terminal")
    os.kill(process, signal.SIGTERM)
    expect(comes(over, 5), "it was asked to end and does not")


os.environ["QT_QPA_PLATFORM"] = "offscreen"
for case in (runs_where_it_finds_no_library_and_can_write_nothing, outlives_the_terminal_that_it_was_started_from):
    with tempfile.TemporaryDirectory() as home, tempfile.TemporaryDirectory() as elsewhere:
        os.chmod(home, 0o755)
        shutil.copy(PROGRAM, pathlib.Path(home) / "Tarnwick")
        print(case.__name__, flush=True)
        case(pathlib.Path(home), pathlib.Path(elsewhere))
