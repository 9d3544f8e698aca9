"""The arithmetic of values against 100 digits, and rules that hold for all of them. Errors are in units of 2**-53, half
an ulp of numbers from 1 on."""
import random
import re
import struct
import unittest
import uuid
from decimal import Decimal, getcontext
from fractions import Fraction

from qlx import BaseContainer, BaseTime, Matrix, Quaternion, Vector, Vector4d

getcontext().prec = 100
UNIT = Decimal(2) ** -53
RUNS = 3000

# The bounds; behind each the worst error of 30000 other inputs. An error far below its bound fails as well.
UNIT_VECTOR = 3.5           # 2.77
INVERSE = 3.5               # 2.67
QUATERNION_OF_HPB = 3       # 2.51
MATRIX_OF_HPB = 8           # 6.96
QUATERNION_OF_MATRIX = 2.7  # 2.19


def exact(vector):
    return [Decimal(number) for number in vector]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def sine_and_cosine(angle):
    """Both from the series of exp(i * angle)."""
    sums, term, n = [Decimal(0), Decimal(0)], Decimal(1), 0
    while abs(term) > Decimal(10) ** -98:
        sums[n % 2] += term if n % 4 < 2 else -term
        n += 1
        term = term * angle / n
    return sums[1], sums[0]


def product(a, b):
    """Of matrices as lists of columns."""
    return [[sum(a[k][row] * column[k] for k in range(3)) for row in range(3)] for column in b]


def rotation_and_quaternion(hpb):
    """Heading * pitch * bank as columns, and as x, y, z, w."""
    halves = [sine_and_cosine(angle / 2) for angle in exact(hpb)]
    (sh, ch), (sp, cp), (sb, cb) = ((2 * s * c, c * c - s * s) for s, c in halves)
    heading = [[ch, 0, -sh], [0, 1, 0], [sh, 0, ch]]
    pitch = [[1, 0, 0], [0, cp, sp], [0, -sp, cp]]
    bank = [[cb, sb, 0], [-sb, cb, 0], [0, 0, 1]]
    (sh, ch), (sp, cp), (sb, cb) = halves
    turn = [0, sh, 0, ch]
    for v, w in (([sp, 0, 0], cp), ([0, 0, sb], cb)):
        own, real = turn[:3], turn[3]
        turn = [w * x + real * y + z for x, y, z in zip(own, v, cross(own, v))] + [real * w - dot(own, v)]
    return product(product(heading, pitch), bank), turn


def values(q):
    return exact(q.v) + [Decimal(q.w)]


def angles():
    return Vector(*(random.choice((random.uniform(-3.2, 3.2), random.gauss(0, 1e-4), 1.5707963267948966)) for _ in range(3)))


def error(got, wanted):
    """The largest one, up to the common sign of a quaternion."""
    return min(max(abs(g - sign * w) for g, w in zip(got, wanted)) for sign in (1, -1)) / UNIT


class AccuracyTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        random.seed(43)
        cls.turns = [(hpb,) + rotation_and_quaternion(hpb) for hpb in (angles() for _ in range(RUNS))]

    @classmethod
    def tearDownClass(cls):
        del cls.turns

    def setUp(self):
        random.seed(44)

    def assertWorst(self, errors, bound):
        worst = max(errors)
        self.assertLess(worst, bound)
        self.assertGreater(worst, bound / 4)  # a bound that means something

    def test_normalization(self):
        def relative():
            for _ in range(RUNS):
                v = Vector(*(random.uniform(-1, 1) * 10 ** random.randint(-9, 9) for _ in range(3)))
                length = dot(exact(v), exact(v)).sqrt()
                yield abs(Decimal(v.GetLength()) / length - 1) / UNIT
                for got, wanted in zip(exact(~v), exact(v)):
                    yield abs(got / (wanted / length) - 1) / UNIT
        self.assertWorst(relative(), UNIT_VECTOR)

    def test_inverse(self):
        """Against what the rounding of the cofactors' and the determinant's terms can make of each number."""
        def relative():
            for _ in range(RUNS):
                off, *axes = (Vector(*(random.gauss(0, 1) * 10 ** random.randint(-3, 3) for _ in range(3))) for _ in range(4))
                inverse = ~Matrix(off, *axes)
                a, b, c = map(exact, axes)
                size = [[abs(n) for n in v] for v in (a, b, c)]
                determinant = dot(a, cross(b, c))
                rows = [[n / determinant for n in row] for row in (cross(b, c), cross(c, a), cross(a, b))]

                def permanent(u, v):
                    return [u[1] * v[2] + u[2] * v[1], u[2] * v[0] + u[0] * v[2], u[0] * v[1] + u[1] * v[0]]
                terms = [permanent(size[1], size[2]), permanent(size[2], size[0]), permanent(size[0], size[1])]
                spread = dot(size[0], terms[0]) / abs(determinant)
                got = list(map(exact, (inverse.v1, inverse.v2, inverse.v3)))
                for i in range(3):
                    own = []
                    for j in range(3):
                        own.append(terms[i][j] / abs(determinant) + abs(rows[i][j]) * spread)
                        yield abs(got[j][i] - rows[i][j]) / own[j] / UNIT
                    wanted = -dot(rows[i], exact(off))
                    yield abs(Decimal(inverse.off[i]) - wanted) / dot(own, map(abs, exact(off))) / UNIT
        self.assertWorst(relative(), INVERSE)

    def test_rotations_of_hpb(self):
        q, of_quaternion, of_matrix = Quaternion(), [], []
        for hpb, columns, turn in self.turns:
            q.SetHPB(hpb)
            m = q.GetMatrix()
            of_quaternion.append(error(values(q), turn))
            for got, wanted in zip((m.v1, m.v2, m.v3), columns):
                of_matrix.append(max(abs(g - w) for g, w in zip(exact(got), wanted)) / UNIT)
        self.assertWorst(of_quaternion, QUATERNION_OF_HPB)
        self.assertWorst(of_matrix, MATRIX_OF_HPB)

    def test_quaternion_of_matrix(self):
        q, errors = Quaternion(), []
        for hpb, columns, turn in self.turns:
            m = Matrix(Vector(), *(Vector(*map(float, column)) for column in columns))
            q.SetMatrixNorm(m)
            errors.append(error(values(q), turn))
            m.Scale(Vector(*(10 ** random.uniform(-5, 5) for _ in range(3))))
            q.SetMatrix(m)
            errors.append(error(values(q), turn))
            self.assertGreaterEqual(q.w, 0)
        self.assertWorst(errors, QUATERNION_OF_MATRIX)


