#!/usr/bin/env python3
"""Runs every case in the folder beside this file: cases.py PREPARER GENERATOR [CASE...]

A case is a folder:
  args       the command line, an argument a line
  stdin      optional: the name of the file in the case that is standard input; else there is none
  links      optional: lines "NAME TARGET" (a symbolic link) or "NAME = TARGET" (a hard link), made before the run
  expected/  stdout, stderr and status, byte for byte, and in tree/ the files that the run writes

The run happens in a new folder with a copy of everything else in the case. Afterwards that folder must hold this, and
what is in tree/, byte for byte, and nothing more. What was prepared must also be what it is said to be: prepared again
it stays as it is, byte for byte, and the generator takes it and writes as many files as the report says.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
NOT_COPIED = {"args", "stdin", "links", "expected"}


def run(program, arguments, folder, stdin=None):
    return subprocess.run([program, *arguments], cwd=folder, stdin=stdin or subprocess.DEVNULL, capture_output=True, timeout=120)


def tree_of(folder):
    return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def make_folder(case, folder):
    for entry in case.iterdir():
        if entry.name not in NOT_COPIED:
            (shutil.copytree if entry.is_dir() else shutil.copy)(entry, folder / entry.name)
    for line in (case / "links").read_text().splitlines() if (case / "links").exists() else []:
        name, *kind, target = line.split()
        (folder / name).hardlink_to(folder / target) if kind else (folder / name).symlink_to(target)


def compare(what, found, expected, wrong):
    if found != expected:
        wrong.append(f"{what}: expected\n{expected.decode(errors='replace')}found\n{found.decode(errors='replace')}")


def check_prepared(preparer, generator, arguments, text, report, wrong):
    """What was prepared: the same when prepared again, and as many files from the generator as promised."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "mol.gjf").write_bytes(text)
        kept = [a for i, a in enumerate(arguments) if a in ("--keep-frame", "--tolerance") or arguments[i - 1] == "--tolerance"]
        again = run(preparer, [*kept, "mol.gjf"], folder)
        compare("prepared again", again.stdout, text, wrong)
        (folder / "control").write_text("&control fxyz='mol.gjf' /\n")
        done = run(generator, ["control"], folder)
        if done.returncode != 0 or done.stdout or done.stderr:
            wrong.append(f"the generator does not take it: {done.stdout + done.stderr!r}")
            return
        promised = int(re.search(r"^(\d+) of \d+ displacements", report, re.M).group(1))
        found = len(list((folder / "PES-0").glob("*.com"))) - 1
        if found != promised:
            wrong.append(f"{promised} displacements promised, {found} computed")


def check_case(case, preparer, generator):
    wrong = []
    expected = case / "expected"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        make_folder(case, folder)
        before = tree_of(folder)
        arguments = (case / "args").read_text().splitlines()
        stdin = open(folder / (case / "stdin").read_text().strip(), "rb") if (case / "stdin").exists() else None
        done = run(preparer, arguments, folder, stdin)
        compare("standard output", done.stdout, (expected / "stdout").read_bytes(), wrong)
        compare("standard error", done.stderr, (expected / "stderr").read_bytes(), wrong)
        compare("status", b"%d\n" % done.returncode, (expected / "status").read_bytes(), wrong)
        written = tree_of(expected / "tree") if (expected / "tree").exists() else {}
        tree = tree_of(folder)
        for path in sorted({*tree, *before, *written}):
            compare(path, tree.get(path, b"(no file)\n"), {**before, **written}.get(path, b"(no file)\n"), wrong)
        if done.returncode == 0 and b"displacements to compute" in done.stderr:
            text = done.stdout or next(iter(written.values()))
            check_prepared(preparer, generator, arguments, text, done.stderr.decode(), wrong)
    return wrong


def main():
    preparer, generator, *names = sys.argv[1:]
    cases = sorted(path for path in (HERE / "cases").iterdir() if path.is_dir() and (not names or path.name in names))
    failed = 0
    for case in cases:
        wrong = check_case(case, str(pathlib.Path(preparer).resolve()), str(pathlib.Path(generator).resolve()))
        failed += bool(wrong)
        for line in wrong:
            print(f"{case.name}: {line}")
    print(f"{len(cases)} cases, {failed} failed")
    sys.exit(1 if failed or not cases else 0)


main()
