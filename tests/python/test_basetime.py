"""Times: fractions that stay exact."""
import copy
import math
import operator
import pickle
import random
import unittest
from fractions import Fraction

from qlx import BaseTime, Vector

LIMIT = 2**53
FPS = (1, 7, 15, 24, 25, 30, 50, 60, 120, 1001, 90000, 2**31 - 1)


def parts(time):
    return time.GetNumerator(), time.GetDenominator()


def exact(time):
    return Fraction(time.GetNumerator()) / Fraction(time.GetDenominator())


class ConstructorTest(unittest.TestCase):
    def test_calls(self):
        for time, expected in (
                (BaseTime(), (0, 1)), (BaseTime(5), (5, 1)), (BaseTime(-0.5), (-1, 2)), (BaseTime(None, 0.25), (1, 4)),
                (BaseTime(n=2), (2, 1)), (BaseTime(z=3), (3, 1)), (BaseTime(n=4, z=6), (3, 2)), (BaseTime(2, 30), (1, 15)),
                (BaseTime(1, -30), (-1, 30)), (BaseTime(-2, -4), (1, 2)), (BaseTime(0, 7), (0, 1)),
                (BaseTime(5, 0), (5, 0)), (BaseTime(1, -0.0), (1, 0)), (BaseTime(0.5, 3), (0.5, 3)),
                (BaseTime(0.5, -3), (-0.5, 3)), (BaseTime(True), (1, 1))):
            self.assertEqual(parts(time), expected)
            self.assertTrue(all(type(part) is float for part in parts(time)))

    def test_refused(self):
        text = "^qlx.BaseTime.__init__ expected None\\(only for 1st argument\\) or a number, not %s$"
        for args, name in (((None,), "None"), ((None, None), "None"), ((1, None), "None"), (("1",), "str"),
                           ((1, "2"), "str"), ((None, []), "list"), ((Vector(), 1), "qlx.Vector")):
            with self.assertRaisesRegex(TypeError, text % name):
                BaseTime(*args)
        self.assertRaises(OverflowError, BaseTime, 10**400)
        self.assertRaises(OverflowError, BaseTime, 1, 10**400)
        self.assertRaises(TypeError, BaseTime, 1, 2, 3)

    def test_from_a_float(self):
        for seconds, expected in ((0.1, (1, 10)), (1 / 30, (1, 30)), (-100 / 2997, (-100, 2997)), (1e15 + 0.5, (2e15 + 1, 2)),
                                  (0.0, (0, 1)), (2.0**60, (2.0**60, 1)), (2.0**-40, (1, 2.0**40)),
                                  (1e-300, (1e-300, 1))):
            self.assertEqual(parts(BaseTime(seconds)), expected)
        choose = random.Random(1)
        for _ in range(5000):
            short = Fraction(choose.randrange(1, 4000), choose.randrange(1, 2**20))
            self.assertEqual(exact(BaseTime(float(short))), short)
            seconds = choose.choice((-1, 1)) * choose.random() * 10.0**choose.randrange(-25, 25)
            time = BaseTime(seconds)
            self.assertEqual(time.Get(), seconds)
            if 1e-3 < abs(seconds) < 1e3:
                self.assertLess(max(map(abs, parts(time))), LIMIT)
            self.assertTrue(time.GetDenominator() <= 2**20 or exact(time) == Fraction(seconds))
        for odd in (math.inf, -math.inf):
            self.assertEqual(BaseTime(odd).Get(), odd)
        self.assertTrue(math.isnan(BaseTime(math.nan).Get()))


class ArithmeticTest(unittest.TestCase):
    def test_against_exact_fractions(self):
        choose = random.Random(2)
        whole = lambda bits: choose.choice((-1, 1)) * choose.randrange(1, 2**choose.randrange(1, bits))
        checked = 0
        for round in range(6000):
            bits = (8, 27, 54)[round % 3]  # the last ones rarely fit, but see products near the limit
            a, b, c, d = (whole(bits) for _ in range(4))
            x, y = BaseTime(a, b), BaseTime(c, d)
            self.assertEqual((exact(x), exact(y)), (Fraction(a, b), Fraction(c, d)))
            for act in (operator.add, operator.sub, operator.mul, operator.truediv):
                expected, result = act(Fraction(a, b), Fraction(c, d)), act(x, y)
                if max(abs(expected.numerator), expected.denominator) < LIMIT:
                    checked += 1
                    self.assertEqual(parts(result), (expected.numerator, expected.denominator), (act, a, b, c, d))
                elif expected:
                    self.assertLess(abs(exact(result) / expected - 1), Fraction(1, 2**51), (act, a, b, c, d))
            for compare in (operator.lt, operator.le, operator.gt, operator.ge, operator.eq, operator.ne):
                self.assertEqual(compare(x, y), compare(Fraction(a, b), Fraction(c, d)), (a, b, c, d))
        self.assertGreater(checked, 8000)

    def test_neighbours_are_told_apart(self):
        big = LIMIT - 1
        a, b = BaseTime(big, big - 1), BaseTime(big - 1, big - 2)  # the same float
        self.assertEqual(a.Get(), b.Get())
        self.assertTrue(a < b and a != b and not a >= b)

    def test_long_sums(self):
        third = BaseTime(1, 3)
        total = BaseTime()
        for _ in range(30000):
            total += third
        self.assertEqual(parts(total), (10000, 1))
        choose = random.Random(3)
        total, seconds = BaseTime(), 0.0
        for _ in range(2000):
            step = choose.random()
            total, seconds = total + BaseTime(step), seconds + step
        self.assertAlmostEqual(total.Get(), seconds, delta=1e-9)

    def test_zero_denominators(self):
        zero, infinite = BaseTime(), BaseTime(1, 0)
        for time, expected in ((BaseTime(1) / zero, (1, 0)), (infinite + BaseTime(1, 2), (2, 0)), (zero / zero, (0, 0)),
                               (infinite * BaseTime(3), (3, 0)), (BaseTime(1) / infinite, (0, 1))):
            self.assertEqual(parts(time), expected)
        self.assertEqual((infinite.Get(), BaseTime(-1, 0).Get()), (math.inf, -math.inf))
        self.assertTrue(BaseTime(-1, 0) < zero < infinite and infinite == BaseTime(2, 0))
        nothing = BaseTime(0, 0)
        self.assertTrue(math.isnan(nothing.Get()))
        self.assertFalse(nothing == zero or nothing == nothing or nothing < zero or nothing >= zero)

    def test_other_operands(self):
        time = BaseTime(1)
        for act in (operator.add, operator.sub, operator.mul, operator.truediv, operator.lt, operator.ge):
            for other in (1, 1.0, None):
                self.assertRaises(TypeError, act, time, other)
                self.assertRaises(TypeError, act, other, time)
        self.assertFalse(time == 1)
        self.assertTrue(time != 1.0)
        self.assertRaises(TypeError, hash, time)


