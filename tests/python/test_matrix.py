"""qlx.Matrix and qlx.Quaternion."""
import copy
import math
import os
import pickle
import random
import sys
import unittest

from qlx import Matrix, Quaternion, Vector, Vector4d

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from test_vector import BIG, INF, NAN, Real, SubFloat, TableTest, bits  # noqa: E402

IDENTITY = "Matrix(v1: (1, 0, 0); v2: (0, 1, 0); v3: (0, 0, 1); off: (0, 0, 0))"


def matrix(*numbers):
    return Matrix(*(Vector(*numbers[i:i + 3]) for i in range(0, 12, 3)))


def numbers_of(m):
    return [n for part in (m.off, m.v1, m.v2, m.v3) for n in part]


def random_matrix(span=6):
    return matrix(*(random.uniform(-1, 1) * 10 ** random.randint(-span, span) for _ in range(12)))


class MatrixTest(TableTest):
    M = matrix(*range(1, 13))

    def assertTable(self, rows, **names):
        """As of vectors; matrices are compared by their texts, which show every number and the zero's sign."""
        super().assertTable([("repr(%s)" % text, repr(value)) if isinstance(value, Matrix) else (text, value) for text, value in rows], m=self.M, **names)

    def test_construction_and_attributes(self):
        self.assertTable([
            ("repr(Matrix())", IDENTITY), ("str(Matrix(Vector(1, 2.5, 1e-7)))", IDENTITY.replace("off: (0, 0, 0", "off: (1, 2.5, 1e-07")),
            ("f'{Matrix():.0f}' == repr(Matrix())", True), ("Matrix(m)", self.M), ("Matrix(off=m)", self.M), ("Matrix(m, Vector())", self.M),
            ("Matrix(v2=Vector(5))", matrix(0, 0, 0, 1, 0, 0, 5, 5, 5, 0, 0, 1)), ("Matrix(Vector(7), v3=Vector(5))", matrix(7, 7, 7, 1, 0, 0, 0, 1, 0, 5, 5, 5)),
            ("Matrix(m) is m", False), ("m.v3", Vector(10, 11, 12)), ("Matrix() == Matrix()", True),
        ])
        m = Matrix(self.M)
        m.off.x = 5
        self.assertEqual(m, self.M)
        kept = Vector(1, 1, 1)
        m.off = m.v2 = kept
        kept.x = 9
        self.assertEqual(numbers_of(m), [1, 1, 1, 4, 5, 6, 1, 1, 1, 10, 11, 12])
        wrong = "Matrix.__init__ expected qlx.Vector or qlx.Matrix, not "
        self.assertRaisesTable([
            ("Matrix(1)", TypeError, wrong + "int"), ("Matrix(None)", TypeError, wrong + "None"), ("Matrix(Vector4d())", TypeError, wrong + "qlx.Vector4d"),
            ("Matrix(Vector(), 1)", TypeError, None), ("Matrix(*[Vector()] * 5)", TypeError, None), ("Matrix(v4=Vector())", TypeError, None),
            ("m.off = 1", TypeError, "Expected qlx.Vector, not int"), ("m.v1 = None", TypeError, "Expected qlx.Vector, not None"), ("m.v2 = m", TypeError, None),
            ("del m.off", AttributeError, "the attribute 'off' cannot be removed"), ("m[0]", TypeError, None), ("class M(Matrix): pass", TypeError, None),
            ("hash(m)", TypeError, None), ("m.new = 1", AttributeError, None),
        ], m=m, Matrix=Matrix)

    def test_operators(self):
        r = matrix(1, 0, 2, 0, 1, 0, -1, 0, 0, 0, 0, 1)
        self.assertTable([
            ("m + r", matrix(2, 2, 5, 4, 6, 6, 6, 8, 9, 10, 11, 13)), ("m - r", matrix(0, 2, 1, 4, 4, 6, 8, 8, 9, 10, 11, 11)),
            ("m * r", matrix(25, 29, 33, 7, 8, 9, -4, -5, -6, 10, 11, 12)), ("m * 2", matrix(*range(2, 26, 2))), ("SubFloat(.5) * m", matrix(*(n / 2 for n in range(1, 13)))),
            ("m * 2**40 == m * 2.0**40", True), ("m / 2", matrix(*(n / 2 for n in range(1, 13)))), ("m / 0", Matrix()), ("m / 0.0", Matrix()), ("m / False", Matrix()),
            ("Matrix() * Vector(1)", Vector(1)), ("~Matrix(v1=Vector(0))", Matrix()), ("~matrix(1, 2, 3, 2, 0, 0, 0, 4, 0, 0, 0, -1) == matrix(-.5, -.5, 3, .5, 0, 0, 0, .25, 0, 0, 0, -1)", True),
            ("~m", Matrix()), ("m == m", True), ("m != Matrix(m)", False), ("m == Matrix()", False), ("Matrix(Vector(NAN)) == Matrix(Vector(NAN))", False),
            ("m == 1", False), ("Matrix.__eq__(m, Vector())", NotImplemented), ("m ^ Vector(1, 0, 0)", Vector(4, 5, 6)), ("Vector(1, 0, 0) * m", Vector(5, 7, 9)),
        ], r=r, matrix=matrix, SubFloat=SubFloat, Matrix=Matrix, Vector=Vector)
        self.assertTrue(all(math.isnan(n) for n in numbers_of(self.M / NAN)))
        large = "Python int too large to convert to C long"
        self.assertRaisesTable(
            [("Matrix() %s Matrix()" % op, TypeError, "unsupported comparison operator ( '%s' ) for 'qlx.Matrix' and 'qlx.Matrix'" % op) for op in ("<", "<=", ">", ">=")] +
            [(text, OverflowError, large) for text in ("m * 2**63", "2**63 * m", "m / BIG", "m / 2**80")] +
            [(text, TypeError, None) for text in ("m + 1", "1 + m", "m - Vector()", "1 / m", "m / m", "m ^ m", "1 ^ m", "m * None", "m * Real(1.0)", "-m", "m % m", "m * Vector4d()", "m < 1")],
            m=self.M, Matrix=Matrix, Vector4d=Vector4d)

    def test_methods(self):
        m = Matrix(self.M)
        self.assertTable([
            ("m.Mul(Vector(1, 0, 0))", Vector(5, 7, 9)), ("m.Mul(v=Vector(1, 0, 0))", Vector(5, 7, 9)), ("m.MulV(Vector(0, 1, 0))", Vector(7, 8, 9)),
            ("m.GetTensorMatrix()", matrix(0, 0, 0, -3, 6, -3, 6, -12, 6, -3, 6, -3)), ("m.GetScale()", Vector(math.sqrt(77), math.sqrt(194), math.sqrt(365))),
            ("n.Scale(2.0)", None), ("n", matrix(1, 2, 3, *range(8, 26, 2))), ("n.Scale(v=Vector(1, .5, 0))", None), ("n", matrix(1, 2, 3, 8, 10, 12, 7, 8, 9, 0, 0, 0)),
            ("n.GetNormalized() == Matrix(n.off, ~n.v1, ~n.v2, Vector())", True), ("n.Normalize()", None), ("n.v1 == ~Vector(8, 10, 12)", True), ("n.off", Vector(1, 2, 3)),
            ("m.Mul.__doc__", "Multiply the vector by the matrix, this includes any translation in the matrix."),
            ("m.MulV.__doc__", "Multiply the vector by the matrix, this does not include any translation."),
        ], n=m, Vector=Vector, Matrix=Matrix)
        wrong = "Scale expected Vector or Matrix, not "
        self.assertRaisesTable([("m.Scale(2)", TypeError, wrong + "int"), ("m.Scale(m)", TypeError, wrong + "qlx.Matrix"), ("m.Scale(Real(1.0))", TypeError, wrong + "Real"),
                                ("m.Scale()", TypeError, None), ("m.Mul(1)", TypeError, None), ("m.Mul(m)", TypeError, None)], m=m)
        for made in (copy.copy(self.M), copy.deepcopy(self.M), pickle.loads(pickle.dumps(self.M)), pickle.loads(pickle.dumps(self.M, 0))):
            self.assertIsNot(made, self.M)
            self.assertEqual(made, self.M)

    def test_random_values(self):
        random.seed(42)
        for _ in range(1000):
            a, b, v = random_matrix(3), random_matrix(3), Vector(random.random(), random.random(), random.random())
            size = max(map(abs, numbers_of(a))) * max(map(abs, numbers_of(b)))
            self.assertLess(((a * b) * v - a * (b * v)).GetLength(), 1e-14 * max(1, size) * max(1, max(map(abs, numbers_of(a)))))
            self.assertEqual(bits(a * v), bits((a ^ v) + a.off))
            self.assertEqual(bits(v * a), bits(a * v))
            inverse = ~a
            size = max(map(abs, numbers_of(a))) * max(map(abs, numbers_of(inverse)))  # about the condition
            for got, wanted in zip(numbers_of(inverse * a), numbers_of(Matrix())):
                self.assertLessEqual(abs(got - wanted), 1e-15 * size * max(1, size))


