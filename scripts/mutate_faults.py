"""The faults that mutate.py puts into the code: what code may become, and how a choice between both is written."""

import collections
import itertools
import random
import re
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = {room: f"src/{room}" for room in "core io keyframe light lod material motion object skin".split()}
FOLDERS |= {room: f"platform/{room}" for room in ("image", "math", "runtime", "scene")}
FOLDERS |= {room: room for room in ("convert", "json", "render", "tools", "viewer")}

# What only saves time or memory, as the place where a search begins: a fault there is none that a test of results could
# notice.
NO_EFFECT = r"\breserve\(|[pP]refetch|PREFETCH|\bcapacity\(\)|shrink_to_fit|\bhints?\b|Hints\b|memory_order|alignas|<void>\("
# What reaches beyond the tests: with a fault it would end other processes or remove other folders.
DANGEROUS = r"m_iProcess|\bkill\(|waitpid|\bfork\(|remove_all"
# What is not code that runs.
NO_CODE = r"^\s*(?:static_assert|template|using|extern|namespace|case|enum|requires)\b"
SKIPPED = re.compile(f"{NO_EFFECT}|{DANGEROUS}|{NO_CODE}")

# --- Reading code -----------------------------------------------------------------------------------------------------


def blank_out(text, pattern):
    """The text with what matches replaced by blanks; every character keeps its place."""
    literals = r'R"\((.*?)\)"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\''
    comments = r"//[^\n]*|/\*.*?\*/|^[ \t]*#(?:\\\n|[^\n])*"
    return re.sub(f"({comments})|{literals}", lambda match: re.sub(r"[^\n]", " ", match[0])
                  if match[1] or pattern == "all" else match[0], text, flags=re.S | re.M)


class Source:
    def __init__(self, path):
        self.path = path
        self.text = (ROOT / path).read_text()
        self.code = blank_out(self.text, "comments")
        self.blank = blank_out(self.text, "all")
        # A constant is made a variable when a fault is in its value; a function stays one that compilers may evaluate.
        self.constants, self.constant_functions = [], []
        for match in re.finditer(r"\b(static )?constexpr [^;(){}=]*(?:\([^;{}]*\)[^;{}]*(\{)| = |\{)", self.blank):
            if match[2]:
                self.constant_functions.append((match.end(), find_end(self.blank, match.end(), "}")))
            else:
                new = "static inline const" if match[1] and path.suffix == ".h" else (match[1] or "") + "const"
                end = find_end(self.blank, match.end() - match[0].endswith("{"), ";")
                self.constants.append((match.end(), end, match.start(), new))

    def line_of(self, place):
        return self.text.count("\n", 0, place) + 1

    def lines_around(self, begin, end):
        return self.text.rfind("\n", 0, begin) + 1, (self.text + "\n").find("\n", end)


def find_end(blank, place, stops):
    """The first of some characters outside of brackets that are opened behind a place; no further than the bracket that
    is open there."""
    depth = 0
    while place < len(blank):
        if depth == 0 and (blank[place] in stops or blank[place] in ")]}"):
            break
        depth += (blank[place] in "([{") - (blank[place] in ")]}")
        place += 1
    return place


def find_opening(blank, place):
    """The bracket that is open at a place."""
    depth = 1
    while depth and place > 0:
        place -= 1
        depth += (blank[place] in ")]}") - (blank[place] in "([{")
    return place


def split_list(blank):
    """The parts between the commas of a list."""
    begin = 0
    while begin <= len(blank):
        end = find_end(blank, begin, ",")
        while blank[begin:end].count("<") > blank[begin:end].count(">") and " < " not in blank[begin:end] and end < len(blank):
            end = find_end(blank, end + 1, ",")
        yield begin, end
        begin = end + 1


def widen(blank, begin, end):
    """The whole expression around a place: what can be put in parentheses. It is bounded by brackets, commas, assignments,
    jumps and, unless it is about them, by `&&` and `||`."""
    logic = re.search(r"&&|\|\|", blank[begin:end]) is not None
    whole = re.search(r"\?| : ", blank[begin:end]) is not None
    if re.search(r"[-+*/]=", blank[begin:end]):
        end = find_end(blank, end, ";,")
    while begin > 0:
        two, word = blank[max(0, begin - 2) : begin], re.search(r"\w*$", blank[max(0, begin - 40) : begin])[0]
        if two in ("::", "==", "!=", "<=", ">=") or (whole and two in (" ?", " :")):
            begin -= 2
        elif two in ("&&", "||"):
            if not logic:
                break
            begin -= 2
        elif two[-1] in "([{;,:?=" or word in ("return", "throw", "else", "do", "case"):
            break
        elif two[-1] == "}" and re.match(r"[ \t]*\n", blank[begin:]):
            break
        elif two[-1] in ")]}":
            opening = find_opening(blank, begin - 1)
            if re.search(r"\b(?:if|while|for|switch|catch|constexpr) $", blank[max(0, opening - 20) : opening]):
                break
            begin = opening
        else:
            begin -= len(word) or 1
    while end < len(blank):
        two = blank[end : end + 2]
        if two in ("::", "==", "!=", "<=", ">=") or (logic and two in ("&&", "||")):
            end += 2
        elif whole and two in ("? ", ": "):
            end += 2
        elif two[0] in ")]},;?:=" or two in ("&&", "||"):
            break
        elif two[0] in "([{":
            end = find_end(blank, end + 1, "") + 1
        else:
            end += 1
    return begin, end


