"""Objects as a script sees them: calls and their errors, places, tags and who owns them, caches and clones."""
import datetime
import unittest

import qlx
from calls import Call, check, check_dead, outcome

NULL, CUBE, CAMERA, TWIST, NOWHERE = 5140, 5159, 5103, 5134, 123456
PHONG, TEXTURE, UVW, POINTS = 5612, 5616, 5671, 5600
REFUSED = "the object cannot be inserted there"
DEAD = "the object 'qlx.BaseObject' is not alive"
NONE_SET = "returned NULL without setting"  # the interpreter's words for null alone
DIRTY = "BaseObject.GetHierarchyClone expected bool 'dirty' argument, not "
ASIS = qlx.HIERARCHYCLONEFLAGS_ASIS

GETTERS = ("GetAbsPos GetAbsScale GetAbsRot GetFrozenPos GetFrozenScale GetFrozenRot GetRelPos GetRelScale GetRelRot GetMl "
           "GetFrozenMln GetRelMln GetRelMl GetMg GetMln GetMgn GetUpMg GetMp GetRad GetEditorMode GetRenderMode "
           "GetDeformMode GetUniqueIP GetFirstTag GetLastTag GetTags GetDeformCache GetCacheParent GetIsoparm Touch "
           "GetRealSpline NewDependenceList CompareDependenceList TouchDependenceList GetRotationOrder "
           "IsQuaternionRotationMode GetGUID").split()
V, M, T = qlx.Vector(1, 2, 3), qlx.Matrix(), qlx.BaseTime(1)


def capsule():
    """Null is its name."""
    return qlx.PolygonObject(1, 1).GetPolygonR()


def calls():
    op, tag, document, hh = qlx.BaseObject(CUBE), qlx.BaseTag(PHONG), qlx.documents.BaseDocument(), capsule()
    lines, trans = qlx.LineObject(0, 0), qlx.AliasTrans()
    rows = [Call(name) for name in GETTERS]
    rows += [Call("Set" + name, "V", "v", V) for name in (
        "AbsPos", "AbsScale", "AbsRot", "FrozenPos", "FrozenScale", "FrozenRot", "RelPos", "RelScale", "RelRot")]
    rows += [Call(name, "M", "m", M) for name in ("SetMl", "SetRelMl", "SetMg", "SetModelingAxis")]
    rows += [Call(name, "i", key) for name, key in (
        ("SetEditorMode", "mode"), ("SetRenderMode", "mode"), ("SetUniqueIP", "ip"), ("GetTagDataCount", "type"),
        ("IsDirty", "flags"), ("SetDirty", "flags"), ("SetRotationOrder", "order"))]
    return rows + [
        Call("SetDeformMode", "b", "mode"), Call("GetVisibility", "f", "parent"),
        Call("CopyMatrixTo", "A!", "dst", op), Call("GetTag", "i|i", "type nr"),
        Call("MakeTag", "i|A!", "type pred", tag), Call("MakeVariableTag", "ii|A!", "type count pred", tag),
        Call("InsertTag", "O!|A!", "tp pred", tag, tag), Call("KillTag", "i|i", "type nr"),
        Call("GetCache", "|O!", "hh", hh), Call("CheckCache", "O!", "hh", hh), Call("SetIsoparm", "O!", "op", lines),
        Call("CopyTagsTo", "A!iii", "dest visible variable hierarchical", op),
        Call("SetPhong", "bbf", "on anglelimit angle"),
        Call("GetHierarchyClone", "O!A!i|OO!Ni", "hh op flags dirty trans dirtyflags", hh, op, None, trans),
        Call("GetAndCheckHierarchyClone", "O!A!ib|bO!N", "hh op flags dirty allchildren trans", hh, op, trans),
        Call("AddDependence", "O!A!|i", "hh op dirtyflags", hh, op),
        Call("SetQuaternionRotationMode", "bb", "active undo"),
        Call("SynchronizeVectorTrackKeys", "ib|TT", "vectorTrackID bUndo startRange endRange", T, T),
        Call("FindBestEulerAngle", "ibb|TT", "rotationTrackID bAdjustTangent bUndo startRange endRange", T, T),
        Call("EvaluateSynchronizedRotation", "Ti|b", "time flags applyRotation", T),
        Call("GetVectorTracks", "O", "id", None), Call("SearchHierarchy", "A!", "op", op),
        Call("GetModelingAxis", "A!", "doc", document)]


