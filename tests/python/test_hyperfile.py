"""Files of tagged values as a script sees them: values there and back, chunks, states, elements, threads."""
import os
import tempfile
import threading
import unittest

import qlx
from qlx import BaseContainer, BaseObject, BaseTime, Matrix, Vector, Vector4d
from qlx.storage import HyperFile

NULL, CUBE, INSTANCE, SHOWN = 5140, 5159, 5126, 1000
VEC4 = "net.tavor.parametrictype.vec<4,float64>"
TENTH = 0.10000000149011612  # in 32 bits


def container(value):
    made = BaseContainer(7)
    inner = BaseContainer(8)
    inner[1] = value
    made[1], made[2], made[3], made[4] = inner, "text", 2 ** 40, Matrix()
    return made



# What a module keeps would outlive the record of what is alive: the tables are made for each test.

# The names of a value, those of its reads, and what is there and back.
def values():
    matrix = Matrix(Vector(1, 2, 3), Vector(4, 5, 6), Vector(7, 8, 9), Vector(10, 11, 0.1))
    return [
        (["WriteChar"], ["ReadChar"], [("a", 97), ("\0", 0), ("\x7f", 127), ("\xe9", -61)]),
        (["WriteUChar"], ["ReadUChar"], [0, 255, True]),
        (["WriteWord", "WriteInt16"], ["ReadWord", "ReadInt16"], [-2 ** 15, 2 ** 15 - 1]),
        (["WriteUWord", "WriteUInt16"], ["ReadUWord", "ReadUInt16"], [0, 2 ** 16 - 1]),
        (["WriteLong", "WriteInt32"], ["ReadLong", "ReadInt32"], [-2 ** 31, 2 ** 31 - 1]),
        (["WriteULong", "WriteUInt32"], ["ReadULong", "ReadUInt32"], [0, 2 ** 32 - 1, (-1, 2 ** 32 - 1), (2 ** 32, 0)]),
        (["WriteLLong", "WriteInt64"], ["ReadLLong", "ReadInt64"], [-2 ** 63, 2 ** 63 - 1]),
        (["WriteUInt64"], ["ReadUInt64"], [0, 2 ** 64 - 1]),
        (["WriteFloat32"], ["ReadFloat32"], [0.5, -0.0, float("inf"), (0.1, TENTH), (1e300, float("inf"))]),
        (["WriteReal", "WriteLReal", "WriteLFloat", "WriteFloat64"], ["ReadReal", "ReadLReal", "ReadFloat", "ReadFloat64"],
         [0.1, 1e300, 5e-324, 3]),
        (["WriteBool"], ["ReadBool"], [True, False, (255, True)]),
        (["WriteTime"], ["ReadTime"], [BaseTime(1, 3), BaseTime(-2.5)]),
        (["WriteVector"], ["ReadVector"], [Vector(0.1, -2, 1e300)]),
        (["WriteVector32"], ["ReadVector32"],
         [(Vector(0.1, 2, 3), Vector(TENTH, 2, 3)), (Vector4d(0.1, 2, 3, 4), Vector(TENTH, 2, 3))]),
        (["WriteVector64", "WriteLVector"], ["ReadVector64", "ReadLVector"], [Vector(0.1, -2, 1e300)]),
        (["WriteMatrix"], ["ReadMatrix"], [matrix]),
        (["WriteMatrix64", "WriteLMatrix"], ["ReadMatrix64", "ReadLMatrix"], [matrix]),
        (["WriteString"], ["ReadString"], ["", "h\xe9\0\U0001f600", (None, "None"), ("x" * 100000,) * 2]),
        (["WriteFilename"], ["ReadFilename"], ["", "/a/b\xe9"]),
        (["WriteContainer"], ["ReadContainer"], [BaseContainer(3), container(1.5)]),
        (["WriteData"], ["ReadData"], [None, 5, 2 ** 40, 0.5, "text", Vector(1), matrix, BaseTime(1, 2), Vector4d(1, 2, 3, 4),
                                       container("x")]),
        (["WriteMemory"], ["ReadMemory"], [(bytearray(b"ab\0c"), b"ab\0c"), (bytearray(), b""), (memoryview(bytearray(b"xy")), b"xy"),
                                           (bytearray(2 * 10 ** 6), bytes(2 * 10 ** 6))]),
    ]


