"""The streams of a script and the process around them: what is written arrives, whatever the other side does."""
import os
import pty
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

QLXPY = os.path.abspath(os.environ["QLXPY"])
PYTHON = os.environ["QLX_TEST_PYTHON"]


class StreamsTest(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.home, True)
        # Whoever runs the tests may have set what the streams depend on.
        self.environment = {name: value for name, value in os.environ.items() if not name.startswith("PYTHON")}
        self.environment["QLX_HOME"] = self.home

    def popen(self, *arguments, program=QLXPY, **options):
        process = subprocess.Popen([program] + list(arguments), env=self.environment, cwd=self.home, **options)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def run_one(self, *arguments, program=QLXPY, stdin=b"", **options):
        done = subprocess.run([program] + list(arguments), input=stdin, env=self.environment, cwd=self.home, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)
        return done.returncode, done.stdout.decode(errors="surrogateescape"), done.stderr.decode(errors="surrogateescape")

    def shell(self, line, program):
        """The exit code and the output of a shell's line with $0 for the program; None when it does not end."""
        process = self.popen("-c", line, program, program="/bin/bash", stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, start_new_session=True)
        try:
            out, _ = process.communicate(timeout=10)
            return process.returncode, out
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            return None, b""

    def test_what_the_streams_offer(self):
        text = """import io, sys
for s in (sys.stdin, sys.stdout, sys.stderr):
    print(type(s) is io.TextIOWrapper, s.name, s.encoding.lower(), s.errors, s.fileno(), s.isatty(), s.closed, s.readable(),
          s.writable(), s.buffer.name, s.buffer.mode, s.buffer.fileno(), s.buffer.closed, s.newlines, s.line_buffering)
print([sys.stdout.write(t) for t in ('', 'ab', '\\u20ac\\U0001f600', '\\n')], sys.stdout.buffer.write(b'\\xff\\n'), sys.stdout.flush())
sys.stdout.writelines(['one\\n', 'two\\n'])
sys.stdout.reconfigure(encoding='latin-1', newline='\\r\\n')
print('\\xe9')
for wrong in (lambda: sys.stdout.write(b'bytes'), lambda: sys.stdout.read(), lambda: sys.stdin.write('x'), lambda: sys.stdout.write()):
    try: wrong()
    except Exception as e: print(type(e).__name__, e)
binary = sys.stdout.detach()
binary.write(b'raw\\n')
binary.flush()
try: sys.stdout.write('x')
except ValueError as e: sys.stderr.write('%s\\n' % e)
binary.close()
sys.stderr.write('%s %s\\n' % (binary.closed, sys.stdin.readline(3)))
sys.stdin.close()
sys.stderr.write('%s\\n' % sys.stdin.closed)
"""
        for options in ([], ["-u"]):
            ours = self.run_one(*options, "-c", text, stdin=b"input\n")
            self.assertEqual(ours, self.run_one(*options, "-c", text, stdin=b"input\n", program=PYTHON))
            self.assertTrue(ours[2].startswith("underlying buffer has been detached\nTrue inp\nTrue\n"), ours[2])

    def test_input_from_a_file_has_places(self):
        path = os.path.join(self.home, "input")
        with open(path, "wb") as out:
            out.write(b"first\nsecond\n")
        text = "import sys; print(sys.stdin.readline(), sys.stdin.seekable(), sys.stdin.seek(0), sys.stdin.read())"
        line = '"$0" -c "%s" < input' % text
        self.assertEqual(self.shell(line, QLXPY), self.shell(line, PYTHON))

    def test_both_streams_of_one_terminal_keep_their_order(self):
        text = "import sys\nfor i in range(200):\n  print('o', i)\n  print('e', i, file=sys.stderr)\nimport os; os.system('echo child')"
        master, slave = pty.openpty()
        process = self.popen("-c", text, stdin=subprocess.DEVNULL, stdout=slave, stderr=slave)
        os.close(slave)
        seen = b""
        try:
            while True:
                seen += os.read(master, 65536)
        except OSError:  # the other side has closed
            os.close(master)
        self.assertEqual(process.wait(), 0)
        expected = "".join("o %d\ne %d\n" % (i, i) for i in range(200)) + "child\n"
        self.assertEqual(seen.decode().replace("\r\n", "\n"), expected)

    def test_a_reader_that_goes_away(self):
        for name, pipe in (("stdout", "|"), ("stderr", "2>&1 >/dev/null |")):
            line = '"$0" -c "import sys\nwhile True: print(1, file=sys.%s)" %s head -1; exit ${PIPESTATUS[0]}' % (name, pipe)
            with self.subTest(name=name):
                code, out = self.shell(line, QLXPY)
                # 120 when something was left in the buffer for the end.
                self.assertIn(code, (1, 120))
                self.assertEqual(out, b"1\n")
        cases = [
            ('"$0" -c "import time; time.sleep(0.3); print(1)" | true; exit ${PIPESTATUS[0]}', b""),
            ('"$0" -c "import time; time.sleep(0.3); print(1, flush=True)" | true; exit ${PIPESTATUS[0]}', b""),
            ('"$0" -c "import time; time.sleep(0.3); 1/0" 2>&1 | true; exit ${PIPESTATUS[0]}', b""),
            ('"$0" -c "print(1)" > /dev/full', b""),
            ('"$0" -c "1/0" 2> /dev/full', b""),
        ]
        for line, out in cases:
            with self.subTest(line=line):
                self.assertEqual(self.shell(line, QLXPY), (self.shell(line, PYTHON)[0], out))

    def test_streams_that_are_closed_from_the_start(self):
        for redirect in (">&-", "2>&-", "<&-", "<&- >&- 2>&-"):
            for text in ("import sys; f = open('out', 'w'); print(sys.stdin is None, sys.stdout is None, sys.stderr is None, file=f); print(1)",
                         "1/0", "input()", "import sys; sys.exit('reason')", "import subprocess; subprocess.call(['true'])"):
                results = []
                for program in (QLXPY, PYTHON):
                    code, _ = self.shell('"$0" -c "%s" %s' % (text, redirect), program)
                    name = os.path.join(self.home, "out")
                    results.append((code, open(name).read() if os.path.exists(name) else ""))
                with self.subTest(redirect=redirect, text=text):
                    self.assertEqual(*results)

    def test_a_long_write_arrives_whole(self):
        size = 50 << 20
        for name, before in (("stdout", ""), ("stderr", ""), ("stdout", "import os; os.set_blocking(1, False)\n")):
            text = "import sys\n%ssys.exit(sys.%s.write('x' * %d + 'end') != %d)" % (before, name, size, size + 3)
            process = self.popen("-c", text, stdin=subprocess.DEVNULL, **{name: subprocess.PIPE})
            with self.subTest(name=name, before=before):
                data = getattr(process, name).read()
                getattr(process, name).close()
                self.assertEqual((process.wait(), len(data), data[-4:]), (0, size + 3, b"xend"))

    def test_every_character(self):
        text = "import sys\nsys.%s.write(''.join(chr(c) for c in range(0x110000) if not 0xd800 <= c < 0xe000))"
        expected = "".join(chr(c) for c in range(0x110000) if not 0xd800 <= c < 0xe000)
        self.assertTrue(self.run_one("-c", text % "stdout") == (0, expected, ""), "stdout differs")
        self.assertTrue(self.run_one("-c", text % "stderr") == (0, "", expected), "stderr differs")

    def test_lone_surrogates(self):
        for text in ("print('before'); print('\\ud800')", "import sys; print('\\udcff\\ud800', file=sys.stderr)", "raise ValueError('\\udfff')",
                     "import sys; sys.exit('\\ud800')", "import sys; sys.stdout.reconfigure(errors='surrogateescape'); print('\\udcff')",
                     "import sys; print(ascii(sys.stdin.read()))"):
            with self.subTest(text=text):
                expected = self.run_one("-c", text, program=PYTHON, stdin=b"a\xff\xed\xa0\x80\0b")
                self.assertEqual(self.run_one("-c", text, stdin=b"a\xff\xed\xa0\x80\0b"), expected)

    def test_nothing_is_lost_at_the_end(self):
        ends = [("import sys; sys.exit(5)", 5), ("1/0", 1), ("raise KeyboardInterrupt", -2 if sys.version_info >= (3, 8) else 1),
                ("import os\nif os.fork() == 0: sys.exit(0)\nos.wait()", 0), ("import atexit; atexit.register(sys.stdout.write, 'y')", 0),
                ("import threading; threading.Thread(target=lambda: print('y', end='')).start()", 0),
                ("import os; sys.stdout.flush(); os.abort()", -6), ("def f(): f()\nf()", 1)]
        for end, code in ends:
            with self.subTest(end=end):
                # Nothing is in the buffer when the process forks.
                flush = "sys.stdout.flush()\n" if "fork" in end else ""
                got, out, _ = self.run_one("-c", "import sys\nsys.stdout.write('x' * 5000)\n" + flush + end)
                self.assertEqual((got, out.rstrip("y")), (code, "x" * 5000))
                self.assertEqual("y" in out, "'y'" in end)

    def test_input(self):
        cases = [("print(input('name? '))", b"Quill\n", "name? Quill\n"), ("print(input(), input())", b"a\r\nb", "a b\n"),
                 ("import threading\nt = threading.Thread(target=lambda: print(input())); t.start(); t.join(); print(input())", b"1\n2\n", "1\n2\n"),
                 ("import sys; print(sys.stdin.read(2), sys.stdin.buffer.read())", b"ab\n", "ab b''\n"),
                 ("import sys; print(len(sys.stdin.read()))", b"z" * 3000000, "3000000\n")]
        for text, stdin, out in cases:
            with self.subTest(text=text):
                self.assertEqual(self.run_one("-c", text, stdin=stdin), (0, out, ""))
        self.assertEqual(self.run_one("-c", "input()")[0], 1)

    def test_input_comes_line_by_line(self):
        process = self.popen("-u", "-c", "while True: print(input()[::-1])", stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        with process.stdin, process.stdout:
            for line in (b"one\n", b"two\n"):
                process.stdin.write(line)
                process.stdin.flush()
                self.assertEqual(process.stdout.readline(), line[-2::-1] + b"\n")


    def test_signals(self):
        for name in ("SIGTERM", "SIGINT", "SIGHUP", "SIGUSR1"):
            codes = []
            for program in (QLXPY, PYTHON):
                process = self.popen("-c", "import time; print('ready', flush=True); time.sleep(60)", program=program,
                                     stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
                self.assertEqual(process.stdout.readline(), b"ready\n")
                time.sleep(0.05)
                process.send_signal(getattr(signal, name))
                codes.append(process.wait(30))
                process.stdout.close()
            with self.subTest(name=name):
                self.assertEqual(*codes)

    def test_modules_of_the_library(self):
        os.mkdir(os.path.join(self.home, "suite"))
        with open(os.path.join(self.home, "suite", "test_small.py"), "w") as out:
            out.write("import unittest\nclass T(unittest.TestCase):\n  def test_a(self): print('said')\n  def test_b(self): self.fail()\n")
        code, out, err = self.run_one("-m", "unittest", "discover", "suite", "-b")
        self.assertEqual((code, out), (1, ""))
        self.assertRegex(err, r"(?s)^\.F\n.*Ran 2 tests in .*FAILED \(failures=1\)\n$")
        self.assertEqual(self.run_one("-m", "json.tool", stdin=b'{"a": 1}'), (0, '{\n    "a": 1\n}\n', ""))
        code, out, err = self.run_one("-m", "timeit", "-n", "2", "-r", "1", "pass")
        self.assertEqual((code, out.split(",")[0], err), (0, "2 loops", ""))

    def test_options_of_the_application(self):
        home = os.path.join(self.home, "other")
        text = "import sys, os; print(sys.argv[1:], os.path.exists(%r), any(p.startswith(%r) for p in sys.path))" % (home, home)
        for arguments in (["--home", home, "-c", text, "x"], ["-q", "--home=" + home, "-nogui", "-c", text, "x"],
                          ["--plugins", "a", "--plugins=b", "--set", "g_console=1", "--home", home, "-c", text, "x"]):
            with self.subTest(arguments=arguments):
                self.assertEqual(self.run_one(*arguments), (0, "['x'] True True\n", ""))
        self.assertEqual(self.run_one("-c", "import sys; print(sys.argv)", "--home", "--open"), (0, "['-c', '--home', '--open']\n", ""))
        script = "print('never')"
        for arguments, reason in ((["--open", "a.scene"], "can't open a.scene"), (["--open"], "argument expected for the --open option"),
                                  (["--set", "g_none=1"], "there is no such configuration variable"), (["--set", "g_console=2"], "neither true nor false"),
                                  (["--set", "g_console"], "NAME=VALUE is expected"), (["--set"], "argument expected for the --set option"),
                                  (["--home", ""], "the value of the --home option is empty"), (["--plugins"], "argument expected for the --plugins option"),
                                  (["--homes", "x"], "unknown option --homes"), (["-Z"], "unknown option -Z"), (["-X"], "argument expected for the -X option"),
                                  (["-c"], "argument expected for the -c option")):
            with self.subTest(arguments=arguments):
                alone = "argument expected" in reason
                code, out, err = self.run_one(*arguments, *([] if alone else ["-c", script]))
                self.assertEqual((code, out), (2, ""))
                self.assertEqual(err.count(reason), 1, err)
                self.assertTrue(err.startswith("qlxpy: "), err)
                self.assertNotIn("no python vm found", err)

    def test_help_lists_every_option(self):
        code, out, err = self.run_one("--help")
        self.assertEqual((code, err, self.run_one("-h")), (0, "", (0, out, "")))
        for option in ("-V --version -h --help -i -q -u -W -X -I -E -s -S -B -O -OO -b -bb -d -v -c -m -nogui --home --plugins --open --set").split():
            self.assertRegex(out, r"(?m)(^|[\s|\[])%s\b" % option)
