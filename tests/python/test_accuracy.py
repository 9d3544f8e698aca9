"""The arithmetic of values against 60 digits. Errors are in units of 2**-53, half an ulp of numbers from 1 on."""
import random
import unittest
from decimal import Decimal, getcontext

from qlx import Matrix, Quaternion, Vector

getcontext().prec = 60
UNIT = Decimal(2) ** -53
RUNS = 400


def exact(vector):
    return [Decimal(number) for number in vector]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def sine_and_cosine(angle):
    """Both from the series of exp(i * angle)."""
    sums, term, n = [Decimal(0), Decimal(0)], Decimal(1), 0
    while abs(term) > Decimal(10) ** -58:
        sums[n % 2] += term if n % 4 < 2 else -term
        n += 1
        term = term * angle / n
    return sums[1], sums[0]


def product(a, b):
    """Of matrices as lists of columns."""
    return [[sum(a[k][row] * column[k] for k in range(3)) for row in range(3)] for column in b]


def rotation(hpb):
    """Heading * pitch * bank."""
    (sh, ch), (sp, cp), (sb, cb) = map(sine_and_cosine, exact(hpb))
    heading = [[ch, 0, -sh], [0, 1, 0], [sh, 0, ch]]
    pitch = [[1, 0, 0], [0, cp, sp], [0, -sp, cp]]
    bank = [[cb, sb, 0], [-sb, cb, 0], [0, 0, 1]]
    return product(product(heading, pitch), bank)


def quaternion(hpb):
    """The product of the three quaternions, x, y, z, w."""
    (sh, ch), (sp, cp), (sb, cb) = (sine_and_cosine(angle / 2) for angle in exact(hpb))
    result = [Decimal(0), sh, Decimal(0), ch]
    for v, w in (([sp, 0, 0], cp), ([0, 0, sb], cb)):
        own, real = result[:3], result[3]
        result = [w * x + real * y + z for x, y, z in zip(own, v, cross(own, v))] + [real * w - dot(own, v)]
    return result


def values(q):
    return exact(q.v) + [Decimal(q.w)]


def angles():
    return Vector(*(random.choice((random.uniform(-3.2, 3.2), random.gauss(0, 1e-4), 1.5707963267948966)) for _ in range(3)))


def error(got, wanted):
    """The largest one, up to the common sign of a quaternion."""
    return min(max(abs(g - sign * w) for g, w in zip(got, wanted)) for sign in (1, -1)) / UNIT


class AccuracyTest(unittest.TestCase):
    def setUp(self):
        random.seed(43)

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
        self.assertWorst(relative(), 4)

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
        self.assertWorst(relative(), 4)

    def test_rotations_of_hpb(self):
        q, of_quaternion, of_matrix = Quaternion(), [], []
        for _ in range(RUNS):
            hpb = angles()
            q.SetHPB(hpb)
            m = q.GetMatrix()
            of_quaternion.append(error(values(q), quaternion(hpb)))
            for got, wanted in zip((m.v1, m.v2, m.v3), rotation(hpb)):
                of_matrix.append(max(abs(g - w) for g, w in zip(exact(got), wanted)) / UNIT)
        self.assertWorst(of_quaternion, 3)
        self.assertWorst(of_matrix, 6)

    def test_quaternion_of_matrix(self):
        q, errors = Quaternion(), []
        for _ in range(RUNS):
            hpb = angles()
            m = Matrix(Vector(), *(Vector(*map(float, column)) for column in rotation(hpb)))
            q.SetMatrixNorm(m)
            errors.append(error(values(q), quaternion(hpb)))
            m.Scale(Vector(*(10 ** random.uniform(-5, 5) for _ in range(3))))
            q.SetMatrix(m)
            errors.append(error(values(q), quaternion(hpb)))
            self.assertGreaterEqual(q.w, 0)
        self.assertWorst(errors, 3)
