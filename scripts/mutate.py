#!/usr/bin/env python3
"""Puts single faults into a copy of the code and runs the tests on each; started by mutate.sh, which makes the copy."""

import argparse
import hashlib
import json
import math
import os
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

LIBRARY_ROOMS = ["core", "io", "keyframe", "light", "lod", "material", "motion", "object", "skin"]
PLATFORM_ROOMS = ["image", "math", "runtime", "scene"]
OTHER_ROOMS = ["convert", "json", "render", "tools", "viewer"]
ROOMS = LIBRARY_ROOMS + PLATFORM_ROOMS + OTHER_ROOMS

# More objects than these are not compiled for a fault in a header: then only the room and its tests see it.
MANY_OBJECTS = 10


# What only saves time: a fault there is none that a test of results could notice.
NO_EFFECT = re.compile(r"\breserve\(|[pP]refetch|\bcapacity\(\)")


def folder_of(room):
    return ("src/" if room in LIBRARY_ROOMS else "platform/" if room in PLATFORM_ROOMS else "") + room


def tests_of(room):
    return "tests/" + ("platform/" if room in PLATFORM_ROOMS else "") + room


# --- Faults: what a line may become -----------------------------------------------------------------------------------


def blank_out(text):
    """The text with comments, strings and preprocessor lines replaced by blanks; every character keeps its place."""
    pattern = r'//[^\n]*|/\*.*?\*/|R"\((.*?)\)"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\'|^[ \t]*#(?:\\\n|[^\n])*'
    return re.sub(pattern, lambda match: re.sub(r"[^\n]", " ", match[0]), text, flags=re.S | re.M)


def replace_each(pattern, replacement):
    """An operator that replaces one match of a pattern."""

    def find(line, _):
        for match in re.finditer(pattern, line):
            new = replacement(match) if callable(replacement) else replacement[match[0]]
            yield match.start(), match.end(), new

    return find


def find_condition(line, _):
    for match in re.finditer(r"\b(?:if|while) \(", line):
        end = find_closing(line, match.end())
        if end and " = " not in line[match.end() : end] and ";" not in line[match.end() : end]:
            yield match.end(), end, f"!({line[match.end():end]})"


def find_closing(line, begin):
    depth = 1
    for at in range(begin, len(line)):
        depth += line[at] in "([{"
        depth -= line[at] in ")]}"
        if depth == 0:
            return at
    return None


def find_statement(line, before):
    """A whole statement on a line of its own that does something: a call, an assignment, a jump."""
    text = line.strip()
    if not re.search(r"[;{}:)]\s*$", before) or not text.endswith(";"):
        return
    jump = text in ("return;", "break;", "continue;")
    changes = re.match(r"(?:\+\+|--|\*|::)?[\w:.>\[\]()-]*\w[\])]*(?: [-+*/|&^]?= |\(|\+\+;|--;|<.*>\()", text)
    if jump or (changes and not re.match(r"(?:return|throw|using|static_assert|delete|case|default|TEST)\b", text)):
        begin = len(line) - len(line.lstrip())
        yield begin, len(line.rstrip()), ";"


def find_arguments(line, _):
    for match in re.finditer(r"[\w\])>]\(", line):
        end = find_closing(line, match.end())
        if not end:
            continue
        parts, begin, depth = [], match.end(), 0
        for at in range(match.end(), end + 1):
            depth += line[at] in "([{<" and line[at - 1 : at + 2] != " < "
            depth -= line[at] in ")]}>" and line[at - 1 : at + 1] != "->" and line[at - 1 : at + 2] != " > "
            if at == end or (line[at] == "," and depth == 0):
                parts.append((begin, at))
                begin = at + 1
        for first, second in zip(parts, parts[1:]):
            one, two = (line[a:b].strip() for a, b in (first, second))
            if one and two and one != two:
                yield first[0], second[1], f"{two}, {one}" if line[first[0]] != " " else f" {two}, {one}"


