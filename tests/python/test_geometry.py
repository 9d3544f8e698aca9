"""Points, polygons, splines and lines as a script sees them, with their selections and neighbourhoods."""
import copy
import gc
import itertools
import os
import pickle
import random
import tempfile
import unittest

import qlx
from calls import Call, check, check_dead, outcome

NULL, CUBE = 5140, 5159
PHONG = 5612
LINEAR, CUBIC, BEZIER = 0, 1, 4
SELECTED, HIDDEN = 0, 1
LENGTH = ValueError, "Invalid object length."
POINT, POLYGON, SEGMENT, TANGENT, COUNT, CORNER, ARRAY = (
    (IndexError, what + " out of range") for what in (
        "Point index", "Polygon index", "segment index", "tangent index", "Point count", "Point index of polygon",
        "Array size"))
SET = "PointObject.SetAllPoints expected qlx.Vector, not "
HOST_DEAD = "the host object of 'qlx.BaseSelect' is not alive"
LINKED_DEAD = "the linked object of 'qlx.utils.Neighbor' is not alive"
V = qlx.Vector
CORNERS = [V(x, y, z) for x, y, z in itertools.product((-1, 1), repeat=3)]
SIDES = (0, 1, 3, 2), (4, 6, 7, 5), (0, 4, 5, 1), (2, 3, 7, 6), (0, 2, 6, 4), (1, 5, 7, 3)


def cube():
    op = qlx.PolygonObject(8, 6)
    op.SetAllPoints(CORNERS)
    for at, side in enumerate(SIDES):
        op.SetPolygon(at, qlx.CPolygon(*side))
    return op


def grid(size):
    """So many squares in a row and in a column."""
    op = qlx.PolygonObject((size + 1) ** 2, size ** 2)
    op.SetAllPoints([V(x, 0, z) for z in range(size + 1) for x in range(size + 1)])
    for z, x in itertools.product(range(size), repeat=2):
        at = z * (size + 1) + x
        op.SetPolygon(z * size + x, qlx.CPolygon(at, at + size + 1, at + size + 2, at + 1))
    return op


def selection(*numbers):
    made = qlx.BaseSelect()
    for number in numbers:
        made.Select(number)
    return made


def numbers(select):
    return [number for segment in range(select.GetSegments()) for first, last in [select.GetRange(segment, -1)]
            for number in range(first, last + 1)]


class Items:
    """A sequence of another length than it tells, whose code runs."""

    def __init__(self, size, *items):
        self.size, self.items = size, items

    def __len__(self):
        return self.size() if callable(self.size) else self.size

    def __iter__(self):
        return (item() if callable(item) else item for item in self.items)


POINT_CALLS = [Call(name) for name in ("GetPointS", "GetPointH", "GetAllPoints", "GetPointCount")] + [
    Call("GetPoint", "i", "id"), Call("SetPoint", "iV", "id pos", V()), Call("SetAllPoints", "O", "p", None),
    Call("ResizeObject", "i", "pcnt")]


def polygon_calls():
    select, modifier, polygon = qlx.BaseSelect(), qlx.BaseObject(CUBE), qlx.CPolygon(0, 0, 0)
    return [Call(name) for name in (
        "GetPolygonS GetPolygonH GetEdgeS GetEdgeH GetPhongBreak GetAllPolygons GetPolygonCount GetPolygonR GetPolygonW "
        "CreatePhongNormals GetPolygonTranslationMap GetNgonCount GetNgonEdgesCompact").split()] + [
        Call("CalcVertexMap", "A!", "modifier", modifier), Call("CalcVertexmap", "A!", "modifier", modifier),
        Call("GetPolygon", "i", "id"), Call("SetPolygon", "iO!", "id polygon", polygon),
        Call("ResizeObject", "i|iii", "pcnt vcnt nvcnt vc_flags"), Call("GetSelectedEdges", "OO", "e sel", None, None),
        Call("SetSelectedEdges", "OOi", "e pSel ltype", None, None),
        Call("GetNGonTranslationMap", "iO", "ngoncnt polymap", None), Call("GetSelectedNgons", "O!", "sel", select),
        Call("GetHiddenNgons", "O!", "sel", select), Call("ValidateEdgeSelection", "|O", "sel", None),
        Call("GetEdgeSelection", "Oi", "sel type", None),
        Call("GetShadingBreak", "bbb|ff", "includeBorderEdges includeUserBreak includeUserNormals autoNormalsAngle "
             "userNormalsAngle")]


SPLINE_CALLS = [Call(name) for name in (
    "GetInterpolationType", "IsClosed", "SetDefaultCoeff", "GetSegmentCount", "GetTangentCount")] + [
    Call("GetSplinePoint", "f|i", "t segment"), Call("GetSplineTangent", "f|i", "t segment"),
    Call("ResizeObject", "i|i", "pcnt scnt"), Call("GetSegment", "i", "id"),
    Call("SetSegment", "iib", "id cnt closed"), Call("GetTangent", "i", "id"),
    Call("SetTangent", "iVV", "id vl vr", V(), V())]
