"""Parameters of elements by keys, and what else an element has: user data, layers, tracks, shaders, names, bits."""
import gc
import unittest
import uuid

import qlx
from qlx import (AliasTrans, BaseContainer, BaseList2D, BaseMaterial, BaseObject, BaseShader, BaseTag, BaseTime, CTrack, DescID,
                 DescLevel, GeListHead, Matrix, Vector)
from qlx.documents import BaseDocument

NULL, CUBE, INSTANCE, TEXTURE, BITMAP, LAYER = 5140, 5159, 5126, 5616, 5833, 100004801
SIZE, SEGMENTS, FILLET, RADIUS, POSITION = 1100, 1101, 1105, 1106, 903


def unknown_keys():
    return (0, -1, 101, 99999, True, (), [], {}, DescID(), (RADIUS, 0), (RADIUS, RADIUS), (SIZE, 9), {0: SIZE, 1: 9}, 700,
            (700,), (700, 1), DescID(DescLevel(700), DescLevel(1)))


# What a bad key raises; "%s" is the call that complains, for keys that are no ids at all.
def bad_keys():
    keys = [(key, TypeError, "%s identifier, not " + name) for key, name in
                [(1.5, "float"), ("a", "str"), (None, "None"), (b"a", "bytes"), (set(), "set"), (range(1), "range"), (qlx, "module")]]
    keys += [(key, TypeError, "Invalid key type at position '%d'." % at) for key, at in
                 [((SIZE, "a"), 1), ([None], 0), ([[SIZE]], 0), ((DescID(SIZE),), 0), ({1: SIZE}, 0), ({0: SIZE, "1": 5}, 1),
                  ({0: 1.5}, 0)]]
    keys += [(key, OverflowError, "Python int too large to convert to C long") for key in
                 (2 ** 31, -2 ** 31 - 1, 2 ** 70, (SIZE, 2 ** 40), {0: 2 ** 40})]
    return keys


def user_data(dtype, default=None):
    settings = BaseContainer()
    settings[qlx.DESC_DATATYPE] = dtype
    if default is not None:
        settings[qlx.DESC_DEFAULT] = default
    return settings


class Number(int):
    """Does something while it becomes a number."""

    def __new__(cls, act):
        self = int.__new__(cls, 7)
        self.act = act
        return self

    def __float__(self):
        self.act()
        return 3.5

    __index__ = __int__ = None


class Id(uuid.UUID):
    act = None

    @property
    def bytes(self):
        return self.act()


class ElementTest(unittest.TestCase):
    def assert_raises(self, exception, text, call, *args):
        with self.assertRaises(exception) as caught:
            call(*args)
        self.assertEqual(str(caught.exception), text)

    def assert_set_raises(self, op, key, value, exception, text):
        self.assert_raises(exception, text, op.__setitem__, key, value)


