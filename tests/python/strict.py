"""Runs one test file inside qlxpy and is strict about how the process ends.

    strict.py QLXPY PYTHON TEST_FILE

The process must exit with 0 and print the end mark, with the record of leaks the mark of an empty
record, and nothing else: a crash, a lost exit code, an instance that is alive at the end or an
unexpected line on the console fails the test.
"""
import os
import re
import subprocess
import sys
import tempfile

qlxpy, python, test_file = sys.argv[1:4]
runner = os.path.join(os.path.dirname(os.path.abspath(__file__)), "runner.py")
with tempfile.TemporaryDirectory() as home:
    environment = dict(os.environ, QLX_HOME=home, QLXPY=qlxpy, QLX_TEST_PYTHON=python,
                       QLX_DIAGNOSTICS="1")
    done = subprocess.run([qlxpy, "--set", "g_trackLeaks=1", runner, test_file], env=environment,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
out = done.stdout.decode(errors="replace")
err = done.stderr.decode(errors="replace")
if done.returncode == 0 and re.fullmatch(r"end of tests: [1-9]\d* ran\n", out) and err == "Python Trace End...\n":
    print(out, end="")
    sys.exit(0)
print(f"exit code {done.returncode}\n--- output\n{out}--- errors\n{err}")
sys.exit(1)
