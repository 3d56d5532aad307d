#!/usr/bin/env python3
"""Changes one comparison, connective or constant of src/ at a time and looks whether a test fails.

  scripts/mutations.py [--count N] [--seed S] [--workers N] [--again LOG] [FOLDER...]

Takes N (220) changes by chance from the FOLDERs (records model restore), the same for the same seed
and code, builds each in a copy of the project below build/mutations, and runs the tests of the
layers, then those of the programs, until one fails. Prints each change with what became of it, and
the shares at the end: "build" (a check at compile time holds it), "layers", "programs", "time" (the
tests do not end) or "survived". With --again, the changes that survived in the output LOG of an earlier
run are tried once more. The exit code is 0 unless the unchanged code fails.
"""
import argparse
import os
import queue
import random
import re
import shutil
import subprocess
import sys
import threading
from collections import Counter
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SWAPS = {" == ": " != ", " != ": " == ", " < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ",
         " && ": " || ", " || ": " && ", "true": "false", "false": "true"}
PLACE = re.compile(r"(?: (?:==|!=|<=|>=|<|>|&&|\|\|) )|\b(?:true|false)\b|(?<![\w.'])\d+(?![\w.'])")
# Nothing of these lines is run: comments, directives, what only the compiler reads.
SKIPPED = re.compile(r"^\s*(//|\*|/\*|#|template|using |static_assert|requires )|operator|\[\[nodiscard\]\] friend")
TEST_SECONDS = 240


def masked(line):
    """The line with texts and the comment behind it blanked, columns kept."""
    line = re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'', lambda m: "_" * len(m.group()), line)
    return re.sub(r"//.*", "", line)


def changes_of(path):
    for number, line in enumerate(path.read_text().splitlines()):
        if SKIPPED.search(line):
            continue
        for match in PLACE.finditer(masked(line)):
            old = match.group()
            new = SWAPS.get(old) or str(int(old) + 1)
            yield path.relative_to(ROOT), number, match.start(), old, new


def survivors_of(log):
    """The changes that an earlier run could not catch, as far as they still fit the code."""
    for line in Path(log).read_text().splitlines():
        match = re.match(r"survived +(\S+):(\d+):(\d+): (\S+) -> (\S+)$", line)
        if match is None:
            continue
        path, number, column = Path(match[1]), int(match[2]) - 1, int(match[3]) - 1
        old, new = (text if text.isalnum() else f" {text} " for text in (match[4], match[5]))
        if (ROOT / path).read_text().split("\n")[number][column:].startswith(old):
            yield path, number, column, old, new
        else:
            print(f"gone      {line.split(maxsplit=1)[1]}")


class Worker(threading.Thread):
    """Has a copy of the project and its build to itself."""

    def __init__(self, index, todo, done):
        super().__init__()
        self.place = ROOT / "build" / "mutations" / str(index)
        self.todo, self.done = todo, done

    def run_step(self, *command, seconds=None):
        environment = {"TMPDIR": "/dev/shm", **os.environ, "GTEST_BRIEF": "1", "GTEST_FAIL_FAST": "1"}
        with subprocess.Popen(command, cwd=self.place, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              env=environment, start_new_session=True) as process:
            try:
                return process.wait(seconds)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, 9)
                return None

    def prepare(self):
        shutil.rmtree(self.place, ignore_errors=True)
        shutil.copytree(ROOT, self.place, ignore=shutil.ignore_patterns("build", ".git"))
        return self.run_step("cmake", "-S.", "-Bbuild", "-GNinja", "-DCMAKE_BUILD_TYPE=Debug",
                             "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g0", "-DORX_BUILD_TESTS=ON")

    def outcome(self):
        # Faults of the system calls are looked for in the unchanged code.
        for kind, program, left_out in (("layers", "orx_tests", "DamagedDatabase.*"),
                                        ("programs", "orx_program_tests", "*FaultSample*:Load.*")):
            if self.run_step("cmake", "--build", "build", "--parallel", "1", "--target", program):
                return "build"
            code = self.run_step(f"build/bin/{program}", f"--gtest_filter=-{left_out}", seconds=TEST_SECONDS)
            if code is None:
                return "time"
            if code != 0:
                return kind
        return "survived"

    def run(self):
        if (outcome := self.outcome() if self.prepare() == 0 else "cmake") != "survived":
            self.done.put((None, f"the unchanged code does not pass: {outcome}"))
            return
        while True:
            try:
                change = self.todo.get_nowait()
            except queue.Empty:
                return
            path, number, column, old, new = change
            target = self.place / path
            original = target.read_text()
            lines = original.split("\n")
            lines[number] = lines[number][:column] + new + lines[number][column + len(old):]
            target.write_text("\n".join(lines))
            self.done.put((change, self.outcome()))
            target.write_text(original)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=220)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--again", metavar="LOG")
    parser.add_argument("folders", nargs="*", default=["records", "model", "restore"])
    options = parser.parse_args()

    if options.again:
        chosen = list(survivors_of(options.again))
    else:
        files = sorted(f for folder in options.folders for f in (ROOT / "src" / folder).rglob("*")
                       if f.suffix in (".h", ".cpp"))
        every = [change for file in files for change in changes_of(file)]
        chosen = random.Random(options.seed).sample(every, min(options.count, len(every)))
        print(f"{len(chosen)} of {len(every)} changes", flush=True)
    todo, done = queue.Queue(), queue.Queue()
    # File by file, and headers last: then the same files are built again and again.
    for change in sorted(chosen, key=lambda change: (change[0].suffix != ".cpp", change)):
        todo.put(change)
    workers = [Worker(index, todo, done) for index in range(options.workers)]
    for worker in workers:
        worker.start()
    counts = Counter()
    while counts.total() < len(chosen):
        change, outcome = done.get()
        if change is None:
            sys.exit(outcome)
        path, number, column, old, new = change
        counts[outcome] += 1
        print(f"{outcome:9} {path}:{number + 1}:{column + 1}: {old.strip()} -> {new.strip()}", flush=True)
    for outcome, count in counts.most_common():
        print(f"{count:4} {outcome}")
    caught = len(chosen) - counts["survived"]
    print(f"{caught} of {len(chosen)} caught, {100 * caught / len(chosen):.0f} %")


if __name__ == "__main__":
    main()