LINE_CALLS = [Call("Triangulate", "f", "regular"), Call("GetSegmentCount")]


def select_calls():
    select = qlx.BaseSelect()
    return [Call(name) for name in (
        "GetCount", "GetSegments", "DeselectAll", "GetClone", "GetDirty", "GetLastElement")] + [
        Call(name, "i", "num") for name in ("Select", "Deselect", "Toggle", "IsSelected")] + [
        Call(name, "ii", "min max") for name in ("SelectAll", "ToggleAll")] + [
        Call(name, "O!", "src", select) for name in ("Merge", "DeselectOf", "Cross")] + [
        Call("CopyTo", "O!", "dst", select), Call("GetRange", "ii", "segment maxElements"), Call("GetAll", "i", "count"),
        Call("SetAll", "O", "list", None)]


def neighbor_calls():
    return [Call("Flush"), Call("GetEdgeCount"), Call("GetEdgePolys", "ii", "a b"), Call("GetPointPolys", "i", "pnt"),
            Call("GetNeighbor", "iii", "a b poly"), Call("GetPolyInfo", "i", "poly"),
            Call("Init", "A!|O!", "op bs", qlx.PolygonObject(0, 0), qlx.BaseSelect())]


def tearDownModule():
    """Values that a module still has at the end of the process count as lost."""
    global CORNERS, POINT_CALLS, SPLINE_CALLS
    del CORNERS, POINT_CALLS, SPLINE_CALLS


class CallsTest(unittest.TestCase):
    def test_arguments(self):
        for target, calls in ((qlx.SplineObject(3, BEZIER), POINT_CALLS[:-1] + SPLINE_CALLS),
                              (cube(), POINT_CALLS[:-1] + polygon_calls()), (qlx.LineObject(3, 1), POINT_CALLS + LINE_CALLS),
                              (qlx.BaseSelect(), select_calls()), (qlx.utils.Neighbor(), neighbor_calls()),
                              (type("", (), {"make": qlx.CPolygon}), [Call("make", "iii|i", "t_a t_b t_c t_d")]),
                              (qlx.CPolygon(1, 2, 3), [Call("Find", "i", "index"), Call("FindEdge", "ii", "index1 index2"),
                                                       Call("EdgePoints", "i", "edge"), Call("IsTriangle")])):
            check(self, target, calls)

    def test_dead_ones(self):
        parent = qlx.BaseObject(NULL)
        made = [cube(), qlx.SplineObject(2, LINEAR), qlx.LineObject(2, 1)]
        for node in made:
            node.InsertUnder(parent)
        parts = [made[0].GetPointS(), made[0].GetPhongBreak()]
        neighbor = qlx.utils.Neighbor()
        self.assertIs(neighbor.Init(made[0]), True)
        del parent
        for node, calls in zip(made, (POINT_CALLS + polygon_calls(), POINT_CALLS + SPLINE_CALLS, POINT_CALLS + LINE_CALLS)):
            check_dead(self, node, calls, "the object '%s' is not alive" % Call("", "O", "", node).type_name(0))
        own = qlx.BaseSelect()
        for part in parts:
            for call, args in ((part.GetCount, ()), (part.Select, (1,)), (part.GetAll, (3,)), (part.SetAll, ([1],)),
                               (part.GetClone, ()), (own.Merge, (part,)), (own.CopyTo, (part,)), (part.Cross, (own,)),
                               (qlx.BaseContainer().__setitem__, (1, part)), (cube().ValidateEdgeSelection, (part,)),
                               (cube().GetSelectedNgons, (part,)), (qlx.utils.Neighbor().Init, (cube(), part))):
                self.assertEqual(outcome(call, *args), (ReferenceError, HOST_DEAD), call)
        for call, args in ((neighbor.GetEdgeCount, ()), (neighbor.GetPointPolys, (0,)), (neighbor.GetPolyInfo, (0,)),
                           (cube().GetSelectedEdges, (neighbor, 0)), (cube().SetSelectedEdges, (neighbor, own, 0))):
            self.assertEqual(outcome(call, *args), (ReferenceError, LINKED_DEAD), call)
        other = cube()
        self.assertEqual((neighbor.Init(other), neighbor.GetEdgeCount()), (True, 12))
        neighbor.Flush()
        del other
        self.assertEqual(neighbor.GetEdgeCount(), 0)