def witness(node):
    """A wrapper that owns nothing."""
    container = qlx.BaseContainer()
    container.SetLink(1, node)
    return container.GetLink(1)


def tearDownModule():
    """Values that a module still has at the end of the process count as lost."""
    global V, M, T
    del V, M, T


class CallsTest(unittest.TestCase):
    def test_arguments(self):
        check(self, qlx.BaseObject(NULL), calls())
        for name, kind in (("GetHighlightHandle", "qlx.BaseDraw"), ("GetVectorCurves", "qlx.CCurve")):
            for bad, said in ((None, "None"), (qlx.BaseObject(CUBE), "qlx.BaseObject")):
                self.assertEqual(outcome(getattr(qlx.BaseObject(CUBE), name), bad),
                                 (TypeError, "argument 1 must be %s, not %s" % (kind, said)))

    def test_a_dead_object_wins(self):
        owner = qlx.BaseObject(NULL)
        child = qlx.BaseObject(CUBE)
        child.InsertUnder(owner)
        del owner
        check_dead(self, child, calls(), DEAD)
        self.assertEqual(outcome(qlx.BaseObject(CUBE).CopyMatrixTo, child), (ReferenceError, DEAD))
        self.assertEqual(outcome(qlx.BaseObject(CUBE).GetHierarchyClone, capsule(), child, 0), (ReferenceError, DEAD))

    def test_new_objects(self):
        self.assertEqual([type(made).__name__ for made in (
            qlx.BaseObject(CUBE), qlx.BaseObject(5100), qlx.BaseObject(5101), qlx.BaseObject(5137),
            qlx.PolygonObject(0, 0), qlx.SplineObject(0, 0), qlx.LineObject(0, 0))],
            "BaseObject PolygonObject SplineObject LineObject PolygonObject SplineObject LineObject".split())
        self.assertEqual(outcome(qlx.PointObject), (NotImplementedError, "this type cannot be instantiated"))
        self.assertRegex(outcome(qlx.BaseObject, NOWHERE)[1], r"\(ID 123456\) is missing. Could not allocate instance$")
        self.assertRegex(outcome(qlx.BaseObject, PHONG)[1], r"qlx\.BaseObject.*5612")
        for kind, id, args in ((qlx.PolygonObject, 5100, "pcnt vcnt"), (qlx.SplineObject, 5101, "pcnt type"),
                               (qlx.LineObject, 5137, "pcnt scnt")):
            error = outcome(kind, -1, 0)
            self.assertIs(error[0], BaseException)
            self.assertRegex(error[1], r"ould not allocate.*\b%i\b|\b%i\b.*ould not allocate" % (id, id))
            check(self, type("", (), {"make": kind}), [Call("make", "ii", args)])


