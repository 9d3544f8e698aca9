"""Calls by their formats: what each argument refuses, what is missing or too much, objects that have gone, and what is
said on standard error."""
import contextlib
import os
import re
import tempfile

VECTOR = "net.tavor.parametrictype.vec<3,float64>"
NUMBERS = {"i": 1, "b": 1, "f": 1.0}
TOO_LARGE = {"i": (2 ** 31, "signed integer is greater than maximum"),
             "b": (256, "unsigned byte integer is greater than maximum")}


@contextlib.contextmanager
def errors():
    """What goes to standard error, past Python's own stream."""
    lines, old = [], os.dup(2)
    with tempfile.TemporaryFile() as file:
        os.dup2(file.fileno(), 2)
        try:
            yield lines
        finally:
            os.dup2(old, 2)
            os.close(old)
            file.seek(0)
            lines.extend(file.read().decode().splitlines())


def outcome(call, *args, **keywords):
    try:
        return call(*args, **keywords)
    except BaseException as error:
        return type(error), str(error)


class Call:
    """A row: its name, its format, its keywords, and an object for each letter that takes one."""

    def __init__(self, name, format="", keywords="", *objects):
        self.name, self.keywords = name, keywords.split()
        required, bar, optional = format.partition("|")
        letters = re.findall(r"[AO]!N?|\w", required + optional)
        self.required = len(re.findall(r"[AO]!N?|\w", required))
        self.letters, objects = letters, iter(objects)
        self.good = [next(objects) if letter[0] in "AOVMT" else NUMBERS[letter] for letter in letters]

    def refusals(self):
        """Arguments, and what is said of them: a pattern. None of these calls reaches the object."""
        for at, letter in enumerate(self.letters):
            before = dict(zip(self.keywords, self.good[:at]))
            if at < self.required:
                yield (), before, TypeError, r"Required argument '%s' \(pos %i\) not found" % (self.keywords[at], at + 1)
            if letter == "O":
                continue
            text = "argument %i must be %s, not bytes" % (at + 1, {
                "V": re.escape(VECTOR)}.get(letter, re.escape(self.type_name(at))))
            if letter == "i" or letter == "b":
                text = r"an integer is required \(got type bytes\)"
                large, message = TOO_LARGE[letter]
                yield (), dict(before, **{self.keywords[at]: large}), OverflowError, message
            elif letter == "f":
                text = "must be real number, not bytes"
            yield tuple(before.values()) + (b"x",), {}, TypeError, text
            if "N" not in "".join(self.letters[:at]):  # an `N` can't be stepped over by name
                yield (), dict(before, **{self.keywords[at]: b"x"}), TypeError, text
            if letter[0] in "AO" and at < self.required:
                yield tuple(before.values()) + (None,), {}, TypeError, text.replace("bytes", "None")
        count = len(self.letters)
        yield (1,) * (count + 1), {}, TypeError, "takes (at most|no)"
        if count > 0:
            yield (1,) * count, {"x": 1}, TypeError, "takes at most"
            if not any("N" in letter for letter in self.letters):
                yield (), dict(list(zip(self.keywords, self.good))[:-1], x=1), TypeError, "invalid keyword|not found"
        else:
            yield (), {"x": 1}, TypeError, "takes no keyword"

    def type_name(self, at):
        kind = type(self.good[at])
        return kind.__name__ if kind.__module__ == "builtins" else kind.__module__ + "." + kind.__qualname__


def check(test, target, calls):
    for call in calls:
        for args, keywords, kind, pattern in call.refusals():
            with test.subTest(name=call.name, args=args, keywords=keywords):
                found = outcome(getattr(target, call.name), *args, **keywords)
                test.assertIsInstance(found, tuple)
                test.assertIs(found[0], kind)
                test.assertRegex(found[1], pattern)


def check_dead(test, target, calls, text, skip=()):
    """`target` has gone, which wins over bad arguments."""
    for call in calls:
        if call.name not in skip:
            args = [b""] * len(call.letters)
            test.assertEqual(outcome(getattr(target, call.name), *args), (ReferenceError, text), call.name)