class CPolygonTest(unittest.TestCase):
    def test_values(self):
        make = qlx.CPolygon
        for polygon, text, corners in (
                (make(1, 2, 3), "(a:1, b:2, c:3)", (1, 2, 3, 3)), (make(1, 2, 3, -1), "(a:1, b:2, c:3)", (1, 2, 3, 3)),
                (make(1, 2, 3, 3), "(a:1, b:2, c:3)", (1, 2, 3, 3)),
                (make(1, 2, 3, t_d=-2), "(a:1, b:2, c:3, d:-2)", (1, 2, 3, -2)),
                (make(-2 ** 31, 0, -1, 2 ** 31 - 1), "(a:-2147483648, b:0, c:-1, d:2147483647)",
                 (-2 ** 31, 0, -1, 2 ** 31 - 1))):
            self.assertEqual((str(polygon), repr(polygon)), (text, text))
            self.assertEqual((polygon.a, polygon.b, polygon.c, polygon.d), corners)
            self.assertIs(polygon.IsTriangle(), corners[2] == corners[3])
        polygon = make(0, 1, 2, 3)
        polygon.a, polygon.b, polygon.c, polygon.d = 7, 6, 5, -1
        self.assertEqual(repr(polygon), "(a:7, b:6, c:5, d:-1)")
        for other in (copy.copy(polygon), copy.deepcopy(polygon), pickle.loads(pickle.dumps(polygon))):
            self.assertEqual(repr(other), repr(polygon))
            self.assertTrue(other == polygon and not other != polygon)
        self.assertEqual((polygon == make(7, 6, 5, 4), polygon == (7, 6, 5, -1)), (False, False))
        for faulty, error in ((lambda: setattr(polygon, "a", 1.5), (TypeError, "Expected int, not float")),
                              (lambda: setattr(polygon, "a", None), (TypeError, "Expected int, not None")),
                              (lambda: setattr(polygon, "d", 2 ** 31), (
                                  OverflowError, "Python int too large to convert to C long")),
                              (lambda: delattr(polygon, "b"), (AttributeError, "the attribute 'b' cannot be removed")),
                              (lambda: polygon < polygon, (TypeError, "unsupported comparison operator ( '<' ) for "
                                                                      "'qlx.CPolygon' and 'qlx.CPolygon'"))):
            self.assertEqual(outcome(faulty), error)
        self.assertEqual(polygon.a, 7)
        self.assertRaises(TypeError, hash, polygon)

    def test_edges(self):
        square, triangle = qlx.CPolygon(5, 6, 7, 8), qlx.CPolygon(5, 6, 7)
        self.assertEqual([square.Find(i) for i in range(4, 10)], [False, True, True, True, True, False])
        self.assertEqual([square.FindEdge(*pair) for pair in ((5, 6), (7, 6), (7, 8), (5, 8), (5, 7), (1, 2), (5, 5))],
                         [0, 1, 2, 3, -1, -1, -1])
        self.assertEqual([triangle.FindEdge(*pair) for pair in ((5, 6), (6, 7), (7, 5), (7, 7))], [0, 1, 3, -1])
        self.assertEqual([square.EdgePoints(i) for i in (0, 3)], [{"a": 5, "b": 6}, {"a": 8, "b": 5}])
        for edge in (-1, 4):
            self.assertEqual(outcome(square.EdgePoints, edge), (IndexError, "edge out of range"))