class PlaceTest(unittest.TestCase):
    def near(self, a, b, tolerance=1e-12):
        parts = ("off", "v1", "v2", "v3") if isinstance(a, qlx.Matrix) else ("x", "y", "z")
        for part in parts:
            x, y = getattr(a, part), getattr(b, part)
            if isinstance(x, qlx.Vector):
                self.near(x, y, tolerance)
            else:
                self.assertAlmostEqual(x, y, delta=tolerance * max(1, abs(x)))

    def test_what_is_set_is_got(self):
        op = qlx.BaseObject(NULL)
        for name, value in (("AbsPos", V), ("AbsScale", qlx.Vector(2, 3, 4)), ("AbsRot", qlx.Vector(0.1, 0.2, 0.3)),
                            ("FrozenPos", qlx.Vector(5, 6, 7)), ("FrozenScale", qlx.Vector(1, 2, 1)),
                            ("FrozenRot", qlx.Vector(0.3, 0, 0.1)), ("RelPos", V), ("RelScale", qlx.Vector(2, 1, 0.5)),
                            ("RelRot", qlx.Vector(-0.4, 0.2, 1))):
            self.assertIsNone(getattr(op, "Set" + name)(v=value))
            self.near(getattr(op, "Get" + name)(), value)
        for name in ("Ml", "RelMl", "Mg"):
            matrix = qlx.Matrix(V, qlx.Vector(0, 1, 0), qlx.Vector(-1, 0, 0), qlx.Vector(0, 0, 1))
            self.assertIsNone(getattr(op, "Set" + name)(m=matrix))
            self.near(getattr(op, "Get" + name)(), matrix)

    def test_matrices_agree(self):
        parent, child, other = qlx.BaseObject(NULL), qlx.BaseObject(NULL), qlx.BaseObject(CAMERA)
        child.InsertUnder(parent)
        parent.SetAbsRot(qlx.Vector(0.5, 0.25, -0.5))
        parent.SetAbsPos(qlx.Vector(10, 20, 30))
        child.SetAbsScale(qlx.Vector(2))
        child.SetAbsPos(V)
        self.assertEqual(child.GetUpMg(), parent.GetMg())
        self.near(child.GetMg(), parent.GetMg() * child.GetMl())
        for whole, unit in ((child.GetMg(), child.GetMgn()), (child.GetMl(), child.GetMln())):
            self.near(unit, qlx.Matrix(whole.off, ~whole.v1, ~whole.v2, ~whole.v3))
        child.CopyMatrixTo(other)
        self.assertEqual(other.GetMl(), child.GetMl())
        child.SetModelingAxis(M)
        self.near(child.GetModelingAxis(qlx.documents.GetActiveDocument()), M)

    def test_numbers(self):
        op, other = qlx.BaseObject(CUBE), qlx.BaseObject(CUBE)
        for name, values in (("EditorMode", (0, 1, 2)), ("RenderMode", (1, 0, 2)), ("UniqueIP", (7, -1)),
                             ("RotationOrder", (0, 6)), ("DeformMode", (False, True))):
            for value in values:
                self.assertIsNone(getattr(op, "Set" + name)(value))
                self.assertIs(type(getattr(op, "Get" + name)()), type(value))
                self.assertEqual(getattr(op, "Get" + name)(), value)
        for order, said in ((99, 6), (-3, 0)):
            op.SetRotationOrder(order)
            self.assertEqual(op.GetRotationOrder(), said)
        op.SetEditorMode(2)
        self.assertEqual(op.GetVisibility(0.25), 0.25)
        op.SetQuaternionRotationMode(True, False)
        self.assertIs(op.IsQuaternionRotationMode(), True)
        self.assertNotEqual(op.GetGUID(), other.GetGUID())
        self.assertEqual((op.SearchHierarchy(op), op.SearchHierarchy(other)), (True, False))
        other.InsertUnder(op)
        self.assertEqual((op.SearchHierarchy(other), other.SearchHierarchy(op)), (True, False))
        self.assertIs(op.SynchronizeVectorTrackKeys(903, False), False)
        self.assertIs(op.FindBestEulerAngle(904, True, False, qlx.BaseTime(0)), False)
        self.assertEqual(op.EvaluateSynchronizedRotation(T, 0), qlx.Vector())

    def test_tracks_of_a_vector(self):
        op = qlx.BaseObject(CUBE)
        self.assertIsNone(op.GetVectorTracks(903))
        self.assertEqual(outcome(op.GetVectorTracks, 1.5), (
            TypeError, "BaseObject.GetVectorTracks expected Description identifier, not float"))
        made = [qlx.CTrack(op, (903, qlx.DescLevel(1000 + i, 19, 0))) for i in range(3)]
        for track in made:
            self.assertIsNone(op.GetVectorTracks(903))
            op.InsertTrackSorted(track)
        self.assertEqual(op.GetVectorTracks(903), tuple(made))