class KeyTest(ElementTest):
    def test_keys_that_are_none(self):
        op = BaseObject(CUBE)
        calls = [("GeListNode_mp_subscript expected Description", lambda key: op[key]),
                 ("GeListNode_ass_subscript expected Description", lambda key: op.__setitem__(key, 1)),
                 ("GeListNode_ass_subscript expected Description", lambda key: op.__delitem__(key)),
                 ("QLXAtom.GetParameter expected DescID", lambda key: op.GetParameter(key, 0)),
                 ("QLXAtom.SetParameter expected DescID", lambda key: op.SetParameter(key, 1, 0)),
                 ("BaseList2D.FindCTrack expected Description", op.FindCTrack),
                 ("BaseList2D.FindKeyframeSelection expected Description", op.FindKeyframeSelection),
                 ("BaseList2D.SetKeyframeSelection expected Description", lambda key: op.SetKeyframeSelection(key, True)),
                 ("BaseList2D.RemoveUserData expected Description", op.RemoveUserData),
                 ("BaseList2D.SetUserDataContainer expected Description", lambda key: op.SetUserDataContainer(key, BaseContainer())),
                 ("Description.GetParameter expected Description", op.GetDescription(0).GetParameter),
                 ("CTrack.__init__ expected Description", lambda key: CTrack(op, key))]
        for complaint, call in calls:
            for key, exception, text in bad_keys():
                with self.subTest(complaint, key=key):
                    self.assert_raises(exception, text % complaint if "%s" in text else text, call, key)
        self.assertEqual((op[RADIUS], op[SIZE]), (40, Vector(200)))

    def test_forms_of_a_key(self):
        op = BaseObject(CUBE)
        class Int(int):
            pass
        for key in (RADIUS, Int(RADIUS), (RADIUS,), [RADIUS], {0: RADIUS}, DescID(RADIUS), DescID(DescLevel(RADIUS, 19, 5)),
                    (DescLevel(RADIUS),), [DescLevel(RADIUS, 15, 0)], {0: DescLevel(RADIUS)}):
            with self.subTest(key=key):
                op[key] = op[key] + 1
                self.assertEqual(op.GetParameter(key, 0), op[RADIUS])
                self.assertTrue(op.SetParameter(key, op[key] + 1.0, 0))
        self.assertEqual(op[RADIUS], 60)
        for level, value in ((qlx.VECTOR_X, 1), (qlx.VECTOR_Y, 2.5), (qlx.VECTOR_Z, True)):
            for key in ((SIZE, level), [SIZE, DescLevel(level)], {1: level, 0: SIZE}, DescID(DescLevel(SIZE), DescLevel(level))):
                op[key] = value
                self.assertEqual(op[key], value)
            self.assert_set_raises(op, (SIZE, level), "a", TypeError, "__setitem__ expected float, not str")
        self.assertEqual(op[SIZE], Vector(1, 2.5, 1))
        del op[SIZE, qlx.VECTOR_Y]
        self.assertEqual(op[SIZE], Vector(1, 200, 1))

    def test_unknown_parameters(self):
        values = [(1, "int"), ("a", "str"), (None, "NoneType"), (object(), "object"), (BaseObject(NULL), "qlx.BaseObject")]
        for op in (BaseObject(CUBE), BaseTag(TEXTURE), BaseDocument(), GeListHead()):
            for key in unknown_keys():
                with self.subTest(op=op, key=key):
                    self.assert_raises(AttributeError, "parameter access failed", lambda: op[key])
                    for value, name in values:
                        self.assert_set_raises(op, key, value, TypeError, "__setitem__ got unexpected type '%s'." % name)
                    del op[key]
                    self.assertIsNone(op.GetParameter(key, 0))
                    self.assertIs(op.SetParameter(key, 1, 0), False)

    def test_look_ups_run_no_code_of_keys(self):
        class Key(int):
            def __eq__(self, other):
                compared.append(other)
                return False
            def __hash__(self):
                return 0
        compared, key = [], {}
        for entry in ((Key(0), SIZE), (0, RADIUS)):
            key[entry[0]] = entry[1]
        del compared[:]
        self.assert_raises(TypeError, "Invalid key type at position '1'.", lambda: BaseObject(CUBE)[key])
        key[1] = 5
        self.assert_raises(TypeError, "Invalid key type at position '2'.", lambda: BaseObject(CUBE)[key])
        self.assertEqual(compared, [])


