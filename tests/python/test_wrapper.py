"""Host objects and values as a script sees them: their life, their errors, and what those leave behind."""
import gc
import os
import subprocess
import sys
import unittest

import qlx
from qlx import BaseContainer, BaseList2D, Vector
from qlx.bitmaps import BaseBitmap

CUBE, OBJECT, NOWHERE = 5159, 5155, 123456

OP = "the object 'qlx.BaseObject' is not alive"
NO_HOST = "the host object of 'qlx.BaseContainer' is not alive"
NO_INSTANCE = "this type cannot be instantiated"


class Raises:
    """An argument whose every conversion raises."""

    def fail(self, *_):
        raise KeyError("own")

    __int__ = __index__ = __float__ = __str__ = fail


def view_without_host():
    return BaseList2D(CUBE).GetDataInstance()


def delete_x():
    del Vector().x


def set_x(value):
    Vector().x = value


# What is called, what it raises, and the text.
ERRORS = [
    (lambda: BaseList2D(0), BaseException, "could not allocate 'qlx.BaseList2D' instance"),
    (lambda: BaseList2D(NOWHERE), BaseException,
     "the plugin 'qlx.BaseList2D' (ID 123456) is missing. Could not allocate instance"),
    (lambda: BaseList2D(type=OBJECT), BaseException,  # an abstract type
     "the plugin 'qlx.BaseList2D' (ID 5155) is missing. Could not allocate instance"),
    (lambda: BaseList2D(), TypeError, "Required argument 'type' (pos 1) not found"),
    (lambda: BaseList2D(2 ** 31), OverflowError, None),
    (lambda: BaseList2D(Raises()), KeyError, "'own'"),
    (lambda: BaseList2D(CUBE, x=1), TypeError, None),
    (lambda: qlx.QLXAtom(), NotImplementedError, NO_INSTANCE),
    (lambda: qlx.GeListNode(CUBE), NotImplementedError, NO_INSTANCE),
    (lambda: qlx.plugins.BaseData(), NotImplementedError, NO_INSTANCE),
    (lambda: qlx.plugins.GeResource(), NotImplementedError, NO_INSTANCE),
    (lambda: type("Sub", (BaseList2D,), {}), TypeError, "type 'qlx.BaseList2D' is not an acceptable base type"),
    (lambda: type("Sub", (Vector,), {}), TypeError, "type 'qlx.Vector' is not an acceptable base type"),
    (lambda: setattr(BaseList2D(CUBE), "other", 1), AttributeError, None),
    (lambda: BaseList2D(CUBE).SetName("\ud800"), UnicodeEncodeError, None),
    (lambda: BaseList2D(CUBE).SetName(Raises()), KeyError, "'own'"),
    (lambda: BaseList2D(CUBE).IsInstanceOf(), TypeError, None),
    (lambda: BaseList2D(CUBE)(1), TypeError, None),
    (lambda: BaseList2D(CUBE) < BaseList2D(CUBE), TypeError, None),
    (lambda: hash(BaseList2D(CUBE)), TypeError, "unhashable type: 'qlx.BaseObject'"),
    (lambda: view_without_host().GetId(), ReferenceError, NO_HOST),
    (lambda: view_without_host().SetId(1), ReferenceError, NO_HOST),
    (lambda: view_without_host() == BaseContainer(), ReferenceError, NO_HOST),
    (lambda: BaseContainer() == view_without_host(), ReferenceError, NO_HOST),
    (lambda: BaseContainer(view_without_host()), ReferenceError, NO_HOST),
    (lambda: BaseContainer("x"), TypeError,
     "qlx.BaseContainer.__init__ expected None, int or qlx.BaseContainer, not str"),
    (lambda: BaseContainer(2 ** 40), OverflowError, None),
    (lambda: BaseContainer().SetId(Raises()), KeyError, "'own'"),
    (lambda: BaseContainer(1) < BaseContainer(2), TypeError, None),
    (lambda: BaseBitmap(1), TypeError, None),
    (lambda: BaseBitmap().CopyTo(None), TypeError, None),
    (lambda: BaseBitmap().CopyTo(BaseList2D(CUBE)), TypeError, None),
    (lambda: BaseBitmap().Init(1), TypeError, "Required argument 'y' (pos 2) not found"),
    (lambda: BaseBitmap() >= BaseBitmap(), TypeError, None),
    (lambda: Vector(1, 2), TypeError, "Vector.__init__ takes 3 arguments."),
    (lambda: Vector("1"), TypeError, "Vector.__init__ expected float or qlx.Vector, not str"),
    (lambda: Vector(1, Raises(), 2), KeyError, "'own'"),
    (lambda: Vector(10 ** 400), OverflowError, None),
    (lambda: Vector() < Vector(), TypeError,
     "unsupported comparison operator ( '<' ) for 'qlx.Vector' and 'qlx.Vector'"),
    (lambda: Vector().Dot(1), TypeError, None),
    (lambda: Vector.GetDistance(Vector()), TypeError, "Required argument 'v2' (pos 2) not found"),
    (lambda: set_x("1"), TypeError, None),
    (delete_x, AttributeError, "the attribute 'x' cannot be removed"),
]