class QuaternionTest(TableTest):
    def test_values(self):
        q = Quaternion()
        self.assertEqual([repr(q), str(q), type(q.w), repr(q.v)], ["(0, 0, 0, 1) "] * 2 + [float, "Vector(0, 0, 0)"])
        q.v.x = 5
        self.assertEqual(repr(q), "(0, 0, 0, 1) ")
        q.v, q.w = Vector(1, 2, 3), 4
        self.assertEqual([repr(q), f"{q:.1f}"], ["(1, 2, 3, 4) ", "(1.0, 2.0, 3.0, 4.0) "])
        for made in (copy.copy(q), copy.deepcopy(q), pickle.loads(pickle.dumps(q)), pickle.loads(pickle.dumps(q, 0))):
            self.assertEqual(repr(made), repr(q))
        self.assertIsNone(q.SetAxis(w=0.5, v=Vector(INF, -0.0, 5e-324)))
        self.assertEqual(repr(q), "(inf, -0, 5e-324, 0.5) ")
        self.assertFalse(Quaternion() == Quaternion())
        self.assertRaisesTable([
            ("q.w = None", TypeError, "the w attribute must be a number"), ("q.v = 1", TypeError, "Expected qlx.Vector, not int"), ("del q.w", AttributeError, None),
            ("del q.v", AttributeError, None), ("Quaternion(1)", TypeError, None), ("Quaternion(w=1)", TypeError, None), ("q * q", TypeError, None), ("-q", TypeError, None),
            ("q < q", TypeError, None), ("q.SetMatrix(1)", TypeError, "argument 1 must be qlx.Matrix, not int"), ("q.SetAxis(Vector())", TypeError, None),
            ("q.SetHPB(None)", TypeError, None), ("class Q(Quaternion): pass", TypeError, None), ("q[0]", TypeError, None),
        ], q=q, Quaternion=Quaternion)

    def test_documented_conventions(self):
        quarter = math.pi / 2
        rows = [  # the angles, and where they take x, y and z
            ((quarter, 0, 0), ((0, 0, -1), (0, 1, 0), (1, 0, 0))), ((0, quarter, 0), ((1, 0, 0), (0, 0, 1), (0, -1, 0))),
            ((0, 0, quarter), ((0, 1, 0), (-1, 0, 0), (0, 0, 1))), ((quarter, quarter, 0), ((0, 0, -1), (1, 0, 0), (0, -1, 0))),
            ((0, quarter, quarter), ((0, 0, 1), (-1, 0, 0), (0, -1, 0))), ((2 * quarter, 0, quarter), ((0, 1, 0), (1, 0, 0), (0, 0, -1))),
        ]
        q = Quaternion()
        for angles, axes in rows:
            q.SetHPB(Vector(*angles))
            m = q.GetMatrix()
            for got, wanted in zip((m.v1, m.v2, m.v3), axes):
                self.assertLess(Vector.GetDistance(got, Vector(*wanted)), 4e-16, (angles, m))
            self.assertEqual(m.off, Vector())

    def test_matrices_of_special_quaternions(self):
        q = Quaternion()
        q.SetAxis(Vector(), 0)
        self.assertEqual(repr(q.GetMatrix()), IDENTITY)
        q.SetAxis(Vector(0, 0, 3), 3)  # its length does not count
        self.assertEqual(numbers_of(q.GetMatrix()), [0, 0, 0, 0, 1, 0, -1, 0, 0, 0, 0, 1])
        turned = q.GetMatrix()
        for method, scale in ((q.SetMatrixNorm, 1.0), (q.SetMatrix, 7.0)):
            turned.Scale(scale)
            method(turned)
            self.assertAlmostEqual(q.w, math.sqrt(.5), delta=2e-16)
        for half in ((1, 0, 0), (0, 1, 0), (0, 0, 1)):  # half turns, where w is zero
            q.SetAxis(Vector(*half), 0)
            q.SetMatrix(q.GetMatrix())
            self.assertEqual((abs(q.v), q.w), (Vector(*half), 0))
        q.SetMatrix(Matrix(*[Vector()] * 4))
        self.assertEqual(repr(q), "(0, 0, 0, 1) ")
        q.SetMatrix(Matrix(v1=Vector(NAN)))
        self.assertTrue(math.isnan(q.w))
