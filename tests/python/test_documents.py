"""Documents: what they hold, what is selected, who owns them, and their files."""
import gc
import os
import signal
import subprocess
import sys
import tempfile
import threading
import unittest

import qlx
from qlx import documents

from calls import errors

NULL, CUBE, SPHERE, TEXTURE, PHONG, MATERIAL, BITMAP, RENDERDATA, POLYGONS = 5140, 5159, 5160, 5616, 5612, 5703, 5833, 110304, 5100
ALL = qlx.SCENEFILTER_OBJECTS | qlx.SCENEFILTER_MATERIALS
REFUSED = "the object cannot be inserted there"
OBJ = """o {0}
v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0
f 1 2 3 4
"""


def names(nodes):
    return [node.GetName() for node in nodes]


def new(type=NULL, name="x", parent=None):
    node = qlx.BaseList2D(type)
    node.SetName(name)
    if parent:
        node.InsertUnderLast(parent)
    return node


class Case(unittest.TestCase):
    def setUp(self):
        documents.CloseAllDocuments()
        self.doc = documents.GetActiveDocument()

    def tearDown(self):
        documents.CloseAllDocuments()

    def raises(self, error, text, call, *args, **keywords):
        with self.assertRaises(error) as caught:
            call(*args, **keywords)
        self.assertEqual((type(caught.exception), str(caught.exception)), (error, text))


class Contents(Case):
    def test_insertion(self):
        doc, a, b, c = self.doc, new(name="a"), new(name="b"), new(CUBE, "b")
        self.assertEqual((doc.GetObjects(), doc.GetMaterials(), doc.GetFirstObject(), doc.GetFirstMaterial()), ([], [], None, None))
        self.assertIsNone(doc.InsertObject(a))
        doc.InsertObject(b, a)
        doc.InsertObject(c, pred=a, checknames=True)
        self.assertEqual((names(doc.GetObjects()), names(a.GetChildren())), (["a", "b.1"], ["b"]))
        chained, follower = new(name="d"), new(name="e")
        chained.InsertBefore(follower)
        for node in (a, chained):  # in the document, and in no list
            self.raises(AssertionError, "Found next objects. Please add them separately.", doc.InsertObject, node)
        other = documents.BaseDocument()
        foreign = new(name="f")
        other.InsertObject(foreign)
        for arguments in ((c, b, a), (c, foreign), (c, None, foreign), (c, c), (c, None, new())):
            self.raises(AssertionError, REFUSED, doc.InsertObject, *arguments)
        self.raises(AssertionError, REFUSED, doc.InsertObject, c, c)
        self.assertEqual((names(doc.GetObjects()), names(other.GetObjects())), (["a", "b.1"], ["f"]))
        self.raises(TypeError, "argument 1 must be qlx.BaseObject, not None", doc.InsertObject, None)
        doc.InsertObject(foreign, pred=c)
        self.assertEqual((other.GetObjects(), foreign.GetDocument() == doc), ([], True))
        self.assertEqual([doc.SearchObject(name) and doc.SearchObject(name).GetType() for name in ("b", "b.1", "f", "")], [NULL, CUBE, NULL, None])
        self.assertEqual(doc.SearchObjectInc(str="b.1"), c)

    def test_materials_and_render_settings(self):
        doc, first, second, rd, sub = self.doc, new(MATERIAL, "m"), new(MATERIAL, "m"), new(RENDERDATA, "r"), new(RENDERDATA, "s")
        doc.InsertMaterial(first)
        doc.InsertMaterial(second, first, True)
        doc.InsertMaterial(first, second)  # others may follow; `first` moves behind them
        self.assertEqual((names(doc.GetMaterials()), doc.SearchMaterial("m"), doc.SearchMaterialInc("n")), (["m.1", "m"], first, None))
        doc.InsertRenderData(rd)
        doc.InsertRenderData(sub, rd)
        self.assertEqual((doc.GetFirstRenderData(), doc.GetActiveRenderData(), names(rd.GetChildren())), (rd, rd, ["s"]))
        doc.InsertRenderDataLast(sub)
        doc.SetActiveRenderData(sub)
        self.assertEqual((rd.GetNext(), doc.GetActiveRenderData(), type(sub)), (sub, sub, documents.RenderData))
        for call, wrong in ((doc.InsertMaterial, rd), (doc.InsertRenderData, first), (doc.InsertRenderDataLast, None), (doc.InsertObject, first)):
            with self.assertRaises(TypeError):
                call(wrong)
        self.assertIsNone(doc.Flush())
        self.assertEqual([node.IsAlive() for node in (first, second, rd, sub)], [False] * 4)

    def test_highest_target_textures(self):
        doc, group = self.doc, new(name="group")
        doc.InsertObject(group)
        hidden, cube = new(CUBE, "hidden", group), new(CUBE, "cube", group)
        hidden[qlx.ID_BASEOBJECT_VISIBILITY_EDITOR] = 1
        self.assertEqual([doc.GetHighest(CUBE, editor).GetName() for editor in (True, False)], ["cube", "hidden"])
        self.assertIsNone(doc.GetHighest(SPHERE, True))
        self.assertIsNone(doc.GetTargetObject())
        doc.SetTargetObject(cube)
        self.assertEqual(doc.GetClone().GetTargetObject(), None)  # it links no node of another document
        self.assertEqual(doc.GetTargetObject(), cube)
        cube.Remove()
        self.assertIsNone(doc.GetTargetObject())
        for path in ("a.png", "b.png", "a.png", ""):
            material, shader = new(MATERIAL), new(BITMAP)
            shader[qlx.BITMAPSHADER_FILENAME] = path
            material.InsertShader(shader)
            doc.InsertMaterial(material)
        texts = lambda container: [value for _, value in container]
        self.assertEqual(texts(doc.GetAllTextures()), ["a.png", "b.png"])
        self.assertEqual(texts(doc.GetAllTextures(True, doc.GetMaterials()[2:])), ["b.png", "a.png"])
        self.raises(TypeError, "BaseDocument.GetAllTextures expected qlx.QLXAtom, not int", doc.GetAllTextures, True, [1])
        self.raises(BaseException, "Could not find 'Driftmotes'.", doc.GetParticleSystem)


