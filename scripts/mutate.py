#!/usr/bin/env python3
"""Puts single faults into the code and tells which of them no test notices.

A room is a folder of src or platform, or convert, json, render, tools or viewer; without one, all are taken. The faults
of all rooms are built into one copy of the working tree, in build/mutate, as choices that an environment variable makes
when the tests run: `a < b` becomes `(tw2_fault<17>() ? (a <= b) : (a < b))`. What cannot be chosen at run time (a template
argument, a case label) is left out. Then every test runs once alone and tells which faults it comes by, and each fault is
tried on the tests that come by it, the quick ones first.

The same SEED makes the same faults. LIST is a file with faults of one's own, or those that an earlier run has printed, a
line each: file:line `what stands there` -> `what comes there`. A room ends after MINUTES. A run that is stopped tells what
it knows by then; -c goes on: what was noticed before counts as noticed, what was not is tried again.
"""

import argparse
import collections
import concurrent.futures
import fcntl
import math
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from mutate_faults import FOLDERS, ROOT, choose_faults, read_list, without_overlap

COPY = ROOT / "build" / "mutate"
# So many marks has the file in which tests tell what they come by: see mutate.h.
MOST_FAULTS = 1 << 16


# --- Building ---------------------------------------------------------------------------------------------------------


def write(path, text):
    """Writes a file of the copy unless it is as it should be: what has not changed is not built again."""
    if not path.exists() or path.read_bytes() != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(text)


def copy_with(faults):
    """Makes the copy, with faults."""
    edits = collections.defaultdict(set)
    for fault in faults:
        edits[fault.source].update(fault.edits())
    changed = {}
    for source, pieces in edits.items():
        text = source.text
        for begin, end, new in sorted(pieces, reverse=True):
            text = text[:begin] + new + text[end:]
        changed[str(source.path)] = f'#include "{COPY}/scripts/mutate.h"\n#line 1\n{text}'.encode()
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=ROOT, stdout=subprocess.PIPE, text=True,
                            check=True).stdout.splitlines()
    files = {name for name in listed if (ROOT / name).is_file()}
    for name in files:
        write(COPY / name, changed.get(name) or (ROOT / name).read_bytes())
        shutil.copymode(ROOT / name, COPY / name)
    for path in COPY.rglob("*"):
        if path.is_file() and path.relative_to(COPY).parts[0] != "build" and str(path.relative_to(COPY)) not in files:
            path.unlink()


def find_refused(faults, log):
    """The faults for which something did not compile: those that a message names, or what stands before what it names."""
    refused = set()
    for block in re.split(r"^FAILED: ", log, flags=re.M)[1:]:
        lines = [line for line in block.splitlines() if "warning:" not in line]
        for named in ([line for line in lines if "error:" in line], lines):
            places = [(Path(path), int(line)) for path, line in re.findall(rf"(?:{COPY}|\.\./\.\.)/([\w./]+):(\d+)", "\n".join(named))]
            found = {fault for fault in faults for path, line in places
                     if fault.source.path == path and fault.line <= line <= fault.last_line}
            if found:
                break
        else:
            near = [(abs(fault.line - line), fault.number, fault) for fault in faults for path, line in places
                    if fault.source.path == path]
            found = {min(near)[2]} if near else set()
        refused |= found
    return refused


