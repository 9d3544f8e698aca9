"""Prints what output into a file costs as ratios to the interpreter's own: prints.py QLXPY PEER PYTHON

PEER is the interpreter's command line on the library that the module loads. The ratio to it is what
our streams cost, and the one that is to stay below 1.5. PYTHON is what is installed, for a look at
what a user would compare with; a distribution may build that faster than its library.
"""
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
    programs = dict(zip(("qlxpy", "peer", "python"), sys.argv[1:4], strict=True))
    print(f"output into a file, medians of {RUNS} alternating runs")
    with tempfile.TemporaryDirectory() as home:
        # Variables of the interpreter, such as the one that turns buffers off, measure something else.
        environment = {name: value for name, value in os.environ.items() if not name.startswith("PYTHON")}
        environment["QLX_HOME"] = home
        for case, (text, size) in CASES.items():
            times = {name: [] for name in programs}
            for run in range(1 + RUNS):  # the first one warms up
                for name, program in programs.items():
                    taken = seconds(program, text, size, environment)
                    if run:
                        times[name].append(taken)
            median = {name: statistics.median(taken) for name, taken in times.items()}
            columns = [f"{name} {median[name] * 1000:6.1f} ms" for name in programs]
            columns += [f"ratio to {name} {median['qlxpy'] / median[name]:.2f}" for name in ("peer", "python")]
            print(f"  {case:22} {'   '.join(columns)}")


main()