class Selection(Case):
    def setUp(self):
        super().setUp()
        self.a, self.b = new(name="a"), new(CUBE, "b")
        self.doc.InsertObject(self.a)
        self.doc.InsertObject(self.b, pred=self.a)
        self.below = new(CUBE, "below", self.a)

    def active(self, flags=0):
        return names(self.doc.GetActiveObjects(flags))

    def test_objects(self):
        doc, a, b, below = self.doc, self.a, self.b, self.below
        self.assertEqual((doc.GetActiveObject(), self.active(), doc.GetSelection(), doc.GetRealActiveObject()), (None, [], [], None))
        doc.SetActiveObject(below)
        doc.SetActiveObject(b, qlx.SELECTION_ADD)
        self.assertEqual((doc.GetActiveObject(), doc.GetRealActiveObject()), (None, (below, True)))
        doc.SetActiveObject(a, mode=qlx.SELECTION_ADD)
        both = qlx.GETACTIVEOBJECTFLAGS_CHILDREN | qlx.GETACTIVEOBJECTFLAGS_SELECTIONORDER
        for flags, expected in ((0, "a b"), (1, "a below b"), (2, "b a"), (both, "below b a")):
            self.assertEqual(self.active(flags), expected.split())
        self.assertEqual(names(doc.GetOrderedActiveObjects()), ["below", "b", "a"])
        for arguments, expected in (((False, CUBE, False), "b"), ((True, CUBE, False), "below b"), ((True, -1, False), "a below b"),
                                    ((True, 5155, True), "a below b"), ((True, 5155, False), ""), ((True, SPHERE, True), "")):
            self.assertEqual(names(doc.GetActiveObjectsFilter(*arguments)), expected.split())
        self.assertEqual((doc.GetRealActiveObject([b]), doc.GetRealActiveObject(help=[b, a])), ((b, False), (b, True)))
        doc.SetActiveObject(b, qlx.SELECTION_SUB)
        self.assertEqual(self.active(1), ["a", "below"])
        outside = new()
        for node in (outside, documents.BaseDocument().GetFirstObject()):
            if node:
                doc.SetActiveObject(node)  # not in the document: nothing happens
        self.assertEqual((self.active(), outside.GetBit(qlx.BIT_ACTIVE)), (["a"], False))
        doc.SetActiveObject(b)
        self.assertEqual((self.active(1), doc.GetActiveObject(), b.GetBit(qlx.BIT_ACTIVE)), (["b"], b, True))
        doc.SetActiveObject(None)
        self.assertEqual(self.active(), [])
        self.raises(TypeError, "argument 1 must be qlx.BaseObject or None, not int", doc.SetActiveObject, 1)
        self.raises(ValueError, "Invalid object length.", doc.GetRealActiveObject, [])
        self.raises(TypeError, "BaseDocument.GetRealActiveObject expected qlx.QLXAtom, not str", doc.GetRealActiveObject, ["a"])

    def test_other_elements(self):
        doc, material = self.doc, new(MATERIAL, "m")
        tags = [new(TEXTURE, "t1"), new(TEXTURE, "t2")]
        for tag, node in zip(tags, (self.below, self.b)):
            next(one["head"] for one in node.GetBranchInfo() if one["id"] == 5694).InsertLast(tag)
        doc.InsertMaterial(material)
        doc.SetActiveTag(tags[1])
        doc.SetActiveMaterial(material)
        doc.SetSelection(self.b, qlx.SELECTION_ADD)
        self.assertEqual((doc.GetActiveTag(), doc.GetActiveMaterial(), names(doc.GetSelection())), (tags[1], material, ["b", "t2", "m"]))
        doc.SetActiveTag(tags[0], qlx.SELECTION_ADD)
        self.assertEqual((doc.GetActiveTag(), names(doc.GetActiveTags()), doc.GetActiveMaterials()), (None, ["t1", "t2"], [material]))
        doc.SetActiveTag(None)
        doc.SetSelection(material)
        cube = new(5159, "cube")
        doc.InsertObject(cube)
        doc.ExecutePasses(None, False, True, True, 0)
        doc.SetSelection(doc)
        doc.SetSelection(cube.GetCache())
        doc.SetActiveObject(cube.GetCache())
        self.assertEqual([node.GetBit(qlx.BIT_ACTIVE) for node in (doc, cube.GetCache())], [False, False])
        self.assertEqual((doc.GetActiveTags(), doc.GetSelection()), ([], [material]))
        doc.SetActiveMaterial(None)
        self.assertIsNone(doc.GetActiveMaterial())

    def test_lists_while_garbage_ends_what_they_hold(self):
        self.doc.SetActiveObject(self.a)
        self.doc.SetActiveObject(self.below, qlx.SELECTION_ADD)

        class Bomb:
            def __init__(self, node):
                self.node, self.me = node, self

            def __del__(self):
                self.node.Remove()
                self.node = None

        gc.collect()
        old = gc.get_threshold()
        Bomb(self.below)
        self.below = None
        gc.set_threshold(1)  # the next list that is made collects
        try:
            found = self.doc.GetActiveObjects(1)
        finally:
            gc.set_threshold(*old)
        self.assertTrue(all(node.IsAlive() for node in found))


