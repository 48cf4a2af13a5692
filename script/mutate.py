#!/usr/bin/env python3
"""How strong the tests are: breaks the code of lib/ and tools/ in one place at a time and sees whether a test fails.

  script/mutate [--most N] [--seed S]... [--jobs N] [--without PROGRAM]... [PATH]...

Each mutant flips a comparison or a sign, changes a constant, swaps two operands or drops a statement. PATH is a file or a
folder below lib/ or tools/; without one all of both is taken. Each seed draws up to N mutants of its own. What does not
compile is not counted. Printed: each mutant that no test notices, with the reason where tests/mutants.txt gives one, and the
share that is noticed. PROGRAM is a program of tests that is left out, because it has nothing to do with PATH.

Every job has a copy of the tree in build/mutate, where only what a mutant changes is built again. The tests of the routine
itself run first, and the first failure ends the others. What passes them all meets the limits of work and the messages in the
documents. A test that takes ten times as long as with the whole program, and a minute, may have noticed the mutant, too, or the
machine was busy: such a mutant is tried once more in the end, alone, and counts as noticed if it takes as long again.

Broken code runs here, and tests name devices. As root all of it runs with a /dev, a temporary folder and process numbers of its
own, on file systems that are read only but for build/mutate: the script starts itself again in that way, and stops where it
cannot.
"""
import argparse
import filecmp
import os
import pathlib
import queue
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
PLACE = TOP / "build" / "mutate"
SCRATCH = PLACE / "scratch"
EXPLAINED = TOP / "tests" / "mutants.txt"
# The tests without a program of their own that look at the code, and what they start.
OTHER_TESTS = "documented_errors|work_limits|preparer_(cases|faults|messages|work)|assembler_(messages|faults|work)"
STARTED = ["displacement_generator", "displacement_preparer", "displacement_assembler", "work_routines"]

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


def enclose():
    """Starts this script again where broken code can harm nothing; comes back only there, or where it is not root."""
    if os.geteuid() != 0:
        return
    if sys.argv[-1] != "--enclosed":
        os.execvp("unshare", ["unshare", "--mount", "--propagation", "unchanged", "--pid", "--fork", "--mount-proc", "--kill-child",
                              sys.executable, __file__, *sys.argv[1:], "--enclosed"])
    sys.argv.pop()
    mounted = re.compile(r"^(?:\S+ ){4}(/(?!dev|proc|sys)\S*) ", re.MULTILINE)
    table = pathlib.Path("/proc/self/mountinfo")
    if "/" not in mounted.findall(table.read_text()):
        # Only what is mounted can be private and read only: where a folder is the root, a mount of it takes its place. The mount
        # is made in this /proc, which is private already.
        subprocess.run(["mount", "--rbind", "/", "/proc/tty"], check=True)
        here = pathlib.Path.cwd()
        os.chroot("/proc/tty")
        os.chdir(here)
    SCRATCH.mkdir(parents=True, exist_ok=True)
    devices = [("null", 3), ("zero", 5), ("full", 7), ("random", 8), ("urandom", 9)]
    commands = [["mount", "--make-rprivate", "/"], ["mount", "-t", "tmpfs", "none", "/dev"], ["mkdir", "-m", "1777", "/dev/shm"],
                *(["mknod", "-m", "666", f"/dev/{name}", "c", "1", str(number)] for name, number in devices),
                ["ln", "-s", "/proc/self/fd", "/dev/fd"],
                *(["ln", "-s", f"/proc/self/fd/{number}", f"/dev/{name}"]
                  for number, name in enumerate(["stdin", "stdout", "stderr"])),
                ["mount", "--bind", PLACE, PLACE],
                *(["mount", "-o", "remount,bind,ro", place] for place in mounted.findall(table.read_text())),
                ["mount", "-t", "tmpfs", "-o", "size=2g,mode=1777", "none", SCRATCH]]
    for command in commands:
        subprocess.run(command, check=True)


def mutants_of(path):
    lines = path.read_text().split("\n")
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
                        yield path, number, line, changed
        if STATEMENT.match(line):
            yield path, number, line, "    ;"


def explanations():
    """(path, line, changed line) -> why no test can notice the change. Three lines and a reason, parted by blank lines."""
    result = {}
    for entry in re.split(r"\n\s*\n", EXPLAINED.read_text()) if EXPLAINED.exists() else []:
        found = re.fullmatch(r"(\S+)\n  - (.*)\n  \+ (.*)\n((?:    .*\n?)+)", entry.strip("\n"))
        if found:
            result[found.group(1, 2, 3)] = " ".join(found[4].split())
    return result