class PointTest(unittest.TestCase):
    def test_round_trips(self):
        source = random.Random(1)
        for count in (1, 2, 1023, 1024, 1025, 5000):
            op, points = qlx.PolygonObject(count, 0), [V(*(source.uniform(-1e9, 1e9) for _ in "xyz")) for _ in range(count)]
            self.assertIsNone(op.SetAllPoints(points))
            self.assertEqual(op.GetAllPoints(), points)
            points[0].x = 5  # a copy each
            self.assertEqual(op.GetAllPoints()[1:], points[1:])
            self.assertNotEqual(op.GetPoint(0), points[0])
            op.SetAllPoints(tuple(points))
            self.assertEqual(op.GetPoint(count - 1), points[-1])
            op.GetAllPoints()[0].x = 7
            self.assertEqual(op.GetPoint(0).x, 5)
        for kind in (qlx.SplineObject(3, BEZIER), qlx.LineObject(3, 0)):
            kind.SetAllPoints(p=CORNERS[:3])
            self.assertEqual(kind.GetAllPoints(), CORNERS[:3])

    def test_empty(self):
        op = qlx.PolygonObject(0, 0)
        self.assertEqual((op.GetAllPoints(), op.GetAllPolygons(), op.GetPointCount()), ([], [], 0))
        self.assertEqual((op.GetPolygonR(), op.GetPolygonW(), op.CreatePhongNormals()), (None, None, None))
        self.assertEqual((op.GetPolygonTranslationMap(), op.GetNgonEdgesCompact()), ((0, []), []))
        for empty in ([], (), {}, "", 5, None, Items(0), Items(-1), Items(0, V())):
            self.assertEqual(outcome(op.SetAllPoints, empty), LENGTH)
        self.assertEqual(outcome(op.SetAllPoints, [V()]), COUNT)

    def test_ranges(self):
        op = cube()
        for id in (-1, 8, 2 ** 31 - 1, -2 ** 31):
            self.assertEqual(outcome(op.GetPoint, id), POINT)
            self.assertEqual(outcome(op.SetPoint, id, V()), POINT)
        op.SetPoint(op.GetPointCount() - 1, V(9))
        self.assertEqual(op.GetAllPoints(), CORNERS[:-1] + [V(9)])

    def test_nothing_is_set_when_one_is_wrong(self):
        op = cube()
        good = [V(i) for i in range(8)]

        def fails():
            raise KeyError("item")

        rows = [(kind(good[:5] + [bad] + good[6:]), (TypeError, SET + name))
                for kind in (list, tuple, lambda items: Items(8, *items))
                for bad, name in ((None, "None"), ((1, 2, 3), "tuple"), (qlx.Vector4d(), "qlx.Vector4d"), (1.0, "float"))]
        rows += [(kind(good[:count]), COUNT) for kind in (list, tuple, lambda items: Items(8, *items)) for count in (1, 7)]
        rows += [(good + good, COUNT), (good + [None], (TypeError, SET + "None")), ("eightish", (TypeError, SET + "str")),
                 (Items(8, *good + good), COUNT), (Items(9, *good + [V()]), COUNT), (Items(8, *good[:7] + [fails]), (
                     KeyError, "'item'")), (Items(8, *good, fails), (KeyError, "'item'")), (Items(fails), LENGTH),
                 (type("Sized", (), {"__len__": lambda self: 8})(), (TypeError, "'Sized' object is not iterable"))]
        for points, error in rows:
            self.assertEqual(outcome(op.SetAllPoints, points), error, points)
            self.assertEqual(op.GetAllPoints(), CORNERS)
        for points in (Items(8, *good), Items(9, *good), type("L", (list,), {})(good)):
            self.assertIsNone(op.SetAllPoints(points))
            self.assertEqual(op.GetAllPoints(), good)
            op.SetAllPoints(CORNERS)

    def test_code_that_destroys_or_resizes(self):
        for what in (lambda: parent.pop() and V(), lambda: op.ResizeObject(3, 0) and V()):
            parent, op = [qlx.BaseObject(NULL)], cube()
            op.InsertUnder(parent[0])
            error = outcome(op.SetAllPoints, Items(8, *[V()] * 7 + [what]))
            self.assertIn(error, (COUNT, (ReferenceError, "the object 'qlx.PolygonObject' is not alive")))
            self.assertEqual(bool(parent), error == COUNT)

    def test_resize(self):
        op = cube()
        rows = (((9,), 1, (9, 6)), ((7, 5), 1, (7, 5)), ((-1,), 0, (7, 5)), ((3, -1), 1, (3, 5)), ((3, -2), 0, (3, 5)),
                ((4, -1, 2), 0, (3, 5)), ((4, 2, 1), 0, (3, 5)), ((4, -1, -1, 0), 0, (3, 5)), ((4, 2, -1, 0), 0, (3, 5)),
                ((4, -1, 1, 0), 0, (3, 5)), ((4, 2, 1, 0), 1, (4, 2)), ((0, 0), 1, (0, 0)))
        for args, answer, counts in rows:
            found = op.ResizeObject(*args)
            self.assertEqual((type(found), found), (int, answer), args)
            self.assertEqual((op.GetPointCount(), op.GetPolygonCount()), counts, args)
            self.assertEqual((len(op.GetAllPoints()), len(op.GetAllPolygons())), counts)
        spline = qlx.SplineObject(2, BEZIER)
        self.assertIs(spline.ResizeObject(5, 2), True)
        self.assertEqual((spline.GetSegmentCount(), spline.GetTangentCount()), (2, 5))
        spline.ResizeObject(4)
        self.assertEqual((spline.GetSegmentCount(), spline.GetPointCount()), (2, 4))
        self.assertIs(spline.ResizeObject(-1), False)
        self.assertIs(qlx.LineObject(1, 1).ResizeObject(3), True)

    def test_the_collector_of_garbage(self):
        """It may run while a list is made, and its callbacks are a script's."""
        threshold, outcomes = gc.get_threshold(), {"resize": set(), "destroy": set()}
        for name, what, filled in itertools.product(("GetAllPoints", "GetAllPolygons"), outcomes, range(150, 201)):
            parent, op = [qlx.BaseObject(NULL)], cube()
            op.InsertUnder(parent[0])
            count, method, is_alive = op.GetPointCount, getattr(op, name), op.IsAlive

            def react(phase, info):
                if what == "resize":
                    op.ResizeObject(5, 3)
                else:
                    parent.clear()

            def call():
                before.append(is_alive() and count())
                return method()

            before = []
            gc.collect()
            gc.callbacks.append(react)
            gc.set_threshold(200)
            kept = [[] for _ in range(filled)]  # the collector runs at one of the next lists
            try:
                found = outcome(call)
            finally:
                gc.callbacks.remove(react)
                gc.set_threshold(*threshold)
            del kept
            outcomes[what].add((*before, found if type(found) is tuple else len(found)))
        dead = ReferenceError, "the object 'qlx.PolygonObject' is not alive"
        # What was there before the call, and what it answered: the changes in between are those of the collector.
        self.assertEqual(outcomes["resize"], {(8, 8), (8, 6), (5, 5), (5, 3), (8, 5), (8, 3)})
        self.assertEqual(outcomes["destroy"], {(8, 8), (8, 6), (False, dead), (8, dead)})