def change_number(match):
    text = match[0]
    if re.fullmatch(r"\d+[uU]?", text):
        return re.sub(r"\d+", lambda digits: str(int(digits[0]) + 1), text)
    return f"({text} + {re.sub(r'[0-9.]+', '1.0', text, count=1)})"


COMPARE = {" == ": " != ", " != ": " == ", " < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > "}
REVERSE = {" < ": " >= ", " <= ": " > ", " > ": " <= ", " >= ": " < "}
CALCULATE = {" + ": " - ", " - ": " + ", " * ": " / ", " / ": " * ", " += ": " -= ", " -= ": " += ", " *= ": " /= ",
             "++": "--", " % ": " / ", " << ": " >> ", " & ": " | ", " | ": " & "}
OPERATORS = {
    "comparison": replace_each("|".join(COMPARE), COMPARE),
    "reversed": replace_each("|".join(REVERSE), REVERSE),
    "calculation": replace_each("|".join(map(re.escape, CALCULATE)), CALCULATE),
    "sign": replace_each(r"(?<=[(,=?:] )-(?=[\w(])|(?<=[(\[{])-(?=[\w(])|(?<=return )-(?=[\w(])", lambda match: ""),
    "logic": replace_each(r" && | \|\| ", {" && ": " || ", " || ": " && "}),
    "truth": replace_each(r"\btrue\b|\bfalse\b", {"true": "false", "false": "true"}),
    "constant": replace_each(r"(?<![\w.])\d+(?:\.\d+f?|[uU])?(?![\w.'])", change_number),
    "off by one": replace_each(r" [-+] 1u?(?![\w.'])", lambda match: ""),
    "condition": find_condition,
    "statement": find_statement,
    "arguments": find_arguments,
}


class Fault:
    def __init__(self, path, number, old, new):
        self.path, self.number, self.old, self.new = path, number, old, new

    def __str__(self):
        return f"{self.path}:{self.number} `{self.old.strip()}` -> `{self.new.strip()}`"


def find_faults(root, room):
    """All faults of a room, by operator."""
    faults = {name: [] for name in OPERATORS}
    for path in sorted((root / folder_of(room)).rglob("*")):
        if path.suffix not in (".cpp", ".h"):
            continue
        text = path.read_text()
        lines, before = text.split("\n"), ";"
        for number, blank in enumerate(blank_out(text).split("\n"), 1):
            if re.match(r"\s*(?:static_assert|template|using|friend|extern|namespace)\b", blank) or NO_EFFECT.search(blank):
                continue
            line = lines[number - 1]
            for name, operator in OPERATORS.items():
                for begin, end, new in operator(blank, before):
                    # What was blanked out within a replaced piece would be lost.
                    if blank[begin:end] == line[begin:end]:
                        changed = line[:begin] + new + line[end:]
                        faults[name].append(Fault(path.relative_to(root), number, line, changed))
            if blank.strip():
                before = blank
    return faults


def choose_faults(root, room, seed):
    """The faults of a room in a random order in which every operator comes as often; the same one for the same seed."""
    chance = random.Random(f"{seed} {room}")
    faults = find_faults(root, room)
    for found in faults.values():
        chance.shuffle(found)
    while any(faults.values()):
        names = [name for name in faults if faults[name]]
        chance.shuffle(names)
        for name in names:
            yield faults[name].pop()


def read_list(root, path):
    """The faults of a list, each with the nearest line that has what it replaces."""
    for entry in Path(path).read_text().splitlines():
        match = re.match(r"[-\s]*(\S+?):(\d+):? `(.+?)` -> `(.*?)`", entry)
        if not match:
            continue
        lines = (root / match[1]).read_text().split("\n") if (root / match[1]).exists() else []
        places = [at for at, line in enumerate(lines, 1) if line.strip() == match[3].strip()]
        places = places or [at for at, line in enumerate(lines, 1) if match[3] in line]
        if not places:
            print(f"gone: {entry}", flush=True)
            continue
        at = min(places, key=lambda place: abs(place - int(match[2])))
        yield Fault(Path(match[1]), at, lines[at - 1], lines[at - 1].replace(match[3], match[4], 1))


