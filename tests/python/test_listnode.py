"""Nodes and heads of lists as a script sees them: calls and their errors, marks, branches, copies, types."""
import unittest

import qlx

NULL, CUBE, SPHERE, INSTANCE, TEXTURE, PHONG, HEAD, NOWHERE = 5140, 5159, 5160, 5126, 5616, 5612, 110063, 123456
SMALL, CAPITAL = "cannot call insert function on itself", "Cannot call insert function on itself"
REFUSED = "the object cannot be inserted there"
SAME = "Cannot call insert function with same parent and previous objects"
NO_INSTANCE = "this type cannot be instantiated"
LINK = 1000  # what an instance shows
SET, CLEAR, TOGGLE = 1, 2, 3
NO_HIERARCHY, NO_BRANCHES = 1 << 2, 1 << 7  # flags of copies
ONLY_FILLED = 2


def outcome(call, *args, **keywords):
    try:
        return call(*args, **keywords)
    except BaseException as error:
        return type(error), str(error)


def make(*types):
    return [qlx.BaseObject(type) for type in types]


def row(head, *types):
    """A head with new nodes."""
    nodes = make(*types)
    for node in nodes:
        node.InsertUnderLast(head)
    return nodes


class CallsTest(unittest.TestCase):
    # The format of a method: the keywords of what it must and may have, and what a bad argument of each is told.
    INT, NODE, ATOM, TRANS = range(4)
    CALLS = {
        "CheckType": [("id", INT)], "IsInstanceOf": [("id", INT)], "GetDirty": [("flags", INT)],
        "SetDirty": [("flags", INT)], "GetHDirty": [("mask", INT)], "SetHDirty": [("mask", INT)],
        "CopyTo": [("dst", ATOM), ("flags", INT), "|", ("trn", TRANS)],
        "GetClone": ["|", ("flags", INT), ("trn", TRANS)],
        "GetDescription": [("flags", INT)], "GetParameter": [("id", None), ("flags", INT)],
        "SetParameter": [("id", None), ("data", None), ("flags", INT)],
        "Message": [("type", INT), "|", ("data", None)],
        "MultiMessage": [("flags", INT), ("type", INT), "|", ("data", None)],
        "FindUniqueID": [("appid", INT)], "AddUniqueID": [("appid", INT), ("mem", None)],
        "GetUniqueIDIndex": [("idx", INT)],
        "InsertBefore": [("obj", NODE)], "InsertAfter": [("obj", NODE)], "InsertUnder": [("obj", NODE)],
        "InsertUnderLast": [("obj", NODE)], "GetNBit": [("bit", INT)],
        "ChangeNBit": [("bit", INT), ("bitmode", INT)], "GetBranchInfo": ["|", ("flags", INT)],
    }
    HEAD_CALLS = {
        "InsertFirst": [("node", NODE)], "InsertLast": [("node", NODE)], "SetParent": [("parent", NODE)],
        "Insert": [("node", NODE), "|", ("parent", NODE), ("prev", NODE)],
    }
    NO_ARGUMENTS = ("GetType GetRealType GetClassification GetUniqueIDCount IsAlive GetNext GetPred GetUp GetDown "
                    "GetDownLast GetChildren Remove GetListHead GetDocument IsDocumentRelated").split()

    def check(self, method, items):
        required = items.index("|") if "|" in items else len(items)
        items = [item for item in items if item != "|"]
        good = {self.INT: 1, self.NODE: qlx.GeListHead(), self.ATOM: qlx.GeListHead(), self.TRANS: qlx.AliasTrans(),
                None: 1}
        names = {self.NODE: "qlx.GeListNode", self.ATOM: "qlx.QLXAtom", self.TRANS: "qlx.AliasTrans"}
        refused = lambda *args, **keywords: outcome(method, *args, **keywords)
        for at, (name, kind) in enumerate(items):
            given = {other: good[of] for other, of in items[:at]}
            if at < required:
                text = "Required argument '%s' (pos %i) not found" % (name, at + 1)
                self.assertEqual(refused(**given), (TypeError, text))
            if kind is None:
                continue
            if kind == self.INT:
                text = "an integer is required (got type bytes)"
                self.assertEqual(refused(**given, **{name: 2 ** 31})[0], OverflowError)
            else:
                text = "argument %i must be %s, not bytes" % (at + 1, names[kind])
            self.assertEqual(refused(*given.values(), b"x"), (TypeError, text))
            self.assertEqual(refused(**given, **{name: b"x"}), (TypeError, text))
        many = "function takes at most %i argument%s (%i given)" % (
            len(items), "" if len(items) == 1 else "s", len(items) + 1)
        self.assertEqual(refused(*[1] * (len(items) + 1)), (TypeError, many))
        self.assertEqual(refused(*[1] * len(items), x=1), (TypeError, many))

    def test_arguments(self):
        for of, calls in ((qlx.BaseObject(CUBE), self.CALLS), (qlx.GeListHead(), dict(self.CALLS, **self.HEAD_CALLS))):
            for name, items in calls.items():
                with self.subTest(name=name):
                    self.check(getattr(of, name), items)

    def test_no_arguments(self):
        node, head = qlx.BaseObject(CUBE), qlx.GeListHead()
        calls = [getattr(node, name) for name in self.NO_ARGUMENTS]
        calls += [getattr(head, name) for name in ("GetParent", "GetFirst", "GetLast", "FlushAll")]
        for call in calls:
            self.assertRaises(TypeError, call, 1)
            self.assertRaises(TypeError, call, x=1)

    def test_a_dead_object_wins_over_bad_arguments(self):
        owner = qlx.BaseObject(CUBE)
        head, node = owner.GetBranchInfo()[0]["head"], qlx.BaseObject(CUBE)
        node.InsertUnder(owner)
        del owner
        for wrapper, calls, name in ((node, self.CALLS, "BaseObject"),
                                     (head, dict(self.CALLS, **self.HEAD_CALLS), "GeListHead")):
            for call in list(calls) + self.NO_ARGUMENTS:
                if call != "IsAlive":
                    expected = ReferenceError, "the object 'qlx.%s' is not alive" % name
                    self.assertEqual(outcome(getattr(wrapper, call), *[] if call in self.NO_ARGUMENTS else [b"", b""]),
                                     expected, call)
            self.assertEqual((wrapper.IsAlive(), wrapper()), (False, None))
        self.assertRegex(repr(node), "^<dead qlx.BaseObject object at 0x[0-9a-f]+>$")
        self.assertEqual(str(node), repr(node))

    def test_numbers_that_destroy(self):
        class Destroys:
            def __int__(self):
                head.FlushAll()
                return 1

            __index__ = __int__

        bad, head, other, trans = Destroys(), qlx.GeListHead(), qlx.BaseObject(CUBE), qlx.AliasTrans()
        calls = [lambda a, name=name, at=[item for item in items if item != "|"]:
                 getattr(a, name)(**{key: other if kind == self.ATOM else trans if kind == self.TRANS else
                                     bad if kind == self.INT else b"" for key, kind in at})
                 for name, items in self.CALLS.items() if any(item[1] == self.INT for item in items if item != "|")]
        calls += [lambda a: other.CopyTo(a, bad), lambda a: a.CopyTo(a, bad),
                  lambda a: a.SetParameter(LINK, 1, bad), lambda a: a.GetParameter(LINK, bad), lambda a: a[bad],
                  lambda a: a.GetParameter((1, bad), 0), lambda a: a.SetParameter((1, bad), 1, 0),
                  lambda a: a.SetBit(bad), lambda a: other.TransferGoal(a, bad), lambda a: a.FindCTrack((bad, 1))]
        for number, call in enumerate(calls):
            with self.subTest(number=number):
                node, = row(head, CUBE)
                error = outcome(call, node)
                self.assertIn(error[0], (ReferenceError, TypeError, IndexError))
                if error[0] is ReferenceError:
                    self.assertEqual(error[1], "the object 'qlx.BaseObject' is not alive")
                    self.assertFalse(node.IsAlive())
                else:
                    self.assertTrue(node.IsAlive(), error)  # the key took no such number