class PolygonTest(unittest.TestCase):
    def test_round_trips(self):
        op = cube()
        self.assertEqual(op.GetAllPolygons(), [qlx.CPolygon(*side) for side in SIDES])
        first = op.GetPolygon(0)
        first.a = 7
        self.assertEqual(op.GetPolygon(0), qlx.CPolygon(*SIDES[0]))
        op.SetPolygon(id=0, polygon=first)
        self.assertEqual(op.GetPolygon(0).a, 7)

    def test_ranges(self):
        op = cube()
        before = op.GetAllPolygons()
        for id in (-1, 6):
            self.assertEqual(outcome(op.GetPolygon, id), POLYGON)
            self.assertEqual(outcome(op.SetPolygon, id, qlx.CPolygon(0, 0, 99)), POLYGON)
        for at, bad in itertools.product(range(4), (8, -1, -2 ** 31)):
            polygon = qlx.CPolygon(0, 1, 2, 3)
            setattr(polygon, "abcd"[at], bad)
            self.assertEqual(outcome(op.SetPolygon, 0, polygon), CORNER)
        self.assertEqual(op.GetAllPolygons(), before)

    def test_addresses(self):
        op = cube()
        read, write = op.GetPolygonR(), op.GetPolygonW()
        self.assertIn("PyCapsule", type(read).__name__)
        self.assertRegex(repr(read), "^<capsule object NULL at ")
        before = op.GetDirty(4)
        op.GetPolygonR()
        self.assertEqual(op.GetDirty(4), before)
        op.GetPolygonW()
        self.assertNotEqual(op.GetDirty(4), before)

    def test_selected_edges(self):
        op, neighbor = cube(), qlx.utils.Neighbor()
        neighbor.Init(op)
        op.GetEdgeS().Select(0)
        edge = neighbor.GetPolyInfo(0)["edge"][0]
        made = op.GetSelectedEdges(neighbor, SELECTED)
        self.assertEqual(numbers(made), [edge])
        self.assertEqual(numbers(op.GetSelectedEdges(neighbor, op.GetEdgeS())), [edge])
        self.assertEqual(numbers(op.GetSelectedEdges(e=neighbor, sel=selection(0, 1, 2, 3))),
                         sorted(neighbor.GetPolyInfo(0)["edge"]))
        for other in (None, "x", 1.0, [], op):
            self.assertIsNone(op.GetSelectedEdges(neighbor, other))
        self.assertIsNone(op.GetSelectedEdges(neighbor, 99))
        self.assertIsNone(grid(3).GetSelectedEdges(neighbor, SELECTED))  # another object's
        self.assertIs(op.SetSelectedEdges(neighbor, made, HIDDEN), True)
        self.assertEqual(op.GetEdgeH().GetCount(), 2)  # of both polygons
        self.assertIs(op.SetSelectedEdges(neighbor, made, 99), False)
        for call, name, type in ((lambda: op.GetSelectedEdges(None, 0), "GetSelectedEdges", "qlx.utils.Neighbor, not None"),
                                 (lambda: op.SetSelectedEdges(made, made, 0), "SetSelectedEdges",
                                  "qlx.utils.Neighbor, not qlx.BaseSelect"),
                                 (lambda: op.SetSelectedEdges(neighbor, 0, 0), "SetSelectedEdges", "qlx.BaseSelect, not int"),
                                 (lambda: op.ValidateEdgeSelection(5), "ValidateEdgeSelection", "qlx.BaseSelect, not int"),
                                 (lambda: op.GetEdgeSelection(None, 0), "GetEdgeSelection", "qlx.BaseSelect, not None")):
            self.assertEqual(outcome(call), (TypeError, "PolygonObject.%s expected %s" % (name, type)))
        self.assertRaises(OverflowError, op.GetSelectedEdges, neighbor, 2 ** 31)
        one = selection(0)
        self.assertEqual((op.ValidateEdgeSelection(one), one.GetCount()), (True, 2))
        self.assertIs(op.ValidateEdgeSelection(), True)
        self.assertEqual(op.GetEdgeS().GetCount(), 2)
        self.assertIs(op.GetEdgeSelection(one, HIDDEN), True)
        self.assertEqual(numbers(one), numbers(op.GetEdgeH()))

    def test_ngons(self):
        op = cube()
        self.assertEqual(op.GetPolygonTranslationMap(), (6, list(range(6))))
        self.assertEqual((op.GetNgonCount(), op.GetNgonEdgesCompact()), (0, [0] * 6))
        self.assertEqual(op.GetNGonTranslationMap(6, list(range(6))), [[i] for i in range(6)])
        self.assertEqual(op.GetNGonTranslationMap(ngoncnt=2, polymap=(0, 0, 1, 0, 1, 1)), [[0, 1, 3], [2, 4, 5]])
        for polymap, error in (([0] * 5, ARRAY), ([0] * 7, ARRAY), ([], ARRAY), (5, LENGTH), (
                [0, 1, "a"], (TypeError, "PolygonObject.GetNGonTranslationMap expected int or long, not str")), (
                [0, 1, 2, 3, 4, 2 ** 40], (OverflowError, "Python int too large to convert to C long"))):
            self.assertEqual(outcome(op.GetNGonTranslationMap, 6, polymap), error)
        for count in (-1, 7, 2 ** 31 - 1):
            self.assertIsNone(op.GetNGonTranslationMap(count, [0] * 6))
        none = qlx.PolygonObject(3, 0)
        self.assertEqual(none.GetNGonTranslationMap(*none.GetPolygonTranslationMap()), [])
        parent = [qlx.BaseObject(NULL)]
        op.InsertUnder(parent[0])
        self.assertEqual(outcome(op.GetNGonTranslationMap, 6, Items(6, *range(5), lambda: parent.clear() or 5)),
                         (ReferenceError, "the object 'qlx.PolygonObject' is not alive"))
        op, select = cube(), qlx.BaseSelect()
        op.GetPolygonS().SelectAll(1, 3)
        op.GetPolygonH().Select(5)
        self.assertEqual((op.GetSelectedNgons(select), numbers(select)), (True, [1, 2, 3]))
        document, solid = qlx.documents.BaseDocument(), qlx.BaseObject(5161)
        solid[qlx.PRIM_PLATONIC_TYPE] = 3  # of pentagons
        document.InsertObject(solid)
        document.ExecutePasses(None, False, True, True, 0)
        grown = solid.GetCache().GetClone()
        edges = grown.GetNgonEdgesCompact()
        self.assertEqual((grown.GetNgonCount(), grown.ResizeObject(grown.GetPointCount(), len(edges) + 3, 1, 0)), (12, 1))
        with tempfile.TemporaryDirectory() as folder:
            path, file = os.path.join(folder, "solid"), qlx.storage.HyperFile()
            self.assertTrue(file.Open(1, path, qlx.HYPERFILE_WRITE, 0) and grown.WriteObject(file) and file.Close())
            again = qlx.PolygonObject(0, 0)
            self.assertTrue(file.Open(1, path, qlx.HYPERFILE_READ, 0) and again.ReadObject(file, True) and file.Close())
        self.assertEqual(again.GetNgonEdgesCompact(), edges + [0] * 3)
        self.assertEqual((op.GetHiddenNgons(sel=select), numbers(select)), (True, [5]))

    def test_normals(self):
        op = cube()
        self.assertIsNone(op.CreatePhongNormals())
        op.MakeTag(PHONG)
        op.SetPhong(True, True, 0.1)
        normals = op.CreatePhongNormals()
        self.assertEqual(len(normals), 24)
        for at, side in enumerate(SIDES):
            middle = sum((CORNERS[corner] for corner in side), V()) * 0.25
            for normal in normals[4 * at:4 * at + 4]:
                self.assertLess(abs((normal - middle).GetLength()), 1e-6)
        breaks = op.GetShadingBreak(True, True, True)
        self.assertEqual((type(breaks), breaks.GetCount()), (qlx.BaseSelect, 24))
        self.assertEqual(op.GetShadingBreak(True, True, True, autoNormalsAngle=2).GetCount(), 0)


