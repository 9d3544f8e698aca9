"""Containers: every value to the host and back, typed access, instances, copies, and what a script's own code does
meanwhile."""
import copy
import datetime
import gc
import pickle
import random
import sys
import types
import unittest
import unittest.mock
import uuid

import qlx
from qlx import BaseContainer, BaseList2D, BaseTime, DescID, DescLevel, Matrix, Vector, Vector4d

CUBE, MATERIAL = 5159, 5703
NOT_ALIVE = "the object 'qlx.BaseContainer' is not alive"
NO_HOST = "the host object of 'qlx.BaseContainer' is not alive"
NO_VECTOR = "argument 2 must be net.tavor.parametrictype.vec<3,float64>, not int"


class Evil:
    """Destroys the element that holds the container while it is converted."""

    def __init__(self, holder):
        self.holder = holder

    def __int__(self):
        self.holder.clear()
        return 3

    def __str__(self):
        self.holder.clear()
        return "evil"


class ContainerTest(unittest.TestCase):
    def assert_raises(self, exception, text, call):
        with self.assertRaises(exception) as caught:
            call()
        if text is not None:
            self.assertEqual(str(caught.exception), text)

    def test_values_come_back_unchanged(self):
        element = BaseList2D(CUBE)
        values = [None, 0, 1, -1, 2 ** 31 - 1, -2 ** 31, 2 ** 31, 2 ** 63 - 1, True, 0.1, -0.0, 1e308, "", "x", "\u20ac\0",
                  Vector(1, 2, 3), Vector4d(1, 2, 3, 4), DescID(), DescID(1, DescLevel(2, 3, 4)), Matrix(Vector(1)), BaseTime(1, 30), uuid.uuid4(), BaseContainer(9), element]
        bc = BaseContainer(1)
        for id, value in enumerate(values):
            bc[id] = value
            self.assertEqual(bc[id], value)
            self.assertEqual(bc.GetData(id), value)
        self.assertEqual([id for id, value in bc], list(range(len(values))))
        self.assertEqual([value for id, value in bc][:-2], values[:-2])
        self.assertEqual(bc, BaseContainer(bc))
        del element, values, value
        self.assertIsNone(bc[len(bc) - 1])
        self.assertIsNone(bc.GetLink(len(bc) - 1))

    def test_what_comes_back_is_a_copy(self):
        bc = BaseContainer()
        deep = DescID(1)
        for level in range(5):
            deep.PushId(DescLevel(level))
        for value, change in ((deep, DescID.PopId), (Vector4d(1), Vector4d.SetZero), (Vector(1, 2, 3), Vector.Normalize)):
            bc[1] = value
            before = repr(value)
            change(bc[1])
            change(value)
            self.assertNotEqual(repr(value), before)
            self.assertEqual(repr(bc[1]), before)
        inner = bc[1] = BaseContainer(5)
        bc[1].SetId(6)
        inner.SetId(7)
        self.assertEqual(bc[1].GetId(), 5)

    def test_times_are_kept_reduced(self):
        bc, time = BaseContainer(), BaseTime(1)
        time.SetNumerator(10)
        time.SetDenominator(4)
        bc[1] = time
        self.assertEqual((bc[1].GetNumerator(), bc[1].GetDenominator()), (5, 2))

    def test_a_value_below_32_bits_is_cut(self):
        bc = BaseContainer()
        bc[1] = -2 ** 32 - 1
        self.assertEqual(bc[1], -1)

    def test_typed_access(self):
        bc = BaseContainer()
        bc[1], bc[2], bc[3] = 7, 2.9, "text"
        self.assertEqual([bc.GetInt32(2), bc.GetFloat(1), bc.GetBool(2), bc.GetInt64(1), bc.GetLong(3, 5)], [2, 7.0, True, 7, 5])
        for number, (narrow, wide) in ((1e300, (2 ** 31 - 1, 2 ** 63 - 1)), (-2.0 ** 40, (-2 ** 31, -2 ** 40)),
                                       (-2147483648.9, (-2 ** 31,) * 2), (2.0 ** 31, (2 ** 31 - 1, 2 ** 31)), (float("nan"), (0, 0))):
            bc[4] = number
            self.assertEqual((bc.GetInt32(4), bc.GetLong(4), bc.GetInt64(4)), (narrow, narrow, wide), number)
        self.assertEqual((bc.GetString(3), bc.GetFilename(3), bc.GetString(1, "none")), ("text", "text", "none"))
        self.assertEqual((bc.GetVector(1), bc.GetMatrix(1), bc.GetTime(1)), (Vector(), Matrix(), BaseTime()))
        for name, value in (("Bool", True), ("Int32", -5), ("LLong", 2 ** 40), ("Real", 1.5), ("String", "s"),
                            ("Filename", "/a/b"), ("Vector", Vector(1)), ("Matrix", Matrix()), ("Time", BaseTime(1, 25)),
                            ("Uuid", uuid.uuid4()), ("Container", BaseContainer(3))):
            getattr(bc, "Set" + name)(50, value)
            self.assertEqual(getattr(bc, "Get" + name)(50), value, name)
        self.assertEqual((bc.IsInstance(), bc.GetContainer(50).IsInstance(), bc.GetContainer(1)), (True, False, None))

    def test_entries_keep_their_order(self):
        bc, model = BaseContainer(), {}
        choose = random.Random(1)
        for step in range(3000):
            id = choose.randrange(60)
            if choose.random() < 0.7:
                bc[id] = model[id] = step
            elif id in model:
                del bc[id], model[id]
            else:
                self.assertFalse(bc.RemoveData(id))
        self.assertEqual(list(bc), list(model.items()))
        bc.Sort()
        self.assertEqual(list(bc), sorted(model.items()))
        first = bc.GetIndexId(0)
        self.assertEqual(bc.FindIndex(first), {"index": 0, "ppData": model[first]})
        self.assertEqual(bc.FindIndex(99), {"index": -1, "ppData": None})
        self.assertEqual((bc.GetIndexId(-1), bc[99], bc.GetIndexData(1000)), (-1, None, None))

    def test_insertion_behind_an_entry(self):
        bc = BaseContainer()
        bc[1], bc[2] = "one", "two"
        self.assertTrue(bc.InsDataAfter(3, "three", bc.FindIndex(1)["index"]))
        self.assertTrue(bc.InsDataAfter(4, "four", last=-1))
        self.assertEqual([id for id, value in bc], [4, 1, 3, 2])
        self.assertEqual((bc.InsDataAfter(5, 0, 4), bc.InsDataAfter(5, 0, -2)), (False, False))
        self.assertTrue(bc.RemoveIndex(index=0))
        self.assertEqual(len(bc), 3)

    def test_links_and_pointers(self):
        bc, cube, material = BaseContainer(), BaseList2D(CUBE), BaseList2D(MATERIAL)
        bc.SetLink(1, cube)
        bc.SetLink(2, material)
        for get, found in ((bc.GetLink, [cube, material, None]), (bc.GetObjectLink, [cube, None, None]),
                           (bc.GetMaterialLink, [None, material, None])):
            self.assertEqual([get(id) for id in (1, 2, 3)], found)
        self.assertEqual([bc.GetLink(1, None, type) for type in (0, CUBE, MATERIAL)], [cube, cube, None])
        capsule = datetime.datetime_CAPI
        bc.SetVoid(4, capsule)
        self.assertEqual(type(bc.GetVoid(4)), type(capsule))
        self.assertIs(bc.GetVoid(5, capsule), capsule)
        self.assertEqual([bc.GetVoid(5), bc.GetVoid(1), bc.GetVoid(5, None)], [None] * 3)
        self.assertEqual([bc.GetCustomDataType(id) for id in range(6)], [None] * 6)
        for call, text in ((lambda: bc.SetVoid(1, 2), "argument 2 must be PyCapsule, not int"),
                           (lambda: bc.SetLink(1, None), "argument 2 must be qlx.BaseList2D, not None"),
                           (lambda: bc.GetClone(0, 1), "argument 2 must be qlx.AliasTrans, not int"),
                           (lambda: bc.CopyTo(bc, 0, bc), "argument 3 must be qlx.AliasTrans, not qlx.BaseContainer"),
                           (lambda: bc.InsDataAfter(1, 2, None), "argument 3 must be int, not None")):
            self.assert_raises(TypeError, text, call)
        for id in (1, 4):
            one = BaseContainer()
            one.InsData(id, 0)
            bc.CopyTo(one, 0)
            for other in (1, 2, 4):
                if other != id:
                    del one[other]
            outer = BaseContainer()
            outer[8] = one
            for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
                self.assert_raises(TypeError, "cannot pickle the entry %d of a container: it holds a link or a pointer" % id,
                                   lambda: pickle.dumps(outer, protocol))
            self.assertEqual(copy.deepcopy(one), one)

    def test_errors(self):
        bc = BaseContainer()
        for call, exception, text in (
                (lambda: bc["a"], TypeError, "__getitem__ expected int, not str"),
                (lambda: bc.__setitem__(None, 1), TypeError, "__setitem__ expected int, not None"),
                (lambda: bc[2 ** 31], OverflowError, "Python int too large to convert to C long"),
                (lambda: bc.__setitem__(1, object()), TypeError, "could not convert 'object'"),
                (lambda: bc.__setitem__(1, 2 ** 70), OverflowError, None),
                (lambda: bc.__setitem__(1, "\ud800"), UnicodeEncodeError, None),
                (lambda: bc.SetFilename(1, "a\0b"), ValueError, "embedded null byte"),
                (lambda: bc.SetVector(1, 2), TypeError, NO_VECTOR),
                (lambda: bc.InsData(1, object()), TypeError, "could not convert 'object'"),
                (lambda: bc < bc, TypeError, None)):
            with self.subTest(text=text):
                self.assert_raises(exception, text, call)
        self.assertEqual(len(bc), 0)

    def test_a_value_that_destroys_the_holder(self):
        for call in (lambda bc, evil: bc.SetInt32(1, evil), lambda bc, evil: bc.SetString(1, evil)):
            holder = [BaseList2D(CUBE)]
            bc = holder[0].GetDataInstance()
            self.assert_raises(ReferenceError, NO_HOST, lambda: call(bc, Evil(holder)))

    def test_a_result_that_destroys_the_holder(self):
        holder = []

        class EvilUuid(uuid.UUID):
            def __init__(self, **words):
                holder.clear()
                super().__init__(**words)
        plain = uuid.UUID
        for call, dies in ((list, True), (lambda bc: bc[1], False), (lambda bc: bc.FindIndex(1), False),
                           (lambda bc: bc.GetUuid(1), False), (lambda bc: bc.__reduce__(), False)):
            holder.append(BaseList2D(CUBE))
            bc = holder[0].GetDataInstance()
            bc[1], bc[2] = plain(int=1), 2
            uuid.UUID = EvilUuid
            try:
                if dies:
                    self.assert_raises(ReferenceError, NO_HOST, lambda: call(bc))
                else:
                    self.assertIn(repr(plain(int=1))[1:], repr(call(bc)).replace("EvilUuid", "UUID"))
            finally:
                uuid.UUID = plain
            self.assertEqual(holder, [])

    def test_instances_follow_their_entries(self):
        """Whatever happens above it, an instance is what its entries hold at the moment, or it raises."""
        choose = random.Random(5)
        element = BaseList2D(CUBE)
        for root in (BaseContainer(7), element.GetDataInstance(), BaseContainer(9).GetClone(0)):
            alive = dead = 0
            for step in range(3000):
                if step % 40 == 0:
                    root.FlushAll()
                    views = {(): root}
                path = choose.choice(list(views))
                where, id = views[path], choose.randrange(3)
                try:
                    choose.choice((
                        lambda: where.SetContainer(id, BaseContainer(step)), lambda: where.SetContainer(id, where),
                        lambda: where.SetContainer(id, root), lambda: where.SetInt32(id, step),
                        lambda: where.RemoveData(id), lambda: where.RemoveIndex(0), lambda: where.SetIndexData(0, root),
                        lambda: where.InsDataAfter(id, root, -1), lambda: where.InsDataAfter(id, step, -1), where.Sort,
                        lambda: where.MergeContainer(root), lambda: where.CopyTo(choose.choice(list(views.values())), 0),
                        lambda: root.CopyTo(where, 0), lambda: where.__setstate__([(id, 132, root), (id, 15, 1)]),
                        lambda: choose.random() < 0.1 and where.FlushAll()))()
                    view = where.GetContainerInstance(id)
                    if view is not None and len(path) < 6:
                        views[path + (id,)] = view
                except ReferenceError:
                    pass
                for path, view in views.items():
                    wanted = root.GetClone(0)
                    for id in path:
                        wanted = None if wanted is None else wanted.GetContainer(id)
                    if wanted is None:
                        self.assert_raises(ReferenceError, NOT_ALIVE, view.GetId)
                        dead += 1
                    else:
                        self.assertEqual((view, len(view)), (wanted, len(wanted)))
                        alive += len(path) > 1
            self.assertGreater(min(alive, dead), 1000)

    def test_pointers_to_containers_are_instances(self):
        bc = BaseContainer()
        bc[1], bc[2] = BaseContainer(5), 7
        bc.GetDataPointer(1)[3] = 4
        bc.FindIndex(1)["ppData"].SetId(6)
        self.assertEqual((bc[1][3], bc[1].GetId(), bc.GetDataPointer(2), bc.GetDataPointer(3)), (4, 6, 7, None))

    def test_instances_end_with_their_element(self):
        element = BaseList2D(CUBE)
        data = element.GetDataInstance()
        data[1] = BaseContainer(5)
        view = data.GetContainerInstance(1)
        view.SetContainer(2, BaseContainer(6))
        inner = view.GetContainerInstance(2)
        self.assertEqual((inner.GetId(), inner.IsInstance(), data[1][2].GetId()), (6, True, 6))
        del data, view, element
        for call in (inner.GetId, inner.IsInstance, lambda: len(inner), lambda: list(inner), lambda: inner[1],
                     lambda: inner.GetContainerInstance(1), lambda: inner == inner, lambda: pickle.dumps(inner)):
            self.assert_raises(ReferenceError, NO_HOST, call)

    def test_an_argument_that_ends_the_instance(self):
        for setter in (lambda view, evil: view.SetInt32(1, evil), lambda view, evil: view.SetString(1, evil),
                       lambda view, evil: BaseContainer().CopyTo(view, evil)):
            bc = BaseContainer()
            bc[1] = BaseContainer()
            evil = Evil(types.SimpleNamespace(clear=bc.FlushAll))
            self.assert_raises(ReferenceError, NOT_ALIVE, lambda: setter(bc.GetContainerInstance(1), evil))

    def test_copies_and_pickles(self):
        bc = BaseContainer(3)
        for id, value in enumerate((None, 1, 2 ** 40, 0.1, "\u20ac", Vector(1), Matrix(Vector(2)), BaseTime(1, 3), uuid.uuid4())):
            bc[id] = value
        bc.SetInt64(20, 5)
        bc.SetInt64(21, -1)
        bc.SetFilename(22, "/a/b")
        bc.InsData(1, "a second entry of that id")
        bc[23] = copy.copy(bc)
        copies = [copy.copy(bc), copy.deepcopy([bc])[0], bc.GetClone(0), BaseContainer(bc)]
        copies += [pickle.loads(pickle.dumps(bc, protocol)) for protocol in range(pickle.HIGHEST_PROTOCOL + 1)]
        for other in copies:
            self.assertEqual(other, bc)
            self.assertEqual([other.GetType(id) for id, value in other], [bc.GetType(id) for id, value in bc])
            self.assertTrue(other.IsInstance())
            other[23].SetId(4)
            other[1] = 2
            self.assertNotEqual(other, bc)
        self.assertRaises(TypeError, hash, bc)
        color = BaseContainer()
        color.__setstate__([(1, 400007013, Vector4d(1, 2, 3, 4)), (2, 1040682, Vector4d(5))])
        color = pickle.loads(pickle.dumps(color))
        self.assertEqual([(color.GetType(id), value) for id, value in color], [(400007013, Vector4d(1, 2, 3, 4)), (1040682, Vector4d(5))])
        shared = pickle.loads(pickle.dumps([bc, bc]))
        self.assertIs(*shared)
        before = copy.copy(bc)
        for state in (None, [1], [(1, 2)], [(1, 15, object())], [(2 ** 40, 15, 1)], [(1, 26, "x")], [(1, 131, "\0")]):
            with self.assertRaises((TypeError, ValueError, OverflowError), msg=str(state)):
                bc.__setstate__(state)
            self.assertEqual(bc, before)

    def test_instances_of_instances(self):
        root = view = BaseContainer()
        middle = None
        for depth in range(100000):
            view[1] = BaseContainer(depth)
            view = view.GetContainerInstance(1)
            middle = view if depth == 50000 else middle
        for _ in range(3):
            middle.SetContainer(2, BaseContainer())  # replaced, so that all are looked up again
            middle.GetContainerInstance(2)[1] = 5
            self.assertEqual((view.GetId(), middle[2][1]), (99999, 5))
        whole = copy.deepcopy(root)
        self.assertEqual(whole, root)
        self.assertRaises(RecursionError, pickle.dumps, whole)
        root.FlushAll()
        self.assert_raises(ReferenceError, NOT_ALIVE, view.GetId)
        self.assert_raises(ReferenceError, NOT_ALIVE, middle.GetId)
        del root
        self.assert_raises(ReferenceError, NOT_ALIVE, view.GetId)

    def test_texts(self):
        bc = BaseContainer()
        self.assertEqual((f"{bc:x<200}", f"{bc}"), (str(bc).ljust(200, "x"), str(bc)))
        self.assert_raises(TypeError, "__format__ expected str, not int", lambda: bc.__format__(1))

    def test_the_uuid_module_is_kept(self):
        bc, value = BaseContainer(), uuid.uuid4()
        bc[1] = value
        with unittest.mock.patch.dict(sys.modules):
            del sys.modules["uuid"]
            bc[2] = value
            self.assertEqual([type(bc[1]), type(bc[2])], [uuid.UUID] * 2)

    def test_constants(self):
        self.assertEqual((repr(qlx.DESCID_ROOT), repr(qlx.DESCID_DYNAMICSUB)), ("((1000491, 0, 0))", "((700, 5, 0))"))
        for name in ("TRUE", "NULL", "true", "false", "null"):
            self.assertFalse(hasattr(qlx, name), name)