def run(command, said=subprocess.DEVNULL, timeout=None, **more):
    """Result: the status. After the time nothing that the command has started runs on."""
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))

    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=said, stderr=subprocess.STDOUT, preexec_fn=limit,
                          start_new_session=True, **more) as process:
        try:
            return process.wait(timeout)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            raise


def test_programs():
    """The programs that the tests of the tree are in, each with the sources that its list names."""
    result = {}
    for listing in sorted((TOP / "tests").rglob("CMakeLists.txt")):
        for name, sources in re.findall(r"^add_tests\(\s*(\w+)\s([^)]*)\)", listing.read_text(), re.MULTILINE):
            result[name] = set(re.findall(r"(\w+)\.cpp", sources))
    return result


class workshop:
    """A copy of the tree and its build."""

    def __init__(self, number, without):
        self.tree = PLACE / str(number) / "tree"
        self.build = PLACE / str(number) / "build"
        self.scratch = SCRATCH / str(number)
        self.said = PLACE / str(number) / "said"
        self.programs = {name: sources for name, sources in test_programs().items() if name not in without}
        self.seconds = dict.fromkeys(self.programs, 60.0)

    def prepare(self):
        """Result: whether it can be built and its tests pass."""
        self.scratch.mkdir(parents=True, exist_ok=True)
        self.copy_tree()
        flags = "-fuse-ld=gold" if shutil.which("ld.gold") else ""
        run(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
             f"-DCMAKE_EXE_LINKER_FLAGS={flags}", "-DDISPLACEMENT_GENERATOR_TESTS=ON"])
        for program in self.programs:
            if not self.builds(program):
                print(f"script/mutate: {program} does not build; see cmake --build {self.build} --target {program}", file=sys.stderr)
                return False
            start = time.monotonic()
            if self.fails(program):
                print(f"script/mutate: {program} fails before anything is changed; its output is in {self.said}", file=sys.stderr)
                return False
            self.seconds[program] = time.monotonic() - start
        if not self.builds("all") or self.other_tests_fail():
            print(f"script/mutate: {OTHER_TESTS} fails before anything is changed; see {self.said}", file=sys.stderr)
            return False
        return True

    def copy_tree(self):
        """Only what differs, so that the last run's build serves again."""
        names = {str(path.relative_to(TOP)) for top in TOP.iterdir() if top.name not in (".git", "build")
                 for path in [top, *top.rglob("*")] if path.is_file()}
        for old in [path for path in self.tree.rglob("*") if path.is_file()]:
            if str(old.relative_to(self.tree)) not in names:
                old.unlink()
        for name in names:
            here, there = TOP / name, self.tree / name
            if not there.exists() or not filecmp.cmp(here, there, shallow=False):
                there.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(here, there)
                shutil.copymode(here, there)

    def builds(self, *targets):
        return run(["cmake", "--build", self.build, "--target", *targets]) == 0

    def runs(self, command, timeout):
        """Result: a false value, "failure" or "time"."""
        try:
            with open(self.said, "wb") as said:
                code = run(command, said, timeout=timeout, env=dict(os.environ, TMPDIR=str(self.scratch)), cwd=self.scratch)
        except subprocess.TimeoutExpired:
            return "time"
        return "failure" if code != 0 else ""

    def fails(self, program, only="*"):
        return self.runs([self.build / "bin" / program, "--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={only}"],
                         60 + 10 * self.seconds[program])

    def other_tests_fail(self):
        return self.runs(["ctest", "--test-dir", self.build, "--output-on-failure", "-R", f"^({OTHER_TESTS})$"], 1200)

    def notice(self, path):
        """Result: as of `runs`; None where the mutant does not compile."""
        own = [name for name, sources in self.programs.items() if path.stem in sources]
        own = own or [name for name in self.programs if name.endswith(path.parent.name)]
        others = sorted(set(self.programs) - set(own), key=self.seconds.get)
        for program in own + others:
            if not self.builds(program):
                return None
            if seen := (program in own and self.fails(program, f"*{path.stem}*")) or self.fails(program):
                return seen
        return self.other_tests_fail() if self.builds(*STARTED) else None

    def try_out(self, path, number, changed):
        place = self.tree / path.relative_to(TOP)
        original = place.read_text()
        lines = original.split("\n")
        lines[number] = changed
        try:
            place.write_text("\n".join(lines))
            return self.notice(path)
        finally:
            place.write_text(original)


