"""qlx.Vector and qlx.Vector4d."""
import copy
import math
import pickle
import random
import struct
import unittest

from qlx import Matrix, Vector, Vector4d

INF, NAN = math.inf, math.nan
BIG = 2**31  # the first int that is no operand
AXES = Matrix(Vector(10, 20, 30), Vector(0, 1, 0), Vector(0, 0, 2), Vector(3, 0, 0))


class Real:
    """A number-like object: what the letters of floats take, but no number."""

    def __init__(self, value):
        self.value = value

    def __float__(self):
        if isinstance(self.value, Exception):
            raise self.value
        return self.value


class SubFloat(float):
    def __float__(self):
        raise AssertionError("the value of a float is its own")


class Index:
    def __index__(self):
        return 1


def bits(value):
    count = 4 if isinstance(value, Vector4d) else 3
    return struct.pack("%dd" % count, *(value[i] for i in range(count)))


class TableTest(unittest.TestCase):
    def assertTable(self, rows, **names):
        """Rows of an expression and its value, which has the same type and the same bits."""
        for text, expected in rows:
            with self.subTest(text):
                value = eval(text, dict(globals(), **names))
                self.assertIs(type(value), type(expected))
                if isinstance(value, (Vector, Vector4d)):
                    self.assertEqual(bits(value), bits(expected), (value, expected))
                else:
                    self.assertEqual(value, expected)

    def assertRaisesTable(self, rows, **names):
        """Rows of a statement, its exception and the whole text."""
        for text, exception, words in rows:
            with self.subTest(text):
                with self.assertRaises(exception) as caught:
                    exec(text, dict(globals(), **names))
                self.assertIs(type(caught.exception), exception)
                if words is not None:
                    self.assertEqual(str(caught.exception), words)


