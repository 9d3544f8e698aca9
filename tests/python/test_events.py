"""Events of the scene, as a script asks for them."""
import types
import unittest

import qlx


class EventAddTest(unittest.TestCase):
    def test_arguments(self):
        for args, keywords in [((), {}), ((0,), {}), ((qlx.EVENT_FORCEREDRAW,), {}), ((), {"flags": qlx.EVENT_ANIMATE})]:
            self.assertIsNone(qlx.EventAdd(*args, **keywords))
        for args, error in [(("now",), TypeError), ((1, 2), TypeError), ((1 << 31,), OverflowError)]:
            with self.subTest(args=args), self.assertRaises(error):
                qlx.EventAdd(*args)

    def test_arguments_may_end_the_script_that_asks(self):
        class Flags:
            def __int__(self):
                node.clear()
                return 1
            __index__ = __int__

        node = types.ModuleType("node").__dict__
        node.update(qlx=qlx, flags=Flags(), __exec__=1)
        self.assertIsNone(eval("qlx.EventAdd(flags)", node))


if __name__ == "__main__":
    unittest.main()
