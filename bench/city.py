"""Prints what a scene of many generators costs: qlxpy city.py

Cubes of different sizes in groups of a hundred, built by a script, evaluated and walked, in scenes of growing size:
microseconds and bytes for each.
"""
import os
import time

import qlx
from qlx import documents

SIZES = (1000, 10000, 100000)
LINEAR = 2.0  # the most that a cube of the largest scene is to cost, to one of the smallest


def resident():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def build(size):
    doc = documents.BaseDocument()
    for i in range(size):
        if i % 100 == 0:
            group = qlx.BaseObject(qlx.Onull)
            doc.InsertObject(group)
        cube = qlx.BaseObject(qlx.Ocube)
        cube[qlx.PRIM_CUBE_LEN] = qlx.Vector(10, 10 + i % 17, 10)
        cube.SetRelPos(qlx.Vector(i % 100 * 20, 0, i // 100 * 20))
        cube.InsertUnder(group)
    return doc


def walk(doc):
    points = 0
    group = doc.GetFirstObject()
    while group:
        cube = group.GetDown()
        while cube:
            points += cube.GetCache().GetPointCount()
            cube = cube.GetNext()
        group = group.GetNext()
    return points


def measure(size):
    times, memory = [], resident()

    def timed(job, *values):
        start = time.process_time()
        result = job(*values)
        times.append((time.process_time() - start) * 1e6 / size)
        return result

    doc = timed(build, size)
    evaluate = doc.ExecutePasses
    timed(evaluate, None, True, True, True, 0)
    used = (resident() - memory) / size
    timed(evaluate, None, True, True, True, 0)  # nothing has changed
    if timed(walk, doc) != 8 * size:
        raise SystemExit("the cubes are not what they were made as")
    del doc
    return times, used


print("a city of cubes: microseconds for each")
first = None
measure(SIZES[0])  # the first one warms up
for size in SIZES:
    times, used = measure(size)
    first = first or sum(times)
    growth = sum(times) / first
    print(f"  {size:7}   built {times[0]:5.2f}   evaluated {times[1]:5.2f}   again {times[2]:5.3f}   walked {times[3]:5.2f}"
          f"   {used:6.0f} bytes   growth {growth:.2f}   bound {LINEAR}{'' if growth <= LINEAR else '   OVER'}")