class InsertTest(unittest.TestCase):
    def test_inserts_that_cannot_be_change_nothing(self):
        head, other = qlx.GeListHead(), qlx.GeListHead()
        a, b, c = row(head, CUBE, CUBE, CUBE)
        inner, deep = make(CUBE, CUBE)
        inner.InsertUnder(b)
        deep.InsertUnder(inner)
        foreign, = row(other, CUBE)
        document = qlx.documents.GetActiveDocument()
        fixed = document.GetBranchInfo()[0]["head"]

        def picture():
            return ([[head.GetChildren(), b.GetChildren(), inner.GetChildren(), other.GetChildren()]] +
                    [node.GetListHead() for node in (a, b, c, inner, deep, foreign)], fixed.GetChildren())

        before = picture()
        rows = [(getattr(b, name), (goal,), SMALL if goal is b else REFUSED)
                for name in ("InsertBefore", "InsertAfter", "InsertUnder", "InsertUnderLast") for goal in (b, inner, deep)]
        rows += [(head.InsertFirst, (head,), CAPITAL), (head.InsertLast, (head,), CAPITAL),
                 (head.InsertFirst, (other,), REFUSED), (head.InsertLast, (fixed,), REFUSED),
                 (head.Insert, (document,), REFUSED), (head.Insert, (head,), CAPITAL),
                 (head.Insert, (a, a), CAPITAL), (head.Insert, (a, None, a), CAPITAL),
                 (head.Insert, (a, a, a), CAPITAL), (head.Insert, (a, head, b), REFUSED),
                 (head.Insert, (a, b, b), SAME), (head.Insert, (foreign, b, b), SAME),
                 (head.Insert, (a, foreign), REFUSED), (head.Insert, (a, None, foreign), REFUSED),
                 (head.Insert, (a, b, c), REFUSED),  # c is no child of b
                 (head.Insert, (b, inner), REFUSED), (head.Insert, (b, None, deep), REFUSED),
                 (a.InsertBefore, (head,), REFUSED), (a.InsertAfter, (fixed,), REFUSED),
                 (document.InsertUnder, (a,), REFUSED), (fixed.InsertAfter, (a,), REFUSED),
                 (head.InsertUnder, (a,), REFUSED), (a.InsertAfter, (qlx.documents.BaseDocument(),), REFUSED),
                 (fixed.SetParent, (a,), REFUSED), (head.SetParent, (head,), REFUSED), (head.SetParent, (a,), REFUSED)]
        for call, args, text in rows:
            with self.subTest(call=call, args=args):
                self.assertEqual(outcome(call, *args), (AssertionError, text))
                self.assertEqual(picture(), before)
        dead, gone = qlx.BaseObject(CUBE), qlx.GeListHead()
        dead.InsertUnder(gone)
        del gone
        for call in (a.InsertBefore, a.InsertUnder, head.InsertFirst, head.Insert, lambda op: head.Insert(a, op),
                     lambda op: head.Insert(a, None, op), head.SetParent):
            self.assertEqual(outcome(call, dead), (ReferenceError, "the object 'qlx.BaseObject' is not alive"))
            self.assertEqual(picture(), before)

    def test_where_insert_puts(self):
        def tree(head):
            return [(node.GetName(), tree(node)) if node.GetDown() else node.GetName() for node in head.GetChildren()]

        for arguments, expected in (
                ({}, ["new", "a", ("b", ["c", "d"])]), ({"parent": None, "prev": None}, ["new", "a", ("b", ["c", "d"])]),
                ({"parent": None, "prev": "a"}, ["a", "new", ("b", ["c", "d"])]),
                ({"parent": None, "prev": "b"}, ["a", ("b", ["c", "d"]), "new"]),
                ({"parent": "b"}, ["a", ("b", ["new", "c", "d"])]), ({"parent": "a"}, [("a", ["new"]), ("b", ["c", "d"])]),
                ({"parent": "b", "prev": "d"}, ["a", ("b", ["c", "d", "new"])]),
                ({"parent": None, "prev": "c"}, ["a", ("b", ["c", "new", "d"])])):
            with self.subTest(arguments=arguments):
                head = qlx.GeListHead()
                nodes = dict(zip("abcd", row(head, CUBE, CUBE, CUBE, CUBE)))
                for name, node in nodes.items():
                    node.SetName(name)
                nodes["c"].InsertUnder(nodes["b"])
                nodes["d"].InsertUnderLast(nodes["b"])
                new = qlx.BaseObject(SPHERE)
                new.SetName("new")
                self.assertIsNone(head.Insert(new, **{key: nodes.get(name) for key, name in arguments.items()}))
                self.assertEqual(tree(head), expected)
        # `prev` is found behind a given `parent` only.
        self.assertEqual(outcome(head.Insert, nodes["a"], prev=nodes["c"])[0], TypeError)
        self.assertEqual(tree(head), expected)

    def test_a_chain_outside_of_lists_stays_the_scripts(self):
        a, b, c = make(CUBE, SPHERE, NULL)
        b.InsertAfter(a)
        c.InsertBefore(b)
        self.assertEqual((a.GetNext(), c.GetNext(), b.GetNext(), b.GetPred(), a.GetPred()), (c, b, None, c, None))
        self.assertEqual([one() for node in (a, b, c) for one in (node.GetUp, node.GetListHead, node.GetDocument)],
                         [None] * 9)
        again = c.GetPred()
        del a  # the one that owns it
        self.assertFalse(again.IsAlive())
        self.assertEqual((c.GetPred(), c.GetNext()), (None, b))
        head = qlx.GeListHead()
        head.InsertLast(c)  # alone
        self.assertEqual((head.GetChildren(), b.GetPred()), ([c], None))
        self.assertEqual(b.GetClone().GetPred(), None)

    def test_removed_nodes_are_the_scripts_again(self):
        document = qlx.documents.BaseDocument()
        objects = document.GetBranchInfo()[0]["head"]
        op = qlx.BaseObject(CUBE)
        op.InsertUnder(objects)
        seen = objects.GetFirst()
        self.assertEqual(op.GetDocument(), document)
        del op
        self.assertTrue(seen.IsAlive())
        op = objects.GetFirst()
        op.Remove()
        op.Remove()  # of no list: nothing happens
        self.assertEqual((objects.GetFirst(), op.GetDocument(), seen.IsAlive()), (None, None, True))
        del op
        self.assertFalse(seen.IsAlive())

    def test_changes_while_a_script_iterates(self):
        head = qlx.GeListHead()
        row(head, *[CUBE] * 5)
        for node in head.GetChildren():  # a list of its own: of living nodes until they go
            node.Remove()
        self.assertEqual(head.GetChildren(), [])
        del node
        row(head, *[CUBE] * 5)
        children = head.GetChildren()
        for number, node in enumerate(children):
            self.assertEqual(node.IsAlive(), number == 0)
            head.FlushAll()
        self.assertEqual(outcome(lambda: [node.GetNext() for node in children])[0], ReferenceError)
        row(head, CUBE, SPHERE, CUBE)
        names, node = [], head.GetFirst()
        while node:
            names.append(node.GetName())
            following = node.GetNext()
            node.Remove()
            node = following
        self.assertEqual((names, head.GetChildren()), (["Cube", "Sphere", "Cube"], []))