def room_of(path):
    return path.parts[1] if path.parts[0] in ("src", "platform") else path.parts[0]


# --- Building: only what a fault touches ------------------------------------------------------------------------------


class Build:
    """The built copy: compiles sources into it, links, and puts back what was there."""

    def __init__(self, root):
        self.root = root
        self.folder = root / "build" / "release"
        self.kept = []
        self.commands = {}
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            output = words[words.index("-o") + 1]
            # Faults are compiled fast, and what a fault makes a compiler warn of is a fault all the same.
            words = [word for word in words if word not in ("ccache", "-Werror") and not word.startswith("-O")]
            self.commands[output] = words + ["-O1", "-w"]
        self.sources = {output: Path(words[words.index("-c") + 1]).relative_to(root)
                        for output, words in self.commands.items() if str(root) in words[words.index("-c") + 1]}
        self.links = self.read_links()
        self.users = self.read_users()
        self.baseline = {}

    def run(self, command, **options):
        return subprocess.run(command, cwd=self.folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False,
                              **options).returncode == 0

    def ask_ninja(self, *arguments):
        return subprocess.run(["ninja", "-t", *arguments], cwd=self.folder, capture_output=True, text=True,
                              check=True).stdout.splitlines()

    def read_links(self):
        """Of everything that is linked for the tests, in order: output, inputs, command."""
        links = []
        for line in self.ask_ninja("commands", "tw2_tests"):
            archive = re.search(r"ar qc (\S+) (.*?) && ", line)
            linked = re.search(r"&& (\S+ [^&]* -o (\S+) [^&]*?) &&", line)
            if archive:
                links.append((archive[1], set(archive[2].split()), line))
            elif linked and " -c " not in line:
                command = linked[1] if "-fuse-ld" in linked[1] or not shutil.which("ld.gold") else linked[1] + " -fuse-ld=gold"
                links.append((linked[2], set(linked[1].split()), command))
        return links

    def read_users(self):
        """The objects that each file of the project goes into."""
        users, output = {}, None
        for line in self.ask_ninja("deps"):
            if line and not line.startswith(" "):
                output = line.split(":")[0]
            elif line.strip() and output in self.sources:
                path = Path(os.path.normpath(self.folder / line.strip()))
                if path.is_relative_to(self.root):
                    users.setdefault(path.relative_to(self.root), []).append(output)
        return users

    def objects_for(self, path, room):
        linked = set().union(*(inputs for _, inputs, _ in self.links))
        objects = [output for output in self.users.get(path, []) if output in linked]
        if len(objects) > MANY_OBJECTS:
            near = (folder_of(room) + "/", tests_of(room) + "/")
            objects = [output for output in objects if str(self.sources[output]).startswith(near)]
        return objects

    def keep(self, output):
        whole = self.folder / (output + ".whole")
        if not whole.exists():
            shutil.copy2(self.folder / output, whole)
            self.kept.append(output)

    def put_back(self):
        for output in self.kept:
            os.replace(self.folder / (output + ".whole"), self.folder / output)
        self.kept = []

    def digest(self, output):
        return hashlib.sha256((self.folder / output).read_bytes()).digest()

    def compile(self, output):
        # Objects that are not for a shared library keep code that nobody calls; that does not matter here.
        return self.run(self.commands[output], timeout=600)

    def measure_baseline(self, objects):
        """Compiles objects as faults are compiled, to tell which faults change nothing."""
        for output in objects:
            if output not in self.baseline:
                self.keep(output)
                if not self.compile(output):
                    sys.exit(f"{output} cannot be compiled without a fault")
                self.baseline[output] = self.digest(output)

    def make(self, fault, room):
        """Builds everything with a fault; None if it does not compile or changes nothing."""
        objects = self.objects_for(fault.path, room)
        self.measure_baseline(objects)
        place = self.root / fault.path
        text = place.read_text()
        times = place.stat()
        lines = text.split("\n")
        lines[fault.number - 1] = fault.new
        changed = set()
        try:
            place.write_text("\n".join(lines))
            for output in objects:
                self.keep(output)
                if not self.compile(output):
                    return None
                if self.digest(output) != self.baseline[output]:
                    changed.add(output)
        finally:
            place.write_text(text)
            os.utime(place, ns=(times.st_atime_ns, times.st_mtime_ns))
        return self.link(changed) if changed else None

    def link(self, changed):
        """Links what the changed objects go into. A program need not be linked again for a shared library."""
        changed = set(changed)
        for output, inputs, command in self.links:
            if inputs & changed:
                self.keep(output)
                # Of the functions of a header the linker takes those of the first object.
                first = [] if output.endswith(".a") else [word for word in inputs & changed if word.endswith(".o")]
                compiler, *others = command.split(" ")
                command = " ".join([compiler, *first, *(word for word in others if word not in first)])
                if not self.run(command, shell=True, timeout=600):
                    return None
                if ".so" not in output:
                    changed.add(output)
        return True


