"""Prints the start-up time as a ratio to the interpreter's own: startup.py QLXPY PYTHON"""
import os
import statistics
import subprocess
import sys
import tempfile
import time

RUNS = 31


def seconds(command, environment):
    start = time.perf_counter()
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, env=environment)
    return time.perf_counter() - start


def main():
    qlxpy, python = sys.argv[1:3]
    times = {qlxpy: [], python: []}
    with tempfile.TemporaryDirectory() as home:
        environment = dict(os.environ, QLX_HOME=home)
        for program in times:
            seconds([program, "-c", "pass"], environment)
        for _ in range(RUNS):
            for program in times:
                times[program].append(seconds([program, "-c", "pass"], environment))
    ours, theirs = (statistics.median(times[program]) for program in (qlxpy, python))
    print(f"start-up of '-c pass', medians of {RUNS} alternating runs")
    print(f"  qlxpy {ours * 1000:.1f} ms   python {theirs * 1000:.1f} ms   ratio {ours / theirs:.2f}")


main()