class tally:
    def __init__(self, most):
        self.lock = threading.Lock()
        self.left = most
        self.noticed = self.by_time = self.survived = self.explained = 0
        self.reasons = explanations()
        self.late = []

    def begin(self):
        with self.lock:
            if self.left == 0:
                return False
            self.left -= 1
            return True

    def end(self, result, path, number, line, changed):
        with self.lock:
            if result is None:
                self.left += 1
            elif result:
                self.noticed += 1
                self.by_time += result == "time"
                if result == "time":
                    print(f"noticed by its time {path.relative_to(TOP)}:{number + 1}\n  - {line.strip()}\n  + {changed.strip()}",
                          flush=True)
            else:
                name, line, changed = str(path.relative_to(TOP)), line.strip(), changed.strip()
                reason = self.reasons.get((name, line, changed))
                self.explained += reason is not None
                self.survived += reason is None
                print(f"{'survives' if reason else 'survived'} {name}:{number + 1}\n  - {line}\n  + {changed}", flush=True)
                if reason:
                    print(f"    {reason}", flush=True)
            counted = self.noticed + self.survived + self.explained
            if result is not None and counted % 10 == 0:
                print(f"{self.noticed} of {counted} noticed so far", file=sys.stderr)


def work(shop, mutants, result):
    while result.begin():
        try:
            path, number, line, changed = mutants.get_nowait()
        except queue.Empty:
            return
        seen = shop.try_out(path, number, changed)
        if seen == "time":
            result.late.append((path, number, line, changed))
        else:
            result.end(seen, path, number, line, changed)


def drawn(paths, seeds):
    """All mutants in the order of each seed, none twice."""
    sources = sorted({source for path in paths for source in ([path] if path.is_file() else path.rglob("*.?pp"))})
    every = [mutant for source in sources for mutant in mutants_of(source)]
    orders = []
    for seed in seeds:
        order = every.copy()
        random.Random(seed).shuffle(order)
        orders.append(order)
    return list(dict.fromkeys(mutant for turn in zip(*orders) for mutant in turn))


def main():
    enclose()
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--most", type=int, default=200, help="mutants for each seed")
    parser.add_argument("--seed", type=int, action="append")
    parser.add_argument("--jobs", type=int, default=min(2, os.cpu_count() or 1))
    parser.add_argument("--without", action="append", default=[], metavar="PROGRAM")
    parser.add_argument("paths", nargs="*", type=pathlib.Path, metavar="PATH")
    options = parser.parse_args()
    paths = [path.resolve() for path in options.paths] or [TOP / "lib", TOP / "tools"]
    seeds = options.seed or [1]
    for path in paths:
        if not path.exists() or not path.is_relative_to(TOP):
            sys.exit(f"script/mutate: {path}: expected a file or a folder of the tree")
    mutants = drawn(paths, seeds)
    waiting = queue.Queue()
    for mutant in mutants:
        waiting.put(mutant)

    os.environ.pop("CMAKE_CXX_COMPILER_LAUNCHER", None)  # what is built here is built once
    shops = [workshop(number, options.without) for number in range(1, options.jobs + 1)]
    ready = []
    threads = [threading.Thread(target=lambda shop=shop: ready.append(shop.prepare())) for shop in shops]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if not all(ready) or len(ready) != len(shops):
        sys.exit(1)

    result = tally(options.most * len(seeds))
    threads = [threading.Thread(target=work, args=(shop, waiting, result), daemon=True) for shop in shops]
    for thread in threads:
        thread.start()
    try:
        for thread in threads:
            thread.join()
        for path, number, line, changed in result.late:
            result.end(shops[0].try_out(path, number, changed), path, number, line, changed)
    except KeyboardInterrupt:
        print("interrupted")
    counted = result.noticed + result.survived + result.explained
    print(f"{result.noticed} of {counted} mutants noticed ({100 * result.noticed / max(counted, 1):.1f} %), {result.by_time} by their "
          f"time; {result.explained} survive for a reason, {result.survived} without; {len(mutants)} could be made")
    sys.exit(1 if result.survived else 0)


main()
