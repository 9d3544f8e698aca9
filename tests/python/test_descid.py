"""The address of a parameter, and its levels."""
import copy
import pickle
import subprocess
import sys
import unittest

import qlx
from qlx import DescID, DescLevel


def numbers(level):
    return level.id, level.dtype, level.creator


def make(*ids):
    made = DescID()
    for number in ids:
        made.PushId(DescLevel(number))
    return made


class DescLevelTest(unittest.TestCase):
    def test_calls(self):
        for level, expected in ((DescLevel(1), (1, 0, 0)), (DescLevel(1, 2), (1, 2, 0)),
                                (DescLevel(creator=3, id=-1), (-1, 0, 3)),
                                (DescLevel(2**31 - 1, -2**31, True), (2**31 - 1, -2**31, 1))):
            self.assertEqual(numbers(level), expected)
            self.assertEqual(repr(level), "DescLevel(%i, %i, %i)" % expected)
        for error, args in ((TypeError, ()), (TypeError, ("1",)), (TypeError, (1, 2, 3, 4)), (OverflowError, (2**31,))):
            self.assertRaises(error, DescLevel, *args)

    def test_attributes(self):
        level = DescLevel(1, 2, 3)
        for name, value in (("id", 10), ("dtype", -2**31), ("creator", 2**31 - 1)):
            setattr(level, name, value)
            self.assertEqual(getattr(level, name), value)
            self.assertIs(type(getattr(level, name)), int)
            for error, text, bad in ((TypeError, "Expected int, not float", 1.0), (TypeError, "Expected int, not None", None),
                                     (OverflowError, "Python int too large to convert to C long", 2**31),
                                     (OverflowError, "Python int too large to convert to C long", -2**80)):
                with self.assertRaisesRegex(error, "^%s$" % text):
                    setattr(level, name, bad)
            with self.assertRaisesRegex(AttributeError, "^the attribute '%s' cannot be removed$" % name):
                delattr(level, name)
        self.assertEqual(numbers(level), (10, -2**31, 2**31 - 1))

    def test_comparison(self):
        self.assertTrue(DescLevel(1, 2, 3) == DescLevel(1, 2, 3))
        self.assertFalse(DescLevel(1, 2, 3) != DescLevel(1, 2, 3))
        for other in ((0, 2, 3), (1, 0, 3), (1, 2, 0)):
            self.assertTrue(DescLevel(1, 2, 3) != DescLevel(*other), other)
        self.assertFalse(DescLevel(1) == 1)
        self.assertRaises(TypeError, lambda: DescLevel(1) < DescLevel(2))
        self.assertRaises(TypeError, hash, DescLevel(1))


