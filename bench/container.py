"""Prints what the entries of a container cost a script: qlxpy container.py

Beside a class of the same script whose items go to a dict, and for containers of many entries. The figures are without
the loop and without the statement's first name.
"""
import random
import statistics
import sys
from time import perf_counter as clock

from qlx import BaseContainer

RUNS = 31
ROUNDS = 500
UNROLLED = 20  # statements in one round
BOUND = 0.7    # the most that the ratio to the class is to be

# On 3.11 also beside fixed figures: nanoseconds, and the most that the ratio to them is to be.
FIXED = {"read": (20, 1.5), "write": (64, 0.8)}
SIZES = (1000, 10000, 100000, 1000000)

FRAME = """def run(c, key, value):
    start = clock()
    for _ in rounds:
{}
    return clock() - start
"""


class Items:
    def __init__(self):
        self.items = {}

    def __getitem__(self, key):
        return self.items.get(key)

    def __setitem__(self, key, value):
        self.items[key] = value


def runner(statement):
    names = {"clock": clock, "rounds": range(ROUNDS)}
    exec(FRAME.format(f"        {statement}\n" * UNROLLED), names)
    return names["run"]


def measure(statement, containers):
    """Nanoseconds for each container, medians of alternating runs."""
    run, empty = runner(statement), runner("c")
    times = [[] for _ in containers]
    for turn in range(1 + RUNS):  # the first one warms up
        for c, taken in zip(containers, times):
            seconds = run(c, 7, 12345) - empty(c, 7, 12345)
            if turn:
                taken.append(seconds)
    return [statistics.median(taken) * 1e9 / ROUNDS / UNROLLED for taken in times]


def compare():
    containers = [BaseContainer(), Items()]
    for c in containers:
        for key in range(10):
            c[key] = key
    for title, statement in (("read", "c[key]"), ("write", "c[key] = value")):
        ours, theirs = measure(statement, containers)
        line = f"  {title:6} ours {ours:6.1f} ns   class over dict {theirs:6.1f} ns   ratio {ours / theirs:.2f}   bound {BOUND}"
        line += "" if ours / theirs <= BOUND else "   OVER"
        if sys.version_info[:2] == (3, 11):
            fixed, bound = FIXED[title]
            line += f"   fixed {fixed} ns   ratio {ours / fixed:.2f}   bound {bound}" + ("" if ours / fixed <= bound else "   OVER")
        print(line)


def fill_and_read(c, keys):
    """Seconds of each."""
    start = clock()
    for key in keys:
        c[key] = key
    filled = clock()
    for key in keys:
        c[key]
    return filled - start, clock() - filled


def grow():
    for size in SIZES:
        keys = list(range(0, 7 * size, 7))
        random.Random(size).shuffle(keys)
        line = f"  {size:8} entries in random order, ns each:"
        for title, make in (("ours", BaseContainer), ("dict", dict)):
            times = [fill_and_read(make(), keys) for _ in range(5 if size < 1000000 else 3)]
            fill, read = (min(each) * 1e9 / size for each in zip(*times))
            line += f"   {title} fill {fill:6.1f} read {read:6.1f}"
        print(line)


print(f"entries of a container in scripts, medians of {RUNS} alternating runs")
compare()
grow()
