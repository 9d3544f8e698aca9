"""Prints what calls of the package cost a script, against its peers: qlxpy kit.py PEERS

PEERS is the folder of the peers' modules. Runs inside qlxpy.
"""
import importlib
import sys

import qlx
from measure import RUNS, of_statements, verdict

PEERS = ("peer_c", "peer_pybind11")

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
    # A container with a link to an element; a peer gives what has the size of an element's wrapper.
    element, container = qlx.BaseList2D(5159), qlx.BaseContainer()
    container.SetLink(1, element)
    records = [(peer.Thing(), 1, None) for peer in peers if hasattr(peer.Thing, "MakeRecord")]
    yield ("wrapper made and dropped", (1.2,), ("f.GetLink(a) is None", "f.MakeRecord(a) is None"),
           [(container, 1, element)] + records)


def measure(statements, operands):
    jobs = list(zip([statements[0]] + [statements[1]] * (len(operands) - 1), operands))
    if len({eval(statement, dict(zip("fab", values))) for statement, values in jobs}) != 1:
        sys.exit(f"{statements[0]}: the peers do something else")
    return of_statements(jobs, "fab")


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
            print(f"  {title:30} ours {ours:6.1f} ns   {name:13} {taken:6.1f} ns   "
                  f"{verdict(ours / taken, bound_of[name])}")


main()
