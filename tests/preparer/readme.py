#!/usr/bin/env python3
"""Runs the displacement_preparer commands that README.md shows, and compares what they print: readme.py PREPARER"""
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

TOP = pathlib.Path(__file__).resolve().parents[2]
# script/run-all makes this one, and shows what the preparer prints.
MADE_ELSEWHERE = "tilted.gjf"


def shown_commands(document):
    """Each command of a block with the text after it, up to the next command or the end of the block."""
    for block in re.findall(r"^```\n(.*?)^```", document, re.DOTALL | re.MULTILINE):
        for command, output in re.findall(r"^\$ (displacement_preparer .*)\n((?:(?!\$ ).*\n)*)", block, re.MULTILINE):
            if MADE_ELSEWHERE not in command:
                yield shlex.split(command)[1:], output


def main():
    preparer = str(pathlib.Path(sys.argv[1]).resolve())
    wrong, sources = [], set()
    with tempfile.TemporaryDirectory() as name:
        shutil.copytree(TOP / "examples", pathlib.Path(name) / "examples")
        folder = pathlib.Path(name) / "examples" / "mine"
        folder.mkdir()
        for arguments, output in shown_commands((TOP / "README.md").read_text()):
            done = subprocess.run([preparer, *arguments], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)
            sources.add(arguments[-1])
            if (done.returncode, done.stdout, done.stderr) != (0, "", output):
                wrong.append(f"{arguments}: status {done.returncode}, expected\n{output}found\n{done.stdout}{done.stderr}")
    expected = {"../benzene/mol.gjf", "../askew.xyz"}
    if sources != expected:
        wrong.append(f"expected commands for {sorted(expected)}, found {sorted(sources)}")
    print("\n".join(wrong) or f"{len(sources)} commands print what README.md shows")
    sys.exit(1 if wrong else 0)


main()