class State(Case):
    def test_values(self):
        doc = self.doc
        half = qlx.BaseTime(1, 2)
        for name, before, value, after in (
                ("Fps", 30, 25, 25), ("Fps", 25, 0, 1), ("LOD", 1.0, 0.5, 0.5), ("LOD", 0.5, 7, 1.0), ("RenderLod", 1.0, -1, 0.0),
                ("Mode", qlx.MODE_OBJECT, qlx.MODE_EDGES, qlx.MODE_EDGES), ("Action", 0, 200000084, 200000084),
                ("Time", qlx.BaseTime(0), half, half), ("MinTime", qlx.BaseTime(0), half, half), ("MaxTime", qlx.BaseTime(3), half, half),
                ("LoopMinTime", qlx.BaseTime(0), half, half), ("LoopMaxTime", qlx.BaseTime(3), half, half),
                ("Time", half, qlx.BaseTime(float("nan")), qlx.BaseTime(0)), ("Time", qlx.BaseTime(0), half, half),
                ("MaxTime", half, qlx.BaseTime(0, 0), qlx.BaseTime(0)),
                ("DocumentName", "Untitled", "a.obj", "a.obj"), ("DocumentPath", "", "/tmp/", "/tmp")):
            get, set = getattr(doc, "Get" + name), getattr(doc, "Set" + name)
            self.assertEqual((get(), set(value), get()), (before, None, after), name)
        self.assertEqual((doc.IsEditMode(), doc.IsAxisEnabled(), doc.GetName(), doc[qlx.DOCUMENT_FPS]), (True, False, "a.obj", 1))
        copy = doc.GetClone()
        self.assertEqual((copy.GetMode(), copy.GetTime(), copy.GetDocumentPath()), (qlx.MODE_EDGES, half, "/tmp"))
        self.assertEqual((doc.GetChanged(), doc.SetChanged(), doc.GetChanged()), (False, None, True))
        documents.SetDocumentTime(doc, qlx.BaseTime(2))
        self.assertEqual((doc.GetTime(), doc.SetRewind(), doc.GetTime()), (qlx.BaseTime(2), None, half))
        with self.assertRaises(Exception):
            doc[qlx.DOCUMENT_TIME] = qlx.BaseTime(float("nan"))
        doc.GetDataInstance()[qlx.DOCUMENT_TIME] = qlx.BaseTime(float("nan"))
        self.assertEqual((doc.GetTime(), doc.GetSplinePlane()), (qlx.BaseTime(0), qlx.PRIM_PLANE_XY))
        for value, plane in ((qlx.PRIM_PLANE_XZ, qlx.PRIM_PLANE_XZ), (qlx.PRIM_PLANE_ZY, qlx.PRIM_PLANE_ZY), (9, qlx.PRIM_PLANE_XZ)):
            doc[qlx.DOCUMENT_SPLINEPLANE] = value
            self.assertEqual(doc.GetSplinePlane(), plane)
        doc[qlx.DOCUMENT_FPS] = 50
        doc.SetData(qlx.BaseContainer(), False)  # what is missing is the default
        self.assertEqual((doc.GetFps(), doc.GetMaxTime()), (30, qlx.BaseTime(3)))

    def test_settings(self):
        doc, tools = self.doc, qlx.BaseContainer()
        tools[7] = "seven"
        doc.SetDocumentData(qlx.DOCUMENTSETTINGS_TOOLS, tools)
        self.assertEqual((doc.GetData(qlx.DOCUMENTSETTINGS_TOOLS)[7], doc.GetDocumentData()[qlx.DOCUMENTSETTINGS_TOOLS][7]), ("seven", "seven"))
        live = doc.GetSettingsInstance(qlx.DOCUMENTSETTINGS_TOOLS)
        live[8] = 8
        doc.GetSettingsInstance(qlx.DOCUMENTSETTINGS_GENERAL)[qlx.DOCUMENT_FPS] = 24
        every = doc.GetData()
        self.assertEqual((every[qlx.DOCUMENT_FPS], every[qlx.DOCUMENTSETTINGS_TOOLS][8], doc.GetFps()), (24, 8, 24))
        for rate, told in ((0, 1), (-5, 1), (10 ** 6, 2500)):
            doc.GetSettingsInstance(qlx.DOCUMENTSETTINGS_GENERAL)[qlx.DOCUMENT_FPS] = rate
            self.assertEqual(doc.GetFps(), told)
        other = documents.BaseDocument()
        other.SetDocumentData(-1, every)
        self.assertEqual((other.GetFps(), other.GetData(qlx.DOCUMENTSETTINGS_TOOLS)[7], live[8]), (24, "seven", 8))
        self.assertEqual((doc.GetSettingsInstance(99), len(doc.GetData(99)), doc.GetLayerObjectRoot().GetFirst()), (None, 0, None))
        doc.SetDocumentData(99, tools)
        documents.KillDocument(doc)
        with self.assertRaises(ReferenceError):
            live[8]