# Uses that succeed, for the same looking behind them.
USES = [
    lambda: BaseList2D(CUBE).GetName(), lambda: BaseList2D(CUBE).SetName(5), lambda: BaseList2D(CUBE)()(),
    lambda: BaseList2D(CUBE).GetDataInstance().SetId(7), lambda: BaseContainer(BaseContainer(5)),
    lambda: BaseList2D(CUBE) == BaseList2D(CUBE), lambda: BaseBitmap().GetClone(), lambda: BaseBitmap().GetSize(),
    lambda: Vector(1, 2, 3).Cross(v2=Vector(2)), lambda: repr(Vector()), lambda: view_without_host(),
    lambda: type("Sub", (qlx.plugins.BaseData,), {}), lambda: BaseBitmap().CopyTo(dst=BaseBitmap()),
]


class WrapperTest(unittest.TestCase):
    def assert_raises(self, exception, text, call):
        try:
            call()
        except BaseException as error:
            self.assertIs(type(error), exception, error)
            if text is not None:
                self.assertEqual(str(error), text)
        else:
            self.fail("%s did not raise" % call)

    def test_errors(self):
        for number, (call, exception, text) in enumerate(ERRORS):
            with self.subTest(number=number, text=text):
                self.assert_raises(exception, text, call)

    def test_an_element_lives_with_its_wrapper(self):
        op = BaseList2D(CUBE)
        self.assertEqual((op.GetName(), op.GetType(), op.GetRealType()), ("Cube", CUBE, CUBE))
        self.assertEqual([op.IsInstanceOf(id) for id in (CUBE, OBJECT, 5140, 0)], [True, True, False, False])
        self.assertEqual(op.CheckType(id=OBJECT), True)
        self.assertIs(op(), op)
        self.assertIs(op.IsAlive(), True)
        data = op.GetDataInstance()
        data.SetId(-5)
        self.assertEqual(op.GetDataInstance().GetId(), -5)
        self.assertEqual(data, op.GetDataInstance())
        copy = BaseContainer(data)
        del op
        self.assert_raises(ReferenceError, NO_HOST, data.GetId)
        self.assertEqual(copy.GetId(), -5)

    def test_equality_is_that_of_the_host_objects(self):
        op, other = BaseList2D(CUBE), BaseList2D(CUBE)
        bitmap = BaseBitmap()
        for a, b, equal in ((op, op(), True), (op, other, False), (op, 1, False), (op, None, False), (op, bitmap, False),
                            (bitmap, bitmap, True), (bitmap, bitmap.GetClone(), False), (bitmap, 1, False),
                            (BaseContainer(1), BaseContainer(1), True), (BaseContainer(1), BaseContainer(2), False),
                            (BaseContainer(), 0, False), (Vector(1), Vector(1, 1, 1), True), (Vector(), 0, False)):
            with self.subTest(a=a, b=b):
                self.assertIs(a == b, equal)
                self.assertIs(a != b, not equal)

    def test_pictures(self):
        bitmap = BaseBitmap()
        self.assertEqual((bitmap.GetSize(), bitmap.GetBt()), ((0, 0), 0))
        self.assertEqual([bitmap.Init(3, 2), bitmap.Init(5, 4, 1), bitmap.Init(1, 1, 7)], [1, 1, -2])
        self.assertEqual((bitmap.GetSize(), bitmap.GetBw(), bitmap.GetBh(), bitmap.GetBt()), ((5, 4), 5, 4, 1))
        clone = bitmap.GetClone()
        self.assertEqual(bitmap.Init(x=1, y=1), 1)
        self.assertEqual((clone.GetSize(), bitmap.GetBt()), ((5, 4), 24))
        self.assertIs(clone.CopyTo(bitmap), True)
        self.assertIs(bitmap.CopyTo(bitmap), True)
        self.assertEqual(bitmap.GetSize(), (5, 4))

    @staticmethod
    def pages():
        with open("/proc/self/statm") as file:
            return int(file.read().split()[1])  # of 4096 bytes

    def test_arguments_outlive_what_their_own_code_does_to_the_call(self):
        class First(float):
            pass

        class Thief:
            def __float__(self):
                for found in gc.get_objects():
                    if type(found) is dict and found.get("y") is self:
                        found["x"] = found["y"] = None
                return 1.0

        for _ in range(100):
            self.assertEqual(qlx.Vector(**{"x": First(5), "y": Thief(), "z": 2.0}), qlx.Vector(5, 1, 2))

    def test_nothing_stays_behind(self):
        types = [BaseList2D, BaseBitmap, BaseContainer, Vector, qlx.QLXAtom, qlx.plugins.BaseData, TypeError,
                 ReferenceError, None, True, False, NotImplemented, (), 0, 1, -2, CUBE]
        calls = [call for call, _, _ in ERRORS] + USES

        def repeat(times):
            for call in calls:
                for _ in range(times):
                    try:
                        call()
                    except BaseException:
                        pass
            gc.collect()
            return [sys.getrefcount(object) for object in types]

        # The sanitizers keep freed memory for a while, so only the references are counted with them.
        sanitized = "libasan" in open("/proc/self/maps").read()
        times = 200 if sanitized else 20000
        repeat(times)
        before, objects, growths = repeat(1), len(gc.get_objects()), []
        for _ in range(2):
            pages = self.pages()
            after = repeat(times)
            growths.append(self.pages() - pages)
        for object, old, new in zip(types, before, after):
            self.assertLess(abs(new - old), times // 2, object)
        self.assertLess(len(gc.get_objects()) - objects, 50)
        # An object that one of the calls leaves behind is 78 pages or more, in each round.
        self.assertTrue(sanitized or min(growths) < 60, growths)


class LeakRecordTest(unittest.TestCase):
    def run_tracked(self, script, track):
        done = subprocess.run([os.environ["QLXPY"], "--set", "g_trackLeaks=%d" % track, "-c", script],
                              env=dict(os.environ, QLX_DIAGNOSTICS="1"), stderr=subprocess.PIPE)
        self.assertEqual(done.returncode, 0)
        return done.stderr.decode()

    def test_what_lives_at_the_end_is_told(self):
        script = "import qlx\nkept = qlx.Vector()\ngone = qlx.BaseList2D(5159)\ndel gone"
        place = "<string>(2): qlx.Vector\n"
        self.assertEqual(self.run_tracked(script, 0), "")
        self.assertEqual(self.run_tracked(script, 1), "\n\n*** Potential Memory Leak in Python Detected ***\n\n\n" + place +
                         "1 objects\n\n\nPython Trace End...\nPython object (maybe) freed too late: " + place)
        self.assertEqual(self.run_tracked(script + ", kept", 1), "Python Trace End...\n")
