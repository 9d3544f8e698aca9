"""Prints the nanoseconds of the operations of scene.py in Blender: blender -b --python scene_blender.py"""
import json
import os
import sys

import bpy
from mathutils import Vector

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from measure import of_statements

STATEMENTS = ("op.empty_display_size", "op.empty_display_size = number", "op.location = vector", "op.name", "op.parent",
              "remove(new('Cube', None))")

objects = bpy.data.objects
op, root = objects.new("Cube", None), objects.new("Null", None)
op.parent = root
values = (op, 41.5, Vector((1.5, 2.5, 3.5)), objects.new, objects.remove)
print(json.dumps(of_statements([(statement, values) for statement in STATEMENTS],
                               ("op", "number", "vector", "new", "remove"), "op")))
