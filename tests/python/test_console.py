"""The console as a person meets it, typed at through a pseudo-terminal."""
import importlib.util
import os
import pty
import select
import shutil
import signal
import sys
import tempfile
import time
import unittest

QLXPY = os.path.abspath(os.environ["QLXPY"])
PROMPT = ">>> "
MORE = "... "
INTERRUPT = "\x03"
END_OF_INPUT = "\x04"
ARROW_UP = "\x1b[A"
# Bounds of one answer, far above what a busy machine needs.
TIMEOUT = 20

GREETING = r"Welcome to the world of QLX and Python %d\.%d\.%d \(c\) \d{4}\r\n" % sys.version_info[:3]


class Terminal:
    """A process with a controlling terminal of its own."""

    def __init__(self, home, *arguments, **variables):
        environment = dict(os.environ, HOME=home, QLX_HOME=home, TERM="dumb", INPUTRC="/dev/null", **variables)
        self.seen = ""
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            try:
                os.chdir(home)
                os.execve(QLXPY, [QLXPY] + list(arguments), environment)
            finally:
                os._exit(99)

    def until(self, text):
        """All that came up to `text` and with it."""
        deadline = time.monotonic() + TIMEOUT
        while text not in self.seen:
            if not self.read(deadline):
                raise AssertionError("%r is missing in %r" % (text, self.seen))
        place = self.seen.index(text) + len(text)
        result, self.seen = self.seen[:place], self.seen[place:]
        return result

    def read(self, deadline):
        if not select.select([self.descriptor], [], [], max(0, deadline - time.monotonic()))[0]:
            return False
        try:
            data = os.read(self.descriptor, 65536)
        except OSError:  # the other side has closed
            return False
        self.seen += data.decode(errors="replace")
        return bool(data)

    def send(self, text):
        os.write(self.descriptor, text.encode())

    def interrupt(self):
        """Ctrl-C until the next prompt. One that comes just ahead of a wait for input goes unseen, as with any console."""
        for _ in range(TIMEOUT):
            time.sleep(0.02)
            self.send(INTERRUPT)
            deadline = time.monotonic() + 1
            while PROMPT not in self.seen and self.read(deadline):
                pass
            if PROMPT in self.seen:
                break
        return self.until(PROMPT)

    def answer(self, line, prompt=PROMPT):
        """What a line gives, without its echo and the prompt that follows."""
        self.send(line + "\n")
        self.until("\n")
        return self.until(prompt)[:-len(prompt)].replace("\r\n", "\n")

    def end(self):
        """The rest of the output and the exit code, or minus the signal that ended the process."""
        deadline = time.monotonic() + TIMEOUT
        while self.read(deadline):
            pass
        while True:
            done, status = os.waitpid(self.process, os.WNOHANG)
            if done:
                self.process = 0
                code = -os.WTERMSIG(status) if os.WIFSIGNALED(status) else os.WEXITSTATUS(status)
                return self.seen.replace("\r\n", "\n"), code
            if time.monotonic() > deadline:
                raise AssertionError("the process goes on: %r" % self.seen)
            time.sleep(0.005)

    def close(self):
        if self.process:
            os.kill(self.process, signal.SIGKILL)
            os.waitpid(self.process, 0)
        os.close(self.descriptor)


