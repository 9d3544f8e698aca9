"""Prints what loading a large model costs: qlxpy files.py PEER

Against the library that reads the file, alone and each time in a program of its own as here, and against another application where it
is on the PATH. Files are made anew for each run of this script.
"""
import array
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
from time import perf_counter as clock  # other processes take part

import qlx
from qlx import documents

from measure import verdict

SIDE = 1000  # quads along each side
RUNS = 11
BOUND = 1.3

BLENDER = """
import bpy, sys, time
path, runs = sys.argv[-2], int(sys.argv[-1])
load = {".obj": "obj_import", ".ply": "ply_import"}[path[-4:]]
times = []
for _ in range(runs):
    start = time.perf_counter()
    getattr(bpy.ops.wm, load)(filepath=path)
    times.append(time.perf_counter() - start)
print("seconds", sorted(times)[len(times) // 2])
"""


def corners():
    for y in range(SIDE):
        for x in range(SIDE):
            at = y * (SIDE + 1) + x
            yield at, at + 1, at + SIDE + 2, at + SIDE + 1


def points():
    for y in range(SIDE + 1):
        for x in range(SIDE + 1):
            yield x * 1.25, (x * 31 + y * 17) % 23 / 7, y * 1.25


def write_obj(path):
    with open(path, "w") as file:
        file.write("o grid\n")
        file.writelines("v %.6f %.6f %.6f\n" % point for point in points())
        file.writelines("f %d %d %d %d\n" % tuple(corner + 1 for corner in face) for face in corners())


def write_ply(path):
    head = ("ply\nformat binary_little_endian 1.0\nelement vertex %d\nproperty float x\nproperty float y\n"
            "property float z\nelement face %d\nproperty list uchar int vertex_indices\nend_header\n")
    with open(path, "wb") as file:
        file.write((head % ((SIDE + 1) ** 2, SIDE ** 2)).encode())
        for point in points():
            file.write(array.array("f", point).tobytes())
        for face in corners():
            file.write(b"\x04" + array.array("i", face).tobytes())


def load(path):
    start = clock()
    doc = documents.LoadDocument(path, qlx.SCENEFILTER_OBJECTS | qlx.SCENEFILTER_MATERIALS)
    taken = clock() - start
    op = doc.GetFirstObject()
    if (op.GetPointCount(), op.GetPolygonCount()) != ((SIDE + 1) ** 2, SIDE ** 2):
        sys.exit("the model is not what it was made as")
    return taken


def of_program(*arguments):
    return subprocess.run(arguments, check=True, stdout=subprocess.PIPE).stdout.decode()


def main():
    blender = shutil.which("blender")
    print(f"load a model of {SIDE ** 2} quads, milliseconds, medians of {RUNS} alternating runs" + ("" if blender else "; blender is not on the PATH: skipped"))
    with tempfile.TemporaryDirectory() as folder:
        for kind, write in (("obj", write_obj), ("ply", write_ply)):
            path = os.path.join(folder, "grid." + kind)
            write(path)
            rounds = [(load(path), float(of_program(sys.argv[1], path))) for _ in range(RUNS)]
            own, library = (statistics.median(times) for times in zip(*rounds))
            line = f"  {kind} {own * 1e3:8.0f}   library alone {library * 1e3:6.0f}   {verdict(own / library, BOUND)}"
            if blender:
                script = os.path.join(folder, "blender.py")
                with open(script, "w") as file:
                    file.write(BLENDER)
                output = of_program(blender, "-b", "--factory-startup", "--python", script, "--", path, str(RUNS))
                other = float(next(row for row in output.splitlines() if row.startswith("seconds")).split()[1])
                line += f"   blender {other * 1e3:6.0f}   ratio {own / other:.2f}"
            print(line)


main()