# --- Running ----------------------------------------------------------------------------------------------------------


class Tests:
    """The tests of the copy: those of a room first, then the others."""

    def __init__(self, build):
        self.build = build
        self.program = build.folder / "tests" / "tw2_tests"
        self.suites = {}
        for path in (build.root / "tests").rglob("*.cpp"):
            names = re.findall(r"^(?:TYPED_)?TEST(?:_F|_P|_SUITE)?\((\w+),", path.read_text(), flags=re.M)
            self.suites.setdefault(str(path.relative_to(build.root).parent), set()).update(names)
        self.broken = []
        self.seconds = self.measure()

    def suites_of(self, *folders):
        return set().union(*(self.suites[folder] for folder in self.suites if folder.startswith(folders)))

    def stages_of(self, room):
        """Suites in the order in which they are run. The commands' tests are slow: most rooms do without."""
        own = self.suites_of(tests_of(room))
        drawn = self.suites_of("tests/convert", "tests/render", "tests/viewer") - own
        commands = self.suites_of("tests/tools") - own
        late = drawn | commands if room in ("convert", "json", "tools", "viewer") else drawn
        return [stage for stage in (own, set(self.seconds) - own - drawn - commands, late) if stage]

    def start(self, arguments, prepare=None):
        return subprocess.Popen([self.program, *arguments], cwd=self.build.folder / "tests", stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, preexec_fn=prepare)

    def run(self, suites):
        """Runs suites until the first test fails. True if all passed."""
        seconds = sum(self.seconds[suite] for suite in suites)
        cpu_seconds, wall_seconds = int(10 + 5 * seconds), 60 + 10 * seconds
        which = ":".join(f"{name}.*:*/{name}.*:{name}/*" for name in sorted(suites)) + "-" + ":".join(self.broken)

        def limit():
            os.setsid()
            resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 1))
            resource.setrlimit(resource.RLIMIT_AS, (12 << 30, 12 << 30))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        process = self.start([f"--gtest_filter={which}", "--gtest_fail_fast", "--gtest_brief=1"], limit)
        try:
            return process.wait(timeout=wall_seconds) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()

    def measure(self):
        """Times every suite without a fault. Tests that fail then say nothing about faults and are left out."""
        report = self.build.folder / "tests.json"
        newest = max((self.build.folder / output).stat().st_mtime for output, _, _ in self.build.links)
        if not report.exists() or report.stat().st_mtime < newest:
            report.unlink(missing_ok=True)
            self.start([f"--gtest_output=json:{report}"]).wait()
            if not report.exists():
                sys.exit("the tests do not come to their end without a fault")
        seconds = {name: 0.0 for names in self.suites.values() for name in names}
        for suite in json.loads(report.read_text())["testsuites"]:
            parts = [part for part in suite["name"].split("/") if part in seconds]
            if parts:
                seconds[parts[0]] += float(suite["time"].rstrip("s"))
            for test in suite["testsuite"]:
                if "failures" in test:
                    name = f"{suite['name']}.{test['name']}"
                    print(f"left out, it fails without a fault: {name}", flush=True)
                    self.broken.append(name)
        return seconds

    def notice(self, room):
        return not all(self.run(suites) for suites in self.stages_of(room))