class Open(Case):
    def test_owners(self):
        mine = documents.BaseDocument()
        mine.InsertObject(new(name="held"))
        held = mine.GetFirstObject()
        del mine
        self.assertFalse(held.IsAlive())
        given, somewhere = documents.BaseDocument(), qlx.GeListHead()
        somewhere.InsertFirst(given)  # it is taken out of there
        for _ in range(2):
            self.assertIsNone(documents.InsertBaseDocument(given))
        given.InsertObject(new(name="held"))
        held = given.GetFirstObject()
        self.assertEqual(somewhere.GetChildren(), [])
        self.assertEqual((self.doc.GetNext(), given.GetPred(), given.GetNext()), (given, self.doc, None))
        given.Remove()  # open documents stay where they are
        self.raises(AssertionError, REFUSED, given.InsertUnder, held)
        self.raises(AssertionError, REFUSED, held.InsertAfter, given)
        del given
        self.assertEqual((held.IsAlive(), documents.GetFirstDocument().GetNext() == held.GetDocument()), (True, True))
        owned = documents.BaseDocument()
        self.assertIsNone(documents.KillDocument(owned))
        self.assertEqual((owned.IsAlive(), owned()), (False, None))
        for call in (documents.KillDocument, documents.InsertBaseDocument, documents.SetActiveDocument):
            self.raises(ReferenceError, "the object 'qlx.documents.BaseDocument' is not alive", call, owned)
        self.raises(ReferenceError, "the object 'qlx.documents.BaseDocument' is not alive", documents.IsolateObjects, owned, 1)
        for call in (documents.SetActiveDocument, documents.KillDocument, documents.InsertBaseDocument):
            self.raises(TypeError, "argument 1 must be qlx.documents.BaseDocument, not None", call, None)

    def test_active(self):
        self.assertEqual(documents.GetActiveDocument(), self.doc)
        others = [documents.BaseDocument() for _ in range(3)]
        documents.SetActiveDocument(others[0])  # not open
        self.assertEqual(documents.GetActiveDocument(), self.doc)
        for other in others:
            documents.InsertBaseDocument(other)
        documents.SetActiveDocument(others[1])
        documents.KillDocument(others[1])
        self.assertEqual(documents.GetActiveDocument(), others[2])
        documents.KillDocument(others[2])
        self.assertEqual(documents.GetActiveDocument(), others[0])
        self.assertIs(documents.CloseAllDocuments(), True)
        fresh = documents.GetActiveDocument()
        self.assertEqual([one.IsAlive() for one in (self.doc, others[0], fresh)], [False, False, True])
        self.assertEqual((documents.GetFirstDocument(), fresh.GetNext(), fresh.GetObjects()), (fresh, None, []))

    def test_isolated(self):
        doc, group, cube, material, unused = self.doc, new(name="group"), new(CUBE, "cube"), new(MATERIAL, "m"), new(MATERIAL, "u")
        for insert, node in ((doc.InsertObject, group), (doc.InsertMaterial, material), (doc.InsertMaterial, unused)):
            insert(node)
        doc.InsertObject(cube, group)
        tag = new(TEXTURE)
        cube.GetBranchInfo()[0]["head"].InsertLast(tag)
        tag[qlx.TEXTURETAG_MATERIAL] = material
        group[qlx.ID_BASEOBJECT_REL_POSITION] = qlx.Vector(1, 2, 3)
        cube[qlx.ID_BASEOBJECT_REL_POSITION] = qlx.Vector(10, 0, 0)
        made = documents.IsolateObjects(doc, [cube, cube])
        copy = made.GetFirstObject()
        self.assertEqual((names(made.GetObjects()), names(made.GetMaterials()), copy == cube), (["cube"], ["m"], False))
        self.assertEqual(copy[qlx.ID_BASEOBJECT_REL_POSITION], qlx.Vector(11, 2, 3))
        self.assertEqual(copy.GetBranchInfo()[0]["head"].GetFirst()[qlx.TEXTURETAG_MATERIAL], made.GetFirstMaterial())
        whole = documents.IsolateObjects(doc, (cube, group))  # the one comes with the other
        self.assertEqual((names(whole.GetObjects()), names(whole.GetFirstObject().GetChildren())), (["group"], ["cube"]))
        self.assertIsNone(documents.IsolateObjects(doc, [tag, new()]))
        self.raises(TypeError, "IsolateObjects expected qlx.QLXAtom, not None", documents.IsolateObjects, doc, [None])

        class Killing(list):
            def __iter__(self):
                documents.KillDocument(doc)
                return super().__iter__()

        with self.assertRaises(ReferenceError):
            documents.IsolateObjects(doc, Killing([cube]))