class NodeTest(unittest.TestCase):
    def test_branches(self):
        document, cube, tag = qlx.documents.BaseDocument(), qlx.BaseObject(CUBE), qlx.BaseTag(TEXTURE)
        for branches, owner, expected in (
                (document.GetBranchInfo(), document, [("Objects", 5155), ("Materials", 5702), ("Layers", 100004801),
                                                      ("Render Settings", 110304)]),
                (cube.GetBranchInfo(flags=0), cube, [("Tags", 5694)])):
            self.assertEqual([(one["name"], one["id"]) for one in branches], expected)
            for one in branches:
                self.assertEqual(list(one), ["head", "name", "id", "flags"])
                self.assertEqual([type(value) for value in one.values()], [qlx.GeListHead, str, int, int])
                self.assertEqual((one["head"].GetParent(), one["head"].GetListHead()), (owner, None))
        self.assertEqual((tag.GetBranchInfo(), qlx.GeListHead().GetBranchInfo(), cube.GetBranchInfo(ONLY_FILLED)),
                         (None, None, None))
        cube.GetBranchInfo()[0]["head"].InsertFirst(tag)
        only = cube.GetBranchInfo(ONLY_FILLED)
        self.assertEqual(([one["id"] for one in only], only[0]["head"].GetFirst(), tag.GetMain()), ([5694], tag, cube))
        head = only[0]["head"]
        head.Remove()  # it can't be taken from its node
        del head, only
        self.assertEqual(tag.GetMain(), cube)

    def test_bits(self):
        node = qlx.BaseObject(CUBE)
        for bit in (0, 1, 31, 32, 63):
            found = []
            for mode in (SET, SET, TOGGLE, TOGGLE, CLEAR, TOGGLE):
                self.assertIs(node.ChangeNBit(bit, mode), True)
                found.append(node.GetNBit(bit))
            self.assertEqual(found, [1, 1, 0, 1, 0, 1])
        self.assertEqual([node.GetNBit(bit) for bit in (-1, 2, 30, 33, 62, 64, 2 ** 31 - 1, -2 ** 31)], [0] * 8)
        self.assertEqual([node.ChangeNBit(*args) for args in ((-1, SET), (64, SET), (2, 0), (2, 4))], [False] * 4)
        self.assertEqual(node.GetClone().GetNBit(63), 1)

    def test_length_and_comparison(self):
        head = qlx.GeListHead()
        node, other = row(head, CUBE, CUBE)
        self.assertEqual([len(one) for one in (node, head, qlx.documents.GetActiveDocument())], [1, 1, 1])
        self.assertEqual(node.GetChildren(), [])
        for a, b, equal in ((node, other.GetPred(), True), (node, other, False), (head, node.GetListHead(), True),
                            (head, node, False), (node, 1, False), (node, None, False), (node, qlx.Vector(), False)):
            self.assertEqual((a == b, b == a, a != b, b != a), (equal, equal, not equal, not equal))
        self.assertIsNot(head.GetFirst(), head.GetFirst())
        for compare in (lambda: node < other, lambda: node >= 1, lambda: head > node, lambda: sorted([node, other])):
            self.assertEqual(outcome(compare)[0], TypeError)
        gone = head.GetLast()
        head.FlushAll()
        text = "the object 'qlx.BaseObject' is not alive"
        for compare in (lambda: gone == head, lambda: head == gone, lambda: gone != gone, lambda: head != gone,
                        lambda: gone in [head]):
            self.assertEqual(outcome(compare), (ReferenceError, text))
        self.assertEqual((gone == 1, gone != None, len(gone), bool(gone)), (False, True, 1, True))
        self.assertEqual(outcome(lambda: gone < head), (ReferenceError, text))

    def test_marks(self):
        for node in (qlx.BaseObject(CUBE), qlx.GeListHead()):
            self.assertEqual((node.FindUniqueID(1), node.GetUniqueIDCount(), node.GetUniqueIDIndex(0)), (None, 0, None))
            self.assertIs(node.AddUniqueID(1, b"abc"), True)
            view = node.FindUniqueID(1)
            self.assertEqual((type(view), view.readonly, view.format, bytes(view)), (memoryview, False, "B", b"abc"))
            view[1] = ord("x")  # in place
            copy = node.GetUniqueIDIndex(0)
            view[0:1] = b"y"
            self.assertEqual((copy, node.GetUniqueIDIndex(0)), ((1, b"axc"), (1, b"yxc")))
            self.assertIs(type(copy[1]), bytes)
            released = memoryview(bytearray(b"x"))
            released.release()
            refused = "QLXAtom.AddUniqueID expected bytes or memoryview, not "
            for mem, error, text in (
                    (memoryview(b"x"), ValueError, "memoryview is read-only"),
                    (bytearray(b"x"), TypeError, refused + "bytearray"), ("x", TypeError, refused + "str"),
                    (None, TypeError, refused + "None"), (1, TypeError, refused + "int"),
                    (memoryview(bytearray(b"abcd"))[::2], BufferError, None), (released, ValueError, None)):
                found = outcome(node.AddUniqueID, 1, mem)
                self.assertEqual(found, (error, text or found[1]))
            self.assertEqual(node.GetUniqueIDIndex(0), (1, b"yxc"))
            self.assertTrue(node.AddUniqueID(1, node.FindUniqueID(1)[1:]))  # from what it replaces
            self.assertTrue(node.AddUniqueID(-2, type("Sub", (bytes,), {})(b"a\0b")))
            self.assertTrue(node.AddUniqueID(mem=b"", appid=3))
            self.assertEqual([node.GetUniqueIDIndex(idx) for idx in (0, 1, 2)], [(1, b"xc"), (-2, b"a\0b"), (3, b"")])
            self.assertEqual([node.GetUniqueIDIndex(idx) for idx in (-1, 3, 2 ** 31 - 1, -2 ** 31)], [None] * 4)
            self.assertEqual((node.GetUniqueIDCount(), len(node.FindUniqueID(3))), (3, 0))