class Verdicts:
    """What has come of each fault, kept from one run to the next."""

    def __init__(self, path, go_on):
        self.path = path
        self.known = {}
        if go_on and path.exists():
            for line in path.read_text().splitlines():
                verdict, _, fault = line.partition(" ")
                self.known[fault] = verdict
        elif not go_on:
            path.unlink(missing_ok=True)

    def find(self, fault):
        """Faults that nobody noticed are tried again: the tests may have become better."""
        verdict = self.known.get(str(fault))
        return None if verdict == "unnoticed" else verdict

    def add(self, fault, verdict):
        with self.path.open("a") as file:
            file.write(f"{verdict} {fault}\n")


class Tally:
    """The faults of a room that were tried."""

    def __init__(self, room):
        self.room, self.tried, self.unnoticed = room, 0, 0

    def add(self, verdict):
        self.tried += verdict != "void"
        self.unnoticed += verdict == "unnoticed"

    def __str__(self):
        noticed = self.tried - self.unnoticed
        return f"{self.room}: {noticed} of {self.tried} noticed" + (f" ({100 * noticed // self.tried} %)" if self.tried else "")


def judge(build, tests, fault, room):
    try:
        if not build.make(fault, room):
            return "void"
        return "noticed" if tests.notice(room) else "unnoticed"
    except subprocess.TimeoutExpired:
        return "void"
    finally:
        build.put_back()


def try_room(build, tests, verdicts, tally, faults, count, minutes):
    end = time.monotonic() + 60 * minutes
    for fault in faults:
        if tally.tried == count:
            break
        verdict = verdicts.find(fault)
        if not verdict:
            if time.monotonic() > end:
                print(f"{tally.room}: its {minutes:g} minutes are over", flush=True)
                break
            verdict = judge(build, tests, fault, tally.room)
            verdicts.add(fault, verdict)
        tally.add(verdict)
        if verdict == "unnoticed":
            print(f"  {fault}", flush=True)


def main():
    parser = argparse.ArgumentParser(prog="mutate.sh", description=__doc__)
    parser.add_argument("--folder", type=Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("-n", "--count", type=int, default=30, help="faults for each room")
    parser.add_argument("-s", "--seed", default="1", help="other seeds choose other faults")
    parser.add_argument("-l", "--list", help="try the faults in this file")
    parser.add_argument("-m", "--minutes", type=float, default=math.inf, help="time for each room")
    parser.add_argument("-c", "--go-on", action="store_true", help="take what earlier runs have noticed as noticed")
    parser.add_argument("rooms", nargs="*", metavar="ROOM", help=" ".join(ROOMS))
    arguments = parser.parse_args()
    for room in arguments.rooms:
        if room not in ROOMS:
            parser.error(f"there is no room {room}, only {' '.join(ROOMS)}")
    build = Build(arguments.folder)
    tests = Tests(build)
    verdicts = Verdicts(arguments.folder / "build" / "verdicts", arguments.go_on)
    rooms = arguments.rooms or ROOMS
    listed = list(read_list(build.root, arguments.list)) if arguments.list else []
    tallies = []
    # Being stopped, by a key or a time limit around this program, ends with what is known by then.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        for room in rooms:
            faults = [fault for fault in listed if room_of(fault.path) == room]
            if arguments.list and not faults:
                continue
            tallies.append(Tally(room))
            try_room(build, tests, verdicts, tallies[-1], faults or choose_faults(build.root, room, arguments.seed),
                     len(faults) or arguments.count, arguments.minutes)
            print(tallies[-1], flush=True)
    except KeyboardInterrupt:
        print(f"stopped; -c goes on\n{tallies[-1]}" if tallies else "stopped")
    noticed = sum(tally.tried - tally.unnoticed for tally in tallies)
    print(f"{noticed} of {sum(tally.tried for tally in tallies)} noticed")


if __name__ == "__main__":
    main()
