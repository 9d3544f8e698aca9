"""Changes a model and saves it in another format: renames, mirrors, and adds what it makes itself.

    ./run examples/edit_scene.py IN OUT

The extension of OUT chooses the format: .obj .glb .dae .ply .stl
"""
import math
import os
import sys

import qlx
from qlx import documents

BEADS = 5

FORMATS = {
    ".obj": qlx.FORMAT_OBJEXPORT,
    ".glb": qlx.FORMAT_GLBEXPORT,
    ".dae": qlx.FORMAT_DAEEXPORT,
    ".ply": qlx.FORMAT_PLYEXPORT,
    ".stl": qlx.FORMAT_STLEXPORT,
}


def polygon_objects(doc):
    pending = doc.GetObjects()
    while pending:
        op = pending.pop()
        pending.extend(op.GetChildren())
        if isinstance(op, qlx.PolygonObject):
            yield op


def subdivided(op):
    """A new object with four polygons for each quad and three for each triangle."""
    points, polygons = op.GetAllPoints(), []
    middles = {}

    def middle(a, b):
        edge = (min(a, b), max(a, b))
        if edge not in middles:
            middles[edge] = len(points)
            points.append((points[a] + points[b]) * 0.5)
        return middles[edge]

    for polygon in op.GetAllPolygons():
        corners = [polygon.a, polygon.b, polygon.c]
        if not polygon.IsTriangle():
            corners.append(polygon.d)
        center = len(points)
        points.append(sum((points[i] for i in corners), qlx.Vector()) * (1 / len(corners)))
        for i, corner in enumerate(corners):
            after = middle(corner, corners[(i + 1) % len(corners)])
            polygons.append((corner, after, center, middle(corners[i - 1], corner)))

    made = qlx.PolygonObject(len(points), len(polygons))
    made.SetAllPoints(points)
    for i, corners in enumerate(polygons):
        made.SetPolygon(i, qlx.CPolygon(*corners))
    made.SetName(op.GetName() + " (fine)")
    made.SetMl(op.GetMl())
    made.SetPhong(True, True, math.radians(40))
    return made


def mirror(op):
    """Across the plane of y and z; the polygons turn with it, so that fronts stay fronts."""
    op.SetAllPoints([qlx.Vector(-point.x, point.y, point.z) for point in op.GetAllPoints()])
    for i, p in enumerate(op.GetAllPolygons()):
        turned = (p.c, p.b, p.a, p.a) if p.IsTriangle() else (p.d, p.c, p.b, p.a)
        op.SetPolygon(i, qlx.CPolygon(*turned))
    op.Message(qlx.MSG_UPDATE)


def helix(turns, radius, height, steps=16):
    """A spline that rises in circles. Files keep no splines: it is what the beads are strung on."""
    count = turns * steps + 1
    spline = qlx.SplineObject(count, qlx.SPLINEOBJECT_TYPE_CUBIC)
    spline.SetName("Helix")
    spline.SetAllPoints([
        qlx.Vector(radius * math.cos(2 * math.pi * i / steps), height * i / (count - 1),
                   radius * math.sin(2 * math.pi * i / steps)) for i in range(count)
    ])
    return spline


def edit(doc):
    models = list(polygon_objects(doc))
    for op in models:
        op.SetName(op.GetName().replace("_", " ").title())
    if models:
        smallest = min(models, key=lambda op: op.GetPointCount())
        fine = subdivided(smallest)
        doc.InsertObject(fine, smallest.GetUp(), smallest)
        mirror(fine)
    stand = qlx.BaseObject(qlx.Odisc)
    stand.SetName("Stand")
    stand.SetRelPos(qlx.Vector(0, -1, 0))
    doc.InsertObject(stand)
    spline = helix(3, 50, 120)
    doc.InsertObject(spline)
    beads = qlx.BaseObject(qlx.Onull)
    beads.SetName("Beads")
    doc.InsertObject(beads)
    for i in range(BEADS):
        bead = qlx.BaseObject(qlx.Osphere)
        bead.SetName("Bead %d" % (i + 1))
        bead[qlx.PRIM_SPHERE_RAD] = 4.0
        bead[qlx.PRIM_SPHERE_SUB] = 12
        bead.SetRelPos(spline.GetSplinePoint(i / (BEADS - 1)))
        bead.InsertUnderLast(beads)
    return len(models)


def main():
    if len(sys.argv) != 3 or os.path.splitext(sys.argv[2])[1].lower() not in FORMATS:
        sys.exit("usage: edit_scene.py IN OUT, where OUT ends in " + " ".join(FORMATS))
    source, target = sys.argv[1:]
    doc = documents.LoadDocument(source, qlx.SCENEFILTER_OBJECTS | qlx.SCENEFILTER_MATERIALS)
    if not doc:
        sys.exit(1)  # the console says why
    count = edit(doc)
    kind = FORMATS[os.path.splitext(target)[1].lower()]
    if not documents.SaveDocument(doc, target, qlx.SAVEDOCUMENTFLAGS_NONE, kind):
        sys.exit(1)
    print(f"{count} models of {os.path.basename(source)} changed, a stand and {BEADS} beads added: {os.path.relpath(target)}")


if __name__ == "__main__":
    main()