# --- Faults: what code may become -------------------------------------------------------------------------------------


def replace_each(pattern, replacement):
    """An operator that replaces each match of a pattern."""

    def find(blank):
        for match in re.finditer(pattern, blank):
            yield match.start(), match.end(), replacement(match) if callable(replacement) else replacement[match[0]]

    return find


def find_conditions(blank):
    for match in re.finditer(r"\b(?:if|while) \(", blank):
        end = find_end(blank, match.end(), ";")
        if blank[end] == ")" and " = " not in blank[match.end() : end]:
            yield match.end(), end, f"!({blank[match.end():end]})"


def find_statements(blank):
    """Whole statements that do something: a call, an assignment, a jump."""
    for match in re.finditer(r"[;{}:)]\s*\n\s*(?=[\w*+:(-])", blank):
        end = find_end(blank, match.end(), ";{")
        text = blank[match.end() : end] + ";"
        jump = text in ("return;", "break;", "continue;")
        changes = re.match(r"(?:\+\+|--|\*|::)?[\w:.>\[\]()-]*\w[\])]*(?: [-+*/|&^]?= |\(|\+\+;|--;|<.*>\()", text)
        if blank[end : end + 1] != ";" or not (jump or changes) or re.search(r"^(?:return |throw|default)\b|\bdelete\b", text):
            continue
        # The end of a switch is where its last break leads as well.
        opening = find_opening(blank, end)
        last = text == "break;" and re.match(r";\s*\}", blank[end:]) and re.search(r"\bswitch \([^\n]*\)\s*$", blank[:opening])
        if not last:
            yield match.end(), end + 1, ";"


def find_arguments(blank):
    for match in re.finditer(r"[\w\])>]\(", blank):
        if re.search(r"\b(?:std::(?:max|min|hypot|swap)|dot)$", blank[: match.end() - 1]):
            continue  # the order says nothing
        clamps = blank[: match.end() - 1].endswith("std::clamp")  # the larger of the first two, whichever comes first
        end = find_end(blank, match.end(), ";")
        parts = [(match.end() + a, match.end() + b) for a, b in split_list(blank[match.end() : end])]
        for first, second in list(zip(parts, parts[1:]))[1 if clamps else 0 :]:
            one, two = (blank[a:b].strip() for a, b in (first, second))
            begin = second[0] - 1 - len(blank[first[0] : second[0] - 1].lstrip())
            # Two words in a row are a parameter.
            if one and two and one != two and "{" not in (one[0], two[0]) and not re.search(r"\w[*&>]* \w", one + "," + two):
                yield begin, second[1], f"{two}, {one}"


def change_number(match):
    text = match[0]
    if re.fullmatch(r"\d+[uU]?", text):
        return re.sub(r"\d+", lambda digits: str(int(digits[0]) + 1), text)
    return f"({text} + 1.0{text.lstrip('0123456789.')})" if "." in text and "e" not in text else f"({text} + 1)"


NUMBER = r"(?<![\w.])\d+(?:\.\d+)?(?:[eE][-+]?\d+)?[uUfF]?(?![\w.'])"
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
    "constant": replace_each(NUMBER, change_number),
    "off by one": replace_each(r" [-+] 1u?(?![\w.'])", lambda match: ""),
    "condition": find_conditions,
    "statement": find_statements,
    "arguments": find_arguments,
}


class Fault:
    """A replacement in a source, and the whole expression or statement that is built in both ways."""

    def __init__(self, source, room, begin, end, new):
        self.source, self.room, self.number, self.noticed = source, room, None, False
        first, last = source.lines_around(begin, end)
        self.line = source.line_of(begin)
        old_lines = source.code[first:last]
        new_lines = source.code[first:begin] + new + source.code[end:last]
        self.text = f"{source.path}:{self.line} `{' '.join(old_lines.split())}` -> `{' '.join(new_lines.split())}`"
        old = source.blank[begin:end]
        simple = new in (";", f"!({old})") or re.fullmatch(f"{NUMBER}|true|false", old)
        self.begin, self.end = (begin, end) if simple else widen(source.blank, begin, end)
        self.begin += len(source.code[self.begin : self.end]) - len(source.code[self.begin : self.end].lstrip())
        self.end = self.begin + len(source.code[self.begin : self.end].rstrip())
        self.new = source.code[self.begin : begin] + new + source.code[end : self.end]
        self.constant = next((constant[2:] for constant in source.constants if constant[0] <= begin < constant[1]), None)
        self.at_run_time = any(a <= begin < b for a, b in source.constant_functions)
        self.last_line = source.line_of(self.end)

    def __str__(self):
        return self.text

    def is_possible(self):
        return self.begin < self.end <= self.begin + 1000 and not re.search(r"^\s*#", self.source.text[self.begin : self.end], re.M)

    def switched(self):
        """The code with the choice in it. It has as many lines as the code."""
        choice = f"tw2_fault{'AtRunTime' if self.at_run_time else ''}<{self.number}>()"
        old, new = self.source.text[self.begin : self.end], " ".join(self.new.split("\n"))
        if new == ";":
            return f"if ({choice}) ; else {old}"
        if new == f"!({' '.join(old.split())})" or new == f"!({old})":
            return f"({choice} != static_cast<bool>({old}))"
        olds, news = (list(split_list(blank_out(text, "all"))) for text in (old, new))
        if len(olds) != len(news):
            olds, news = [(0, len(old))], [(0, len(new))]
        return ",".join(f"({choice} ? ({new[c:d].strip()}) : ({old[a:b]}))" for (a, b), (c, d) in zip(olds, news))

    def edits(self):
        yield self.begin, self.end, self.switched()
        if self.constant and not self.at_run_time:
            place, new = self.constant
            yield place, self.source.text.index("constexpr", place) + len("constexpr"), new


