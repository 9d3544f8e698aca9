"""The fixed form of the table headers, and what is read from it."""
import re
from dataclasses import dataclass
from pathlib import Path

FRAMEWORKS = Path(__file__).resolve().parent.parent
FIELDS = ("owner", "thread", "waits", "since", "fails")


class FormError(Exception):
    pass


@dataclass
class Parameter:
    ctype: str
    name: str


@dataclass
class Entry:
    name: str
    result: str
    parameters: list
    text: str
    notes: dict
    required: bool
    quick: bool

    @property
    def signature(self):
        return f"{self.result}({', '.join(p.ctype for p in self.parameters)})"

    def declaration(self, name):
        inner = ", ".join(f"{p.ctype} {p.name}" for p in self.parameters) or "void"
        return f"{self.result} {name}({inner})"

    @property
    def arguments(self):
        return ", ".join(p.name for p in self.parameters)

    def failure(self):
        """The C++ expression of the documented failure."""
        word = self.notes["fails"]
        if word == "nothing":
            return ""
        if word == "null":
            return "nullptr"
        if word == "empty":
            return f"{self.result}{{}}"
        if word == "error":
            return "HostResult{HOST_RESULT_NOT_OFFERED, 0, nullptr, {nullptr}}"
        if word == "text":
            return '(size ? (void)(*size = 0) : (void)0, "")'
        if word == "fallback":
            return "fallback"
        return f"{self.result}({int(word)})"

    def guarded(self, call):
        """The call with its exceptions turned into the documented failure; a quick one has none."""
        if self.quick:
            return call
        failure = "" if self.notes["fails"] == "error" else self.failure()
        return f"boundary::Guard([&] {{ return {call}; }}{', ' + failure if failure else ''})"


@dataclass
class Table:
    header: Path
    struct: str
    title: str
    entries: list
    words: int  # words ahead of the first entry
    group: str = ""
    service: tuple = ()
    interface: tuple = ()
    functions: str = ""
    value: tuple = ()
    klass: str = ""
    base: str = ""  # of the class

    @property
    def stem(self):
        return self.header.stem[2:]

    @property
    def thin(self):
        return ("kelvar/" if self.group else "tavor/") + self.stem + ".h"

    @property
    def identity(self):
        return (self.service or self.interface or ("", ""))[1]


def parse_parameters(text):
    text = " ".join(text.split())
    if text == "void":
        return []
    parameters = []
    for part in text.split(","):
        match = re.fullmatch(r"\s*(.*?[\s*])(\w+)\s*", part)
        if not match:
            raise FormError(f"parameter without a name: {part.strip()}")
        parameters.append(Parameter(match[1].strip(), match[2]))
    return parameters


def parse_comment(comment):
    lines = [re.sub(r"^\s*\*? ?", "", line).rstrip() for line in comment.strip().splitlines()]
    notes, text = {}, []
    for line in lines:
        match = re.fullmatch(r"\s*(owner|thread|waits|since|fails)\s{2,}(.+)", line)
        if match:
            expected = (*FIELDS, "the end")[len(notes)]
            if match[1] != expected:
                raise FormError(f"{match[1]} stands where {expected} belongs")
            notes[match[1]] = match[2]
        elif notes:
            raise FormError(f"text behind the notes: {line}")
        else:
            text.append(line.strip())
    missing = [f for f in FIELDS if f not in notes]
    if missing:
        raise FormError(f"lacks {', '.join(missing)}")
    joined = " ".join(text)
    plain = joined.replace(" Required.", "").replace(" Quick.", "")
    return plain, notes, "Required." in joined, "Quick." in joined


def parse_header(path):
    source = path.read_text()
    opening = re.match(r"/\*(.*?)\*/", source, re.S)
    if not opening:
        return None
    head = re.sub(r"^\s*\* ?", "", opening[1], flags=re.M)
    directives = dict(re.findall(r"^(group|service|interface|functions|value|class)\s+(\S.*?)\s*$", head, re.M))
    if not directives:
        return None
    title = head.strip().splitlines()[0]
    struct = re.search(r"typedef struct (\w+(?:General|Group|Service|Interface)) \{(.*?)\n\} \1;", source, re.S)
    if not struct:
        raise FormError(f"{path}: no table")
    start, body = struct.start(2), struct[2]
    entries = []
    words = 2 if "TavorHead head;" in body else 1
    for match in re.finditer(r"(?:/\*(.*?)\*/\s*)?^  ([^\s/*][^;{}]*?);", body, re.S | re.M):
        line = source.count("\n", 0, start + match.start(2)) + 1
        declaration = " ".join(match[2].split())
        function = re.fullmatch(r"(.+?)\s*\(\*(\w+)\)\((.*)\)", declaration)
        if not function:
            if entries:
                raise FormError(f"{path}:{line}: a data word behind the first entry")
            if declaration.startswith("void*"):
                words += 1
            continue
        try:
            if match[1] is None:
                raise FormError("has no comment")
            text, notes, required, quick = parse_comment(match[1])
            entry = Entry(function[2], function[1], parse_parameters(function[3]), text, notes, required, quick)
            entry.failure()
        except (FormError, ValueError) as error:
            raise FormError(f"{path}:{line}: {function[2]}: {error}") from None
        entries.append(entry)
    klass, _, base = directives.get("class", "").partition(" : ")
    split = lambda name: tuple(directives.get(name, "").split())
    return Table(path, struct[1], title, entries, words, directives.get("group", ""), split("service"),
                 split("interface"), directives.get("functions", ""), split("value"), klass, base)


def load_tables():
    headers = sorted(FRAMEWORKS.glob("*.framework/source/**/tables/t_*.h"))
    return [table for table in map(parse_header, headers) if table]
