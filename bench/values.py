"""Prints what operations on values cost a script, against other libraries' vectors: qlxpy values.py PEERS

PEERS is the folder of the peers' modules; libraries are imported where they are installed. Runs inside
qlxpy. The figures are without the loop and without the statement's first name.
"""
import importlib
import sys

from measure import RUNS, of_statements, verdict

BOUND, LIMIT_BOUND = 0.8, 1.2  # the most that the ratio to a library, and to the bare type, is to be

LIBRARIES = ("mathutils", "imath", "FreeCAD")
PEERS = LIBRARIES + ("peer_c",)

# The operation, ours, and what the peers that can do it are given.
OPERATIONS = (
    ("construct from three floats", "V(1.5, 2.5, n)", dict(dict.fromkeys(PEERS, "V(1.5, 2.5, n)"), mathutils="V((1.5, 2.5, n))")),
    ("read an attribute", "a.x", dict.fromkeys(PEERS, "a.x")),
    ("write an attribute", "a.x = n", dict.fromkeys(LIBRARIES, "a.x = n")),
    ("add", "a + b", dict.fromkeys(PEERS, "a + b")),
    ("scale", "a * n", dict.fromkeys(LIBRARIES, "a * n")),
    ("dot product", "a * b", dict.fromkeys(LIBRARIES, "a.dot(b)")),
    ("dot product, by method", "a.Dot(b)", dict.fromkeys(LIBRARIES, "a.dot(b)")),
    ("cross product", "a % b", dict.fromkeys(LIBRARIES, "a.cross(b)")),
    ("normalize", "~a", {"mathutils": "a.normalized()", "imath": "a.normalized()"}),
    ("length", "a.GetLength()", {"mathutils": "a.length", "imath": "a.length()", "FreeCAD": "a.Length"}),
    ("equality", "a == b", dict.fromkeys(LIBRARIES, "a == b")),
    ("matrix * vector", "m * a", {"mathutils": "m @ a", "imath": "a * m", "FreeCAD": "m.multVec(a)"}),
    ("matrix * matrix", "m * o", {"mathutils": "m @ o", "imath": "m * o", "FreeCAD": "m * o"}),
    ("inverse", "~m", {"mathutils": "m.inverted()", "imath": "m.inverse()", "FreeCAD": "m.inverse()"}),
)

AXES = ((2.0, 0.0, 1.0), (0.0, 1.0, 0.0), (-1.0, 0.5, 3.0))
ROWS = [axis + (0.0,) for axis in AXES] + [(1.5, 2.5, 3.5, 1.0)]  # of libraries whose vectors are rows
COLUMNS = list(zip(*ROWS))

# Each module's vector of three numbers, and its matrix.
MAKERS = {
    "qlx": (lambda q, *numbers: q.Vector(*numbers), lambda q: q.Matrix(q.Vector(1.5, 2.5, 3.5), *(q.Vector(*axis) for axis in AXES))),
    "mathutils": (lambda library, *numbers: library.Vector(numbers), lambda library: library.Matrix(COLUMNS)),
    "imath": (lambda library, *numbers: library.V3d(*numbers), lambda library: library.M44d(*sum(ROWS, ()))),
    "FreeCAD": (lambda library, *numbers: library.Vector(*numbers), lambda library: library.Matrix(*sum(COLUMNS, ()))),
    "peer_c": (lambda peer, *numbers: peer.Numbers(*numbers), lambda peer: None),
}


def operands(name):
    """The vector type, two vectors, two matrices and a number; an ImportError where there is no such module."""
    module = importlib.import_module(name)
    vector, matrix = MAKERS[name]
    a, b = vector(module, 1.5, 2.5, 3.5), vector(module, 0.5, -1.0, 2.0)
    return type(a), a, b, matrix(module), matrix(module), 4.5


def main():
    sys.path.insert(0, sys.argv[1])
    peers = {}
    print(f"values in scripts, medians of {RUNS} alternating runs")
    for name in PEERS:
        try:
            peers[name] = operands(name)
        except ImportError:
            print(f"  {name} is not installed: skipped")
    own = operands("qlx")
    for title, statement, theirs in OPERATIONS:
        names = [name for name in theirs if name in peers]
        ours, *others = of_statements(
            [(statement, own)] + [(theirs[name], peers[name]) for name in names], "Vabmon", "a")
        line = f"  {title:28} ours {ours:6.1f} ns"
        for name, taken in zip(names, others):
            bound = LIMIT_BOUND if name == "peer_c" else BOUND
            line += f"   {name} {taken:6.1f} ns   {verdict(ours / taken, bound)}"
        print(line)


main()