def choose_faults(room, seed):
    """The faults of a room in a random order in which every operator comes as often; the same one for the same seed."""
    chance = random.Random(f"{seed} {room}")
    faults = {name: [] for name in OPERATORS}
    for path in sorted((ROOT / FOLDERS[room]).rglob("*")):
        if path.suffix not in (".cpp", ".h"):
            continue
        source = Source(path.relative_to(ROOT))
        for name, operator in OPERATORS.items():
            for begin, end, new in operator(source.blank):
                first, last = source.lines_around(begin, begin)
                # What was blanked out within a replaced piece would be lost, and strings know no calculation.
                if source.blank[begin - 1 : end + 1] == source.text[begin - 1 : end + 1] and not SKIPPED.search(source.blank[first:last]):
                    faults[name].append((source, room, begin, end, new))
    for found in faults.values():
        chance.shuffle(found)
    while any(faults.values()):
        names = [name for name in faults if faults[name]]
        chance.shuffle(names)
        for name in names:
            yield Fault(*faults[name].pop())


def read_list(path):
    """The faults of a list, each at the nearest place that has what it replaces."""
    sources = {}
    token = re.compile(r"[-+*/%&|^<>=!]=|&&|\|\||\+\+|--|->|<<|>>|::|[\w.']+|\S")
    for entry in Path(path).read_text().splitlines():
        match = re.match(r"[-\s]*(\S+?):(\d+):? `(.+?)` -> `(.*?)`", entry)
        if not match:
            continue
        room = next((room for room, folder in FOLDERS.items() if match[1].startswith(folder + "/")), None)
        if room and match[1] not in sources and (ROOT / match[1]).exists():
            sources[match[1]] = Source(Path(match[1]))
        source = sources.get(match[1])
        places = source and list(re.finditer(r"\s+".join(map(re.escape, match[3].split())), source.code))
        if not places:
            print(f"gone: {entry}", flush=True)
            continue
        place = min(places, key=lambda found: abs(source.line_of(found.start()) - int(match[2])))
        old, new = list(token.finditer(place[0])), list(token.finditer(match[4]))
        if match[4].strip() == ";":
            fault = Fault(source, room, place.start(), place.end(), ";")
        else:
            olds, news, behind = find_difference(old, new)
            begin = place.start() + (olds[0].start() if olds else old[behind - 1].end())
            end = place.start() + olds[-1].end() if olds else begin
            put = match[4][news[0].start() : news[-1].end()] if news else ""
            fault = Fault(source, room, begin, end, put if olds else f" {put}")
        fault.text = f"{source.path}:{fault.line} `{match[3]}` -> `{match[4]}`"
        yield fault


def find_difference(old, new):
    """Where two lists of tokens differ, with whole brackets: a part of each, and how many are the same before it."""
    front = back = 0
    least = min(len(old), len(new))
    while front < least and old[front][0] == new[front][0]:
        front += 1
    while back < least - front and old[-back - 1][0] == new[-back - 1][0]:
        back += 1
    while True:
        parts = [tokens[front : len(tokens) - back] for tokens in (old, new)]
        opened = [list(itertools.accumulate((token[0] in "([{") - (token[0] in ")]}") for token in part)) or [0] for part in parts]
        if front and any(min(depths) < 0 for depths in opened):
            front -= 1
        elif back and any(depths[-1] > 0 for depths in opened):
            back -= 1
        else:
            return *parts, front


def without_overlap(faults, count):
    """The first faults of which no two are in one place."""
    taken, chosen = collections.defaultdict(list), []
    for fault in faults:
        if len(chosen) == count:
            break
        edits = taken[fault.source.path]
        if fault.is_possible() and all(fault.end <= begin or end <= fault.begin for begin, end in edits):
            edits.append((fault.begin, fault.end))
            chosen.append(fault)
    return chosen
