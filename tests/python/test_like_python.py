"""The same script gives the same output and the same exit code under qlxpy and under python."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

QLXPY = os.environ["QLXPY"]
PYTHON = os.environ["QLX_TEST_PYTHON"]

# Texts for -c. Tracebacks are compared too.
TEXTS = [
    "print('hello')", "print(1, 2, sep='-', end='!')", "print()", "", "pass", "print('\\u20ac\\U0001f600')",
    "print('a\\nb\\tc')", "import sys; sys.stdout.write('no end')", "import sys; print(sys.stdout.write('four'))",
    "import sys; sys.stderr.write('e'); sys.stdout.write('o')", "import sys; print('x', file=sys.stderr)",
    "1/0", "raise ValueError('bad')", "raise KeyError", "def f(): g()\ndef g(): raise OSError(2, 'no', 'f')\nf()",
    "try:\n  1/0\nexcept ZeroDivisionError as e:\n  raise RuntimeError('outer') from e",
    "try:\n  1/0\nexcept ZeroDivisionError:\n  raise RuntimeError('during')", "x = (", "if 1:\nprint(2)", "return", "\ta\n b",
    "import sys; sys.exit()", "import sys; sys.exit(3)", "import sys; sys.exit('text')", "import sys; sys.exit(256 + 7)",
    "import sys; sys.exit(-1)", "import sys; sys.exit(2**70)", "import sys; sys.exit((1, 2))", "raise SystemExit(4)", "exit(5)",
    "quit()", "import os; os._exit(6)", "import sys; sys.exit(True)", "assert 0, 'why'",
    "import sys; print(sys.argv)", "import sys; print(sys.flags.optimize, __name__, sys.path[0] == '')",
    "import sys\ndef h(*a): print('hook', a[0].__name__)\nsys.excepthook = h\n1/0",
    "import sys\nsys.excepthook = None\n1/0", "import sys\ndel sys.excepthook\n1/0",
    "import sys\ndef h(*a): sys.exit(9)\nsys.excepthook = h\n1/0", "import sys\nsys.excepthook = lambda: 0\n1/0",
    "import missing_module",
    "import atexit; atexit.register(print, 'bye'); print('hi')", "import atexit; atexit.register(lambda: 1/0)",
    "import sys; print(input())", "print(input('prompt> '))", "import sys; print(sys.stdin.read())", "print(input(), input())",
    "import sys; [print(repr(l)) for l in sys.stdin]", "import sys; print(sys.stdin.buffer.read())",
    "import sys; sys.stdout.buffer.write(b'\\xff\\x00raw\\n')", "import os; os.write(1, b'direct\\n'); print('after')",
    "import sys; print('one'); sys.stdout.flush(); import os; os.write(1, b'two\\n')", "print('\\ud800')",
    "import sys; print(sys.stdout.encoding, sys.stdout.errors, sys.stderr.errors, sys.stdin.encoding, sys.stdin.errors)",
    "import sys; print(sys.stdout.isatty(), sys.stdout.fileno(), sys.stdin.fileno(), sys.stderr.fileno())",
    "import sys; print(sys.stdout.name, sys.stdin.name, sys.stderr.name, sys.stdout.mode, sys.stdin.mode)",
    "import sys; print(sys.stdout.line_buffering, sys.stderr.line_buffering, sys.stdout.writable(), sys.stdin.readable())",
    "import sys; print(sys.__stdout__ is sys.stdout, sys.__stdin__ is sys.stdin)",
    "import logging; logging.warning('careful')", "import warnings; warnings.warn('old')", "import warnings; warnings.warn('w', DeprecationWarning)",
    "import subprocess; subprocess.call(['echo', 'child'])", "import subprocess, sys; print(subprocess.run('exit 3', shell=True).returncode)",
    "import subprocess; print('before', flush=True); subprocess.call('echo out; echo err >&2', shell=True); print('after')",
    "import os\nprint('x', flush=True)\nif os.fork() == 0: print('child'); os._exit(0)\nos.wait()\nprint('parent')",
    "import threading; t = threading.Thread(target=print, args=('thread',)); t.start(); t.join()",
    "import threading, sys; t = threading.Thread(target=lambda: print(sys.stdin.read())); t.start(); t.join()",
    "import threading\ndef f(): 1/0\nt = threading.Thread(target=f, name='T'); t.start(); t.join()",
    "import sys\nclass W:\n  def write(self, t): raise OSError('full')\n  def flush(self): pass\nsys.stdout = W()\nprint(1)",
    "import sys\ndel sys.stdout\nprint(1)", "import sys\nsys.stdout = None\nprint(1)", "import sys\nsys.stderr = None\n1/0", "import sys\nsys.stdout.close()",
    "def f(): f()\nf()", "print('x' * 3000000)", "import sys; sys.stdout.write('y' * 100000); sys.exit(1)",
    "class D:\n  def __del__(self): print('gone')\nd = D()", "class D:\n  def __del__(self): 1/0\nd = D(); del d",
    "import faulthandler, sys; faulthandler.enable(); print(faulthandler.is_enabled())",
    "import contextlib, io\nb = io.StringIO()\nwith contextlib.redirect_stdout(b): print('in')\nprint(repr(b.getvalue()))",
    "import runpy; print(runpy.run_module('this', alter_sys=True)['d']['A'])",
    "raise KeyboardInterrupt", "import os, signal; os.kill(os.getpid(), signal.SIGTERM); import time; time.sleep(5)",
    "from concurrent.futures import ThreadPoolExecutor as T\nT(1).submit(print, 'pool')",
    "import sys; print([m for m in ('site', 'readline') if m in sys.modules])", "print(__builtins__.__name__, sorted(globals()))",
    "import sys; sys.settrace(None); print(sys.getrecursionlimit())", "print(open(0).read())", "eval('1 +')", "exec('def f(:')",
    "import sys; sys.last_value", "import asyncio\nasync def f(): print('async')\nasyncio.get_event_loop_policy().new_event_loop().run_until_complete(f())",
]

# Whole command lines; {f} is a script that prints its name and its arguments.
LINES = [
    ["{f}"], ["{f}", "a", "--b"], ["script.py"], ["./script.py"], ["link.py"], ["deep/../script.py"], ["--", "{f}", "x"], ["-c"], ["-m"], ["-W"], ["-O", "-c", "print(__debug__)"], ["-OO", "{f}"],
    ["-W", "error", "-c", "import warnings; warnings.warn('x')"], ["-Wignore", "-c", "import warnings; warnings.warn('x')"],
    ["-X", "utf8", "-c", "import sys; print(sys.flags.utf8_mode)"], ["-Xfaulthandler", "-c", "import faulthandler; print(faulthandler.is_enabled())"],
    ["-I", "-c", "import sys; print(sys.flags.isolated, sys.flags.ignore_environment, sys.flags.no_user_site)"], ["-E", "-s", "{f}"],
    ["-Bsc", "import sys; print(sys.dont_write_bytecode, sys.flags.no_user_site)"], ["-u", "-c", "import os; print(1, end=''); os.write(1, b'2')"],
    ["-m", "json.tool"], ["-m", "timeit", "-n1", "-r1", "-h"], ["-m", "absent_module"], ["-m", "json"], ["-bb", "-c", "str(b'')"], ["-", "a"], [],
    ["-S", "-c", "import sys; print('site' in sys.modules)"],
]


class LikePythonTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder, True)
        self.script = os.path.join(self.folder, "script.py")
        with open(self.script, "w") as out:
            out.write("import sys\nprint(sys.argv, __file__, __name__, sys.path[0])\nprint(sorted(globals()))\n")
        os.mkdir(os.path.join(self.folder, "deep"))
        real = os.path.join(self.folder, "deep", "real.py")
        shutil.copy(self.script, real)
        os.symlink(real, os.path.join(self.folder, "link.py"))

    def run_one(self, program, arguments, **variables):
        environment = dict(os.environ, QLX_HOME=self.folder, **variables)
        done = subprocess.run([program] + arguments, input=b'{"first": 1}\n"second"\n' if "-m" not in arguments else b"{}",
                              env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.folder, timeout=60)
        errors = done.stderr.replace(QLXPY.encode(), b"python").replace(PYTHON.encode(), b"python")
        return done.returncode, done.stdout, re.sub(b"0x[0-9a-f]+", b"0x", errors)

    def compare(self, arguments, errors=True, **variables):
        arguments = [argument.replace("{f}", self.script) for argument in arguments]
        with self.subTest(arguments=arguments, **variables):
            ours = self.run_one(QLXPY, arguments, **variables)
            theirs = self.run_one(PYTHON, arguments, **variables)
            self.assertEqual(ours[:2], theirs[:2])
            if errors:
                self.assertEqual(ours[2], theirs[2])

    def test_texts(self):
        for text in TEXTS:
            self.compare(["-c", text])

    def test_command_lines(self):
        for line in LINES:
            # The words about a wrong line are the application's own.
            self.compare(line, errors=line not in (["-c"], ["-m"], ["-W"], ["-m", "absent_module"], ["-m", "json"]))

    def test_encodings(self):
        text = "import sys; print(sys.stdout.encoding, sys.getfilesystemencoding(), ascii(sys.argv[1])); print('\u00e9')"
        for variables in (dict(PYTHONIOENCODING="latin-1"), dict(PYTHONIOENCODING="ascii:replace"), dict(LC_ALL="C"),
                          dict(LC_ALL="C.UTF-8"), dict(LC_ALL="POSIX", PYTHONUTF8="1"), dict(PYTHONUNBUFFERED="1")):
            self.compare(["-c", text, "\u00e4"], **variables)
            self.compare(["-c", text, b"\xff".decode("utf-8", "surrogateescape")], **variables)

    def test_scripts_that_are_no_text(self):
        for content in (b"x = '\xff'\n", b"print(1)\0\n", b"\xef\xbb\xbfprint('marked')\n", b"# coding: latin-1\nprint('\xe9')\n",
                        b"# coding: nonsense\n", b"print(1)\r\nprint(2)\r\n", b"print('no end')"):
            with open(self.script, "wb") as out:
                out.write(content)
            self.compare([self.script])
