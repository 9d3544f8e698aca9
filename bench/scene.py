"""Prints what elements of a scene cost a script: qlxpy scene.py

Single operations against figures of another application and against classes of the same script, then scenes of
growing size: time and memory for each node. The operations are without the loop and without the name they begin with.
"""
import json
import os
import shutil
import subprocess
import sys
from time import process_time as clock

import qlx

from measure import RUNS, of_statements, verdict

RADIUS, POSITION = 1106, 903  # a float and a vector of a cube
CUBE, NULL = 5159, 5140
SIZES = (1000, 10000, 100000, 1000000)
CHILDREN = 99   # of each child of a scene's root
HELD = 100000   # wrappers at the same time
LINEAR = 1.5    # the most that a node of the largest scene is to cost, to one of the smallest

# The operation, ours, and the most that its ratio to the other application is to be.
OPERATIONS = (
    ("read a float", "op[r]", 1.0),
    ("write a float", "op[r] = number", 0.5),
    ("write a vector", "op[p] = vector", 0.3),
    ("name", "op.GetName()", 0.8),
    ("parent", "op.GetUp()", 1.2),
    ("make and drop", "new(5159)", 0.3),
)

# Nanoseconds of a comparable application's property access on a comparable machine.
FIXED = (43, 214, 400, 60, 35, 3900)

# The same operations on a class over a dict, and on slots.
OVER_DICT = ("op[r]", "op[r] = number", "op[p] = vector", "op['name']", "op['up']", "new(5159)")
SLOTS = ("op.r", "op.r = number", "op.p = vector", "op.name", "op.up", "new(5159)")


class Items:
    def __init__(self, kind=None):
        self.items = {}

    def __getitem__(self, key):
        return self.items[key]

    def __setitem__(self, key, value):
        self.items[key] = value


class Slots:
    __slots__ = ("r", "p", "name", "up")

    def __init__(self, kind=None):
        self.r = 40.0
        self.p = self.up = None
        self.name = "Cube"


def of_blender():
    """The application's own figures where it is on the PATH; else those that are fixed."""
    blender = shutil.which("blender")
    if not blender:
        print("  blender is not on the PATH: its place is taken by fixed figures")
        return "fixed", FIXED
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "scene_blender.py")
    lines = subprocess.run([blender, "-b", "--factory-startup", "--python", script],
                           check=True, stdout=subprocess.PIPE).stdout.decode().splitlines()
    return "blender", json.loads(next(line for line in lines if line.startswith("[")))


def times_of(statements, op, new, vector):
    names = ("op", "r", "p", "number", "vector", "new")
    values = (op, RADIUS, POSITION, 41.5, vector, new)
    # What begins with another name than `op` is written with it too: both are a look-up of a local name.
    return of_statements([(statement, values) for statement in statements], names, "op")


def compare():
    title, others = of_blender()
    root, op = qlx.BaseObject(NULL), qlx.BaseObject(CUBE)
    op.InsertUnderLast(root)
    items, slots = Items(), Slots()
    items.items = {RADIUS: 40.0, POSITION: None, "name": "Cube", "up": None}
    vector = qlx.Vector(1.5, 2.5, 3.5)
    ours = times_of([statement for _, statement, _ in OPERATIONS], op, qlx.BaseObject, vector)
    by_dict = times_of(OVER_DICT, items, Items, vector)
    by_slot = times_of(SLOTS, slots, Slots, vector)
    for (name, _, bound), own, other, one, two in zip(OPERATIONS, ours, others, by_dict, by_slot):
        print(f"  {name:15} ours {own:6.1f} ns   {title} {other:6.1f} ns   {verdict(own / other, bound)}"
              f"   class over dict {one:6.1f} ns   ratio {own / one:.2f}   slot {two:6.1f} ns   ratio {own / two:.2f}")


def resident():
    """Bytes of the process' memory."""
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def build(size):
    """Nodes below a root, which is returned: so many groups, each with its children."""
    root = qlx.BaseObject(NULL)
    for _ in range(size // (CHILDREN + 1)):
        group = qlx.BaseObject(NULL)
        group.InsertUnderLast(root)
        for _ in range(CHILDREN):
            qlx.BaseObject(CUBE).InsertUnderLast(group)
    return root


def walk(root):
    """The number of nodes below the root."""
    count = 0
    group = root.GetDown()
    while group is not None:
        count += 1
        node = group.GetDown()
        while node is not None:
            count += 1
            node = node.GetNext()
        group = group.GetNext()
    return count


def best(runs, job, *values):
    """The least seconds of a job."""
    times = []
    for _ in range(runs):
        start = clock()
        job(*values)
        times.append(clock() - start)
    return min(times)


def grow():
    roots, memory = [], []
    for size in SIZES:  # all are kept, so that each one's memory is new
        before = resident()
        roots.append(build(size))
        memory.append(resident() - before)
        if walk(roots[-1]) != size:
            raise SystemExit("nodes are missing")
    figures = []
    for size, root, taken in zip(SIZES, roots, memory):
        runs = RUNS if size < HELD else 5
        figures.append([best(runs, job, value) * 1e9 / size for job, value in ((build, size), (walk, root))])
        print(f"  {size:8} nodes, each: built and freed {figures[-1][0]:6.1f} ns   walked {figures[-1][1]:6.1f} ns"
              f"   memory {taken / size:6.1f} bytes")
    for title, smallest, largest in zip(("building and freeing", "walking"), figures[0], figures[-1]):
        print(f"  {title}, the largest scene to the smallest: {verdict(largest / smallest, LINEAR)}")
    held = [None] * HELD
    before, at = resident(), 0
    for group in roots[SIZES.index(HELD)].GetChildren():
        nodes = [group, *group.GetChildren()]
        held[at:at + len(nodes)] = nodes
        at += len(nodes)
    grown = resident() - before
    print(f"  wrapper: sys.getsizeof {sys.getsizeof(held[0])}, growth of the process with {HELD} of them"
          f" {grown / HELD:.1f} bytes each")


print(f"elements of a scene in scripts of {sys.version.split()[0]}, medians of {RUNS} alternating runs")
grow()
compare()