class CopyTest(unittest.TestCase):
    def test_texts(self):
        cube, head, document = qlx.BaseObject(CUBE), qlx.GeListHead(), qlx.documents.GetActiveDocument()
        other = TypeError, "The object have to be of the same internal type."
        for target in (qlx.BaseObject(SPHERE), head, document):
            self.assertEqual(outcome(cube.CopyTo, target, 0), other)
        self.assertEqual(outcome(head.CopyTo, cube, 0), other)
        self.assertEqual([cube.CopyTo(cube, 0), head.CopyTo(head, 0), head.CopyTo(qlx.GeListHead(), 0)],
                         [True, False, False])
        self.assertEqual(outcome(head.GetClone),
                         (BaseException, "the plugin 'qlx.BaseList2D' (ID 110063) is missing. Could not allocate instance"))

    def test_links_to_each_other(self):
        def pair():
            nodes = make(INSTANCE, INSTANCE)
            nodes[0][LINK], nodes[1][LINK] = nodes[1], nodes[0]
            return nodes

        (first, second), trans = pair(), qlx.AliasTrans()
        outside = qlx.BaseObject(INSTANCE)
        outside[LINK] = first
        self.assertIs(trans.Init(qlx.documents.GetActiveDocument()), True)
        a, b, c = (node.GetClone(0, trans) for node in (first, second, outside))
        self.assertEqual((a[LINK], b[LINK], c[LINK]), (second, first, first))
        trans.Translate(True)
        self.assertEqual((a[LINK], b[LINK], c[LINK]), (b, a, a))
        self.assertEqual((first[LINK], second[LINK], outside[LINK]), (second, first, first))
        for connect, expected in ((True, second), (False, None)):
            trans.Init()
            copy = first.GetClone(trn=trans)
            trans.Translate(connect)
            self.assertEqual(copy[LINK], expected)
        # What is recorded twice is translated once, and what was translated stays.
        trans.Init()
        copy = outside.GetClone(0, trans)
        outside[LINK] = outside
        self.assertTrue(outside.CopyTo(copy, 0, trans))
        for _ in range(2):
            trans.Translate(False)
            self.assertEqual(copy[LINK], copy)
        # In one subtree, and with a copy that went meanwhile.
        root, (first, second) = qlx.BaseObject(NULL), pair()
        first.InsertUnder(root)
        second.InsertUnder(first)
        trans.Init()
        gone, copy = second.GetClone(trn=trans), root.GetClone(trn=trans)
        del gone
        trans.Translate(True)
        a = copy.GetDown()
        self.assertEqual((a.GetDown()[LINK], first[LINK]), (a, second))
        trans.Init()
        self.assertTrue(root.CopyTo(copy, 0, trans))
        trans.Translate(False)
        a = copy.GetDown()
        self.assertEqual((a[LINK], a.GetDown()[LINK]), (a.GetDown(), a))


