"""Prints what calls of the package cost a script, against its peers: qlxpy kit.py PEERS

PEERS is the folder of the peers' modules. Runs inside qlxpy.
"""
import importlib
import statistics
import sys
from time import perf_counter as clock

import qlx

RUNS = 31
ROUNDS = 500
UNROLLED = 20  # calls in one round, so that the loop itself is hardly a part of the figure

PEERS = ("peer_c", "peer_pybind11")

FRAME = """def run(f, a, b):
    start = clock()
    for _ in rounds:
{}
    return clock() - start
"""


def runner(statement):
    names = {"clock": clock, "rounds": range(ROUNDS)}
    exec(FRAME.format(f"        {statement}\n" * UNROLLED), names)
    return names["run"]


def picture():
    made = qlx.bitmaps.BaseBitmap()
    made.Init(64, 64)
    return made


def cases(peers):
    """The title, the most that the ratio to each peer is to be, the call of ours and of a peer's, and
    what it is made on: ours first."""
    ours, first, second = picture(), qlx.Vector(1, 2, 3), qlx.Vector(3, 2, 1)
    vectors = [(peer.Thing.GetDistance, peer.Thing(1, 2, 3), peer.Thing(3, 2, 1)) for peer in peers]
    plain = [(peer.Thing(), None, None) for peer in peers]
    vectors.insert(0, (qlx.Vector.GetDistance, first, second))
    yield "method without arguments", (1.5, 0.5), ("f.GetBw()", "f.GetWidth()"), [(ours, None, None)] + plain
    yield "two arguments by position", (1.0, 0.5), ("f(a, b)",) * 2, vectors
    yield "two arguments by keyword", (1.0, 0.5), ("f(v1=a, v2=b)",) * 2, vectors


def measure(statements, operands):
    statements = [statements[0]] + [statements[1]] * (len(operands) - 1)
    results = {eval(statement, dict(zip("fab", names))) for statement, names in zip(statements, operands)}
    if len(results) != 1:
        sys.exit(f"{statements[0]}: the peers do something else")
    runs = [runner(statement) for statement in statements]
    times = [[] for _ in operands]
    for turn in range(1 + RUNS):  # the first one warms up
        for run, names, taken in zip(runs, operands, times):
            seconds = run(*names)
            if turn:
                taken.append(seconds)
    return [statistics.median(taken) * 1e9 / ROUNDS / UNROLLED for taken in times]


def main():
    sys.path.insert(0, sys.argv[1])
    peers = {}
    print(f"the kit in scripts, medians of {RUNS} alternating runs")
    for name in PEERS:
        try:
            peers[name] = importlib.import_module(name)
        except ModuleNotFoundError:
            print(f"  {name} is not built: skipped")
    for title, bounds, statements, operands in cases(list(peers.values())):
        ours, *theirs = measure(statements, operands)
        bound_of = dict(zip(PEERS, bounds))
        for name, taken in zip(peers, theirs):
            ratio, bound = ours / taken, bound_of[name]
            print(f"  {title:30} ours {ours:6.1f} ns   {name:13} {taken:6.1f} ns   ratio {ratio:.2f}   bound {bound}"
                  f"{'' if ratio <= bound else '   OVER'}")


main()