class TagTest(unittest.TestCase):
    def test_tags_in_their_order(self):
        op, other = qlx.BaseObject(NULL), qlx.BaseObject(NULL)
        self.assertEqual((op.GetTags(), op.GetFirstTag(), op.GetLastTag(), op.GetTag(PHONG)), ([], None, None, None))
        phong, texture = op.MakeTag(PHONG), op.MakeTag(TEXTURE)
        second = op.MakeTag(TEXTURE, phong)
        self.assertEqual(op.GetTags(), [texture, phong, second])
        self.assertEqual((op.GetFirstTag(), op.GetLastTag()), (texture, second))
        self.assertEqual([op.GetTag(TEXTURE, nr) for nr in (0, 1, 2, -1)], [texture, second, None, None])
        self.assertIs(type(texture), qlx.TextureTag)
        uvw = op.MakeVariableTag(UVW, 3, second)
        self.assertEqual((type(uvw), op.GetTagDataCount(UVW), op.GetLastTag()), (qlx.UVWTag, 3, uvw))
        op.KillTag(TEXTURE, 1)
        self.assertEqual((op.GetTags(), second()), ([texture, phong, uvw], None))
        for visible, there in ((0, []), (1, [TEXTURE, PHONG]), (qlx.NOTOK, [TEXTURE, PHONG]), (-5, [TEXTURE, PHONG] * 2)):
            self.assertIs(op.CopyTagsTo(other, visible, 0, 0), True)
            self.assertEqual([tag.GetType() for tag in other.GetTags()], there)
        other.KillTag(PHONG)
        self.assertEqual([other.SetPhong(False, False, 0), other.GetTag(PHONG), other.SetPhong(True, True, 0.5)],
                         [True, None, True])
        self.assertIsNotNone(other.GetTag(PHONG))

    def test_what_cannot_be_made(self):
        op, other = qlx.BaseObject(NULL), qlx.BaseObject(NULL)
        pred = other.MakeTag(PHONG)
        for call, id in ((lambda: op.MakeTag(NOWHERE), NOWHERE), (lambda: op.MakeTag(CUBE), CUBE),
                         (lambda: op.MakeTag(PHONG, pred), PHONG), (lambda: op.MakeVariableTag(UVW, -5), -5),
                         (lambda: op.MakeVariableTag(PHONG, 4711), 4711)):  # the count, where others have the type
            error = outcome(call)
            self.assertIs(error[0], BaseException)
            self.assertRegex(error[1], r"qlx\.BaseTag.*\(ID %i\)" % id)
        self.assertEqual((op.GetTags(), other.GetTags()), ([], [pred]))

    def test_who_owns_a_tag(self):
        op, other, tag = qlx.BaseObject(NULL), qlx.BaseObject(NULL), qlx.BaseTag(PHONG)
        seen, first = witness(tag), other.MakeTag(TEXTURE)
        for refused in ((tag, first), (tag, tag)):
            self.assertEqual(outcome(op.InsertTag, *refused), (AssertionError, REFUSED))
        self.assertEqual(op.GetTags(), [])
        self.assertIsNone(op.InsertTag(tag))
        del tag
        self.assertEqual(op.GetTags(), [seen])  # the object's
        self.assertIsNone(other.InsertTag(seen, pred=first))
        self.assertEqual((op.GetTags(), other.GetTags()), ([], [first, seen]))
        seen.Remove()
        other.InsertTag(seen)
        self.assertEqual(other.GetTags(), [seen, first])
        del other
        self.assertEqual((seen(), first()), (None, None))
        tag = qlx.BaseTag(PHONG)
        seen = witness(tag)
        self.assertEqual(outcome(op.InsertTag, tag, seen), (AssertionError, REFUSED))
        del tag  # a refused one stays the script's
        self.assertIsNone(seen())

    def test_tags_that_stay(self):
        polygons, op = qlx.PolygonObject(4, 1), qlx.BaseObject(NULL)
        points = polygons.GetTag(POINTS)
        polygons.KillTag(POINTS)
        self.assertEqual(outcome(op.InsertTag, points), (AssertionError, REFUSED))
        self.assertEqual((points(), polygons.GetPointCount()), (points, 4))
        # There is one such block, as long as the object says.
        self.assertEqual(outcome(polygons.MakeVariableTag, POINTS, 1)[0], BaseException)
        self.assertEqual(outcome(polygons.InsertTag, points.GetClone()), (AssertionError, REFUSED))
        for count in (2, 4):
            other = qlx.PolygonObject(count, 0)
            self.assertIs(other.GetTag(POINTS).CopyTo(points, 0), count == 4)
        first = polygons.GetFirstTag()
        for insert in (points.GetClone().InsertBefore, points.GetClone().InsertAfter):
            self.assertEqual(outcome(insert, first), (AssertionError, REFUSED))
        first.GetListHead().FlushAll()
        self.assertEqual((polygons.GetTagDataCount(POINTS), len(polygons.GetAllPoints())), (4, 4))
        self.assertEqual(polygons.GetPoint(3), qlx.Vector())
        spline = qlx.SplineObject(3, 0)
        spline.GetFirstTag().GetListHead().FlushAll()
        self.assertEqual((spline.GetPointCount(), spline.ResizeObject(5), spline.GetPoint(4)), (3, True, qlx.Vector()))

    def test_caches_that_stay(self):
        doc, op = qlx.documents.BaseDocument(), qlx.BaseObject(CUBE)
        doc.InsertObject(op)
        doc.ExecutePasses(None, True, True, True, 0)
        op.GetCache().Remove()
        self.assertEqual(outcome(doc.InsertObject, op.GetCache()), (AssertionError, REFUSED))
        group, mine, cache = qlx.BaseObject(5126), qlx.BaseObject(NULL), op.GetCache()
        group[1000] = shown = qlx.BaseObject(NULL)
        qlx.BaseObject(CUBE).InsertUnder(shown)
        doc.InsertObject(group)
        doc.ExecutePasses(None, True, True, True, 0)
        # What a link in a clone of a document leads to stands in the other one.
        group[1000] = op
        copy = doc.GetClone()
        copy.ExecutePasses(None, True, True, True, 0)
        self.assertEqual((copy.GetFirstObject()[1000], copy.GetFirstObject().GetCache()), (None, None))
        loose = group.GetClone()  # in no document it shows what its link finds
        found = mine.GetHierarchyClone(capsule(), loose, qlx.HIERARCHYCLONEFLAGS_ASPOLY, True)["clone"]
        self.assertEqual((loose[1000], type(found)), (op, qlx.PolygonObject))
        group[1000] = shown
        child = group.GetCache().GetDown()
        child.Remove()
        for goal in (cache, child):
            for insert in (mine.InsertBefore, mine.InsertAfter, mine.InsertUnder, mine.InsertUnderLast):
                self.assertEqual(outcome(insert, goal), (AssertionError, REFUSED))
        for call in (cache.GetListHead().InsertFirst, cache.GetListHead().InsertLast, doc.InsertObject):
            self.assertEqual(outcome(call, child if call == doc.InsertObject else mine), (AssertionError, REFUSED))
        cache.GetListHead().FlushAll()
        self.assertEqual((op.GetCache().GetPointCount(), op.GetRad()), (8, qlx.Vector(100, 100, 100)))
        tags, tag = cache.GetTags(), qlx.BaseTag(5612)
        uvw = cache.GetTag(5671)
        uvw.Remove()
        cache.KillTag(5671)
        uvw.GetListHead().FlushAll()
        for insert in (lambda: mine.InsertTag(uvw), lambda: cache.InsertTag(tag), lambda: tag.InsertAfter(uvw)):
            self.assertEqual(outcome(insert), (AssertionError, REFUSED))
        self.assertIs(qlx.PolygonObject(3, 0).CopyTo(cache, 0), False)
        self.assertIs(uvw.GetClone().CopyTo(uvw, 0), False)
        clone = cache.GetClone()
        self.assertEqual((cache.GetTags(), [node.GetType() for node in clone.GetTags()]), (tags, [node.GetType() for node in tags]))
        self.assertEqual(group.GetCache().GetChildren(), [child])

    def test_data_counts(self):
        op = qlx.PolygonObject(5, 2)
        known = (4, 5600, 5604, 5630, 5671, 5672, 5680, 5682, 5690)
        self.assertEqual([op.GetTagDataCount(type) for type in known], [0, 5, 2, 0, 0, 0, 0, 0, 0])
        for type in set(range(5590, 5700)) - set(known) | {0, 3, 5, -1, 5617}:
            self.assertEqual(outcome(op.GetTagDataCount, type), (ValueError, "Wrong value for given argument."))