class MethodTest(unittest.TestCase):
    def test_every_frame_comes_back(self):
        choose = random.Random(4)
        for fps in FPS:
            frames = list(range(-300, 3000)) + [choose.randrange(-2**31, 2**31) for _ in range(300)]
            for k in frames:
                self.assertEqual(BaseTime(k, fps).GetFrame(fps), k)
            for k in frames[:3300]:
                if fps < 2**20:
                    self.assertEqual(BaseTime(k / fps).GetFrame(fps), k)

    def test_frames_between(self):
        for time, fps, frame in ((BaseTime(149, 300), 10, 5), (BaseTime(9, 20), 10, 5), (BaseTime(-9, 20), 10, -4),
                                 (BaseTime(44, 100), 10, 4), (BaseTime(7), 0, 0), (BaseTime(1), -5, -5),
                                 (BaseTime(0.3, 0.7), 7, 3), (BaseTime(0, 0), 30, 0), (BaseTime(2.0**52), 1000, 2**52 * 1000),
                                 (BaseTime(1, 0), 30, 2**63 - 1), (BaseTime(-1e300), 30, -2**63)):
            self.assertEqual(time.GetFrame(fps), frame)
        self.assertRaises(OverflowError, BaseTime(1).GetFrame, 2**31)
        self.assertRaises(TypeError, BaseTime(1).GetFrame, "30")

    def test_quantize(self):
        for start, fps, expected in (((149, 300), 10, (1, 2)), ((1, 3), 30, (1, 3)), ((10, 1), 29.97, (10000, 999)),
                                     ((1, 7), 0, (1, 7)), ((1, 7), math.inf, (1, 7)), ((1, 0), 30, (1, 0))):
            time = BaseTime(*start)
            self.assertIsNone(time.Quantize(fps))
            self.assertEqual(parts(time), expected)

    def test_parts_are_set_one_by_one(self):
        time = BaseTime(1, 2)
        time.SetNumerator(4)
        self.assertEqual(parts(time), (4, 2))
        time.SetDenominator(-8)
        self.assertEqual(parts(time), (4, -8))
        # They count as what they are, reduced or not.
        self.assertTrue(time == BaseTime(-1, 2) and time < BaseTime(-1, 3) and time > BaseTime(-1))
        self.assertEqual((time.Get(), time.GetFrame(30)), (-0.5, -15))
        self.assertEqual(parts(time + BaseTime()), (-1, 2))

    def test_difference(self):
        self.assertEqual(parts(BaseTime(1, 2).TimeDif(BaseTime(1, 3))), (1, 6))
        with self.assertRaisesRegex(TypeError, "must be qlx.BaseTime, not float"):
            BaseTime().TimeDif(1.0)

    def test_copies(self):
        raw = BaseTime(1, 2)
        raw.SetNumerator(4)
        ways = [copy.copy, copy.deepcopy]
        ways += [lambda value, p=p: pickle.loads(pickle.dumps(value, p)) for p in range(pickle.HIGHEST_PROTOCOL + 1)]
        for time in (BaseTime(), BaseTime(-1, 30), BaseTime(5, 0), BaseTime(1e-300), BaseTime(math.pi, 7), raw):
            for way in ways:
                again = way(time)
                self.assertIsNot(again, time)
                self.assertEqual((type(again), parts(again)), (BaseTime, parts(time)))

    def test_text(self):
        self.assertEqual((repr(BaseTime(2, 60)), str(BaseTime(0.5, 3))), ("BaseTime(1, 30)", "BaseTime(0.5, 3)"))
        self.assertEqual((f"{BaseTime(1, 3):.2f}", f"{BaseTime(1, 3)}"), ("0.33", "BaseTime(1, 3)"))
        for error, spec in ((ValueError, "x"), (TypeError, 1)):
            self.assertRaises(error, BaseTime().__format__, spec)


if __name__ == "__main__":
    unittest.main()
