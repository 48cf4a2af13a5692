#!/usr/bin/env python3
"""What fails below the preparer: faults.py PREPARER FAILING_OUTPUT

Full devices, closed streams, folders that may not be written to, a limit on the size of files, calls that fail, signals. In each case
the run ends with its message and status 2, an OUTPUT that was there stays as it was, and nothing else is left.
"""
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import time

INPUT = "#p hf/3-21g force nosymm\n\nwater\n\n0 1\nO 0 0 0.4\nH 0 0.75 -0.2\nH 0 -0.75 -0.2\n\n"
FULL = "No space left on device"
CLOSED = "Bad file descriptor"
preparer = str(pathlib.Path(sys.argv[1]).resolve())
wrong = []


class folder:
    """A new folder with mol.gjf, and out.gjf from an earlier run."""

    def __enter__(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.temporary.name)
        (self.path / "mol.gjf").write_text(INPUT)
        (self.path / "out.gjf").write_text("from before\n")
        (self.path / "tmp").mkdir()
        return self.path

    def __exit__(self, *ignored):
        self.temporary.cleanup()


def check(what, found, expected):
    if found != expected:
        wrong.append(f"{what}: expected {expected!r}, found {found!r}")


def check_untouched(what, path):
    check(f"{what}: files", sorted(str(f.relative_to(path)) for f in path.rglob("*")), ["mol.gjf", "out.gjf", "tmp"])
    check(f"{what}: OUTPUT", (path / "out.gjf").read_text(), "from before\n")


def run(what, command, message, status=2):
    """A shell command with the program as $0; `message` is the last line on standard error, None where it is closed."""
    with folder() as path:
        done = subprocess.run(["/bin/sh", "-c", command, preparer], cwd=path, capture_output=True, text=True, timeout=60,
                              env={**os.environ, "TMPDIR": str(path / "tmp")})
        check(f"{what}: status", done.returncode, status)
        if message is not None:
            check(f"{what}: message", done.stderr.splitlines()[-1:], [f"displacement_preparer: error: {message}"])
        check_untouched(what, path)


run("full standard output", '"$0" mol.gjf >/dev/full', f"standard output: cannot write: {FULL}")
run("full named output", '"$0" -o /dev/full mol.gjf', f"/dev/full: cannot write: {FULL}")
run("full standard error", '"$0" -o out.gjf mol.gjf 2>/dev/full', None)
run("closed standard output", '"$0" mol.gjf >&-', f"standard output: cannot write: {CLOSED}")
run("closed standard error", '"$0" -o out.gjf mol.gjf 2>&-', None)
run("all streams closed", '"$0" -o out.gjf mol.gjf <&- >&- 2>&-', None)
run("closed standard input", '"$0" -o out.gjf - <&-', f"standard input: cannot read: {CLOSED}")
run("full help", '"$0" --help >/dev/full', f"standard output: cannot write: {FULL}")
run("no temporary folder", 'TMPDIR=/nowhere "$0" mol.gjf', "standard output: cannot open for writing: No such file or directory")

# Calls that fail on a broken disk alone: with FAILING_OUTPUT preloaded they do.
PRELOADED = f'ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD={pathlib.Path(sys.argv[2]).resolve()} "$0"'
run("failing close", f'FAILING_OUTPUT=close {PRELOADED} -o out.gjf mol.gjf', "out.gjf: cannot close: Input/output error")
run("failing close for a stream", f'FAILING_OUTPUT=close {PRELOADED} mol.gjf', "standard output: cannot close: Input/output error")
run("failing rename", f'FAILING_OUTPUT=rename {PRELOADED} -o out.gjf mol.gjf', "out.gjf: cannot put in place: Input/output error")
with folder() as path:  # nothing fails where nothing is asked for
    done = subprocess.run(["/bin/sh", "-c", f"{PRELOADED} -o out.gjf mol.gjf", preparer], cwd=path, capture_output=True, text=True, timeout=60)
    check("preloaded: status", done.returncode, 0)
    check("preloaded: OUTPUT", (path / "out.gjf").read_text()[:3], INPUT[:3])


# An OUTPUT that is a link: what it leads to is written, and the link stays. Where it leads to nothing, it is replaced.
with folder() as path:
    (path / "tmp" / "real.gjf").write_text("from before\n")
    (path / "link.gjf").symlink_to("tmp/real.gjf")
    done = subprocess.run([preparer, "-o", "link.gjf", "mol.gjf"], cwd=path, capture_output=True, text=True, timeout=60)
    check("link: status", done.returncode, 0)
    check("link: is one still", os.readlink(path / "link.gjf"), "tmp/real.gjf")
    check("link: OUTPUT", (path / "tmp" / "real.gjf").read_text()[:3], INPUT[:3])
    (path / "tmp" / "real.gjf").unlink()
    done = subprocess.run([preparer, "-o", "link.gjf", "mol.gjf"], cwd=path, capture_output=True, text=True, timeout=60)
    check("link to nothing: status", done.returncode, 0)
    check("link to nothing: OUTPUT", (not (path / "link.gjf").is_symlink(), (path / "link.gjf").read_text()[:3]), (True, INPUT[:3]))
    check("links: files", sorted(str(f.relative_to(path)) for f in path.rglob("*")), ["link.gjf", "mol.gjf", "out.gjf", "tmp"])

