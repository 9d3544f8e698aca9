"""Prints the nanoseconds of geometry.py in Blender: blender -b --python geometry_blender.py -- POINTS RUNS"""
import json
import statistics
import sys
from time import process_time as clock

import bpy

count, runs = (int(word) for word in sys.argv[-2:])
mesh = bpy.data.meshes.new("points")
mesh.vertices.add(count)
points = [vertex.co.copy() for vertex in mesh.vertices]


def read():
    return [vertex.co.copy() for vertex in mesh.vertices]


def write():
    for vertex, point in zip(mesh.vertices, points):
        vertex.co = point


times = [], []
for _ in range(runs):
    for call, taken in zip((read, write), times):
        start = clock()
        call()
        taken.append(clock() - start)
print(json.dumps([statistics.median(taken) * 1e9 / count for taken in times]))
