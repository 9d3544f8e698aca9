"""Shows what is in a model file: the tree, counts, boxes and materials.

    ./run examples/inspect_scene.py FILE
"""
import os
import sys

import qlx
from qlx import documents


def walk(objects, depth=0):
    """Each object with how deep it stands, parents first."""
    pending = [(op, 0) for op in reversed(objects)]
    while pending:
        op, depth = pending.pop()
        yield op, depth
        pending.extend((child, depth + 1) for child in reversed(op.GetChildren()))


def shape_of(op):
    """What the object shows: itself, or what it made by its parameters."""
    return op.GetDeformCache() or (op if isinstance(op, qlx.PointObject) else op.GetCache())


def describe(op):
    shape = shape_of(op)
    if isinstance(shape, qlx.PolygonObject):
        return f"{shape.GetPointCount():7,} points {shape.GetPolygonCount():7,} polygons"
    if isinstance(shape, qlx.PointObject):
        return f"{shape.GetPointCount():7,} points"
    return ""


def corners(op):
    """The corners of the object's box in the world."""
    middle, half, world = op.GetMp(), op.GetRad(), op.GetMg()
    for x in (-half.x, half.x):
        for y in (-half.y, half.y):
            for z in (-half.z, half.z):
                yield world * (middle + qlx.Vector(x, y, z))


def texture_of(material):
    shader = material[qlx.MATERIAL_COLOR_SHADER]
    return os.path.basename(shader[qlx.BITMAPSHADER_FILENAME]) if shader else ""


def plain(text):
    """A name without what a terminal would obey."""
    return "".join(c if c.isprintable() else c.encode("unicode_escape").decode() for c in text)


def inspect(doc):
    doc.ExecutePasses(None, True, True, True, 0)
    box = []
    print(plain(doc.GetDocumentName()))
    for op, depth in walk(doc.GetObjects()):
        name = "  " * (depth + 1) + plain(op.GetName())
        print(f"{name:32.32} {op.GetTypeName():9} {describe(op)}".rstrip())
        if shape_of(op):
            box.extend(corners(op))
    if box:
        low = [min(point[i] for point in box) for i in range(3)]
        high = [max(point[i] for point in box) for i in range(3)]
        print("box       ", "  to  ".join("(" + ", ".join(f"{n:.4g}" for n in end) + ")" for end in (low, high)))
    for material in doc.GetMaterials():
        color = material[qlx.MATERIAL_COLOR_COLOR]
        print(f"material   {plain(material.GetName()):20} ({color.x:.2f}, {color.y:.2f}, {color.z:.2f})  "
              f"{plain(texture_of(material))}".rstrip())


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: inspect_scene.py FILE")
    doc = documents.LoadDocument(sys.argv[1], qlx.SCENEFILTER_OBJECTS | qlx.SCENEFILTER_MATERIALS)
    if not doc:
        sys.exit(1)  # the console says why
    inspect(doc)


if __name__ == "__main__":
    main()
