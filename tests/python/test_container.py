"""Containers: every value to the host and back, typed access, and what a script's own code does meanwhile."""
import gc
import random
import unittest
import uuid

import qlx
from qlx import BaseContainer, BaseList2D, BaseTime, DescID, DescLevel, Matrix, Vector, Vector4d

CUBE = 5159
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
        self.assertEqual((bc.FindIndex(99), bc.GetIndexId(-1), bc[99], bc.GetIndexData(1000)), (None, -1, None, None))

    def test_errors(self):
        bc = BaseContainer()
        for call, exception, text in (
                (lambda: bc["a"], TypeError, "__getitem__ expected int, not str"),
                (lambda: bc.__setitem__(None, 1), TypeError, "__setitem__ expected int, not None"),
                (lambda: bc[2 ** 31], OverflowError, "Python int too large to convert to C long"),
                (lambda: bc.__setitem__(1, object()), TypeError, "could not convert 'object'"),
                (lambda: bc.__setitem__(1, 2 ** 70), OverflowError, None),
                (lambda: bc.__setitem__(1, "\ud800"), UnicodeEncodeError, None),
                (lambda: bc.SetVector(1, 2), TypeError, NO_VECTOR),
                (lambda: bc.InsData(1, object()), TypeError, "could not convert 'object'"),
                (lambda: bc < bc, TypeError, None)):
            with self.subTest(text=text):
                self.assert_raises(exception, text, call)
        self.assertEqual(len(bc), 0)

    def test_a_value_that_destroys_the_holder(self):
        dead = "the host object of 'qlx.BaseContainer' is not alive"
        for call in (lambda bc, evil: bc.SetInt32(1, evil), lambda bc, evil: bc.SetString(1, evil)):
            holder = [BaseList2D(CUBE)]
            bc = holder[0].GetDataInstance()
            self.assert_raises(ReferenceError, dead, lambda: call(bc, Evil(holder)))

    def test_depth(self):
        outer = BaseContainer()
        for _ in range(20000):
            inner, outer = outer, BaseContainer()
            outer[1] = inner
        self.assertEqual(outer, BaseContainer(outer))
        del inner, outer
        gc.collect()

    def test_constants(self):
        self.assertEqual((repr(qlx.DESCID_ROOT), repr(qlx.DESCID_DYNAMICSUB)), ("((1000491, 0, 0))", "((700, 5, 0))"))
        for name in ("TRUE", "NULL", "true", "false", "null"):
            self.assertFalse(hasattr(qlx, name), name)