class CacheTest(unittest.TestCase):
    def clone(self, generator, *args, **keywords):
        return generator.GetHierarchyClone(capsule(), *args, **keywords)

    def test_capsules(self):
        op, named = qlx.BaseObject(CUBE), datetime.datetime_CAPI
        self.assertIsNone(op.GetCache())
        self.assertIsNone(op.GetCache(None))
        self.assertIsNone(op.GetCache(capsule()))
        self.assertIs(op.CheckCache(capsule()), False)
        for call in (lambda: op.GetCache(named), lambda: op.CheckCache(named),
                     lambda: op.AddDependence(named, qlx.BaseObject(CUBE)),
                     lambda: op.GetHierarchyClone(named, qlx.BaseObject(NULL), 0)):
            self.assertEqual(outcome(call), (ValueError, "PyCapsule_GetPointer called with incorrect name"))

    def test_no_clone_of_itself(self):
        op, cube = qlx.BaseObject(NULL), qlx.BaseObject(CUBE)
        for call in (lambda: self.clone(op, op, 0), lambda: self.clone(op, witness(op), 0, "no number"),
                     lambda: op.GetAndCheckHierarchyClone(capsule(), op, 0, False)):
            error = outcome(call)
            self.assertIs(error[0], SystemError)
            self.assertIn(NONE_SET, error[1])
        for dirty, name in (("1", "str"), ([], "list"), (V, "qlx.Vector"), (float("nan"), "float"), (float("-inf"), "float")):
            self.assertEqual(outcome(self.clone, op, cube, 0, dirty), (TypeError, DIRTY + name))

    def test_clones(self):
        op, cube = qlx.BaseObject(NULL), qlx.BaseObject(CUBE)
        first = self.clone(op, cube, 0)
        self.assertEqual((type(first["clone"]), first["dirty"], sorted(first)), (qlx.PolygonObject, True, ["clone", "dirty"]))
        self.assertEqual(first["clone"].GetPointCount(), 8)
        self.assertEqual(self.clone(op, cube, 0, None), {"clone": None, "dirty": False})
        self.assertEqual(self.clone(op, cube, 0, 0, None, 6), {"clone": None, "dirty": False})
        self.assertEqual(outcome(self.clone, op, cube, 0, dirtyflags=6), (  # no name leads over `trans`
            TypeError, "argument 6 must be impossible<bad format char>, not int"))
        self.assertEqual((cube.GetMp(), cube.GetRad()), (qlx.Vector(), qlx.Vector(100)))
        dirty = [self.clone(op, cube, flags, None, None, flag)["dirty"] for flags, flag in ((0, 4), (0, 6), (0, 4), (8, 6), (8, 6))]
        self.assertEqual(dirty, [True, False, False, True, False])  # each form by itself
        again = self.clone(op, cube, ASIS, True, qlx.AliasTrans(), 6)
        self.assertIsNot(again["clone"], None)
        self.assertNotEqual(again["clone"], cube)
        for flags, kind in ((qlx.HIERARCHYCLONEFLAGS_ASPOLY, qlx.PolygonObject), (qlx.HIERARCHYCLONEFLAGS_ASLINE, qlx.PolygonObject),
                            (qlx.HIERARCHYCLONEFLAGS_ASSPLINE, type(None)), (ASIS, qlx.BaseObject)):
            self.assertIs(type(self.clone(op, cube, flags, True)["clone"]), kind)
        seen = witness(again["clone"])
        again.clear()
        self.assertIsNone(seen())  # it was the script's

    def test_code_of_an_argument(self):
        class Destroys:
            def __int__(self):
                gone.clear()
                return 1

        for at in (0, 1):
            gone = [qlx.BaseObject(NULL), qlx.BaseObject(CUBE)]
            pair = [witness(node) for node in gone]
            self.assertEqual(outcome(self.clone, pair[0], pair[1], 0, Destroys()), (ReferenceError, DEAD))

        class Fails(float):
            def __int__(self):
                raise KeyError(1)

        self.assertEqual(outcome(self.clone, qlx.BaseObject(NULL), qlx.BaseObject(CUBE), 0, Fails("nan")), (KeyError, "1"))

    def test_dependences(self):
        op, cube = qlx.BaseObject(NULL), qlx.BaseObject(CUBE)
        cube.InsertUnder(op)

        def compare():
            op.NewDependenceList()
            op.AddDependence(capsule(), cube)
            return op.CompareDependenceList()

        self.assertEqual([compare(), compare()], [False, True])
        cube.SetAbsPos(V)
        self.assertEqual([compare(), compare()], [False, True])
        op.TouchDependenceList()
        self.assertEqual([compare(), compare()], [False, True])
        first = op.GetAndCheckHierarchyClone(capsule(), cube, 0, False)
        self.assertEqual((type(first["clone"]), first["dirty"]), (qlx.PolygonObject, True))
        seen = witness(first["clone"])
        first.clear()
        self.assertIsNone(seen())

    def test_the_cache_as_clone(self):
        document, op, other = qlx.documents.BaseDocument(), qlx.BaseObject(CUBE), qlx.BaseObject(CUBE)
        document.InsertObject(op)
        for _ in range(2):
            document.ExecutePasses(None, True, True, True, 0)
            found = op.GetAndCheckHierarchyClone(capsule(), other, 0, False)
        cache = op.GetCache()
        self.assertEqual(found, {"clone": cache, "dirty": False})
        found.clear()  # the wrapper's end is not the cache's
        self.assertEqual((cache.IsAlive(), op.GetCache()), (True, cache))

    def test_lines_of_a_view(self):
        op, lines = qlx.BaseObject(CUBE), qlx.LineObject(3, 1)
        self.assertIsNone(op.GetIsoparm())
        op.SetIsoparm(lines)
        own = op.GetIsoparm()
        self.assertEqual((type(own), own == lines, own.GetPointCount()), (qlx.LineObject, False, 3))
        op.SetIsoparm(own)
        self.assertEqual(op.GetIsoparm().GetPointCount(), 3)

    def test_dirty(self):
        op = qlx.BaseObject(CUBE)
        self.assertIs(op.IsDirty(4), True)  # never evaluated
        before = op.GetDirty(4)
        op.SetDirty(4)
        self.assertNotEqual(op.GetDirty(4), before)
        self.assertIsNone(op.Touch())
        spline = qlx.SplineObject(2, 0)
        self.assertEqual((op.GetRealSpline(), spline.GetRealSpline()), (None, spline))
        document, twist = qlx.documents.BaseDocument(), qlx.BaseObject(TWIST)
        twist[qlx.TWISTOBJECT_ANGLE] = 1.0
        twist.InsertUnder(spline)
        spline.SetAllPoints([qlx.Vector(100, -125, 0), qlx.Vector(100, 125, 0)])
        document.InsertObject(spline)
        document.ExecutePasses(None, False, True, True, 0)
        real = spline.GetRealSpline()
        self.assertEqual((type(real), real), (qlx.SplineObject, spline.GetDeformCache()))
        self.assertNotEqual(real.GetPoint(1), spline.GetPoint(1))
        # It stands where the object does, also when only the parent moves.
        group = qlx.BaseObject(NULL)
        document.InsertObject(group)
        spline.InsertUnder(group)
        for x in (0, 5):
            group.SetAbsPos(qlx.Vector(x, 0, 0))
            spline.SetAbsPos(qlx.Vector(7 - x, 0, 0))
            document.ExecutePasses(None, False, True, True, 0)
            real = spline.GetRealSpline()
            self.assertEqual((real.GetMg(), real.GetUpMg(), real.GetMl()), (spline.GetMg(), spline.GetUpMg(), spline.GetMl()))
        cube, below = qlx.BaseObject(CUBE), qlx.BaseObject(TWIST)
        below.InsertUnder(cube)
        cube.InsertUnder(group)
        document.ExecutePasses(None, False, True, True, 0)
        self.assertEqual(cube.GetCache().GetDeformCache().GetMg(), cube.GetMg())
        # A system without extension deforms nothing, also where it is turned and rounding gives it some.
        below[qlx.TWISTOBJECT_ANGLE] = 1.0
        for group_scale, scale in (((1, 1, 1), (1, 0, 1)), ((1, 0, 1), (1, 1, 1)), ((1, 1, 1), (1e-60, 1e-60, 1e-60)), ((1, 1, 1), (1e-110, 1e-110, 1e-110)), ((1, 1, 1), (1, 1, 1))):
            group.SetAbsScale(qlx.Vector(*group_scale))
            group.SetAbsRot(qlx.Vector(0.2, 0.1, 0.7))
            cube.SetAbsRot(qlx.Vector(0.3, 0.4, 0.5))
            below.SetAbsScale(qlx.Vector(*scale))
            below.SetAbsRot(qlx.Vector(0.5, 0.1, 0.2))
            document.ExecutePasses(None, False, True, True, 0)
            deformed = cube.GetCache().GetDeformCache().GetAllPoints()
            self.assertEqual(deformed == cube.GetCache().GetAllPoints(), min(group_scale + scale) < 1e-100)


