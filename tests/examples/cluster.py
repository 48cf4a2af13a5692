#!/usr/bin/env python3
"""Runs the scripts of examples/cluster with programs that take the place of g16, sbatch, scontrol and parallel: cluster.py GENERATOR"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parents[2]
SCRIPTS = TOP / "examples" / "cluster"
generator = str(pathlib.Path(sys.argv[1]).resolve())
wrong = []

# Keeps what it read and counts its calls; MODE says how it ends. Where a file fail-all stands, every job fails.
G16 = """#!/bin/sh
cat >../received
echo called >>../calls
echo "log of $(cksum <../received)"
[ ! -e ../fail-all ] || exit 3
[ "${MODE:-}" != status ] || { echo "Normal termination"; exit 7; }
[ "${MODE:-}" != early ] || { echo "Normal termination"; echo "but there was more"; exit 0; }
echo " Normal termination of Gaussian 16"
"""
SCONTROL = """#!/bin/sh
[ "$*" = "show config" ] || exit 9
echo "MaxArraySize            = $MAXARRAY"
echo "MaxJobCount             = 10000"
"""
SBATCH = '#!/bin/sh\nprintf "%s\\n" "$@" >submitted\n'
PARALLEL = '#!/bin/sh\nprintf "%s\\n" "$@" >started\ncat >jobs\n'


def check(what, found, expected):
    if found != expected:
        wrong.append(f"{what}: expected {expected!r}, found {found!r}")


class work:
    """A folder with a list and its geometry files; it and the scripts have a blank in their names."""

    def __init__(self, parent):
        self.scripts = parent / "the scripts"
        self.scripts.mkdir()
        for script in SCRIPTS.glob("*.sh"):
            (self.scripts / script.name).write_bytes(script.read_bytes())
            (self.scripts / script.name).chmod(0o755)
        self.programs = parent / "programs"
        self.programs.mkdir()
        for name, text in (("g16", G16), ("scontrol", SCONTROL), ("sbatch", SBATCH), ("parallel", PARALLEL), ("other", "#!/bin/sh\necho other\necho Normal termination\n")):
            (self.programs / name).write_text(text)
            (self.programs / name).chmod(0o755)
        self.path = parent / "a job"
        self.path.mkdir()
        self.pes = self.path / "PES-0"

    def generate(self, checkpoint_lines=""):
        water = (TOP / "examples" / "water" / "mol.gjf").read_text()
        (self.path / "mol.gjf").write_text(checkpoint_lines + water)
        (self.path / "control").write_text("&control fxyz='mol.gjf', dx=0.005 /\n")
        subprocess.run([generator, "control"], cwd=self.path, check=True, timeout=60)

    def run(self, script, *arguments, **environment):
        clean = {name: value for name, value in os.environ.items() if name not in ("CALCULATOR", "OWN_CHECKPOINT", "AT_ONCE")}
        done = subprocess.run([str(self.scripts / script), *arguments], cwd=self.path, capture_output=True, text=True, timeout=60, stdin=subprocess.DEVNULL,
                              env={**clean, "PATH": f"{self.programs}:{os.environ['PATH']}", **environment})
        return done.returncode, done.stdout, done.stderr

    def calls(self):
        path = self.path / "calls"
        return len(path.read_text().splitlines()) if path.exists() else 0

    def files_of(self, name):
        return {file.name.removeprefix(name) for file in self.pes.glob(name + ".*")}


def check_list(made):
    expected = "PES-0/files.out: missing, or without End_vesk_info; run displacement_generator to its end first\n"
    for script in ("list.sh", "parallel.sh", "slurm.sh"):
        check(f"{script} without a list", made.run(script, MAXARRAY="1001"), (1, "", expected))
    made.generate()
    status, output, errors = made.run("list.sh")
    check("the list: status", (status, errors), (0, ""))
    names = output.splitlines()
    check("the list: names", sorted(names), sorted(file.stem for file in made.pes.glob("*.com")))
    check("the list: its first name", names[0], "coord-0-00")
    check("the list: its length", len(names), 10)
    files = made.pes / "files.out"
    whole = files.read_text()
    files.write_text(whole.replace("End_vesk_info\n", ""))
    check("a list without its end", made.run("list.sh"), (1, "", expected))
    files.write_text(whole)
    return names


def check_job(made):
    name = "coord-1-dx"
    done, computed = {".com", ".in", ".log"}, made.pes / f"{name}.log"
    check("is_done before", made.run("is_done.sh", name)[0] != 0, True)
    check("a job", made.run("job.sh", name), (0, "", ""))
    check("a job: its files", made.files_of(name), done)
    geometry = (made.pes / f"{name}.com").read_bytes()
    check("a job: what was computed", (made.pes / f"{name}.in").read_bytes(), geometry)
    check("a job: what was read", (made.path / "received").read_bytes(), geometry)
    check("a job: the log", re.fullmatch(r"log of \d+ \d+\n Normal termination of Gaussian 16\n", computed.read_text()) is not None, True)
    check("is_done after", made.run("is_done.sh", name), (0, "", ""))
    check("a job that is done", made.run("job.sh", name), (0, "", ""))
    check("a job that is done is not computed again", made.calls(), 1)

    # Another geometry: the log is of an earlier one.
    first = computed.read_text()
    (made.pes / f"{name}.com").write_bytes(geometry.replace(b"0.11380895", b"0.21380895"))
    check("is_done after another geometry", made.run("is_done.sh", name)[0] != 0, True)
    for mode in ("status", "early"):
        check(f"a job that fails ({mode}): status", made.run("job.sh", name, MODE=mode)[0] != 0, True)
        check(f"a job that fails ({mode}): its files", made.files_of(name), {".com", ".in", ".part"})
        check(f"is_done after a failure ({mode})", made.run("is_done.sh", name)[0] != 0, True)
    check("another geometry", made.run("job.sh", name), (0, "", ""))
    check("another geometry: its files", made.files_of(name), done)
    check("another geometry: its log is another", computed.read_text() != first, True)
    check("another geometry: calls", made.calls(), 4)

    check("another program", made.run("job.sh", "coord-1-dy", CALCULATOR=str(made.programs / "other")), (0, "", ""))
    check("another program: its log", (made.pes / "coord-1-dy.log").read_text(), "other\nNormal termination\n")
    check("another program: calls of g16", made.calls(), 4)


def check_own_checkpoint(made):
    made.generate("%chk=shared.chk\n%OldChk=before.chk\n %CHK = other.chk\n%nprocshared=2\n")
    name = "coord-2+dy"
    geometry = (made.pes / f"{name}.com").read_text()
    check("the geometry has three checkpoints", geometry.lower().count("chk") - geometry.lower().count(".chk"), 3)
    check("own checkpoint", made.run("job.sh", name, OWN_CHECKPOINT="1"), (0, "", ""))
    kept = [line for line in geometry.splitlines(True) if "chk" not in line.lower()]
    check("own checkpoint: what was read", (made.path / "received").read_text(), "".join([f"%chk={name}.chk\n", *kept]))
    check("own checkpoint: other link 0 lines stay", "%nprocshared=2\n" in kept and "%mem=1GB\n" in kept, True)
    check("own checkpoint: its files", made.files_of(name), {".com", ".in", ".log"})
    check("own checkpoint: what was computed", (made.pes / f"{name}.in").read_text(), geometry)
    check("own checkpoint: is_done", made.run("is_done.sh", name)[0], 0)
    check("own checkpoint, failed: status", made.run("job.sh", "coord-2-dy", OWN_CHECKPOINT="1", MODE="status")[0] != 0, True)
    check("own checkpoint, failed: is_done", made.run("is_done.sh", "coord-2-dy")[0] != 0, True)
    for other in ("0", "", "no"):
        check("shared checkpoint", made.run("job.sh", "coord-2-dz", OWN_CHECKPOINT=other), (0, "", ""))
        check("shared checkpoint: what was read", (made.path / "received").read_text(), (made.pes / "coord-2-dz.com").read_text())
        (made.pes / "coord-2-dz.log").unlink()


def check_slurm(made, names):
    made.generate()

    def submitted(**environment):
        status, output, errors = made.run("slurm.sh", "--time=1:00:00", MAXARRAY=environment.pop("maxarray", "1001"), **environment)
        check("slurm.sh: status", (status, output, errors), (0, "", ""))
        return (made.path / "submitted").read_text().splitlines()

    def rest(per):
        return ["--time=1:00:00", str(made.scripts / "array.sh"), str(made.scripts), per]

    for file in made.pes.glob("*.log"):
        file.unlink()
    check("all jobs", submitted(), ["--array=1,2,3,4,5,6,7,8,9,10", *rest("1")])
    check("a limit of tasks", submitted(AT_ONCE="3"), ["--array=1,2,3,4,5,6,7,8,9,10%3", *rest("1")])
    check("an array as long as may be", submitted(maxarray="11"), ["--array=1,2,3,4,5,6,7,8,9,10", *rest("1")])
    check("a short array", submitted(maxarray="4"), ["--array=1,2,3", *rest("4")])

    # Task 2 of three is lines 5 to 8.
    task = made.run("array.sh", str(made.scripts), "4", SLURM_ARRAY_TASK_ID="2")
    check("a task", task, (0, "", ""))
    check("a task: logs", sorted(file.stem for file in made.pes.glob("*.log")), sorted(names[4:8]))
    check("the jobs that are left", submitted(), ["--array=1,2,3,4,9,10", *rest("1")])
    check("the tasks that are left", submitted(maxarray="4"), ["--array=1,3", *rest("4")])
    (made.path / "fail-all").touch()
    task = made.run("array.sh", str(made.scripts), "4", SLURM_ARRAY_TASK_ID="3")
    check("a task that fails", task, (1, "".join(f"{name}: failed in task 3\n" for name in names[8:]), ""))
    (made.path / "fail-all").unlink()
    for number in "13":
        check("the other tasks", made.run("array.sh", str(made.scripts), "4", SLURM_ARRAY_TASK_ID=number), (0, "", ""))
    (made.path / "submitted").unlink()
    check("all done", made.run("slurm.sh", MAXARRAY="1001"), (0, "all 10 jobs are done\n", ""))
    check("all done: nothing is submitted", (made.path / "submitted").exists(), False)


def check_parallel(made, names):
    log = made.pes / "parallel.joblog"
    log.write_text("of an older list\n")
    os.utime(log, (1000000000, 1000000000))
    arguments = ["--quote", "--joblog", "PES-0/parallel.joblog", "--resume-failed", "-j", "2", str(made.scripts / "job.sh"), "{}"]
    check("parallel.sh", made.run("parallel.sh", "-j", "2"), (0, "", ""))
    check("parallel.sh: arguments", (made.path / "started").read_text().splitlines(), arguments)
    check("parallel.sh: jobs", (made.path / "jobs").read_text().splitlines(), names)
    check("parallel.sh: the log of an older list", log.exists(), False)
    log.write_text("of this list\n")
    os.utime(log, (time.time() + 10, time.time() + 10))
    check("parallel.sh again", made.run("parallel.sh"), (0, "", ""))
    check("parallel.sh again: the log of this list", log.exists(), True)


def main():
    with tempfile.TemporaryDirectory() as name:
        made = work(pathlib.Path(name))
        names = check_list(made)
        check_job(made)
        check_own_checkpoint(made)
        check_slurm(made, names)
        check_parallel(made, names)
    print("\n".join(wrong) or "the scripts of examples/cluster do what they say")
    sys.exit(1 if wrong else 0)


main()