class DescIDTest(unittest.TestCase):
    def test_calls(self):
        level = DescLevel(7, 8, 9)
        for made, expected in ((DescID(), "( )"), (DescID(-5), "((-5, 0, 0))"), (DescID(level), "((7, 8, 9))"),
                               (DescID(1, DescLevel(2)), "((1, 0, 0), (2, 0, 0))"),
                               (DescID(level, None), "((7, 8, 9))"),
                               (DescID(id3=DescLevel(3), id2=level, id1=1), "((1, 0, 0), (7, 8, 9), (3, 0, 0))")):
            self.assertEqual((repr(made), str(made)), (expected, expected))
        for error, text, args in (
                (TypeError, "__init__ expected int or qlx.DescLevel, not str", ("1",)),
                (TypeError, "__init__ expected int or qlx.DescLevel, not None", (None,)),
                (TypeError, "__init__ expected int or qlx.DescLevel, not None", (None, level)),
                (TypeError, "__init__ expected qlx.DescLevel, not None", (1, None, level)),
                (TypeError, "argument 2 must be qlx.DescLevel, not int", (1, 2)),
                (OverflowError, "Python int too large to convert to C long", (2**31,)),
                (OverflowError, "Python int too large to convert to C long", (-2**70,))):
            with self.assertRaises(error) as caught:
                DescID(*args)
            self.assertIn(text, str(caught.exception))

    def test_stack(self):
        # Levels behind the third are kept elsewhere: up and down across that border.
        for depth in range(8):
            stack = make(*range(depth))
            self.assertEqual((len(stack), stack.GetDepth()), (depth, depth))
            self.assertEqual([numbers(stack[i]) for i in range(depth)], [(i, 0, 0) for i in range(depth)])
            stack.SetId(DescLevel(100, 1, 2))
            self.assertEqual(len(stack), max(depth, 1))
            self.assertEqual(numbers(stack[len(stack) - 1]), (100, 1, 2))
            stack.PopId()
            self.assertEqual(stack, make(*range(depth - 1)))
        stack = DescID()
        stack.PopId()
        self.assertEqual(len(stack), 0)
        self.assertRaises(TypeError, stack.PushId, 1)
        self.assertRaises(TypeError, stack.SetId, None)

    def test_levels_are_copies(self):
        made = make(1, 2)
        level = made[0]
        level.id = 50
        self.assertEqual(made, make(1, 2))

    def test_positions(self):
        made = make(1, 2, 3, 4, 5)
        for count in range(5):
            self.assertEqual(made << count, make(*range(count + 1, 6)))
        for bad in (5, -1, 2**70, -2**70):
            for act in (lambda: made[bad], lambda: made << bad):
                with self.assertRaisesRegex(IndexError, "^index out of depth$"):
                    act()
        first, *others = made
        self.assertEqual(([level.id for level in made], first, len(others)), ([1, 2, 3, 4, 5], DescLevel(1), 4))
        self.assertEqual((list(DescID()), f"{made:>100}", f"{first:x<30}"), ([], str(made).rjust(100), str(first).ljust(30, "x")))
        with self.assertRaisesRegex(IndexError, "^index out of depth$"):
            DescID()[0]
        with self.assertRaisesRegex(TypeError, "^__getitem__ expected int, not str$"):
            made["0"]
        for act in (lambda: made << 1.0, lambda: 1 << made, lambda: made << made):
            self.assertRaises(TypeError, act)

    def test_comparison(self):
        for a, b in ((make(), make()), (make(1, 2, 3, 4), make(1, 2, 3, 4))):
            self.assertTrue(a == b and not a != b)
            self.assertEqual(a.GetHashCode(), b.GetHashCode())
        # What is no longer there does not count.
        short = make(1, 2, 9, 9)
        short.PopId()
        short.PopId()
        self.assertEqual(short, make(1, 2))
        different = [make(), make(0), make(1), make(1, 2), make(2, 1), make(1, 2, 3), make(1, 2, 3, 4),
                     make(1, 2, 3, 5), DescID(DescLevel(1, 1)), DescID(DescLevel(1, 0, 1))]
        for i, a in enumerate(different):
            for b in different[:i]:
                self.assertTrue(a != b and not a == b, (a, b))
                self.assertNotEqual(a.GetHashCode(), b.GetHashCode(), (a, b))
        with self.assertRaisesRegex(TypeError, "unsupported comparison operator \\( '<' \\) for 'qlx.DescID' and 'qlx.DescID'"):
            make(1) < make(2)
        self.assertFalse(make(1) == 1)
        self.assertRaises(TypeError, lambda: make(1) < 1)
        self.assertRaises(TypeError, hash, make(1))

    def test_hash_code_of_another_process(self):
        code = "import qlx; print(qlx.DescID(1, qlx.DescLevel(2)).GetHashCode())"
        self.assertEqual(int(subprocess.check_output([sys.executable, "-c", code])), make(1, 2).GetHashCode())

    def test_part(self):
        whole = make(1, 2, 3, 2, 3, 4)
        for part, expected in ((make(), (True, 0)), (make(1), (True, 0)), (make(2, 3), (True, 1)), (whole, (True, 0)),
                               (make(2, 3, 4), (True, 3)), (make(3, 1), (False, -1)), (make(4, 5), (False, -1)),
                               (make(1, 2, 3, 2, 3, 4, 5), (False, -1)), (DescID(DescLevel(1, 1)), (False, -1))):
            result = part.IsPartOf(whole)
            self.assertEqual(result, expected, part)
            self.assertIs(type(result[0]), bool)
        self.assertRaises(TypeError, whole.IsPartOf, DescLevel(1))


class CopyTest(unittest.TestCase):
    def test_copies(self):
        ways = [copy.copy, copy.deepcopy]
        ways += [lambda value, p=p: pickle.loads(pickle.dumps(value, p)) for p in range(pickle.HIGHEST_PROTOCOL + 1)]
        for value in (DescLevel(1, -2, 2**31 - 1), DescID(), make(1, 2), make(1, 2, 3, 4, 5)):
            for way in ways:
                again = way(value)
                self.assertIs(type(again), type(value))
                self.assertIsNot(again, value)
                self.assertEqual(again, value)
        original = make(1, 2, 3, 4)
        copy.copy(original).PushId(DescLevel(5))
        self.assertEqual(original, make(1, 2, 3, 4))
        for bad in ([DescLevel(1)], (1,), None):
            self.assertRaises(TypeError, original.__setstate__, bad)
        self.assertEqual(original, make(1, 2, 3, 4))


if __name__ == "__main__":
    unittest.main()