def number(span=9):
    return random.uniform(-1, 1) * 10 ** random.randint(-span, span)


def any_float():
    """Of any size and sign, but no NaN."""
    while True:
        value, = struct.unpack("d", struct.pack("Q", random.getrandbits(64)))
        if value == value:
            return value


def vector(make=any_float, type=Vector, count=3):
    return type(*(make() for _ in range(count)))


def matrix(make=any_float):
    return Matrix(*(vector(make) for _ in range(4)))


def time():
    return BaseTime(random.randrange(-10 ** 6, 10 ** 6), random.randrange(1, 10 ** 4))


def fraction(t):
    return Fraction(t.GetNumerator()) / Fraction(t.GetDenominator())


class RuleTest(unittest.TestCase):
    def setUp(self):
        random.seed(45)

    def test_inverse_times_matrix(self):
        """The identity, within what rounding makes of both matrices' sizes."""
        for _ in range(RUNS):
            m = matrix(lambda: random.gauss(0, 1))
            inverse = ~m
            size = 1 + max(abs(n) for v in (m.off, m.v1, m.v2, m.v3) for n in v)
            size *= 1 + max(abs(n) for v in (inverse.off, inverse.v1, inverse.v2, inverse.v3) for n in v)
            one = inverse * m
            for got, wanted in zip((one.off, one.v1, one.v2, one.v3), (Vector(), Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1))):
                self.assertLess((got - wanted).GetLength(), 40 * size * size * float(UNIT), m)

    def test_cross_product_is_orthogonal(self):
        for _ in range(RUNS):
            a, b = vector(number), vector(number)
            size = sum(abs(a[i]) * (abs(a[j] * b[k]) + abs(a[k] * b[j])) for i, j, k in ((0, 1, 2), (1, 2, 0), (2, 0, 1)))
            self.assertLessEqual(abs((a % b) * a), 6 * size * float(UNIT))
            self.assertEqual(a % b, -(b % a))

    def test_times_are_exact(self):
        for _ in range(RUNS):
            a, b = time(), time()
            x, y = fraction(a), fraction(b)
            for got, wanted in ((a + b, x + y), (a - b, x - y), (a * b, x * y), (a.TimeDif(b), x - y)):
                self.assertEqual(fraction(got), wanted)
            self.assertEqual((a < b, a <= b, a == b), (x < y, x <= y, x == y))
            self.assertEqual(a.Get(), float(x))
        total = BaseTime()
        for frame in range(1000):
            total += BaseTime(1, 30)
        self.assertEqual((total, repr(total)), (BaseTime(100, 3), "BaseTime(100, 3)"))

    def test_values_survive_containers_and_their_texts(self):
        number_text = r"-?[0-9.einf+-]+"
        for _ in range(RUNS):
            m = matrix()
            values = [any_float(), random.randrange(-2 ** 31, 2 ** 63), vector(), m, time(), uuid.UUID(int=random.getrandbits(128)),
                      "".join(map(chr, random.choices(range(1, 0xd800), k=3)))]
            bc = BaseContainer()
            for id, value in enumerate(values):
                bc[id] = value
            self.assertEqual([(repr(value), type(value)) for id, value in bc], [(repr(value), type(value)) for value in values])
            self.assertEqual([value for id, value in bc], values)
            for value in (vector(), vector(any_float, Vector4d, 4), time()):
                self.assertEqual(eval(repr(value), dict(globals(), inf=float("inf"))), value)
            shown = [float(text) for text in re.findall(number_text + "(?=[,)])", repr(m))]
            self.assertEqual(shown, [n for v in (m.v1, m.v2, m.v3, m.off) for n in v])