def build(faults):
    """Builds the copy with all faults that compile, and returns these."""
    environment = dict(os.environ)
    if shutil.which("ccache"):
        environment.setdefault("CMAKE_CXX_COMPILER_LAUNCHER", "ccache")
    copy_with(faults)
    subprocess.run(["cmake", "-S", COPY, "--preset", "release"], cwd=COPY, env=environment, stdout=subprocess.DEVNULL, check=True)
    # Headers that everything includes are put right on few objects first.
    for target in ("tw2_platform", "tw2_cli", "tw2_tests"):
        while True:
            made = subprocess.run(["cmake", "--build", COPY / "build" / "release", "--target", target, "--", "-k", "40"], cwd=COPY,
                                  env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
            (COPY / "build" / "log").write_text(made.stdout)
            if made.returncode == 0:
                break
            refused = find_refused(faults, made.stdout)
            if not refused:
                sys.exit(f"the copy cannot be built: see {COPY}/build/log")
            faults = [fault for fault in faults if fault not in refused or not fault.at_run_time]
            for fault in refused:
                fault.at_run_time = True
            print(f"{target}: {len(refused)} faults did not compile, {len(faults)} are left", file=sys.stderr, flush=True)
            copy_with(faults)
    return faults


# --- Running ----------------------------------------------------------------------------------------------------------


class Tests:
    """The tests of the copy, with the time that each takes and the faults that it comes by."""

    def __init__(self, pool):
        self.program = COPY / "build" / "release" / "tests" / "tw2_tests"
        self.running, self.stopped, self.lock = set(), False, threading.Lock()
        names, suite = [], ""
        listing = subprocess.run([self.program, "--gtest_list_tests"], stdout=subprocess.PIPE, text=True, check=True).stdout
        for line in listing.splitlines()[1:]:
            word = line.split("#")[0].rstrip()
            suite = suite if word.startswith(" ") else word
            names += [suite + word.strip()] if word.startswith(" ") else []
        self.seconds, self.passed, self.present, self.reached = {}, {}, set(), set()
        for name, seen, seconds in pool.map(self.measure, names):
            if seen is None:
                print(f"left out, it fails without a fault: {name}", flush=True)
                continue
            self.seconds[name] = seconds
            self.passed[name] = {number for number, mark in enumerate(seen) if mark == 3}
            self.present |= {number for number, mark in enumerate(seen) if mark}
            self.reached |= self.passed[name]

    def measure(self, name):
        with tempfile.NamedTemporaryFile() as file:
            file.truncate(MOST_FAULTS)
            begin = time.monotonic()
            status, _ = self.run([name], 600, {"TW2_FAULT_MARKS": file.name})
            seconds = time.monotonic() - begin
            return name, None if status else Path(file.name).read_bytes(), seconds

    def run(self, names, seconds, environment, *options):
        """Runs tests; returns the exit status and, with an option for it, what they print."""

        def limit():
            os.setsid()
            resource.setrlimit(resource.RLIMIT_CPU, (int(10 + 5 * seconds), int(11 + 5 * seconds)))
            resource.setrlimit(resource.RLIMIT_AS, (12 << 30, 12 << 30))
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryFile("w+", errors="replace") as output:
            flags = Path(folder) / "flags"
            flags.write_text("--gtest_filter=" + ":".join(names) + "\n")
            process = subprocess.Popen([self.program, f"--gtest_flagfile={flags}", *options], cwd=self.program.parent,
                                       env=os.environ | {"TMPDIR": folder} | environment, preexec_fn=limit, text=True,
                                       stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.DEVNULL)
            with self.lock:
                self.running.add(process.pid)
            try:
                if self.stopped:
                    raise subprocess.TimeoutExpired("", 0)
                status = process.wait(timeout=60 + 10 * seconds)
            except subprocess.TimeoutExpired:
                status = -signal.SIGKILL
            with self.lock:
                self.running.remove(process.pid)
            # Programs that a test has started end with it.
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
            output.seek(0)
            return status, output.read()

    def stop(self):
        with self.lock:
            self.stopped = True
            for process in self.running:
                os.killpg(process, signal.SIGKILL)

    def that_pass(self, fault):
        return [name for name, passed in self.passed.items() if fault.number in passed]

    def notice(self, fault):
        """Whether a test notices a fault: the quick ones first, until one fails."""
        names = self.that_pass(fault)
        for least, most in ((0, 0.2), (0.2, 2), (2, math.inf)):
            stage = [name for name in names if least <= self.seconds[name] < most]
            seconds = sum(self.seconds[name] for name in stage)
            if stage and self.run(stage, seconds, {"TW2_FAULT": str(fault.number)}, "--gtest_fail_fast", "--gtest_brief=1")[0]:
                return True
        return False

    def all_that_notice(self, fault):
        """Every test that notices a fault. What one that crashes has kept from running runs after it."""
        names, noticing = self.that_pass(fault), []
        while names:
            seconds = sum(self.seconds[name] for name in names)
            status, output = self.run(names, seconds, {"TW2_FAULT": str(fault.number)})
            begun = re.findall(r"^\[ RUN      \] (\S+)", output, flags=re.M)
            failed = set(re.findall(r"\[  FAILED  \] ([^\s,]+)[^\n]* \(\d+ ms\)", output))
            if status not in (0, 1):
                failed |= set(begun[-1:] or names)
            noticing += [name for name in names if name in failed]
            names = [name for name in names if name not in begun] if begun and status not in (0, 1) else []
        return noticing


def try_fault(tests, fault, end, matrix):
    """None when there was no time; else the tests that notice the fault, or true or false."""
    if fault.noticed:
        return True
    if tests.stopped or time.monotonic() > end:
        return None
    noticed = tests.all_that_notice(fault) if matrix else tests.notice(fault)
    return None if tests.stopped else noticed


def write_matrix(path, found):
    """For each fault the tests that notice it, then for each test how many faults only it notices."""
    alone = collections.Counter(names[0] for names in found.values() if len(names) == 1)
    every = sorted({name for names in found.values() for name in names})
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(f"{fault}: {' '.join(names) or 'nobody'}\n" for fault, names in found.items())
        file.writelines(f"{alone[name]:5} only by {name}\n" for name in sorted(every, key=lambda name: (alone[name], name)))


def tally(name, results):
    noticed = sum(map(bool, results))
    print(f"{name}: {noticed} of {len(results)} noticed" + (f" ({100 * noticed // len(results)} %)" if results else ""), flush=True)


def choose(arguments, rooms):
    """The faults to try, numbered, of which no two are in one place, and some more than asked for: not all will compile."""
    if arguments.list:
        listed = [fault for fault in read_list(arguments.list) if fault.room in rooms]
        chosen = without_overlap(listed, len(listed))
        for fault in set(listed) - set(chosen):
            print(f"in the place of another, for a list of its own: {fault}")
    else:
        count = arguments.count * 3 // 2 + 5
        chosen = [fault for room in rooms for fault in without_overlap(choose_faults(room, arguments.seed), count)]
    for number, fault in enumerate(chosen):
        fault.number = number
    return chosen


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-n", "--count", type=int, default=30, help="faults for each room (30)")
    parser.add_argument("-s", "--seed", default="1", help="other seeds choose other faults (1)")
    parser.add_argument("-l", "--list", help="try the faults in this file")
    parser.add_argument("-m", "--minutes", type=float, default=math.inf, help="time for each room")
    parser.add_argument("-c", "--go-on", action="store_true", help="take what earlier runs have noticed as noticed")
    parser.add_argument("-j", "--jobs", type=int, default=os.cpu_count(), help="faults that are tried at a time")
    parser.add_argument("--matrix", metavar="FILE", help="write which tests notice each fault")
    parser.add_argument("rooms", nargs="*", metavar="ROOM", help=" ".join(FOLDERS))
    arguments = parser.parse_args()
    for room in arguments.rooms:
        if room not in FOLDERS:
            parser.error(f"there is no room {room}, only {' '.join(FOLDERS)}")
    rooms = arguments.rooms or list(FOLDERS)
    (COPY / "build").mkdir(parents=True, exist_ok=True)
    lock = (COPY / "build" / "lock").open("w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit(f"another run works in {COPY}")

    chosen = choose(arguments, rooms)
    built = build(chosen)
    for fault in set(chosen) - set(built) if arguments.list else ():
        print(f"cannot be chosen at run time: {fault}")
    verdicts = COPY / "build" / "verdicts"
    known = set(verdicts.read_text().splitlines()) if arguments.go_on and verdicts.exists() else set()
    verdicts.write_text("".join(f"{line}\n" for line in known))
    for fault in built:
        fault.noticed = str(fault) in known and not arguments.matrix
    pool = concurrent.futures.ThreadPoolExecutor(arguments.jobs)
    tests = Tests(pool)

    # Being stopped, by a key or a time limit around this program, ends with what is known by then.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    results = {}
    try:
        for room in rooms:
            # What a compiler has left out or evaluated is not there to be chosen.
            there = [fault for fault in built if fault.room == room and
                     fault.number in (tests.reached if fault.at_run_time else tests.present)]
            there = there if arguments.list else there[: arguments.count]
            end = time.monotonic() + 60 * arguments.minutes
            for fault, result in zip(there, pool.map(lambda fault: try_fault(tests, fault, end, arguments.matrix), there)):
                if result is not None:
                    results[fault] = result
                    with verdicts.open("a") as file:
                        file.write(f"{fault}\n" if result else "")
                    if not result:
                        print(f"  {fault}{'' if fault.number in tests.reached else ' (no test comes by it)'}", flush=True)
            if there:
                tally(room, [result for fault, result in results.items() if fault.room == room])
    except KeyboardInterrupt:
        tests.stop()
        print("stopped; -c goes on")
    pool.shutdown()
    if arguments.matrix:
        write_matrix(arguments.matrix, results)
    tally("all", list(results.values()))


if __name__ == "__main__":
    main()
