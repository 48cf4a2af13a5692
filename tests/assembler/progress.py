#!/usr/bin/env python3
"""The line that tells how far the run is: progress.py ASSEMBLER GENERATOR FAILING_CALLS

Where standard error is a terminal it comes once reading takes longer than a second, and while the vibrations of 200 atoms or more are
computed; it is wiped out at the end. Elsewhere there is none. FAILING_CALLS is the library that stops the run at its second result. Status 77 where the system gives out no terminals.
"""
import os
import pathlib
import pty
import select
import signal
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
import twins

assembler, generator, preload = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:4])
STOPPED = {"LD_PRELOAD": preload, "ASAN_OPTIONS": "verify_asan_link_order=0", "FAILING_CALL": "open", "FAILING_WAY": "stopped",
           "FAILING_FILE": "PES-0/coord-1-dx.forces", "FAILING_TURN": "1"}


def stopped_run(folder, stderr):
    started = subprocess.Popen([assembler], cwd=folder, stdout=subprocess.DEVNULL, stderr=stderr, env={**os.environ, **STOPPED})
    until = time.monotonic() + 30
    while pathlib.Path(f"/proc/{started.pid}/stat").read_text().rsplit(") ", 1)[1][0] != "T" and time.monotonic() < until:
        time.sleep(0.01)
    return started


def large_molecule():
    """200 atoms, eight times 25, with few files."""
    points = [(1 + 1.3 * i, 1.1 + 1.4 * j, 0.9 + 1.5 * k) for i in range(5) for j in range(5) for k in range(1)]
    signs = [(a, b, c) for a in (1, -1) for b in (1, -1) for c in (1, -1)]
    atoms = "".join("C %.3f %.3f %.3f\n" % (a * x, b * y, c * z) for x, y, z in points for a, b, c in signs)
    return f"#p hf/3-21g force nosymm\n\nlarge\n\n0 1\n{atoms}\n"


try:
    master, slave = pty.openpty()
except OSError:
    sys.exit(77)
reader, writer = os.pipe()
with tempfile.TemporaryDirectory() as folder:
    twins.compute_all(pathlib.Path(folder), twins.generate(generator, pathlib.Path(folder)))
    started = [stopped_run(folder, stream) for stream in (writer, slave)]
    time.sleep(1.1)
    for process in started:
        process.send_signal(signal.SIGCONT)
    statuses = [process.wait(30) for process in started]
with tempfile.TemporaryDirectory() as folder:
    twins.compute_all(pathlib.Path(folder), twins.generate(generator, pathlib.Path(folder), large_molecule()))
    pipe = subprocess.run([assembler], cwd=folder, stdout=subprocess.DEVNULL, stderr=writer).returncode
    large_master, large_slave = pty.openpty()
    terminal = subprocess.run([assembler], cwd=folder, stdout=subprocess.DEVNULL, stderr=large_slave).returncode
os.close(writer)
on_terminal = os.read(master, 4096) if select.select([master], [], [], 1)[0] else b""
elsewhere = os.read(reader, 4096)
found = (statuses, on_terminal, elsewhere)
expected = ([0, 0], b"\rread 2 of 10\r            \r", b"")
if found != expected:
    sys.exit(f"expected {expected}, found {found}")
on_terminal = os.read(large_master, 65536) if select.select([large_master], [], [], 1)[0] else b""
line = b"\rcomputing the vibrations of 200 atoms"  # perhaps after one about reading
if (pipe, terminal) != (0, 0) or not on_terminal.endswith(line + b"\r" + b" " * (len(line) - 1) + b"\r"):
    sys.exit(f"expected {line} and blanks over it at the end, found {(pipe, terminal, on_terminal)}")
