"""Prints what output into a file costs as a ratio to the interpreter's own: prints.py QLXPY PYTHON"""
import os
import statistics
import subprocess
import sys
import tempfile

RUNS = 5
SHORT = 200000
LONG = 50 << 20

# Each script tells on standard error how long its output took, the last flush with it.
CASES = {
    f"{SHORT} short prints": (f"for i in range({SHORT}): print(i)", sum(len(str(i)) + 1 for i in range(SHORT))),
    f"one write of {LONG >> 20} MB": (f"text = 'x' * {LONG}\nstart = clock()\nsys.stdout.write(text)", LONG),
}
FRAME = """import sys
from time import perf_counter as clock
start = clock()
{}
sys.stdout.flush()
sys.stderr.write(repr(clock() - start))
"""


def seconds(program, text, size, environment):
    with tempfile.TemporaryFile() as out:
        done = subprocess.run([program, "-c", FRAME.format(text)], check=True, stdin=subprocess.DEVNULL, stdout=out,
                              stderr=subprocess.PIPE, env=environment)
        if os.fstat(out.fileno()).st_size != size:
            sys.exit(f"{program} lost output")
    return float(done.stderr)


def main():
    qlxpy, python = sys.argv[1:3]
    print(f"output into a file, medians of {RUNS} alternating runs")
    with tempfile.TemporaryDirectory() as home:
        # Variables of the interpreter, such as the one that turns buffers off, measure something else.
        environment = {name: value for name, value in os.environ.items() if not name.startswith("PYTHON")}
        environment["QLX_HOME"] = home
        for name, (text, size) in CASES.items():
            times = {qlxpy: [], python: []}
            for program in times:
                seconds(program, text, size, environment)
            for _ in range(RUNS):
                for program in times:
                    times[program].append(seconds(program, text, size, environment))
            ours, theirs = (statistics.median(times[program]) for program in (qlxpy, python))
            print(f"  {name:22} qlxpy {ours * 1000:6.1f} ms   python {theirs * 1000:6.1f} ms   ratio {ours / theirs:.2f}")


main()
