"""The conversation on the console: prompt, statement, answer, until the end of input."""
import __future__
import ast
import code
import contextlib
import io
import os
import sys
import tokenize
import traceback
import warnings

import _qlx

_FUTURE = 0
for _name in __future__.all_feature_names:
    _FUTURE |= getattr(__future__, _name).compiler_flag


class Console(code.InteractiveConsole):
    """A line that is a statement runs at once; a block goes on until an empty line."""

    def write(self, data):
        try:
            sys.stderr.write(data)
        except Exception:
            os.write(2, data.encode("utf-8", "backslashreplace"))

    def raw_input(self, prompt=""):
        for stream in (sys.stdout, sys.stderr, sys.__stdout__, sys.__stderr__):
            try:
                stream.flush()
            except Exception:
                pass
        return _qlx.read_line(prompt)

    def converse(self):
        """Until the end of input, whatever a statement does to the streams and the prompts."""
        more = False
        while True:
            try:
                try:
                    line = self.raw_input(_prompt("ps2" if more else "ps1"))
                except EOFError:
                    self.write("\n")
                    if not more:
                        return
                    # The end of input ends a block as well, and it counts as read then.
                    self._run("\n".join(self.buffer))
                    self.resetbuffer()
                    more = False
                else:
                    more = self.push(line)
            except KeyboardInterrupt:
                self.write("\nKeyboardInterrupt\n")
                self.resetbuffer()
                more = False
            except Exception:
                self.write("Error in sys.excepthook:\n" + traceback.format_exc())
                self.resetbuffer()
                more = False

    def resetbuffer(self):
        super().resetbuffer()
        self._in_block = False

    def runsource(self, source, filename="<stdin>", symbol="single"):
        if "\n" not in source and source.strip()[:1] in ("", "#"):
            return False
        if self._goes_on(source):
            return True
        self._run(source)
        return False

    def _run(self, source):
        try:
            compiled = self._compile(source)
        except (MemoryError, OverflowError, RecursionError, SyntaxError, ValueError):
            self.showsyntaxerror("<stdin>")
        else:
            self.runcode(compiled)

    def _goes_on(self, source):
        """Whether another line must come."""
        answer = _qlx.is_complete(source + "\n")
        ended = source.endswith("\n")  # by an empty line
        if answer == 0:
            return not ended or _is_joined(source)
        if answer == 1 and ended:
            return False
        if answer == 1 and source.endswith("\\") and _is_joined(source):
            return True
        with _no_warnings():
            try:
                if answer == 1:
                    # More lines don't change what a block is, and a tree of each would take long.
                    self._in_block = self._in_block or _is_block(self._compile(source, ast.PyCF_ONLY_AST))
                    return self._in_block
                # An open text is wrong by the test.
                return self.compile(source, "<stdin>", "single") is None
            except Exception:
                return False

    def _compile(self, source, options=0):
        """Without codeop's other flags, which change the words of an error."""
        options |= self.compile.compiler.flags & _FUTURE
        compiled = compile(source + "\n", "<stdin>", "single", options, True)
        self.compile.compiler.flags |= getattr(compiled, "co_flags", 0) & _FUTURE
        return compiled


def _is_block(tree):
    return any(hasattr(tree.body[0], name) for name in ("body", "cases"))


def _is_joined(source):
    """Whether the end stands in brackets, in a text or behind a backslash: no empty line ends such a statement."""
    try:
        for _ in tokenize.generate_tokens(io.StringIO(source + "\n").readline):
            pass
    except tokenize.TokenError:
        return True
    except SyntaxError:
        pass
    return False


@contextlib.contextmanager
def _no_warnings():
    """The compilation that counts gives them. `catch_warnings` would forget which were given already."""
    rule = ("ignore", None, Warning, None, 0)
    filters = warnings.filters
    filters.insert(0, rule)
    try:
        yield
    finally:
        if rule in filters:
            filters.remove(rule)


def _prompt(name):
    try:
        text = str(getattr(sys, name, ""))
    except Exception:
        return ""
    return text.encode("utf-8", "backslashreplace").decode().replace("\0", "")


def _set_up(console):
    """What `python` does ahead of its first prompt: line editing, and the user's own file."""
    hook = getattr(sys, "__interactivehook__", None)
    if hook and not sys.flags.isolated:
        hook()
    startup = None if sys.flags.ignore_environment else os.environ.get("PYTHONSTARTUP")
    if not startup:
        return
    with open(startup, "rb") as script:
        source = script.read()
    try:
        compiled = compile(source, startup, "exec")
    except (OverflowError, SyntaxError, ValueError):
        console.showsyntaxerror(startup)
    else:
        console.runcode(compiled)


def interact(names):
    if not hasattr(sys, "ps1"):
        sys.ps1 = ">>> "
    if not hasattr(sys, "ps2"):
        sys.ps2 = "... "
    console = Console(names, "<stdin>")
    try:
        _set_up(console)
    except (Exception, KeyboardInterrupt):
        console.showtraceback()
    console.converse()