class SelectTest(unittest.TestCase):
    def test_against_a_set(self):
        source, select, model = random.Random(2), qlx.BaseSelect(), set()
        for turn in range(2000):
            low, high = sorted(source.sample(range(40), 2))
            other = set(source.sample(range(40), 6))
            step = source.randrange(9)
            if step == 0:
                select.Select(low), model.add(low)
            elif step == 1:
                select.Deselect(low), model.discard(low)
            elif step == 2:
                select.Toggle(low)
                model ^= {low}
            elif step == 3:
                select.ToggleAll(min=low, max=high)
                model ^= set(range(low, high + 1))
            elif step == 4:
                select.Merge(selection(*other))
                model |= other
            elif step == 5:
                select.DeselectOf(selection(*other))
                model -= other
            elif step == 6 and turn % 5 == 0:
                select.Cross(src=selection(*other, *range(10)))
                model &= other | set(range(10))
            elif step == 7 and turn % 5 == 0:
                select.SelectAll(low, high)
                model = set(range(low, high + 1))
            elif step == 8:
                select.SetAll([int(i in model) for i in range(41)])
            self.assertEqual(numbers(select), sorted(model))
            self.assertEqual((select.GetCount(), select.GetLastElement()), (len(model), max(model, default=-1)))
            self.assertEqual(select.GetAll(41), [int(i in model) for i in range(41)])
            self.assertEqual(select.IsSelected(low), low in model)

    def test_ends(self):
        select = selection(1, 2, 5)
        self.assertEqual([select.GetRange(i, -1) for i in (-1, 0, 1, 2)], [None, (1, 2), (5, 5), None])
        self.assertEqual([select.GetRange(0, 2), select.GetRange(1, 3)], [(1, 1), None])
        self.assertEqual((select.Select(-1), select.Deselect(-1), select.SelectAll(3, 2), select.GetAll(0)),
                         (False, False, False, []))
        self.assertEqual(outcome(select.GetAll, -1), LENGTH)
        self.assertEqual(outcome(select.SetAll, []), LENGTH)
        self.assertEqual(outcome(select.SetAll, [1, None]), (TypeError, "BaseSelect.SetAll expected int or long, not None"))
        self.assertEqual(outcome(select.SetAll, [2 ** 40])[0], OverflowError)
        self.assertEqual(numbers(select), [1, 2, 5])
        self.assertEqual((select.SetAll((True, 0, -7)), numbers(select)), (True, [0, 2]))
        for call in (select.Merge, select.Cross, select.CopyTo):
            self.assertIs(call(select), True)
        self.assertEqual(numbers(select), [0, 2])
        before = select.GetDirty()
        select.Select(7)
        self.assertNotEqual(select.GetDirty(), before)
        select.DeselectOf(select)
        self.assertEqual(select.GetCount(), 0)

    def test_that_of_an_object(self):
        op = cube()
        for name in "GetPointS GetPointH GetPolygonS GetPolygonH GetEdgeS GetEdgeH GetPhongBreak".split():
            getattr(op, name)().Select(3)
            self.assertEqual(numbers(getattr(op, name)()), [3])
        before = op.GetDirty(qlx.DIRTYFLAGS_SELECT)
        op.GetPolygonS().Select(1)
        self.assertNotEqual(op.GetDirty(qlx.DIRTYFLAGS_SELECT), before)
        op.GetPointS().CopyTo(op.GetPointH())
        clone = op.GetPointS().GetClone()
        clone.Select(4)
        self.assertEqual(numbers(op.GetPointS()), [3])
        op.GetPointS().SelectAll(2, 6)
        op.ResizeObject(5)
        self.assertEqual(numbers(op.GetPointS()), [2, 3, 4])
        del op
        self.assertEqual(numbers(clone), [3, 4])

    def test_in_values_and_messages(self):
        container, select = qlx.BaseContainer(), selection(1)
        container[1] = select
        self.assertIn("PyCapsule", type(container[1]).__name__)  # what comes back is the address
        self.assertIs(type(container.GetVoid(1)), type(container[1]))
        op, answer = cube(), {}
        self.assertIs(type(op.Message(1021339, answer)), bool)
        self.assertEqual(answer, {"sel": None})

    def test_code_of_a_list_that_destroys(self):
        parent, op = [qlx.BaseObject(NULL)], cube()
        op.InsertUnder(parent[0])
        part = op.GetPointS()
        self.assertEqual(outcome(part.SetAll, Items(2, 1, lambda: parent.clear() or 1)), (ReferenceError, HOST_DEAD))