class VectorTest(TableTest):
    def test_construction(self):
        v = Vector(1, 2, 3)
        self.assertTable([
            ("Vector()", Vector(0, 0, 0)), ("Vector(1)", Vector(1, 1, 1)), ("Vector(x=2.5)", Vector(2.5, 2.5, 2.5)),
            ("Vector(v)", v), ("Vector(x=v)", v), ("Vector(v) is v", False), ("Vector(1, z=3, y=2)", v),
            ("Vector(True)", Vector(1)), ("Vector(2**80)", Vector(2.0**80)), ("Vector(SubFloat(7))", Vector(7)),
            ("Vector(1, Real(2.0), SubFloat(3))", v), ("Vector(Real(1.0), 2, 3)", v), ("Vector(2**70, 0, 0).x", 2.0**70),
            ("Vector(NAN, -INF, 5e-324)", Vector(NAN, -INF, 5e-324)), ("Vector(-0.0)", Vector(-0.0, -0.0, -0.0)),
            ("Vector(*range(3))", Vector(0, 1, 2)), ("Vector(**{'x': 1, 'y': 2, 'z': 3})", v),
        ], v=v)
        count = "Vector.__init__ takes 3 arguments."
        expected = "Vector.__init__ expected float or qlx.Vector, not "
        self.assertRaisesTable([
            ("Vector(1, 2)", TypeError, count), ("Vector(y=1)", TypeError, count), ("Vector(x=1, z=2)", TypeError, count),
            ("Vector(y=1, z=2)", TypeError, count), ("Vector(v, v)", TypeError, None), ("Vector(None)", TypeError, expected + "None"),
            ("Vector('1')", TypeError, expected + "str"), ("Vector(Real(1.0))", TypeError, expected + "Real"),
            ("Vector(Vector4d())", TypeError, expected + "qlx.Vector4d"), ("Vector(1, 2, 3, 4)", TypeError, None),
            ("Vector(1, 2, w=3)", TypeError, None), ("Vector(1, 2, 'z')", TypeError, None),
            ("Vector('x', 2, 3)", TypeError, expected + "str"), ("Vector(v, 1, 2)", TypeError, expected + "qlx.Vector"),
            ("Vector(Real(KeyError('k')), 2, 3)", KeyError, "'k'"), ("Vector(1, 2, Real(KeyError('k')))", KeyError, "'k'"),
            ("Vector(10**400)", OverflowError, None), ("Vector(1, 2, 10**400)", OverflowError, None),
            ("class V(Vector): pass", TypeError, None), ("Vector.x = 1", TypeError, None), ("v.new = 1", AttributeError, None),
        ], v=Vector())

    def test_attributes_and_items(self):
        v = Vector(1, 2, 3)
        v.x, v.y, v.z = 4, SubFloat(5.5), True
        self.assertEqual([v.x, v.y, v.z, type(v.x), type(v.y)], [4.0, 5.5, 1.0, float, float])
        v[0], v[Index()], v[2] = 2**40, 7, -INF
        self.assertEqual([v[0], v[1], v[2], v[True]], [2.0**40, 7.0, -INF, 7.0])
        depth, number = "index is out of depth", "the %s attribute must be a number"
        refused = "__getitem__ expected float, not %s"
        deletion = "'qlx.Vector' object doesn't support item deletion."
        x, y, z = v
        self.assertRaisesTable([
            ("v[3]", IndexError, depth), ("v[-1]", IndexError, depth), ("v[10**30]", IndexError, depth), ("v['x']", TypeError, None),
            ("v[1.0]", TypeError, None), ("v[0:2]", TypeError, None), ("v[3] = 1", IndexError, depth), ("v[-1] = 1", IndexError, depth),
            ("v[0] = None", TypeError, refused % "None"), ("v[0] = Real(1.0)", TypeError, refused % "Real"),
            ("v[0] = 10**400", OverflowError, None), ("del v[0]", TypeError, deletion), ("del v[9]", TypeError, deletion),
            ("v.x = None", TypeError, number % "x"), ("v.y = '1'", TypeError, number % "y"), ("v.z = v", TypeError, number % "z"),
            ("v.x = Real(1.0)", TypeError, number % "x"), ("v.x = 10**400", OverflowError, None),
            ("del v.x", AttributeError, "the attribute 'x' cannot be removed"), ("len(v)", TypeError, None), ("a, b = v", ValueError, None),
        ], v=v)
        self.assertEqual((x, y, z), (v.x, v.y, v.z))  # and nothing was written
        self.assertIn(7.0, v)

    def test_operators(self):
        self.assertTable([
            ("a + b", Vector(5, 1, 3.5)), ("a + 1", Vector(2, 3, 4)), ("1.5 + a", Vector(2.5, 3.5, 4.5)), ("a - b", Vector(-3, 3, 2.5)),
            ("a - 1", Vector(0, 1, 2)), ("1 - a", Vector(0, -1, -2)), ("a * b", 3.5), ("Vector() * Vector(1)", 0.0),
            ("a * 2", Vector(2, 4, 6)), ("2 * a", Vector(2, 4, 6)), ("a * SubFloat(.5)", Vector(.5, 1, 1.5)), ("True * a", a_vector()),
            ("a % b", Vector(4, 11.5, -9)), ("a ^ b", Vector(4, -2, 1.5)), ("a / 2", Vector(.5, 1, 1.5)), ("a / -4.0", Vector(-.25, -.5, -.75)),
            ("a / 0.0", Vector()), ("a / 0", Vector()), ("a / -0.0", Vector()), ("a / False", Vector()), ("Vector(INF, NAN, 1) / 0", Vector()),
            ("a / INF", Vector()), ("-a", Vector(-1, -2, -3)), ("-Vector()", Vector(-0.0)), ("abs(-a)", Vector(1, 2, 3)),
            ("abs(Vector(-0.0))", Vector()), ("~Vector(0, 3, 4)", Vector(0, 3 * (1 / 5.0), 4 * (1 / 5.0))), ("~Vector()", Vector()),
            ("m * a", Vector(19, 21, 34)), ("a * m", Vector(19, 21, 34)), ("a ^ m", Vector(9, 1, 4)), ("m ^ a", Vector(9, 1, 4)),
            ("a * (2**31 - 1)", a_vector() * (2.0**31 - 1)), ("a + -2**31", a_vector() + -2.0**31), ("a * 1e308 * 10", Vector(INF)),
            ("a == Vector(1, 2, 3)", True), ("a != Vector(1, 2, 3)", False), ("a == Vector(1, 2, 3 + 5e-16)", False),
            ("Vector(0.0) == Vector(-0.0)", True), ("Vector(NAN) == Vector(NAN)", False), ("Vector(1) == 1", False), ("a != None", True),
            ("a == Vector4d(a)", False), ("Vector.__eq__(a, 1)", NotImplemented), ("Vector.__lt__(a, 1)", NotImplemented),
            ("Vector.__rsub__(a, 1)", Vector(0, -1, -2)), ("Vector.__truediv__(a, 'x')", NotImplemented), ("bool(Vector())", True),
        ], a=a_vector(), b=Vector(4, -1, 0.5), m=AXES)
        for value in (Vector(1, 2, 3) / NAN, Vector(1, 2, 3) * NAN, ~Vector(NAN, 0, 0)):
            self.assertTrue(all(math.isnan(number) for number in value))
        a = kept = a_vector()
        a += 1
        self.assertEqual([kept, a], [a_vector(), Vector(2, 3, 4)])
        ordering = "unsupported comparison operator ( '%s' ) for 'qlx.Vector' and 'qlx.Vector'"
        large = "Python int too large to convert to C long"
        self.assertRaisesTable(
            [("a %s a" % op, TypeError, ordering % op) for op in ("<", "<=", ">", ">=")] +
            [(text.replace("n", n), OverflowError, large) for n in ("BIG", "(-BIG - 1)", "2**64", "10**400")
             for text in ("a + n", "n + a", "a - n", "n - a", "a * n", "n * a", "a / n")] +
            [(text, TypeError, None) for text in ("1 / a", "a / a", "a % 2", "2 % a", "a ^ 2", "m ^ 2", "a + 'x'", "a + None", "a * Real(1.0)",
                                                  "a + m", "m + a", "a // 2", "a @ a", "a ** 2", "+a", "a < 1", "hash(a)", "a + Vector4d()")],
            a=a_vector(), m=AXES)

    def test_methods(self):
        a = a_vector()
        self.assertTable([
            ("a.Dot(b)", 3.5), ("a.Dot(v2=b)", 3.5), ("a.Cross(b)", Vector(4, 11.5, -9)), ("a.Cross(v2=b)", Vector(4, 11.5, -9)),
            ("a.GetLength()", math.sqrt(14)), ("a.GetLengthSquared()", 14.0), ("a.GetNormalized()", ~a), ("a.Normalize()", None), ("a", ~a_vector()),
            ("Vector.GetDistance(Vector(1, 1, 0), Vector(4, 5, 0))", 5.0), ("a.GetDistance(v2=Vector(), v1=Vector(0, -2, 0))", 2.0),
            ("Vector.GetDistance.__doc__", "Returns the length of two vectors."), ("Vector(1e200).GetLength()", INF),
            ("~Vector(1e200)", Vector()), ("~Vector(1e-170)", Vector()),
        ], a=a, b=Vector(4, -1, 0.5))
        vector = "must be net.tavor.parametrictype.vec<3,float64>, not "
        self.assertRaisesTable([
            ("a.Dot(1)", TypeError, "argument 1 " + vector + "int"), ("a.Cross(None)", TypeError, "argument 1 " + vector + "None"),
            ("a.Dot()", TypeError, None), ("a.Dot(a, a)", TypeError, None), ("a.Dot(v=a)", TypeError, None), ("a.GetLength(1)", TypeError, None),
            ("Vector.GetDistance(a)", TypeError, None), ("Vector.Dot(1, a)", TypeError, None),
        ], a=a)

    def test_texts(self):
        self.assertTable([
            ("repr(a)", "Vector(1, 2.5, -0.001)"), ("str(a)", "Vector(1, 2.5, -0.001)"), ("format(a)", "Vector(1, 2.5, -0.001)"),
            ("'%s' % a", "Vector(1, 2.5, -0.001)"), ("f'{a:+.2f}'", "Vector(+1.00, +2.50, -0.00)"), ("format(a, '\\0>2.0f')", "Vector(\0001, \0002, -0)"), ("repr(Vector(-0.0, INF, NAN))", "Vector(-0, inf, nan)"),
            ("repr(Vector(1e300, 0.1, 5e-324))", "Vector(1e+300, 0.1, 5e-324)"), ("repr(Vector(1/3, 123456789, 1e16))", "Vector(0.3333333333333333, 123456789, 1e+16)"),
        ], a=Vector(1, 2.5, -0.001))
        self.assertRaisesTable([("format(a, 'x')", ValueError, None), ("a.__format__(1)", TypeError, "__format__ expected str, not int")], a=Vector())

    def test_copies_and_order(self):
        for value in (Vector(1, -0.0, 1 / 3), Vector4d(5e-324, INF, -1e300, 0.1)):
            copies = [copy.copy(value), copy.deepcopy(value), type(value)(*value)]
            copies += [pickle.loads(pickle.dumps(value, protocol)) for protocol in range(pickle.HIGHEST_PROTOCOL + 1)]
            for made in copies:
                self.assertIsNot(made, value)
                self.assertEqual(bits(made), bits(value))
        self.assertEqual(sorted([Vector(3), Vector(1), Vector(2)], key=lambda v: v.x), [Vector(1), Vector(2), Vector(3)])

    def test_random_values(self):
        random.seed(41)
        for _ in range(2000):
            a, b = (Vector(*(random.uniform(-1, 1) * 10 ** random.randint(-8, 8) for _ in range(3))) for _ in "ab")
            scale = a.GetLength() * b.GetLength()
            self.assertLessEqual(abs((a % b) * a), 1e-15 * scale * a.GetLength())
            self.assertEqual(bits(a % b), bits(-(b % a) + 0))
            self.assertEqual(a * b, b * a)
            self.assertAlmostEqual((~a).GetLength(), 1, delta=4e-16)
            self.assertEqual(bits(eval(repr(a))), bits(a))
            self.assertEqual(bits(eval(repr(Vector4d(a)))), bits(Vector4d(a)))