class Files(Case):
    def setUp(self):
        super().setUp()
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def file(self, name, content):
        path = os.path.join(self.folder, name)
        with open(path, "w") as file:
            file.write(content)
        return path

    def test_load_and_save(self):
        path = self.file("one.obj", OBJ.format("one"))
        loaded = documents.LoadDocument(path, ALL)
        self.assertEqual((names(loaded.GetObjects()), loaded.GetDocumentName(), loaded.GetDocumentPath()), (["one"], "one.obj", self.folder))
        self.assertIsNone(documents.GetFirstDocument().GetNext())  # it is not open
        self.assertEqual(documents.LoadDocument(path, qlx.SCENEFILTER_MATERIALS, None).GetObjects(), [])
        self.doc.InsertObject(new(name="mine"))
        self.assertIs(documents.MergeDocument(self.doc, path, ALL), True)
        self.assertEqual((names(self.doc.GetObjects()), self.doc.GetDocumentName()), (["mine", "one"], "Untitled"))
        saved = os.path.join(self.folder, "two.glb")
        self.doc.SetChanged()
        self.assertIs(documents.SaveDocument(loaded, saved, qlx.SAVEDOCUMENTFLAGS_NONE, qlx.FORMAT_GLBEXPORT), True)
        self.assertEqual(loaded.GetDocumentName(), "one.obj")
        self.assertIs(documents.SaveDocument(self.doc, saved, qlx.SAVEDOCUMENTFLAGS_SAVEAS, qlx.FORMAT_GLBEXPORT), True)
        self.assertEqual((self.doc.GetDocumentName(), self.doc.GetDocumentPath(), self.doc.GetChanged()), ("two.glb", self.folder, False))
        self.assertIs(documents.LoadFile(saved), True)
        active = documents.GetActiveDocument()
        self.assertEqual((active.GetDocumentName(), active.GetPred(), active.SearchObject("one").GetType()), ("two.glb", self.doc, POLYGONS))

    def test_bad_files(self):
        good = self.file("good.obj", OBJ.format("kept"))
        self.doc.InsertObject(new(name="mine"))
        for name, content in (("none.obj", None), ("empty.obj", ""), ("broken.glb", "glTF"), ("unknown.xyz", "text"), ("indices.obj", "v 0 0 0\nf 1 2 999999999\n")):
            path = os.path.join(self.folder, name) if content is None else self.file(name, content)
            with self.subTest(name=name), errors() as lines:
                self.assertIsNone(documents.LoadDocument(path, ALL))
                self.assertIs(documents.MergeDocument(self.doc, path, ALL), False)
                self.assertIs(documents.LoadFile(path), False)
            self.assertEqual([line.split(": ")[1] for line in lines], [words + path for words in ("can't load ", "can't merge ", "can't open ")])
        for path, format in ((os.path.join(self.folder, "no", "a.glb"), qlx.FORMAT_GLBEXPORT), (good, 4711), ("", qlx.FORMAT_GLBEXPORT)):
            with self.subTest(path=path), errors() as lines:
                self.assertIs(documents.SaveDocument(self.doc, path, 0, format), False)
            self.assertIn("can't save " + (path or "a file without a name"), lines[0])
        self.assertEqual((names(self.doc.GetObjects()), documents.GetActiveDocument(), self.doc.GetNext()), (["mine"], self.doc, None))
        loaded = documents.LoadDocument(good, ALL)
        self.assertEqual(names(loaded.GetObjects()), ["kept"])
        dead = documents.BaseDocument()
        documents.KillDocument(dead)
        for call, arguments in ((documents.MergeDocument, (good, ALL)), (documents.SaveDocument, (good, 0, 0))):
            with self.assertRaises(ReferenceError):
                call(dead, *arguments)
        with self.assertRaises(TypeError):
            documents.LoadDocument(good, ALL, 1)

    def test_what_the_console_tells(self):
        other = self.file("new\nline \x1b[2J\u009b.obj", "o")
        misnamed, kept = os.path.join(self.folder, "scene.obj"), os.path.join(self.folder, "scene.tmp")
        gone = os.path.join(self.folder, "gone.glb")
        os.symlink(os.path.join(self.folder, "no", "where"), gone)
        doc = documents.LoadDocument(self.file("good.obj", OBJ.format("kept")), ALL)
        with errors() as lines:
            documents.LoadDocument(other, ALL)
            for path in (misnamed, kept):
                self.assertIs(documents.SaveDocument(doc, path, 0, qlx.FORMAT_GLBEXPORT), True)
            self.assertIs(documents.SaveDocument(doc, gone, 0, qlx.FORMAT_GLBEXPORT), False)
        self.assertIn("can't load %s/new\\x0aline \\x1b[2J\\x9b.obj: " % self.folder, lines[0])
        self.assertEqual(lines[1:], ["qlxpy: saved %s in the format .glb, which its name does not tell" % misnamed,
                                     "qlxpy: can't save %s: No such file or directory" % gone])
        os.rename(kept, kept + ".glb")
        again = documents.LoadDocument(kept + ".glb", ALL)
        self.assertEqual(names(again.GetObjects()), ["kept"])

    def large(self):
        count = 200000
        return self.file("large.obj", "o large\n" + "".join("v %d %d 0\n" % (i, i % 7) for i in range(count)) +
                         "".join("f %d %d %d\n" % (i, i + 1, i + 2) for i in range(1, count - 1)))

    def test_other_threads_run_meanwhile(self):
        path, loaded, counts = self.large(), [], [0, 0]
        active = self.doc
        active.InsertObject(new(CUBE, "start"))

        def work():
            loaded.append(documents.LoadDocument(path, ALL))
            counts[1] = counts[0]
            loaded.append(documents.SaveDocument(loaded[0], os.path.join(self.folder, "copy.ply"), 0, qlx.FORMAT_PLYEXPORT))
            loaded.append(active.ExecutePasses(None, True, True, True, 0))

        thread = threading.Thread(target=work)
        thread.start()
        while thread.is_alive():  # changes scenes, also the one that is saved or evaluated
            node = new(CUBE)
            active.InsertObject(node)
            documents.KillDocument(documents.BaseDocument())
            if counts[0] % 2:
                node.Remove()
            if len(loaded) == 1:
                loaded[0].InsertObject(new(SPHERE))
            counts[0] += 1
        thread.join()
        self.assertEqual((names(loaded[0].GetObjects())[-1], loaded[1:]), ("large", [True, True]))
        with open(os.path.join(self.folder, "copy.ply"), "rb") as file:
            self.assertGreaterEqual(int(file.read(1000).split(b"element vertex ")[1].split()[0]), 200000)
        self.assertGreater(counts[1], 100)

    def test_a_signal_stops_it(self):
        path = self.large()
        self.addCleanup(signal.signal, signal.SIGALRM, signal.signal(signal.SIGALRM, signal.default_int_handler))
        for word, call, *arguments in (("load", documents.LoadDocument, path, ALL), ("merge", documents.MergeDocument, self.doc, path, ALL),
                                       ("open", documents.LoadFile, path)):
            with self.subTest(word), errors() as lines, self.assertRaises(KeyboardInterrupt):
                signal.setitimer(signal.ITIMER_REAL, 0.02)
                call(*arguments)
            self.assertEqual(lines, ["qlxpy: can't %s %s: stopped" % (word, path)])
        self.assertEqual((self.doc.GetObjects(), self.doc.GetNext(), documents.LoadDocument(path, ALL).IsAlive()), ([], None, True))

    def test_a_document_that_ends_while_it_is_used(self):
        path = self.large()
        document = documents.LoadDocument(path, ALL)
        done = []
        thread = threading.Thread(target=lambda: done.append(documents.SaveDocument(document, path + ".ply", 0, qlx.FORMAT_PLYEXPORT)))
        with errors() as lines:
            thread.start()
            documents.KillDocument(document)
            thread.join()
        # It had its copy already, or came too late, or did not even begin; then the thread has a ReferenceError.
        self.assertIn(done, ([True], [False], []))
        if done == [False]:
            self.assertEqual(lines, ["qlxpy: can't save %s.ply: the document was destroyed" % path])

    def test_open(self):
        path = self.file("scene.obj", OBJ.format("plate"))
        script = "import qlx; doc = qlx.documents.GetActiveDocument(); print(doc.GetDocumentName(), doc.GetFirstObject().GetName())"
        run = lambda *arguments: subprocess.run([sys.executable, *arguments, "-c", script], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        done = run("--open", path)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"scene.obj plate\n", b""))
        for wrong in (path + "x", self.file("bad.obj", "nothing")):
            done = run("--open", wrong)
            self.assertEqual((done.returncode, done.stdout), (2, b""))
            self.assertTrue(done.stderr.startswith(b"qlxpy: can't open " + wrong.encode()), done.stderr)


if __name__ == "__main__":
    unittest.main()