class ValueTest(ElementTest):
    def test_what_a_parameter_takes(self):
        op, tag, instance, shader = BaseObject(CUBE), BaseTag(TEXTURE), BaseObject(INSTANCE), BaseShader(BITMAP)
        material, huge = BaseMaterial(5703), 2 ** 40
        good = [(op, RADIUS, 1, 1.0), (op, RADIUS, True, 1.0), (op, RADIUS, huge, float(huge)), (op, RADIUS, -1, 0.0),
                (op, RADIUS, 2.5, 2.5), (op, SEGMENTS, 7, 7), (op, SEGMENTS, True, 1), (op, SEGMENTS, 5000, 1000),
                (op, FILLET, True, 1), (op, FILLET, 0, 0), (op, SIZE, Vector(1, -2, 3), Vector(1, 0, 3)),
                (tag, 1001, "\u20ac\0x", "\u20ac\0x"), (tag, 1001, "", ""), (tag, 1000, material, material), (tag, 1000, None, None),
                (instance, 1000, op, op), (instance, 1000, instance, instance), (instance, 1000, None, None),
                (shader, 1000, "a/b c.png", "a/b c.png"), (shader, 1000, "te\udcffx\xe9.png", "te\udcffx\xe9.png"), (shader, 1000, "", "")]
        for element, key, value, expected in good:
            with self.subTest(key=key, value=value):
                element[key] = value
                self.assertEqual(element[key], expected)
                self.assertIs(type(element[key]), type(expected))
        bad = [(op, RADIUS, ["a", None, Vector(), b"1", [], op], "float"), (op, SEGMENTS, [1.5, huge, None, "1"], "int or bool"),
               (op, SIZE, [1, 1.0, (1, 2, 3), None], "qlx.Vector"), (tag, 1001, [1, None, b"a"], "str"),
               (shader, 1000, [1, None, b"a"], "str"), (instance, 1000, [1, "a", BaseContainer(), GeListHead()], "qlx.BaseList2D")]
        for element, key, values, word in bad:
            before = element[key]
            for value in values:
                with self.subTest(key=key, value=value):
                    name = "None" if value is None else type(value).__name__
                    with self.assertRaises(TypeError) as caught:
                        element[key] = value
                    text = str(caught.exception)
                    self.assertTrue(text.startswith("__setitem__ expected %s, not " % word) and text.endswith(name), text)
                    self.assertEqual(element[key], before)
        for element, key, value, name in ((op, SEGMENTS, 2 ** 70, "int or bool, not int"), (op, SEGMENTS, type("I", (int,), {})(2 ** 70), "int or bool, not I"), (op, RADIUS, 10 ** 400, "float, not int"),
                                          (shader, 1000, "a\0b", "str, not str"), (tag, 1001, "\ud800", "str, not str"),
                                          (tag, 1001, "\udcff", "str, not str"), (shader, 1000, "\ud800", "str, not str")):
            self.assert_set_raises(element, key, value, TypeError, "__setitem__ expected " + name)

    def test_links_end_with_their_goals(self):
        instance, goal = BaseObject(INSTANCE), BaseObject(NULL)
        instance[1000] = goal
        del goal
        self.assertIsNone(instance[1000])

    def test_default_values_come_back(self):
        op = BaseObject(CUBE)
        before = [op[key] for key in range(901, 914)] + [op[key] for key in range(1100, 1108)]
        op[SIZE], op[RADIUS], op[POSITION], op[FILLET] = Vector(1), 1, Vector(1), True
        for key in list(range(901, 914)) + list(range(1100, 1108)):
            del op[key]
        self.assertEqual([op[key] for key in range(901, 914)] + [op[key] for key in range(1100, 1108)], before)

    def test_changes_are_counted(self):
        op = BaseObject(CUBE)
        for change in (lambda: op.__setitem__(RADIUS, 5), lambda: op.__delitem__(RADIUS), lambda: op.SetParameter(RADIUS, 5.0, 0),
                       lambda: op.SetName("x"), lambda: op.SetData(user_data(5)), lambda: op.GetDataInstance().SetInt32(5, 5)):
            before = op.GetDirty(qlx.DIRTYFLAGS_DATA)
            change()
            self.assertGreater(op.GetDirty(qlx.DIRTYFLAGS_DATA), before)
        before = op.GetDirty(qlx.DIRTYFLAGS_DATA)
        for key in (99999, SIZE):
            with self.assertRaises(TypeError):
                op[key] = 1
            self.assertIs(op.SetParameter(key, 1, 0), False)
        self.assertEqual(op.GetDirty(qlx.DIRTYFLAGS_DATA), before)

    def test_what_is_there_already_is_no_change(self):
        op = BaseObject(CUBE)
        data = op.AddUserData(user_data(qlx.DTYPE_STRING))
        op[data] = "a"
        op.SetName("x")
        op.SetEditorMode(1)
        before = op.GetDirty(qlx.DIRTYFLAGS_DATA)
        for key in (SIZE, RADIUS, FILLET, qlx.ID_BASEOBJECT_VISIBILITY_EDITOR, (SIZE, qlx.VECTOR_X), data):
            op[key] = op[key]
            self.assertIs(op.SetParameter(key, op[key], 0), True)
        del op[RADIUS]
        op.SetName("x")
        op.SetEditorMode(1)
        self.assertEqual(op.GetDirty(qlx.DIRTYFLAGS_DATA), before)
        op[SIZE, qlx.VECTOR_X] = 0
        op[SIZE, qlx.VECTOR_X] = -0.0
        self.assertEqual(str(op[SIZE].x), "-0.0")

    def test_code_of_values(self):
        holder, op = BaseObject(NULL), BaseObject(CUBE)
        self.assert_set_raises(op, RADIUS, Number(lambda: 1 // 0), ZeroDivisionError, "integer division or modulo by zero")
        self.assert_set_raises(op, RADIUS, Number(lambda: int("a")), ValueError, "invalid literal for int() with base 10: 'a'")
        op[RADIUS] = Number(lambda: op.__setitem__(SEGMENTS, 9))
        self.assertEqual((op[RADIUS], op[SEGMENTS]), (3.5, 9))
        op[RADIUS] = Number(lambda: op.SetData(BaseContainer(), False))
        self.assertEqual((op[RADIUS], op[SEGMENTS]), (3.5, 1))
        held = {}
        def destroy():
            held.clear()
            gc.collect()
            return b"\0" * 16
        identity = Id(int=5)
        identity.__dict__["act"] = destroy
        calls = [lambda: op.__setitem__(RADIUS, Number(destroy)), lambda: op.SetParameter(RADIUS, identity, 0),
                 lambda: op.SetAnimatedParameter(track, DescID(RADIUS), identity, 1.0, 0.5, 0)]
        for call in calls:
            held["holder"] = BaseObject(NULL)
            op = BaseObject(CUBE)
            op.InsertUnder(held["holder"])
            track = CTrack(op, RADIUS)
            self.assert_raises(ReferenceError, "the object 'qlx.BaseObject' is not alive", call)
            self.assertFalse(op.IsAlive())
            self.assertEqual(held, {})
        for call in (lambda: op[RADIUS], lambda: op["a"], lambda: op.__setitem__("a", 1), lambda: op.__delitem__(None),
                     lambda: op.GetParameter("a"), lambda: op.SetParameter(), lambda: op.Message("a"), lambda: op.MultiMessage()):
            self.assert_raises(ReferenceError, "the object 'qlx.BaseObject' is not alive", call)

    def test_animated_values(self):
        op, tag, key, large = BaseObject(CUBE), BaseTag(TEXTURE), DescID(RADIUS), 2 ** 63 - 1
        track = CTrack(op, RADIUS)
        for element, id, first, second, mix, result in (
                (tag, 1001, "a", "b", 0, "a"), (tag, 1001, "a", "b", 0.99, "a"), (tag, 1001, "a", "b", 1, "b"), (op, SEGMENTS, 1, 4, 0.5, 3),
                (op, SEGMENTS, large, large, 0.5, 1000), (op, SEGMENTS, large, 2, 1, 2), (op, SEGMENTS, 3, large, 0.5, 1000),
                (op, SIZE, Vector(0, 10, 20), Vector(10), 0.5, Vector(5, 10, 15)),
                (op, RADIUS, 10.0, 20, 0.5, 15.0), (op, RADIUS, 1.0, 2.0, 0.5, 1.5), (op, RADIUS, 1.0, 2.0, -5, 1.0), (op, RADIUS, 1.0, 2.0, 5, 2.0),
                (op, RADIUS, 1, 4, 0.5, 3.0)):
            self.assertIs(element.SetAnimatedParameter(track, DescID(id), first, second, mix, 0), True)
            self.assertEqual(element.GetAnimatedParameter(DescID(id), 0), (result, result, 0.0))
        self.assertIs(op.SetAnimatedParameter(track, DescID(SIZE), "a", "b", 0.5, 0), False)
        for pair in ((None, 1.0), (1.0, None)):
            self.assertIs(op.SetAnimatedParameter(track, DescID(RADIUS), *pair, 0.5, 0), False)
        self.assertIs(op.SetAnimatedParameter(track, DescID(99999), 1.0, 2.0, 0.5, 0), False)
        self.assertIs(op.SetAnimatedParameter(track, key, 1.0, 2.0, float("nan"), 0), False)
        self.assertIs(op.GetAnimatedParameter(DescID(99999), 0), False)
        for exception, text, call in [
                *((TypeError, "the type attribute must be a Ctrack", lambda bad=bad: op.SetAnimatedParameter(bad, key, 1.0, 2.0, 0, 0))
                  for bad in (op, 1, None, "x")),
                (TypeError, "the type attribute must be a DescID", lambda: op.SetAnimatedParameter(track, RADIUS, 1.0, 2.0, 0, 0)),
                (TypeError, "the type attribute must be a DescID", lambda: op.GetAnimatedParameter((RADIUS,), 0)),
                (TypeError, "could not convert 'dict'", lambda: op.SetAnimatedParameter(track, key, {}, 2.0, 0, 0)),
                (TypeError, "could not convert 'list'", lambda: op.SetAnimatedParameter(track, key, 1.0, [], 0, 0))]:
            self.assert_raises(exception, text, call)
        self.assertEqual(op[RADIUS], 3)


class UserDataTest(ElementTest):
    def test_every_type(self):
        op = BaseObject(NULL)
        cases = [(qlx.DTYPE_REAL, 1.5, [2, 2.5], "a", "float"), (qlx.DTYPE_LONG, 3, [-5, True], 2.5, "int or bool"),
                 (qlx.DTYPE_BOOL, 1, [0], 2.5, "int or bool"), (qlx.DTYPE_STRING, "s", ["\u20ac"], 5, "str"),
                 (qlx.DTYPE_FILENAME, "", ["f/g"], None, "str"), (qlx.DTYPE_VECTOR, Vector(1), [Vector(2)], 5, "qlx.Vector"),
                 (qlx.DTYPE_COLOR, Vector(1), [Vector(2)], None, "qlx.Vector"), (qlx.DTYPE_MATRIX, Matrix(), [Matrix(Vector(1))], 5, "qlx.Matrix"),
                 (qlx.DTYPE_TIME, BaseTime(1), [BaseTime(2)], 1.0, "qlx.BaseTime"), (qlx.DTYPE_LLONG, 2 ** 40, [2 ** 41], 1, "long"),
                 (qlx.DTYPE_SUBCONTAINER, BaseContainer(), [BaseContainer(3)], {}, "qlx.BaseContainer"),
                 (qlx.DTYPE_BASELISTLINK, None, [op, None], 5, "qlx.BaseList2D")]
        for number, (dtype, default, values, wrong, word) in enumerate(cases, 1):
            with self.subTest(word=word):
                id = op.AddUserData(user_data(dtype, default if default != "" else None))
                self.assertEqual((id[0].id, id[1].id, id[1].dtype), (700, number, dtype))
                self.assertEqual(op[700, number], default)
                for value in values:
                    op[700, number] = value
                    self.assertIs(op.SetParameter(id, value, 0), True)
                    for key in (id, [700, number], (700, number, 5), DescID(DescLevel(700), DescLevel(number))):
                        self.assertEqual(op[key], value)
                self.assert_set_raises(op, id, wrong, TypeError, "__setitem__ expected %s, not %s" % (word, "None" if wrong is None else type(wrong).__name__))
                del op[id]
                self.assertEqual(op[700, number], default)
        group = op.AddUserData(user_data(qlx.DTYPE_GROUP))
        self.assert_raises(AttributeError, "parameter access failed", lambda: op[group])
        self.assertEqual([id[1].id for id, settings in op.GetUserDataContainer()], list(range(1, len(cases) + 2)))
        self.assertEqual([settings[qlx.DESC_DATATYPE] for id, settings in op.GetUserDataContainer()][:-1], [case[0] for case in cases])

    def test_removal(self):
        op = BaseObject(NULL)
        ids = [op.AddUserData(user_data(qlx.DTYPE_LONG, number)) for number in range(6)]
        for key, removed in [(1, True), (1, False), (ids[1], True), ((700, 3), True), ([700, 3], False), (99, False), (-1, False),
                             (DescID(5), False), ((), False)]:
            self.assertIs(op.RemoveUserData(key), removed)
        for id, settings in op.GetUserDataContainer():
            self.assertEqual(settings[qlx.DESC_DEFAULT], op[id])
            self.assertTrue(op.RemoveUserData(id))
            self.assert_raises(AttributeError, "parameter access failed", lambda: op[id])
        self.assertEqual(op.GetUserDataContainer(), [])
        self.assertEqual(BaseTag(TEXTURE).GetUserDataContainer(), [])

    def test_settings(self):
        op = BaseObject(NULL)
        id = op.AddUserData(user_data(qlx.DTYPE_REAL, 1.5))
        copy = op.GetUserDataContainer()[0][1]
        copy[qlx.DESC_DEFAULT] = 5.0
        self.assertEqual(op[id], 1.5)
        self.assertTrue(op.SetUserDataContainer(id, copy))
        self.assertEqual(op[id], 5.0)
        op[id] = 7.0
        self.assertTrue(op.SetUserDataContainer((700, 1), user_data(qlx.DTYPE_STRING, "s"), op))
        self.assertEqual(op[id], "s")
        self.assertIsNone(op.AddUserData(BaseContainer()))
        for key, settings in ((id, BaseContainer()), (5, copy), (DescID(), copy), ((700, 0), copy), ((700, -5), copy)):
            self.assertIs(op.SetUserDataContainer(key, settings), False)
        self.assert_raises(TypeError, "argument 2 must be qlx.BaseContainer, not int", op.SetUserDataContainer, id, 5)
        # New numbers stand behind all others, as long as there are such, else in the first gap; a number that comes again has no old value.
        settings = user_data(qlx.DTYPE_LONG, 3)
        self.assertTrue(op.SetUserDataContainer((700, 40), settings))
        op[700, 40] = 7
        self.assertEqual((op.RemoveUserData(40), op.SetUserDataContainer((700, 40), settings), op[700, 40]), (True, True, 3))
        self.assertEqual(op.AddUserData(settings)[1].id, 41)
        self.assertTrue(op.SetUserDataContainer((700, 2 ** 31 - 1), settings))
        self.assertEqual(op.AddUserData(settings)[1].id, 2)
        clone = op.GetClone()
        self.assertEqual(clone[id], "s")
        clone[id] = "t"
        clone.RemoveUserData(id)
        self.assertEqual(op[id], "s")


class DescriptionTest(ElementTest):
    def test_parameters(self):
        op = BaseObject(CUBE)
        own = op.AddUserData(user_data(qlx.DTYPE_REAL))
        description = op.GetDescription(0)
        entries = list(description)
        ids = [id for settings, id, group in entries]
        op.RemoveUserData(own)
        del op
        gc.collect()
        self.assertEqual(list(map(repr, ids)), [repr(id) for settings, id, group in description])
        for key in (SIZE, RADIUS, POSITION):
            self.assertEqual([id[0].id for id in ids].count(key), 1)
        settings, id, group = entries[[id[0].id for id in ids].index(RADIUS)]
        self.assertEqual((id[0].dtype, group[0].id, settings[qlx.DESC_DEFAULT], settings[qlx.DESC_NAME]), (19, 103, 40.0, "Fillet Radius"))
        self.assertEqual(ids[-1], own)
        self.assertEqual(description.GetParameter(RADIUS), settings)
        self.assertIsNone(description.GetParameter(99999))
        self.assertIsNone(GeListHead().GetDescription(0))


class ContainerViewTest(ElementTest):
    def test_copies_and_views(self):
        op = BaseObject(CUBE)
        copy, view = op.GetData(), op.GetDataInstance()
        copy[5], view[6] = 1, 2
        self.assertEqual((view[5], op.GetData()[6], op.GetDataInstance() == view), (None, 2, True))
        op.SetData(copy)
        self.assertEqual((view[5], view[6]), (1, 2))
        op.SetData(copy, False)
        self.assertEqual((view[5], view[6]), (1, None))
        for add in (True, False):
            op.SetData(view, add)
            self.assertEqual(view[5], 1)
        view[RADIUS] = 3.0
        self.assertEqual(op[RADIUS], 3)
        view[RADIUS] = None
        view.SetString(RADIUS, "no number")
        self.assertEqual(op[RADIUS], 40)
        del op
        for call in (lambda: view[5], lambda: view.SetInt32(5, 5), lambda: len(view)):
            self.assert_raises(ReferenceError, "the host object of 'qlx.BaseContainer' is not alive", call)
        self.assertEqual(copy[5], 1)


class SurroundingsTest(ElementTest):
    def test_layers(self):
        doc, other, op, layer, above = BaseDocument(), BaseDocument(), BaseObject(NULL), BaseList2D(LAYER), BaseList2D(LAYER)
        head = [branch["head"] for branch in doc.GetBranchInfo() if branch["id"] == LAYER][0]
        head.InsertLast(above)
        layer.InsertUnder(above)
        self.assertEqual((op.GetLayerData(doc), op.SetLayerData(doc, {"solo": True}), op.GetLayerObject(doc)), (None, False, None))
        op.SetLayerObject(layer)
        self.assertEqual((op.GetLayerObject(doc), op.GetLayerObject(other), op.GetLayerData(other)), (layer, None, None))
        start = dict.fromkeys(["view", "render", "manager", "generators", "deformers", "expressions", "animation", "xref"], True)
        start.update(solo=False, locked=False, color=Vector(1))
        self.assertEqual(op.GetLayerData(doc), start)
        for change in ({}, {"solo": True}, {"view": 0, "unknown": 5, 7: 7}, {"color": Vector(0.5), "xref": False}, {"locked": 2 ** 70}):
            self.assertIs(op.SetLayerData(doc, change), True)
            start.update({key: value if key == "color" else bool(value) for key, value in change.items() if key in start})
            self.assertEqual(op.GetLayerData(doc), start)
        op.SetLayerData(doc, {"locked": False})
        above.SetLayerData(doc, {"render": False, "locked": True, "color": Vector(5)})
        copy = above.GetClone()
        head.InsertLast(copy)
        self.assertEqual([[one.GetLayerData(doc, raw)[key] for one, raw in ((op, False), (op, True), (copy, True))] for key in ("render", "locked", "color")],
                         [[False, True, False], [True, False, True], [Vector(0.5), Vector(0.5), Vector(5)]])
        for data, expected, name in [([], "dict", "list"), (None, "dict", "None"), ({"solo": 1.5}, "bool", "float"),
                                     ({"view": None}, "bool", "None"), ({"color": 1}, "qlx.Vector", "int")]:
            self.assert_raises(TypeError, "BaseList2D.SetLayerData expected %s, not %s" % (expected, name), op.SetLayerData, doc, data)
        self.assertEqual(op.GetLayerData(doc, True)["solo"], True)
        self.assert_raises(TypeError, "argument 1 must be qlx.documents.LayerObject or None, not qlx.BaseObject", op.SetLayerObject, op)
        layer.SetLayerObject(above)
        self.assertEqual(layer.GetLayerObject(doc), layer)  # its own, always
        above.Remove()
        self.assertIsNone(op.GetLayerObject(doc))
        del above
        self.assertFalse(layer.IsAlive())
        self.assert_raises(ReferenceError, "the object 'qlx.documents.LayerObject' is not alive", op.SetLayerObject, layer)
        op.SetLayerObject(None)

    def test_keyframe_selections(self):
        op = BaseObject(CUBE)
        self.assertEqual((op.KeyframeSelectionContent(), op.SetKeyframeSelection(RADIUS, True), op.SetKeyframeSelection((SIZE, 1000), 1)),
                         (False, True, True))
        self.assertEqual([op.FindKeyframeSelection(key) for key in (RADIUS, DescID(RADIUS), (SIZE, 1000), SIZE, 5)],
                         [True, True, True, False, False])
        self.assertIs(op.SetKeyframeSelection([RADIUS], False), True)
        self.assertEqual((op.FindKeyframeSelection(RADIUS), op.KeyframeSelectionContent()), (False, True))
        op.ClearKeyframeSelection()
        own = op.AddUserData(user_data(qlx.DTYPE_REAL))
        for key in unknown_keys()[:-3] + ((700, 2),):
            self.assertEqual((op.SetKeyframeSelection(key, True), op.SetKeyframeSelection(key, False)), (False, False), key)
        self.assertIs(op.KeyframeSelectionContent(), False)
        self.assertIs(op.SetKeyframeSelection(own, True), True)
        op.RemoveUserData(own)
        self.assertEqual([op.SetKeyframeSelection(own, False) for _ in range(2)], [True, False])

    def test_scale(self):
        op, length, other = BaseObject(CUBE), user_data(qlx.DTYPE_REAL, 3.0), user_data(qlx.DTYPE_VECTOR, Vector(3))
        length[qlx.DESC_UNIT], other[qlx.DESC_UNIT] = qlx.DESC_UNIT_LENGTH, qlx.DESC_UNIT_ANGLE
        length, other = op.AddUserData(length), op.AddUserData(other)
        op[POSITION], op[904] = Vector(1, -2, 3), Vector(1)
        keys = (SIZE, RADIUS, POSITION, length, other, 904, 905, SEGMENTS, qlx.ID_BASEOBJECT_COLOR)
        rest = [op[key] for key in keys[4:]]
        for scale, expected in ((2, [Vector(400), 80, Vector(2, -4, 6), 6]), (float("nan"), None), (float("inf"), None),
                                (0.25, [Vector(100), 20, Vector(0.5, -1, 1.5), 1.5]), (-2, [Vector(), 0, Vector(-1, 2, -3), -3])):
            before, dirty = [op[key] for key in keys[:4]], op.GetDirty(qlx.DIRTYFLAGS_MATRIX)
            self.assertIsNone(op.Scale(scale))
            self.assertEqual([op[key] for key in keys], (expected or before) + rest)
            self.assertEqual(op.GetDirty(qlx.DIRTYFLAGS_MATRIX) > dirty, expected is not None)

    def test_links_stay_in_a_document(self):
        documents = [BaseDocument() for _ in range(2)]
        op, here, there, free = instances = [BaseObject(INSTANCE), *(BaseObject(CUBE) for _ in range(3))]
        link = qlx.INSTANCEOBJECT_LINK
        for node, document in zip(instances, (documents[0], *documents)):
            node.InsertUnder(document.GetBranchInfo()[0]["head"])
        for goal, found in ((here, here), (free, free), (documents[0], documents[0]), (there, None), (documents[1], None)):
            op[link] = goal
            self.assertEqual((op[link], op.GetParameter(link, 0)), (found, found))
            self.assertEqual(op.GetAnimatedParameter(DescID(link), 0), (found, found, 0))
            data = op.GetData()
            self.assertEqual([data.GetLink(link, *doc) for doc in ((), (None,), documents[:1])], [goal, goal, found])
            self.assertEqual(data.GetObjectLink(link, documents[0]), None if goal in documents else found)
        op.Remove()
        self.assertEqual(op[link], documents[1])
        self.assert_raises(TypeError, "argument 2 must be qlx.documents.BaseDocument, not qlx.InstanceObject", data.GetLink, link, op)

    def test_notifications(self):
        doc, op, bl = BaseDocument(), BaseObject(NULL), BaseObject(CUBE)
        self.assertTrue(op.AddEventNotification(bl, qlx.EVENT_ANIMATE, 0, BaseContainer()))
        self.assertEqual([op.FindEventNotification(doc, bl, event) for event in (qlx.EVENT_ANIMATE, 5000)], [True, False])
        self.assertFalse(bl.FindEventNotification(doc, op, qlx.EVENT_ANIMATE))
        for removed in (True, False):
            self.assertIs(op.RemoveEventNotification(doc, bl, qlx.EVENT_ANIMATE), removed)
        self.assert_raises(TypeError, "argument 1 must be qlx.BaseList2D, not None", op.AddEventNotification, None, 5, 0, BaseContainer())
        op.AddEventNotification(bl, 5, 0, BaseContainer())
        del bl
        self.assertIs(op.Message(5), True)

    def test_shaders(self):
        op, other = BaseMaterial(5703), BaseMaterial(5703)
        first, second, third = (BaseShader(BITMAP) for _ in range(3))
        op.InsertShader(second)
        op.InsertShader(first)
        op.InsertShader(third, second)
        self.assertEqual((op.GetFirstShader(), first.GetNext(), second.GetNext(), third.GetNext()), (first, second, third, None))
        for shader in (first, second):
            self.assert_raises(AssertionError, "Found next objects. Please add them separately.", other.InsertShader, shader)
        self.assert_raises(TypeError, "argument 1 must be qlx.BaseShader, not qlx.Material", op.InsertShader, op)
        with self.assertRaises(AssertionError):
            op.InsertShader(third, third)
        other.InsertShader(third)
        self.assertEqual((second.GetNext(), other.GetFirstShader(), third.GetMain()), (None, third, other))
        del op
        self.assertEqual([shader.IsAlive() for shader in (first, second, third)], [False, False, True])

    def test_tracks(self):
        op, keys = BaseObject(CUBE), [RADIUS, SEGMENTS, (SIZE, 1002), (SIZE, 1000), POSITION]
        tracks = {str(key): CTrack(op, key) for key in keys}
        for track in tracks.values():
            op.InsertTrackSorted(track)
        expected = [tracks[str(key)] for key in (POSITION, (SIZE, 1000), (SIZE, 1002), SEGMENTS, RADIUS)]
        self.assertEqual((op.GetCTracks(), op.GetFirstCTrack()), (expected, expected[0]))
        self.assertEqual([op.FindCTrack(key) for key in keys], list(tracks.values()))
        self.assertEqual((op.FindCTrack(SIZE), op.GetCTrackRoot().GetFirst(), BaseObject(NULL).GetCTracks()), (None, expected[0], []))
        op.InsertTrackSorted(expected[0])
        self.assertEqual(op.GetCTracks(), expected)
        self.assert_raises(TypeError, "argument 1 must be qlx.CTrack, not qlx.BaseObject", op.InsertTrackSorted, op)
        del op
        self.assertFalse(any(track.IsAlive() for track in expected))

    def test_names_and_bits(self):
        op = BaseObject(CUBE)
        one_is_long = ["x" * at + "\xe9" + "x" * (size - at) for size in range(18) for at in range(size)]
        for name in ("", "x", "a\0b", "\u20ac\U0001f600\0end", "x" * 10 ** 6, 5, None, [1], *one_is_long):
            op.SetName(name)
            self.assertEqual(op.GetName(), str(name))
        with self.assertRaises(UnicodeEncodeError):
            op.SetName("\ud800")
        for call, bits in [(lambda: op.SetBit(6), 6), (lambda: op.ToggleBit(5), 3), (lambda: op.DelBit(1), 2), (lambda: op.SetAllBits(mask=-1), -1),
                           (lambda: op.SetAllBits(12), 12)]:
            self.assertIsNone(call())
            self.assertEqual(op.GetAllBits(), bits)
        self.assertEqual([op.GetBit(mask) for mask in (4, 8, 3)], [True, True, False])
        with self.assertRaises(OverflowError):
            op.SetBit(2 ** 31)

    def test_text_form(self):
        op = BaseObject(CUBE)
        for name in ("Cube", "", "\u20ac%s"):
            op.SetName(name)
            self.assertRegex(repr(op), r"\A<qlx\.BaseObject object called %s/Cube with ID 5159 at 0x[0-9a-f]+>\Z" % name)
            self.assertEqual(str(op), repr(op))
        holder = BaseObject(NULL)
        op.InsertUnder(holder)
        del holder
        self.assertEqual(repr(op), "<dead qlx.BaseObject object at %s>" % hex(id(op)))

    def test_links_of_copies(self):
        doc, holder, goal, instance, outside = BaseDocument(), BaseObject(NULL), BaseObject(CUBE), BaseObject(INSTANCE), BaseObject(INSTANCE)
        goal.InsertUnderLast(holder)
        instance.InsertUnderLast(holder)
        instance[1000] = goal
        alone, clone = instance.GetClone(), holder.GetClone()
        self.assertEqual((alone[1000], clone.GetDownLast()[1000]), (goal, goal))
        outside[1000] = outside
        for connect, kept in ((False, None), (True, outside)):
            instance.GetNext() or BaseObject(INSTANCE).InsertAfter(instance)
            instance.GetNext()[1000] = outside
            trn = AliasTrans()
            self.assertTrue(trn.Init(doc))
            clone = holder.GetClone(0, trn)
            trn.Translate(connect)
            self.assertEqual([child[1000] for child in clone.GetChildren()[1:]], [clone.GetDown(), kept])
        self.assertEqual((instance[1000], outside[1000]), (goal, outside))
        self.assertIs(goal.TransferGoal(instance, False), False)


if __name__ == "__main__":
    unittest.main()
