"""Prints what the points of an object cost a script: qlxpy geometry.py

Reading copies of all points and writing them, for each point, against figures of another application and against a
list of tuples that is made and read by the same script.
"""
import json
import os
import shutil
import statistics
import subprocess
from time import process_time as clock

import qlx

from measure import verdict

POINTS = 200000
RUNS = 15
BOUNDS = 0.1, 0.2  # of reading and writing, to the other application

# Nanoseconds of a comparable application for a point, on a comparable machine.
FIXED = 473, 401


def of_blender():
    """The application's own figures where it is on the PATH; else those that are fixed."""
    blender = shutil.which("blender")
    if not blender:
        print("  blender is not on the PATH: its place is taken by fixed figures")
        return "fixed", FIXED
    script = os.path.join(os.path.dirname(os.path.abspath(__file__)), "geometry_blender.py")
    lines = subprocess.run([blender, "-b", "--factory-startup", "--python", script, "--", str(POINTS), str(RUNS)],
                           check=True, stdout=subprocess.PIPE).stdout.decode().splitlines()
    return "blender", json.loads(next(line for line in lines if line.startswith("[")))


def of_calls(*calls, count=POINTS):
    """Nanoseconds a point of each call, medians of alternating runs; what a call answers is dropped within it."""
    times = [[] for _ in calls]
    for _ in range(RUNS):
        for call, taken in zip(calls, times):
            start = clock()
            call()
            taken.append(clock() - start)
    return [statistics.median(taken) * 1e9 / count for taken in times]


op = qlx.PolygonObject(POINTS, 0)
points = [qlx.Vector(i, 2 * i, 3 * i) for i in range(POINTS)]
op.SetAllPoints(points)
pairs = [(float(i), 2.0 * i, 3.0 * i) for i in range(POINTS)]
target = [None] * POINTS


def read_tuples():
    return [(x, y, z) for x, y, z in pairs]


def write_tuples():
    for at, (x, y, z) in enumerate(pairs):
        target[at] = x, y, z


read, write, read_peer, write_peer = of_calls(op.GetAllPoints, lambda: op.SetAllPoints(points), read_tuples, write_tuples)
source, theirs = of_blender()
print(f"points of an object, {POINTS} of them, nanoseconds each")
for name, ours, other, tuples, bound in zip(("GetAllPoints", "SetAllPoints"), (read, write), theirs,
                                            (read_peer, write_peer), BOUNDS):
    print(f"  {name:14}{ours:7.1f}   {source} {other:6.0f}   {verdict(ours / other, bound)}   "
          f"tuples {tuples:5.1f}   ratio {ours / tuples:.2f}")
polygons = qlx.PolygonObject(4, POINTS)
print(f"  GetAllPolygons{of_calls(polygons.GetAllPolygons)[0]:7.1f}")
few = qlx.PolygonObject(8, 0)
eight = few.GetAllPoints()
small = of_calls(lambda: [few.GetAllPoints() for _ in range(2000)], lambda: [few.SetAllPoints(eight) for _ in range(2000)],
                 count=16000)
print(f"  of 8 points   {small[0]:7.1f} read {small[1]:7.1f} written")
