"""Threads that read a scene while another one changes it: they find values, or that something is not alive."""
import random
import sys
import threading
import unittest

import qlx

CUBE, NULL, LENGTH = 5159, 5140, 1100
READERS, SECONDS = 8, 1.0


class SceneThreadsTest(unittest.TestCase):
    def setUp(self):
        interval = sys.getswitchinterval()
        self.addCleanup(sys.setswitchinterval, interval)
        sys.setswitchinterval(1e-5)

    def test_readers_beside_a_changer(self):
        document = qlx.documents.BaseDocument()
        objects = document.GetBranchInfo()[0]["head"]
        shared = []  # wrappers of all ages, of what lives and what has gone
        for _ in range(30):
            op = qlx.BaseObject(CUBE)
            op.SetName("name 0")
            op.InsertUnderLast(objects)
            shared.append(op)
        del op
        stop, faults, reads, dead = threading.Event(), [], [0] * READERS, [0] * READERS

        def note(text, *args):
            faults.append(text % args)
            stop.set()

        def look(one, other):
            name = one.GetName()
            if not name.startswith("name ") and name not in ("Cube", "Null", "Untitled"):
                note("the name %r", name)
            if one.GetType() == CUBE and not 0 <= one[qlx.PRIM_CUBE_LEN].x <= 10 ** 6:
                note("the length %r", one[qlx.PRIM_CUBE_LEN])
            for child in one.GetChildren():
                child.GetName()
            for step in (one.GetNext, one.GetPred, one.GetUp, one.GetDown, one.GetDownLast, one.GetListHead,
                         one.GetDocument):
                found = step()
                if found is not None:
                    found.GetType()
            if not isinstance(one == other, bool) or one != one:
                note("a comparison")

        def read(which):
            choose = random.Random(which)
            while not stop.is_set():
                one, other = choose.choice(shared), choose.choice(shared)
                reads[which] += 1
                if not repr(one).startswith(("<qlx.BaseObject object called ", "<dead qlx.BaseObject object at ")):
                    note("the text %r", one)
                try:
                    look(one, other)
                except ReferenceError as error:
                    dead[which] += 1
                    if not str(error).endswith("is not alive"):
                        note("the error %s", error)
                except BaseException as error:
                    note("%r", error)

        def change():
            choose, number = random.Random(99), 0
            while not stop.is_set():
                number += 1
                at = choose.randrange(len(shared))
                op = shared[at]
                try:
                    what = choose.randrange(7)
                    if what == 0 or not op.IsAlive():
                        shared[at] = qlx.BaseObject(choose.choice((CUBE, NULL)))
                        shared[at].InsertUnder(objects)
                    elif what == 1:
                        op.SetName("name %i" % number)
                    elif what == 2:
                        op.Remove()
                        if op.GetDown():
                            op.GetDown().Remove()
                        op = shared[at] = qlx.BaseObject(CUBE)  # the old one ends, unless a reader has it
                    elif what == 3:
                        op.InsertUnder(choose.choice(shared))
                    elif what == 4:
                        op.InsertAfter(choose.choice(shared))
                    elif what == 5 and op.GetType() == CUBE:
                        op[qlx.PRIM_CUBE_LEN] = qlx.Vector(number)
                    elif number % 50 == 0:
                        objects.FlushAll()
                except (AssertionError, ReferenceError):
                    pass
                except BaseException as error:
                    note("%r", error)
            self.changes = number

        threads = [threading.Thread(target=read, args=(which,)) for which in range(READERS)]
        threads.append(threading.Thread(target=change))
        for thread in threads:
            thread.start()
        stop.wait(SECONDS)
        stop.set()
        for thread in threads:
            thread.join()
        self.assertEqual(faults, [])
        self.assertGreater(min(reads), 5)
        self.assertGreater(self.changes, 100)
        self.assertGreater(sum(dead), 0)
        inside = [op for op in shared if op.IsAlive() and op.GetDocument()]
        del document
        self.assertFalse(any(op.IsAlive() for op in inside))