class NeighborTest(unittest.TestCase):
    def test_of_a_cube(self):
        op, neighbor = cube(), qlx.utils.Neighbor()
        self.assertEqual((neighbor.GetEdgeCount(), neighbor.GetPointPolys(0), neighbor.GetPolyInfo(0)), (0, [], None))
        self.assertIs(neighbor.Init(op=op), True)
        self.assertEqual(neighbor.GetEdgeCount(), 12)
        for point in range(8):
            self.assertEqual(sorted(neighbor.GetPointPolys(point)),
                             [at for at, side in enumerate(SIDES) if point in side])
        marks = 0
        for at, side in enumerate(SIDES):
            info = neighbor.GetPolyInfo(at)
            for k in range(4):
                a, b = side[k], side[(k + 1) % 4]
                pair = [i for i, other in enumerate(SIDES) if a in other and b in other]
                self.assertEqual(sorted(neighbor.GetEdgePolys(a, b)), pair)
                other, = set(pair) - {at}
                self.assertEqual((neighbor.GetNeighbor(a, b, at), info["face"][k]), (other, other))
                self.assertIs(info["mark"][k], at == neighbor.GetEdgePolys(a, b)[0])
                marks += info["mark"][k]
        self.assertEqual(marks, 12)
        self.assertEqual((neighbor.GetEdgePolys(0, 7), neighbor.GetNeighbor(0, 7, 0), neighbor.GetPolyInfo(6)), (None, -1, None))
        self.assertIs(neighbor.Init(op, selection(0)), True)
        self.assertEqual((neighbor.GetEdgeCount(), neighbor.GetEdgePolys(0, 1)), (4, (0, -1)))
        op.ResizeObject(1, 0)
        self.assertEqual(neighbor.GetEdgeCount(), 4)  # as the object was


