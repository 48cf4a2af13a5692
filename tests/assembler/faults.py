#!/usr/bin/env python3
"""What fails below the assembler: faults.py ASSEMBLER GENERATOR FAILING_CALLS

Full devices, closed streams, folders that may not be written to, calls of the system that fail, signals. In each case the run ends
with its message and its status, files that were there stay as they were, and nothing else is left. FAILING_CALLS is the library that makes calls
fail.
"""
import errno
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
import twins

assembler, generator, preload = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:4])
FULL = os.strerror(errno.ENOSPC)
CLOSED = os.strerror(errno.EBADF)
ERROR = "displacement_assembler: error: "
BOTH = ["--molden", "m", "--hessian", "h"]
wrong = []


class folder:
    """A new folder with all that is needed, and the file m from an earlier run."""

    def __enter__(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.temporary.name)
        twins.compute_all(self.path, twins.generate(generator, self.path))
        (self.path / "m").write_text("from before\n")
        self.before = self.files()
        return self

    def __exit__(self, *ignored):
        self.temporary.cleanup()

    def files(self):
        return {str(f.relative_to(self.path)): f.read_text() for f in self.path.rglob("*") if f.is_file()}

    def changed(self):
        now = self.files()
        return {name for name in self.before.keys() | now.keys() if self.before.get(name) != now.get(name)}

    def check_untouched(self, what):
        check(f"{what}: files that changed", self.changed(), set())


def check(what, found, expected):
    if found != expected:
        wrong.append(f"{what}: expected {expected!r}, found {found!r}")


def run(what, command, message, status=2, output="", changes=None, environment=None):
    """A shell command with the program as $0, or with an environment the arguments alone; `message` is all of standard error, None where it is closed."""
    with folder() as made:
        if changes:
            changes(made.path)
            made.before = made.files()
        whole = [assembler, *command] if environment else ["/bin/sh", "-c", command, assembler]
        done = subprocess.run(whole, cwd=made.path, capture_output=True, text=True, timeout=60, env={**os.environ, **(environment or {})})
        check(f"{what}: status", done.returncode, status)
        if output is not None:
            check(f"{what}: standard output", done.stdout, output)
        if message is not None:
            check(f"{what}: message", done.stderr, message)
        made.check_untouched(what)


def without_dipole(path):
    forces = path / "PES-0" / "coord-1-dx.forces"
    forces.write_text("".join(line for line in forces.read_text().splitlines(True) if "dipole" not in line))


def without_result(path):
    (path / "PES-0" / "coord-1-dx.forces").unlink()


# Streams and devices.
to_both = '"$0" --molden m --hessian h '
run("full standard output", to_both + ">/dev/full", f"{ERROR}standard output: cannot write: {FULL}\n")
run("closed standard output", to_both + ">&-", f"{ERROR}standard output: cannot write: {CLOSED}\n")
run("full help", '"$0" --help >/dev/full', f"{ERROR}standard output: cannot write: {FULL}\n")
run("full standard error, a notice", to_both + "2>/dev/full", None, changes=without_dipole)
run("closed standard error, a notice", to_both + "2>&-", None, changes=without_dipole)
run("full standard error, a refusal", to_both + "2>/dev/full", None, changes=without_result)
run("all streams closed", to_both + "<&- >&- 2>&-", None)
for option in ("--molden", "--hessian"):
    run(f"{option} on a full device", f'"$0" {option} /dev/full',
        f"{ERROR}/dev/full: expected the name of a file to write, found something else of this name\n")
    run(f"{option} in no folder", f'"$0" {option} nowhere/x', f"{ERROR}nowhere/x: cannot open for writing: No such file or directory\n")
run("a list that is a folder", '"$0"', f"{ERROR}PES-0/files.out: cannot open: Is a directory\n",
    changes=lambda path: ((path / "PES-0" / "files.out").unlink(), (path / "PES-0" / "files.out").mkdir()))
REFUSED = f"{ERROR}PES-0/files.out: 10 of 10 are there, not all of them can be used\n"
run("a result that is a pipe", '"$0"', "PES-0/coord-1-dx.forces: cannot open: Not a regular file\n" + REFUSED, 1,
    changes=lambda path: (without_result(path), os.mkfifo(path / "PES-0" / "coord-1-dx.forces")))

with folder() as made:
    done = subprocess.run([assembler, *BOTH], cwd=made.path, capture_output=True, text=True, timeout=60,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (64, 64)))
    check("limit on files: status", done.returncode, 2)
    check("limit on files: message", done.stderr, f"{ERROR}m: cannot write: File too large\n")
    made.check_untouched("limit on files")

with folder() as made:
    made.path.chmod(0o555)
    # Root may write everywhere, but not without these rights.
    plain_user = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.geteuid() == 0 else []
    done = subprocess.run([*plain_user, assembler, *BOTH], cwd=made.path, capture_output=True, text=True, timeout=60)
    made.path.chmod(0o755)
    check("unwritable folder: status", done.returncode, 2)
    check("unwritable folder: output", done.stdout, "")
    check("unwritable folder: message", done.stderr, f"{ERROR}m: cannot open for writing: Permission denied\n")
    made.check_untouched("unwritable folder")



