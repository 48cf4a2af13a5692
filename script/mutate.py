#!/usr/bin/env python3
"""How strong the tests are: breaks the code of lib/ and tools/ in one place at a time and sees whether a test fails.

  script/mutate [--most N] [--seed S] [--only PATH]

Each mutant flips a comparison or a sign, changes a constant, swaps two operands or drops a statement. The tree is copied to
build/mutate first; what does not compile is not counted. Printed: each mutant that no test catches, and the share caught.
Broken code runs here, and tests name devices: as root use a container or a /dev of its own.
"""
import argparse
import pathlib
import random
import re
import shutil
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
TREE = TOP / "build" / "mutate" / "tree"
BUILD = TOP / "build" / "mutate" / "build"
TESTS = ["unit_tests_lib", "unit_tests_symmetry", "unit_tests_tools", "case_tests", "fault_tests"]

# What is looked for in a line, and what it becomes. Operators stand between blanks, so templates and pointers are left alone.
RULES = [
    (r" < ", [" <= ", " >= "]), (r" <= ", [" < ", " > "]), (r" > ", [" >= ", " <= "]), (r" >= ", [" > ", " < "]),
    (r" == ", [" != "]), (r" != ", [" == "]), (r" && ", [" || "]), (r" \|\| ", [" && "]),
    (r" \+ ", [" - "]), (r" - ", [" + "]), (r" \* ", [" / "]), (r" / ", [" * "]), (r" % ", [" / "]),
    (r"(?<![\w.\"'])(\d+)(?![\w.\"'])", [lambda m: str(int(m[1]) + 1), lambda m: str(max(int(m[1]) - 1, 0))]),
    (r"\btrue\b", ["false"]), (r"\bfalse\b", ["true"]), (r"!(?=[\w(])", [""]),
    (r"\+\+(?=\w)", ["--"]), (r" \+= ", [" -= "]), (r" -= ", [" += "]), (r" \|= ", [" &= "]),
    (r"\b(\w+) - (\w+)\b", [lambda m: f"{m[2]} - {m[1]}"]),
]
STATEMENT = re.compile(r"^\s+(?!return|throw|const|constexpr|static|auto|using|break|case|struct|enum|class|friend|extern|public|private"
                       r"|int |double |float |bool |char |long |std::\S+ \w|base::\S+ \w|unsigned |mode_t )[\w:*(].*;\s*(//.*)?$")


def mutants_of(path):
    text = path.read_text()
    lines = text.split("\n")
    for number, line in enumerate(lines):
        code = line.split("//")[0].rstrip()
        if not code.strip() or code.lstrip().startswith(("#", "*", "template", "namespace", "static_assert")):
            continue
        quoted = [(m.start(), m.end()) for m in re.finditer(r'"(?:\\.|[^"\\])*"', code)]
        for pattern, becomes in RULES:
            for match in re.finditer(pattern, code):
                if any(a < match.start() < b for a, b in quoted):
                    continue
                for new in becomes:
                    put = new(match) if callable(new) else new
                    changed = line[:match.start()] + put + line[match.end():]
                    if changed != line:
                        yield number, line, changed
        if STATEMENT.match(line):
            yield number, line, "    ;"


def run(command, **more):
    return subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **more).returncode


def builds():
    return run(["cmake", "--build", BUILD, "--target", *TESTS]) == 0


def is_caught():
    for test in TESTS:
        try:
            if run([BUILD / "bin" / test, "--gtest_brief=1", "--gtest_fail_fast"], timeout=60) != 0:
                return True
        except subprocess.TimeoutExpired:
            return True
    return False


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--most", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="")
    options = parser.parse_args()

    shutil.rmtree(TOP / "build" / "mutate", ignore_errors=True)
    shutil.copytree(TOP, TREE, ignore=shutil.ignore_patterns("build", ".git"))
    run(["cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-O1",
         "-DDISPLACEMENT_GENERATOR_TESTS=ON"])
    if not builds() or is_caught():
        sys.exit("script/mutate: the tests do not pass before anything is changed")

    sources = sorted([*TREE.glob("lib/*/*.?pp"), *TREE.glob("tools/*/*.?pp")])
    mutants = [(path, *mutant) for path in sources if options.only in str(path.relative_to(TREE))
               for mutant in mutants_of(path)]
    random.Random(options.seed).shuffle(mutants)
    counted = caught = 0
    try:
        for path, number, line, changed in mutants:
            if counted >= options.most:
                break
            original = path.read_text()
            lines = original.split("\n")
            lines[number] = changed
            path.write_text("\n".join(lines))
            if builds():
                is_seen = is_caught()
                counted += 1
                caught += is_seen
                if not is_seen:
                    print(f"survived {path.relative_to(TREE)}:{number + 1}\n  - {line.strip()}\n  + {changed.strip()}", flush=True)
            path.write_text(original)
    except KeyboardInterrupt:
        print("interrupted")
    print(f"{caught} of {counted} mutants caught ({100 * caught / max(counted, 1):.1f} %), of {len(mutants)} that could be made")


main()
