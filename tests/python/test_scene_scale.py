"""Large scenes: deep and wide ones are made, walked, copied and destroyed without recursion, in time that grows
with their size."""
import unittest

import qlx

NULL = 5140
DEEP, WIDE = 100000, 200000


class ScaleTest(unittest.TestCase):
    def walk(self, node, step):
        count, last = 0, None
        while node:
            count, last = count + 1, node
            node = step(node)
        return count, last

    def test_deep(self):
        root = qlx.BaseObject(NULL)
        first = root
        for _ in range(DEEP):  # upwards, so that no insert looks far
            above = qlx.BaseObject(NULL)
            root.InsertUnder(above)
            root = above
        count, last = self.walk(root, qlx.BaseObject.GetDown)
        self.assertEqual((count, last), (DEEP + 1, first))
        copy = root.GetClone()
        count, lowest = self.walk(copy, qlx.BaseObject.GetDown)
        self.assertEqual(count, DEEP + 1)
        self.assertEqual(self.walk(lowest, qlx.BaseObject.GetUp), (DEEP + 1, copy))
        self.assertRaises(AssertionError, copy.InsertUnder, lowest)
        self.assertGreater(root.GetHDirty(-1), 0)
        self.assertTrue(copy.CopyTo(root, 0))
        self.assertFalse(last.IsAlive())
        self.assertEqual(self.walk(root, qlx.BaseObject.GetDown)[0], DEEP + 1)
        del copy
        self.assertFalse(lowest.IsAlive())

    def test_wide(self):
        document = qlx.documents.BaseDocument()
        objects = next(one["head"] for one in document.GetBranchInfo() if one["id"] == 5155)
        for _ in range(WIDE):
            qlx.BaseObject(NULL).InsertUnderLast(objects)
        self.assertEqual(self.walk(objects.GetFirst(), qlx.BaseObject.GetNext), (WIDE, objects.GetLast()))
        children = objects.GetChildren()
        self.assertEqual(len(children), WIDE)
        self.assertTrue(all(a.GetNext() == b for a, b in zip(children[:1000], children[1:])))
        self.assertLessEqual(children[0].__sizeof__(), 64)
        copy = document.GetClone()
        copies = next(one["head"] for one in copy.GetBranchInfo() if one["id"] == 5155)
        self.assertEqual(self.walk(copies.GetLast(), qlx.BaseObject.GetPred), (WIDE, copies.GetFirst()))
        first = copies.GetFirst()
        del copy
        self.assertFalse(first.IsAlive() or copies.IsAlive())
        objects.FlushAll()
        self.assertFalse(any(child.IsAlive() for child in children))

    def test_many_tags_and_names(self):
        op, document = qlx.BaseObject(NULL), qlx.documents.BaseDocument()
        for _ in range(WIDE // 4):
            op.InsertTag(qlx.BaseTag(5616))
        self.assertEqual(len(op.GetTags()), WIDE // 4)
        for name in ("Mat", "Mat.2", "Mat.02", "Mat.1x", "Mat.-1", "Matt", "Mat.", "Mat.99999999999999", "Mat.4"):
            material = qlx.BaseMaterial(5703)
            material.SetName(name)
            document.InsertMaterial(material)
        named = []
        for _ in range(4):
            material = qlx.BaseMaterial(5703)
            material.SetName("Mat")
            document.InsertMaterial(material, None, True)
            named.append(material.GetName())
        self.assertEqual(named, ["Mat.1", "Mat.3", "Mat.5", "Mat.6"])

    def test_wide_chain_that_nobody_owns(self):
        nodes = [qlx.BaseObject(NULL)]
        for _ in range(WIDE // 2):
            nodes.append(qlx.BaseObject(NULL))
            nodes[-1].InsertAfter(nodes[-2])
        self.assertEqual(self.walk(nodes[0], qlx.BaseObject.GetNext), (len(nodes), nodes[-1]))
        ends = nodes[1], nodes[-2]
        del nodes[1:-1]
        self.assertEqual((nodes[0].GetNext(), nodes[1].GetPred(), ends[0].GetNext()), (*ends, ends[1]))