def wait_with_both(path, prepare=None):
    """A run whose table waits in a full pipe, when both temporary files are there already. Result: it, and both ends of the pipe."""
    reader, writer = os.pipe()
    os.set_blocking(writer, False)
    try:
        while True:
            os.write(writer, b"x" * 4096)
    except BlockingIOError:
        os.set_blocking(writer, True)
    started = subprocess.Popen([assembler, *BOTH], cwd=path, stdout=writer, preexec_fn=prepare)
    until = time.monotonic() + 30
    while len(list(path.glob(".displacement_assembler-*"))) < 2 and time.monotonic() < until:
        time.sleep(0.01)
    check("temporary files", len(list(path.glob(".displacement_assembler-*"))), 2)
    time.sleep(0.05)
    return started, reader, writer


for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
    with folder() as made:
        started, reader, writer = wait_with_both(made.path)
        started.send_signal(number)
        check(f"signal {number}: status", started.wait(30), -number)
        os.close(reader)
        os.close(writer)
        made.check_untouched(f"signal {number}")


def ignore_hangups():
    signal.signal(signal.SIGHUP, signal.SIG_IGN)
    os.umask(0o027)


# A signal that is ignored stays so, and the files get what the mask leaves of their modes.
with folder() as made:
    started, reader, writer = wait_with_both(made.path, ignore_hangups)
    started.send_signal(signal.SIGHUP)
    os.close(writer)
    with os.fdopen(reader, "rb") as stream:
        stream.read()
    check("ignored signal: status", started.wait(30), 0)
    check("modes of files", {oct((made.path / name).stat().st_mode & 0o777) for name in "mh"}, {"0o640"})


def failing(call, way, file="", turn=1):
    return {"LD_PRELOAD": preload, "ASAN_OPTIONS": "verify_asan_link_order=0", "FAILING_CALL": call, "FAILING_WAY": str(way), "FAILING_FILE": file, "FAILING_TURN": str(turn)}


# Of both files the first, then the second.
temporary = "./.displacement_assembler-XXXXXX"
with folder() as made:
    table = subprocess.run([assembler], cwd=made.path, capture_output=True, text=True, check=True).stdout
for turn, name in ((1, "m"), (2, "h")):
    for call, what in (("mkstemp", "open for writing"), ("fchmod", "write"), ("write", "write")):
        run(f"{call} {turn}", BOTH, f"{ERROR}{name}: cannot {what}: {FULL}\n", environment=failing(call, errno.ENOSPC, temporary, turn))
    # The descriptor that mkstemp gave is closed first, when it was duplicated; what fails there is of no consequence.
    run(f"close {turn}", BOTH, f"{ERROR}{name}: cannot close: {FULL}\n", environment=failing("close", errno.ENOSPC, temporary, 2 * turn))
run("rename", BOTH, f"{ERROR}m: cannot put in place: {FULL}\n", output=table, environment=failing("rename", errno.ENOSPC, "m"))

with folder() as made:
    done = subprocess.run([assembler, *BOTH], cwd=made.path, capture_output=True, text=True, env={**os.environ, **failing("rename", errno.EACCES, "h")})
    check("rename of the second: status", done.returncode, 2)
    check("rename of the second: message", done.stderr, f"{ERROR}h: cannot put in place: Permission denied\n")
    check("rename of the second: the first", (made.path / "m").read_text()[:15], "[Molden Format]")
    check("rename of the second: others", made.changed(), {"m"})

# Reading.
for call, what in (("open", "cannot open"), ("read", "cannot read")):
    reason = os.strerror(errno.EIO)
    for name in ("coord-1-dx.com", "coord-1-dx.forces", "coord-0-00.forces"):
        run(f"{call} {name}", [], f"PES-0/{name}: {what}: {reason}\n{REFUSED}", 1, environment=failing(call, errno.EIO, f"PES-0/{name}"))
    run(f"{call} files.out", [], f"{ERROR}PES-0/files.out: {what}: {reason}\n", environment=failing(call, errno.EIO, "PES-0/files.out"))
for way in ("interrupted", "half", "byte"):
    run(f"read {way}", [], "", 0, output=table, environment=failing("read", way, turn=0))
for way in ("interrupted", "half", "byte"):
    with folder() as made:
        subprocess.run([assembler, *BOTH], cwd=made.path, stdout=subprocess.DEVNULL, check=True)
        good = made.files()
        subprocess.run([assembler, *BOTH], cwd=made.path, stdout=subprocess.DEVNULL, check=True,
                       env={**os.environ, **failing("write", way, temporary, 0)})
        check(f"write {way}", made.files(), good)

for line in wrong:
    print(line)
sys.exit(1 if wrong else 0)