def refused():
    return [
        ("WriteChar", "ab", TypeError, "argument 1 must be Char, not str"),
        ("WriteUChar", 256, OverflowError, "unsigned byte integer is greater than maximum"),
        ("WriteInt16", 2 ** 15, OverflowError, "signed short integer is greater than maximum"),
        ("WriteUInt16", -1, OverflowError, "unsigned short integer is less than minimum"),
        ("WriteInt32", -2 ** 31 - 1, OverflowError, "signed integer is less than minimum"),
        ("WriteInt64", 2 ** 63, OverflowError, None),
        ("WriteUInt64", -1, OverflowError, None),
        ("WriteVector32", 1, TypeError, "argument 1 must be " + VEC4 + ", not int"),
        ("WriteMatrix32", Matrix(), TypeError, "argument 1 must be impossible<bad format char>, not qlx.Matrix"),
        ("WriteContainer", None, TypeError, "argument 1 must be qlx.BaseContainer, not None"),
        ("WriteData", object(), TypeError, "could not convert 'object'"),
        ("WriteFilename", "a\0b", ValueError, "embedded null byte"),
        ("WriteMemory", b"abc", TypeError, "must be bytes or bytearray or memoryview, not bytes"),
        ("WriteMemory", None, TypeError, "must be bytes or bytearray or memoryview, not None"),
        ("WriteMemory", memoryview(b"abc"), ValueError, "memoryview is read-only"),
    ]


class FileTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = os.path.join(folder.name, "f\xefle")

    def open(self, mode, ident=0):
        file = HyperFile()
        self.assertIs(file.Open(ident, self.path, mode, 0), True)
        return file

    def write(self, fill):
        file = self.open(qlx.HYPERFILE_WRITE)
        fill(file)
        self.assertIs(file.Close(), True)
        return self.open(qlx.HYPERFILE_READ)

    def raises(self, kind, text, call, *args, **keywords):
        with self.assertRaises(kind) as caught:
            call(*args, **keywords)
        if text:
            self.assertEqual(str(caught.exception), text)


class ValuesTest(FileTest):
    def test_there_and_back(self):
        for writes, reads, known in values():
            pairs = [value if isinstance(value, tuple) else (value, value) for value in known]

            def fill(file):
                for name in writes:
                    for given, _ in pairs:
                        with self.subTest(name, value=given):
                            keyword = "data" if name == "WriteMemory" else "v"
                            self.assertIs(getattr(file, name)(**{keyword: given}), True)

            file = self.write(fill)
            for i in range(len(writes)):
                for given, expected in pairs:
                    name = reads[i % len(reads)]
                    with self.subTest(name, value=given):
                        got = getattr(file, name)()
                        self.assertEqual(got, expected)
                        self.assertIs(type(got), int if expected is True and name == "ReadUChar" else
                                      float if expected == 3 and name in reads and "Real" in reads[0] else type(expected))
            for name in reads:
                self.assertIsNone(getattr(file, name)())
                self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_END)

    def test_every_read_refuses_every_other_value(self):
        names = [(writes[0], reads, known[0]) for writes, reads, known in values()]
        same = {"ReadVector64": "ReadVector", "ReadMatrix64": "ReadMatrix"}

        def fill(file):
            for write, _, value in names:
                getattr(file, write)(value[0] if isinstance(value, tuple) else value)

        file = self.write(fill)
        for _, own, _ in names:
            for _, reads, _ in names:
                if same.get(reads[0], reads[0]) == same.get(own[0], own[0]):
                    continue
                file.SetError(0)
                self.assertIsNone(getattr(file, reads[0])(), (own, reads))
                self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_VALUE)
            header = file.ReadValueHeader()
            self.assertEqual(header, file.ReadValueHeader())
            self.assertIs(file.SkipValue(header + 1), False)
            self.assertIs(file.SkipValue(hf=header), True)
        self.assertIsNone(file.ReadValueHeader())
        self.assertIs(file.SkipValue(8), False)

    def test_refused(self):
        file = self.open(qlx.HYPERFILE_WRITE)
        for name, value, kind, text in refused():
            with self.subTest(name, value=value):
                self.raises(kind, text, getattr(file, name), value)
        self.raises(TypeError, "Required argument 'v' (pos 1) not found", file.WriteMatrix32)
        self.raises(TypeError, "Required argument 'v' (pos 1) not found", file.WriteVector32)
        self.assertEqual(file.GetError(), 0)
        self.assertTrue(file.Close())
        self.assertEqual(os.path.getsize(self.path), 24)

    def test_links_and_pointers(self):
        goal = BaseObject(CUBE)
        values = BaseContainer()
        values[1], values[2] = goal, 5
        file = self.write(lambda file: self.assertTrue(file.WriteContainer(values) and file.WriteData(goal)))
        read = file.ReadContainer()
        self.assertEqual((read[1], read[2], len(read)), (None, 5, 2))
        self.assertIsNone(file.ReadData())
        self.assertEqual(file.GetError(), 0)