class TypesTest(unittest.TestCase):
    CLASSES = {
        qlx.documents.BaseDocument: [110059], qlx.documents.LayerObject: [100004801], qlx.documents.RenderData: [110304],
        qlx.Material: [5703], qlx.LayerShader: [1011123], qlx.BaseShader: [5832, 5833], qlx.CTrack: [5350],
        qlx.CCurve: [5351], qlx.SplineObject: [5101], qlx.PolygonObject: [5100], qlx.LineObject: [5137],
        qlx.CameraObject: [5103], qlx.InstanceObject: [5126], qlx.BaseObject: [NULL, CUBE, SPHERE, 5102, 5162],
        qlx.UVWTag: [5671], qlx.SegmentTag: [5672], qlx.TangentTag: [5617], qlx.PolygonTag: [5604], qlx.PointTag: [5600],
        qlx.NormalTag: [5711], qlx.VertexColorTag: [431000045], qlx.TextureTag: [TEXTURE],
        qlx.SelectionTag: [5673, 5701, 5674], qlx.BaseTag: [PHONG, 5613],
    }

    def test_classes(self):
        head = qlx.GeListHead()
        for expected, ids in self.CLASSES.items():
            for id in ids:
                with self.subTest(id=id):
                    made = qlx.BaseList2D(id)
                    self.assertEqual((type(made), made.GetType()), (expected, id))
                    self.assertTrue(made.IsInstanceOf(made.GetClassification()) and made.IsDocumentRelated())
                    head.InsertFirst(made)
                    self.assertIs(type(head.GetFirst()), expected)
                    self.assertRegex(repr(made), "^<qlx.* object called .*/.* with ID %i at 0x[0-9a-f]+>$" % id)
                    self.assertIs(type(made.GetClone()), expected)
        self.assertIs(type(head.GetFirst().GetListHead()), qlx.GeListHead)

    def test_missing_types(self):
        text = "the plugin '%s' (ID %i) is missing. Could not allocate instance"
        makers = qlx.BaseList2D, qlx.BaseObject, qlx.BaseTag, qlx.BaseMaterial, qlx.BaseShader
        for make in makers:
            name = "qlx." + make.__name__
            self.assertEqual(outcome(make, 0), (BaseException, "could not allocate '%s' instance" % name))
            for id in (NOWHERE, -1, 5155, 5156, 5694, 5695, 5702, 5707, 5709, 5352, HEAD):
                self.assertEqual(outcome(make, type=id), (BaseException, text % (name, id)))
        for make, id in ((qlx.BaseObject, TEXTURE), (qlx.BaseTag, CUBE), (qlx.BaseMaterial, CUBE), (qlx.BaseShader, 5703)):
            self.assertEqual(outcome(make, id)[0], BaseException)

    def test_types_without_instances(self):
        own = [qlx.QLXAtom, qlx.GeListNode, qlx.CKey, qlx.CCurve, qlx.PointObject, qlx.documents.LayerObject]
        for type in own:
            for args in ((), (CUBE,)):
                self.assertEqual(outcome(type, *args), (NotImplementedError, NO_INSTANCE))
        self.assertEqual(outcome(qlx.GeListHead, 1)[0], TypeError)
        self.assertEqual([type.__mro__[:-1] for type in (qlx.GeListHead, qlx.SplineObject)],
                         [(qlx.GeListHead, qlx.GeListNode, qlx.QLXAtom),
                          (qlx.SplineObject, qlx.PointObject, qlx.BaseObject, qlx.BaseList2D, qlx.GeListNode, qlx.QLXAtom)])
        self.assertEqual([qlx.QLXAtom.__doc__, qlx.GeListNode.__doc__, qlx.GeListHead.__doc__, qlx.BaseList2D.__doc__],
                         ["Base class of many other classes.", "An atom in a 4D list.", "A head for a 4D list.",
                          "BaseList2D class."])