class SplineTest(unittest.TestCase):
    def test_other_interpolations_are_refused(self):
        spline = qlx.SplineObject(2, BEZIER)
        for kind in (-1, 5, 99):
            self.assertEqual(outcome(qlx.SplineObject, 3, kind)[0], BaseException)
        spline[qlx.SPLINEOBJECT_TYPE] = 99
        self.assertEqual((spline.GetInterpolationType(), spline[qlx.SPLINEOBJECT_TYPE]), (BEZIER, BEZIER))

    def test_points(self):
        spline = qlx.SplineObject(3, LINEAR)
        spline.SetAllPoints([V(0, 0, 0), V(2, 0, 0), V(2, 2, 0)])
        self.assertEqual([spline.GetSplinePoint(t) for t in (0, 0.5, 0.75, 1, -1, 2)],
                         [V(0, 0, 0), V(2, 0, 0), V(2, 1, 0), V(2, 2, 0), V(0, 0, 0), V(2, 2, 0)])
        self.assertEqual(spline.GetSplineTangent(0.25), V(1, 0, 0))
        self.assertEqual((spline.GetInterpolationType(), spline.IsClosed(), spline.GetTangentCount()), (LINEAR, False, 0))
        self.assertEqual(spline.GetSplinePoint(float("nan")), V())
        self.assertEqual(qlx.SplineObject(0, CUBIC).GetSplinePoint(0.5), V())

    def test_segments(self):
        spline = qlx.SplineObject(4, LINEAR)
        spline.ResizeObject(4, 2)
        spline.SetSegment(0, 2, False)
        spline.SetSegment(id=1, cnt=2, closed=True)
        spline.SetAllPoints([V(0), V(1), V(5), V(6)])
        self.assertEqual([spline.GetSegment(i) for i in (0, 1)],
                         [{"cnt": 2, "closed": False}, {"cnt": 2, "closed": True}])
        self.assertEqual(spline.GetSplinePoint(0, 1), V(5))
        # The number of segments itself passes, and is the host's to answer.
        self.assertEqual((spline.GetSplinePoint(0.5, 2), spline.GetSplineTangent(0.5, 2)), (V(), V()))
        for segment in (-1, 3):
            self.assertEqual(outcome(spline.GetSplinePoint, 0.5, segment), SEGMENT)
            self.assertEqual(outcome(spline.GetSplineTangent, 0.5, segment), SEGMENT)
        for segment in (-1, 2):
            self.assertEqual(outcome(spline.GetSegment, segment), SEGMENT)
            self.assertEqual(outcome(spline.SetSegment, segment, 1, True), SEGMENT)
        for count in (-5, 2 ** 31 - 1):  # whatever they say
            spline.SetSegment(0, count, True)
            self.assertEqual(type(spline.GetSplinePoint(0.5, 1)), V)

    def test_tangents(self):
        spline = qlx.SplineObject(3, BEZIER)
        spline.SetAllPoints([V(0, 0, 0), V(3, 3, 0), V(6, 0, 0)])
        spline.SetDefaultCoeff()
        middle = spline.GetTangent(1)
        self.assertEqual((sorted(middle), middle["vl"]), (["vl", "vr"], -middle["vr"]))
        spline.SetTangent(id=1, vl=V(1), vr=V(2))
        self.assertEqual(spline.GetTangent(1), {"vl": V(1), "vr": V(2)})
        for at in (-1, 3):
            self.assertEqual(outcome(spline.GetTangent, at), TANGENT)
            self.assertEqual(outcome(spline.SetTangent, at, V(), V()), TANGENT)
        self.assertEqual(outcome(qlx.SplineObject(3, LINEAR).GetTangent, 0), TANGENT)


class LineTest(unittest.TestCase):
    def test_triangles(self):
        lines = qlx.LineObject(4, 1)
        self.assertEqual(lines.GetSegmentCount(), 1)
        self.assertIsNone(lines.Triangulate(0))  # no closed line
        self.assertIsNone(lines.Triangulate(float("nan")))