# A new file gets what the user's mask leaves.
with folder() as path:
    done = subprocess.run([preparer, "-o", "new.gjf", "mol.gjf"], cwd=path, capture_output=True, umask=0o027, timeout=60)
    check("mask: status", done.returncode, 0)
    check("mask: mode", oct((path / "new.gjf").stat().st_mode & 0o777), oct(0o640))

# A pipe that nobody reads is not waited for.
with folder() as path:
    os.mkfifo(path / "pipe")
    done = subprocess.run([preparer, "-o", "pipe", "mol.gjf"], cwd=path, capture_output=True, text=True, timeout=60)
    check("pipe without a reader: status", done.returncode, 2)
    check("pipe without a reader: message", done.stderr.splitlines()[-1:],
          ["displacement_preparer: error: pipe: cannot open for writing: No such device or address"])


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (32 << 20, 32 << 20))


# Not where the address sanitizer needs more than this to start.
if subprocess.run([preparer, "--version"], capture_output=True, preexec_fn=limit_memory, timeout=60).returncode == 0:
    with folder() as path:
        (path / "mol.gjf").write_text(INPUT.replace("3-21g", "gen") + "O 0\n6-31G\n" * 3_000_000)
        done = subprocess.run([preparer, "-o", "out.gjf", "mol.gjf"], cwd=path, capture_output=True, text=True, preexec_fn=limit_memory, timeout=60)
        check("limit on memory: status", done.returncode, 2)
        check("limit on memory: message", done.stderr, "displacement_preparer: error: an allocation would exceed the memory limit\n")
        check_untouched("limit on memory", path)


def limit_files():
    resource.setrlimit(resource.RLIMIT_FSIZE, (64, 64))


with folder() as path:
    done = subprocess.run([preparer, "-o", "out.gjf", "mol.gjf"], cwd=path, capture_output=True, text=True, preexec_fn=limit_files, timeout=60)
    check("limit on files: status", done.returncode, 2)
    check("limit on files: message", done.stderr, "displacement_preparer: error: out.gjf: cannot write: File too large\n")
    check_untouched("limit on files", path)

# Root may write everywhere, but not without these rights.
plain_user = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"] if os.geteuid() == 0 else []
with folder() as path:
    path.chmod(0o555)
    done = subprocess.run([*plain_user, preparer, "-o", "out.gjf", "mol.gjf"], cwd=path, capture_output=True, text=True, timeout=60)
    path.chmod(0o755)
    check("unwritable folder: status", done.returncode, 2)
    check("unwritable folder: message", done.stderr, "displacement_preparer: error: out.gjf: cannot open for writing: Permission denied\n")
    check_untouched("unwritable folder", path)

# A signal while the report waits in a full pipe, when the temporary file is there already.
# Where it is ignored, as under nohup, the run goes on.
for number, is_ignored in [(signal.SIGINT, False), (signal.SIGTERM, False), (signal.SIGHUP, False), (signal.SIGHUP, True)]:
    what = f"signal {number}{', ignored' if is_ignored else ''}"
    with folder() as path:
        reader, writer = os.pipe()
        os.set_blocking(writer, False)
        try:
            while True:
                os.write(writer, b"x" * 4096)
        except BlockingIOError:
            os.set_blocking(writer, True)
        started = subprocess.Popen([preparer, "-o", "out.gjf", "mol.gjf"], cwd=path, stderr=writer,
                                   preexec_fn=lambda: is_ignored and signal.signal(number, signal.SIG_IGN))
        os.close(writer)
        until = time.monotonic() + 30
        while not list(path.glob(".displacement_preparer-*")) and time.monotonic() < until:
            time.sleep(0.01)
        check(f"{what}: temporary files", len(list(path.glob(".displacement_preparer-*"))), 1)
        time.sleep(0.2)
        started.send_signal(number)
        if is_ignored:
            time.sleep(0.2)
            while os.read(reader, 65536):
                pass
        check(f"{what}: status", started.wait(30), 0 if is_ignored else -number)
        os.close(reader)
        if is_ignored:
            check(f"{what}: files", sorted(f.name for f in path.iterdir()), ["mol.gjf", "out.gjf", "tmp"])
            check(f"{what}: OUTPUT", (path / "out.gjf").read_text()[:3], INPUT[:3])
        else:
            check_untouched(what, path)

for line in wrong:
    print(line)
sys.exit(1 if wrong else 0)
