"""The conversation on the console: prompt, statement, answer, until the end of input."""
import __future__
import code
import os
import sys

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
                line = self.raw_input(_prompt("ps2" if more else "ps1"))
                more = self.push(line)
            except EOFError:
                self.write("\n")
                return
            except KeyboardInterrupt:
                self.write("\nKeyboardInterrupt\n")
                self.resetbuffer()
                more = False

    def runsource(self, source, filename="<stdin>", symbol="single"):
        try:
            if "\n" not in source and _qlx.is_complete(source) == 1:
                compiled = self.compile.compiler(source, filename, symbol)
            else:
                compiled = self.compile(source, filename, symbol)
        except (OverflowError, SyntaxError, ValueError):
            self._show_fault(source, filename, symbol)
            return False
        if compiled is None:
            return True
        self.runcode(compiled)
        return False

    def _show_fault(self, source, filename, symbol):
        # The test for more lines has flags that change the words of an error, as the missing line end does.
        try:
            compile(source + "\n", filename, symbol, self.compile.compiler.flags & _FUTURE, True)
        except (OverflowError, SyntaxError, ValueError):
            self.showsyntaxerror(filename)


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