class Vector4dTest(TableTest):
    def test_construction(self):
        v = Vector4d(1, 2, 3, 4)
        self.assertTable([
            ("Vector4d()", Vector4d(0, 0, 0, 0)), ("Vector4d(2)", Vector4d(2, 2, 2, 2)), ("Vector4d(Vector(1, 2, 3))", Vector4d(1, 2, 3, 1)),
            ("Vector4d(1, 2, 3, r=4)", v), ("Vector4d(r=4, z=3, y=2, x=1)", v), ("Vector4d(Real(1.0), 2, 3, 4)", v), ("Vector4d(x=Vector())", Vector4d(0, 0, 0, 1)),
        ])
        count = "Vector4d.__init__ takes at most 4 arguments."
        expected = "Vector4d.__init__ expected qlx.Vector and float optional, not "
        self.assertRaisesTable([
            ("Vector4d(1, 2)", TypeError, count), ("Vector4d(1, 2, 3)", TypeError, count), ("Vector4d(r=1)", TypeError, count),
            ("Vector4d(None)", TypeError, expected + "None"), ("Vector4d(Vector4d())", TypeError, expected + "qlx.Vector4d"),
            ("Vector4d('1', 2, 3, 4)", TypeError, expected + "str"), ("Vector4d(1, 2, 3, w=4)", TypeError, None), ("Vector4d(*range(5))", TypeError, None),
            ("Vector4d(Real(KeyError(1)), 2, 3, 4)", KeyError, "1"), ("class V(Vector4d): pass", TypeError, None),
        ])

    def test_operators_and_methods(self):
        a, b = Vector4d(1, 2, 3, 4), Vector4d(2, 0, -1, .5)
        self.assertTable([
            ("a + b", Vector4d(3, 2, 2, 4.5)), ("a - b", Vector4d(-1, 2, 4, 3.5)), ("a * b", Vector4d(2, 0, -3, 2)), ("a * 2", Vector4d(2, 4, 6, 8)),
            ("2.5 * a", Vector4d(2.5, 5, 7.5, 10)), ("a.Dot(b)", 1.0), ("a == Vector4d(1, 2, 3, 4)", True), ("a != b", True), ("a == 1", False),
            ("Vector4d(NAN) == Vector4d(NAN)", False), ("a[3]", 4.0), ("[*a]", [1.0, 2.0, 3.0, 4.0]), ("a.GetVector3()", Vector(1, 2, 3)), ("b.MakeVector3()", None),
            ("b", Vector4d(4, 0, -2, 1)), ("a.NormalizeW()", None), ("a", Vector4d(.25, .5, .75, 1)), ("repr(a)", "Vector4d(0.25, 0.5, 0.75, 1)"),
            ("f'{a:.1f}'", "Vector4d(0.2, 0.5, 0.8, 1.0)"), ("a.SetZero()", None), ("a", Vector4d()), ("a.MakeVector3()", None), ("a", Vector4d()),
        ], a=a, b=b)
        a.w, a[0], a.z = 7, 1.5, True
        self.assertEqual(bits(a), bits(Vector4d(1.5, 0, 1, 7)))
        self.assertRaisesTable([
            ("a[4]", IndexError, "index is out of depth"), ("a[-1] = 1", IndexError, "index is out of depth"), ("del a[0]", TypeError, "'qlx.Vector4d' object doesn't support item deletion."),
            ("a.w = None", TypeError, "the w attribute must be a number"), ("a[1] = 'x'", TypeError, "__getitem__ expected float, not str"),
            ("a < a", TypeError, "unsupported comparison operator ( '<' ) for 'qlx.Vector4d' and 'qlx.Vector4d'"), ("del a.w", AttributeError, None),
            ("a * BIG", OverflowError, "Python int too large to convert to C long"), ("a + 1", TypeError, None), ("a * Vector()", TypeError, None), ("hash(a)", TypeError, None),
            ("a.Dot(Vector())", TypeError, "argument 1 must be net.tavor.parametrictype.vec<4,float64>, not qlx.Vector"), ("len(a)", TypeError, None),
        ], a=a)


def a_vector():
    return Vector(1, 2, 3)