class StructureTest(FileTest):
    def test_chunks(self):
        def fill(file):
            self.assertFalse(file.WriteChunkEnd())
            self.assertTrue(file.WriteChunkStart(id=-5, level=3) and file.WriteInt32(1))
            self.assertTrue(file.WriteChunkStart(2, -4) and file.WriteString("in") and file.WriteChunkEnd())
            self.assertTrue(file.WriteInt32(2) and file.WriteChunkEnd() and file.WriteInt32(3))
            self.assertFalse(file.ReadChunkEnd() or file.ReadInt32())
            self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_USE)

        outer, inner = {"id": -5, "level": 3}, {"id": 2, "level": -4}
        # What is called, and what it answers.
        walks = [
            ["ReadChunkStart", outer, "ReadInt32", 1, "ReadChunkStart", inner, "ReadString", "in", "ReadChunkStart", None,
             "ReadInt32", None, "ReadChunkEnd", True, "ReadInt32", 2, "ReadChunkEnd", True, "ReadInt32", 3,
             "ReadChunkStart", None, "ReadChunkEnd", False],
            ["ReadChunkStart", outer, "ReadChunkEnd", False, "ReadChunkStart", None, "ReadInt32", 1, "ReadChunkStart", inner,
             "SkipToEndChunk", True, "ReadInt32", 2, "SkipToEndChunk", True, "ReadInt32", 3, "SkipToEndChunk", False],
            ["ReadChunkStart", outer, "SkipToEndChunk", True, "ReadInt32", 3],
        ]
        file = self.write(fill)
        for walk in walks:
            for name, expected in zip(walk[::2], walk[1::2]):
                self.assertEqual(getattr(file, name)(), expected, (name, walk))
            file.Close()
            file.Open(0, self.path, qlx.HYPERFILE_READ, 0)
        self.assertEqual(file.ReadValueHeader(), qlx.HYPERFILE_VALUE_CHUNK_START)
        self.assertTrue(file.SkipValue(qlx.HYPERFILE_VALUE_CHUNK_START))
        self.assertEqual((file.ReadInt32(), file.ReadChunkStart(), file.GetError()), (3, None, 0))

    def test_states(self):
        file = HyperFile()
        not_open = "hyperfile object is not open yet"
        self.raises(IOError, not_open, file.Close)
        self.assertEqual((file.GetFileVersion(), file.GetFilterFlags(), file.GetDocument()), (0, 0, None))
        self.assertFalse(file.WriteInt32(1))
        self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_USE)
        self.assertIs(file.Open(ident=1, filename=self.path, mode=qlx.HYPERFILE_READ, error_dialog=0), False)
        self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_OPEN)
        self.raises(IOError, not_open, file.Close)
        self.assertFalse(file.Open(1, self.path, 7, 0))
        self.assertTrue(file.Open(1, self.path, qlx.HYPERFILE_WRITE, 0))
        self.raises(IOError, "call HyperFile.Close() before reusing a HyperFile", file.Open, 1, self.path, 1, 0)
        self.assertFalse(os.path.exists(self.path))
        self.assertEqual((file.GetFileVersion(), file.GetError()), (1, 0))
        file.SetError(err=77)
        self.assertEqual(file.GetError(), 77)
        self.assertTrue(file.WriteChunkStart(1, 1))
        self.assertIs(file.Close(), False)  # a chunk is open: nothing is put there
        self.raises(IOError, not_open, file.Close)
        self.assertEqual(os.listdir(os.path.dirname(self.path)), [])
        self.assertTrue(file.Open(1, self.path, qlx.HYPERFILE_WRITE, 0) and file.WriteInt32(5))
        del file  # closes it
        other = HyperFile()
        self.assertFalse(other.Open(2, self.path, qlx.HYPERFILE_READ, 0))
        self.assertEqual(other.GetError(), qlx.HYPERFILE_ERROR_IDENT)
        self.assertTrue(other.Open(1, self.path, qlx.HYPERFILE_READ, 0))
        self.assertEqual(other.ReadInt32(), 5)
        self.raises(TypeError, None, HyperFile, 1)


