"""What the measurements share: times of programs and of statements, and what is said of a ratio."""
import json
import statistics
import subprocess
from time import process_time as clock  # what other processes take is no part of a figure

RUNS = 31
ROUNDS = 500
UNROLLED = 20  # statements in one round, so that the loop itself is hardly a part of the figure

FRAME = """def run({names}):
    start = clock()
    for _ in rounds:
{body}
    return clock() - start
"""


def of_program(program, seconds):
    """Nanoseconds of each case of a benchmark program, medians of 15 interleaved runs."""
    report = subprocess.run(
        [program, "--benchmark_format=json", "--benchmark_repetitions=15", f"--benchmark_min_time={seconds}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true"],
        check=True, stdout=subprocess.PIPE).stdout
    return {row["run_name"]: row["cpu_time"] for row in json.loads(report)["benchmarks"]
            if row["aggregate_name"] == "median"}


def runner(statement, names):
    space = {"clock": clock, "rounds": range(ROUNDS)}
    exec(FRAME.format(names=", ".join(names), body=f"        {statement}\n" * UNROLLED), space)
    return space["run"]


def of_statements(jobs, names, without="pass"):
    """Nanoseconds of each job, a statement and the values of its names, medians of RUNS alternating runs. The
    time of the statement `without` is no part of them."""
    rest = runner(without, names)
    runs = [(runner(statement, names), values) for statement, values in jobs]
    times = [[] for _ in jobs]
    for turn in range(1 + RUNS):  # the first one warms up
        for (run, values), taken in zip(runs, times):
            seconds = run(*values) - rest(*values)
            if turn:
                taken.append(seconds)
    return [statistics.median(taken) * 1e9 / ROUNDS / UNROLLED for taken in times]


def verdict(ratio, bound):
    return f"ratio {ratio:.2f}   bound {bound}{'' if ratio <= bound else '   OVER'}"