class ConsoleTest(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.home, True)

    def start(self, *arguments, **variables):
        terminal = Terminal(self.home, *arguments, **variables)
        self.addCleanup(terminal.close)
        return terminal

    def console(self, *arguments):
        terminal = self.start("-q", *arguments)
        terminal.until(PROMPT)
        return terminal

    def test_greeting(self):
        self.assertRegex(self.start().until(PROMPT), "^" + GREETING + PROMPT + "$")
        self.assertEqual(self.start("-q").until(PROMPT), PROMPT)

    def test_statements(self):
        console = self.console()
        for line, answer in (("6 * 7", "42\n"), ("_ + 1", "43\n"), ("None", ""), ("", ""), ("x = 5", ""), ("x; x", "5\n5\n"),
                             ("# only a remark", ""), ("'\u00e9\U0001f600'", "'\u00e9\U0001f600'\n"),
                             ("__name__", "'__main__'\n"), ("import sys; sys.argv", "['']\n"), ("sys.path[0]", "''\n"),
                             ("print('no end', end='')", "no end"), ("sys.stdin.isatty(), sys.stdout.isatty()", "(True, True)\n"),
                             ("input('name? ')\rQuill", "name? Quill\n'Quill'\n"), ("sys.ps1 = 'next> '; sys.ps1 = '>>> '", "")):
            with self.subTest(line=line):
                self.assertEqual(console.answer(line), answer)

    def test_statements_over_lines(self):
        console = self.console()
        for lines, answer in ((["for i in range(2):", "  i * 21", ""], "0\n21\n"), (["(1 +", "2)"], "3\n"), (["1 + \\", "4"], "5\n"),
                              (["def f():", "  if 1:", "    return 6", "  return 7", ""], ""), (["f()"], "6\n"),
                              (["'''a", "b", "", "c'''"], "'a\\nb\\n\\nc'\n"), (["@staticmethod", "def g(): pass", ""], ""),
                              (["try:", "  1/0", "except ZeroDivisionError:", "  print('ca' + 'ught')", ""], "caught\n"),
                              (["class C: x = 8", ""], ""), (["C.x"], "8\n"), (["a = 9\\", ""], ""), (["if a: a # \\", ""], "9\n"),
                              (["if 1:", "  (1,", "", "  2)", "  # c", "   ", "  3", ""], "(1, 2)\n3\n")):
            with self.subTest(lines=lines):
                for line in lines[:-1]:
                    self.assertEqual(console.answer(line, MORE), "")
                self.assertEqual(console.answer(lines[-1]), answer)

    def test_errors_leave_the_console_going(self):
        console = self.console()
        runtime = 'Traceback (most recent call last):\n  File "<stdin>", line 1, in <module>\n'
        for line, first, last in (("1/0", runtime, "ZeroDivisionError: division by zero\n"), ("nowhere", runtime, "is not defined\n"),
                                  ("1 +", '  File "<stdin>", line 1\n', "SyntaxError: invalid syntax\n"),
                                  ("  x", '  File "<stdin>", line 1\n', "IndentationError: unexpected indent\n"),
                                  ("raise KeyboardInterrupt", runtime, "KeyboardInterrupt\n"),
                                  ("import sys; sys.stdout.close()", "", ""), ("1", runtime, "I/O operation on closed file.\n"),
                                  ("sys.stdout = sys.__stderr__", "", ""), ("sys.stderr = None", "", ""),
                                  ("1/0", runtime, "ZeroDivisionError: division by zero\n"),
                                  ("sys.stderr = sys.__stderr__; del sys.ps2; sys.ps1 = type('P', (), {'__str__': lambda s: '>>> '})()", "", "")):
            with self.subTest(line=line):
                answer = console.answer(line)
                self.assertTrue(answer.startswith(first) and answer.endswith(last), answer)
        self.assertEqual(console.answer("6 * 7"), "42\n")
        self.assertEqual(console.answer("sys.last_type.__name__"), "'ZeroDivisionError'\n")

    def test_an_empty_line_ends_what_is_not_whole(self):
        console = self.console()
        for lines in (["if 1:", ""], ["try:", "  x", ""], ["@staticmethod", ""], ["if 1:", "  return", ""]):
            with self.subTest(lines=lines):
                for line in lines[:-1]:
                    self.assertEqual(console.answer(line, MORE), "")
                self.assertRegex(console.answer(lines[-1]), r'^  File "<stdin>", line \d\n(?s:.*)Error: .+\n$')

    def test_a_text_that_the_compiler_gives_up(self):
        console = self.console()
        for text in ("(" * 250 + ")" * 250, "-" * 3900 + "1"):
            self.assertRegex(console.answer(text), r"(MemoryError|(Syntax|Recursion)Error: .*)\n$")
        self.assertEqual(console.answer("6 * 7"), "42\n")

    def test_a_hook_for_errors_that_fails(self):
        console = self.console()
        console.answer("import sys; sys.excepthook = lambda *a: nowhere")
        for line in ("1/0", "1 +"):
            answer = console.answer(line)
            self.assertTrue(answer.startswith("Error in sys.excepthook:\n"), answer)
            self.assertIn("name 'nowhere' is not defined", answer)
        self.assertEqual(console.answer("6 * 7"), "42\n")

    def test_the_end_of_input_ends_a_block(self):
        console = self.console()
        for lines, answer in ((["for i in range(2):", "  i * 21"], "0\n21\n"), (["(1,"], "SyntaxError: .*\n"), (["if 1:"], "Error: .*\n")):
            for line in lines:
                console.answer(line, MORE)
            console.send(END_OF_INPUT)
            self.assertRegex(console.until(PROMPT).replace("\r\n", "\n"), answer + PROMPT + "$")
        console.send(END_OF_INPUT)
        self.assertEqual(console.end(), ("\n", 0))

    def test_a_warning_comes_once(self):
        console = self.console("-W", "always")
        for lines in (["'\\d' and None"], ["if 1:", "  '\\d' and None", "  assert 1", ""]):
            for line in lines[:-1]:
                self.assertEqual(console.answer(line, MORE), "")
            self.assertEqual(console.answer(lines[-1]).count("Warning"), 1)

    def test_an_interrupt_stops_the_statement_only(self):
        console = self.console()
        console.answer("kept = 3")
        console.send("half a line")
        console.until("half a line")
        self.assertIn("KeyboardInterrupt", console.interrupt())
        console.answer("if kept:", MORE)
        self.assertIn("KeyboardInterrupt", console.interrupt())
        for loop in ("while True: pass", "import time; time.sleep(600)", "input()"):
            with self.subTest(loop=loop):
                console.send("exec(\"print('beg' + 'un')\\n%s\")\n" % loop)
                console.until("begun")
                self.assertRegex(console.interrupt(), r"KeyboardInterrupt\r\n>>> $")
                self.assertEqual(console.answer("kept * 14"), "42\n")

    def test_ends(self):
        for line, code in (("quit()", 0), ("exit(4)", 4), ("import sys; sys.exit(3)", 3), ("raise SystemExit", 0),
                           ("import os; os._exit(5)", 5), ("import os, signal; os.kill(os.getpid(), signal.SIGTERM)", -15)):
            with self.subTest(line=line):
                console = self.console()
                console.answer("import atexit; a = atexit.register(print, 'by' + 'e')")
                console.send(line + "\n")
                rest, ended = console.end()
                self.assertEqual(ended, code)
                self.assertEqual("bye\n" in rest, code not in (5, -15))
                self.assertNotIn("Traceback", rest)
        console = self.console()
        console.answer("1/0")
        console.send(END_OF_INPUT)
        self.assertEqual(console.end(), ("\n", 0))
        console = self.console()
        console.send("import sys; sys.exit('a reason')\n")
        rest, code = console.end()
        self.assertEqual((code, rest.splitlines()[-1]), (1, "a reason"))

    def test_after_a_run(self):
        console = self.console("-i", "-c", "x = 1; print('ran')")
        self.assertEqual(console.answer("x + 41"), "42\n")
        script = os.path.join(self.home, "script.py")
        with open(script, "w") as out:
            out.write("import sys\ny = 41\nprint(sys.argv[1])\n1/0\n")
        console = self.start("-i", script, "argument")
        self.assertRegex(console.until(PROMPT), r"(?s)^argument\r\nTraceback.*ZeroDivisionError: division by zero\r\n" + GREETING + PROMPT)
        self.assertEqual(console.answer("y + 1"), "42\n")
        console.send(END_OF_INPUT)
        # What counts is how the conversation ended.
        self.assertEqual(console.end()[1], 0)

    @unittest.skipUnless(importlib.util.find_spec("readline"), "the interpreter has no readline")
    def test_editing(self):
        console = self.console()
        console.answer("counter = iter(range(40, 50))")
        self.assertEqual(console.answer("next(counter)"), "40\n")
        self.assertEqual(console.answer(ARROW_UP), "41\n")
        console.answer("long_name_of_a_value = 42")
        self.assertEqual(console.answer("long_na\t"), "42\n")