class ElementsTest(FileTest):
    def tree(self):
        root, cube, instance = BaseObject(NULL), BaseObject(CUBE), BaseObject(INSTANCE)
        root.SetName("root")
        cube[qlx.PRIM_CUBE_LEN] = Vector(1, 2, 3)
        instance[SHOWN] = cube
        cube.InsertUnder(root)
        instance.InsertUnder(cube)
        return root

    def test_subtree(self):
        root = self.tree()
        file = self.write(lambda file: self.assertTrue(root.WriteObject(file) and root.GetDown().Write(hf=file)))
        self.assertFalse(root.WriteObject(file))
        self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_USE)
        cube = BaseObject(CUBE)
        self.assertIs(cube.ReadObject(file, True), False)
        self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_NODE)
        read = BaseObject(NULL)
        old = BaseObject(NULL)
        old.InsertUnder(read)
        self.assertIs(read.ReadObject(hf=file, readheader=True), True)
        self.assertFalse(old.IsAlive())
        inner = read.GetDown()
        self.assertEqual((read.GetName(), inner[qlx.PRIM_CUBE_LEN], inner.GetDown()[SHOWN] == inner), ("root", Vector(1, 2, 3), True))
        self.assertEqual(file.ReadChunkStart(), {"id": CUBE, "level": 1})
        self.assertIs(cube.Read(file, NULL, 1), False)
        self.assertIs(cube.Read(hf=file, id=CUBE, level=1), True)
        self.assertEqual((cube[qlx.PRIM_CUBE_LEN], cube.GetDown(), file.ReadChunkEnd()), (Vector(1, 2, 3), None, True))
        self.assertIs(cube.Read(file, CUBE, 1), False)

    def test_geometry_comes_with_its_object(self):
        mesh = qlx.PolygonObject(3, 1)
        mesh.SetAllPoints([Vector(number) for number in range(3)])
        mesh.SetPolygon(0, qlx.CPolygon(0, 1, 2, 2))
        file = self.write(lambda file: self.assertTrue(mesh.Write(file) and mesh.WriteObject(file)))
        for read in (lambda op: op.Read(file, 5100, 1), lambda op: op.ReadObject(file, True)):
            op = qlx.PolygonObject(1, 2)
            child, tag = BaseObject(NULL), op.MakeTag(5616)
            child.InsertUnder(op)
            self.assertIs(read(op), True)
            self.assertEqual((op.GetAllPoints(), op.GetPolygonCount()), (mesh.GetAllPoints(), 1))
            self.assertEqual(op.GetPolygon(0).c, 2)
            stays = read.__code__.co_names[0] == "Read"
            self.assertEqual((child.IsAlive(), tag.IsAlive()), (stays, stays))

    def test_document(self):
        document = qlx.BaseList2D(110059)
        document.GetBranchInfo()[0]["head"].InsertFirst(self.tree())
        file = self.write(lambda file: self.assertTrue(document.WriteObject(file)))
        read = qlx.BaseList2D(110059)
        self.assertTrue(read.ReadObject(file, True))
        self.assertEqual(read.GetBranchInfo()[0]["head"].GetFirst().GetName(), "root")

    def test_refused(self):
        file = self.open(qlx.HYPERFILE_WRITE)
        root = BaseObject(NULL)
        for name, args in (("Read", (1, 2)), ("Write", ()), ("ReadObject", (True,)), ("WriteObject", ())):
            call = getattr(root, name)
            self.raises(TypeError, "argument 1 must be qlx.storage.HyperFile, not int", call, 1, *args)
        head = qlx.documents.GetActiveDocument().GetBranchInfo()[0]["head"]
        self.assertFalse(head.WriteObject(file))
        self.assertEqual(file.GetError(), qlx.HYPERFILE_ERROR_NODE)
        child = BaseObject(NULL)
        child.InsertUnder(root)
        del root, call
        self.raises(ReferenceError, "the object 'qlx.BaseObject' is not alive", child.Write, file)

    def test_while_others_change_the_scene(self):
        root = self.tree()
        stop, faults = threading.Event(), []

        def change():
            while not stop.is_set():
                made = BaseObject(CUBE)
                made.InsertUnder(root)
                root.SetName("x" * (len(root.GetName()) % 50))
                made.Remove()

        def store():
            try:
                file = HyperFile()
                path = "%s%d" % (self.path, threading.get_ident())
                for _ in range(30):
                    written = file.Open(0, path, qlx.HYPERFILE_WRITE, 0) and root.WriteObject(file) and file.Close()
                    read = BaseObject(NULL)
                    good = file.Open(0, path, qlx.HYPERFILE_READ, 0) and read.ReadObject(file, True) and file.Close()
                    if not (written and good and read.GetDown()):
                        faults.append(file.GetError())
            except BaseException as error:
                faults.append(error)

        changer, storers = threading.Thread(target=change), [threading.Thread(target=store) for _ in range(3)]
        for thread in [changer] + storers:
            thread.start()
        for thread in storers:
            thread.join()
        stop.set()
        changer.join()
        self.assertEqual(faults, [])

    def test_one_file_on_several_threads(self):
        file = self.open(qlx.HYPERFILE_WRITE)
        root = self.tree()

        def write(number):
            for _ in range(200):
                file.WriteInt32(number)
                root.Write(file)
                file.GetError(), file.GetDocument()

        threads = [threading.Thread(target=write, args=(i,)) for i in range(3)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertTrue(file.Close())
        file = self.open(qlx.HYPERFILE_READ)
        counts = {qlx.HYPERFILE_VALUE_INT32: 0, qlx.HYPERFILE_VALUE_CHUNK_START: 0}
        while True:
            header = file.ReadValueHeader()
            if header is None:
                break
            counts[header] += 1
            self.assertTrue(file.SkipValue(header))
        self.assertEqual(set(counts.values()), {600})
