"""Who frees what: random changes of scenes through many wrappers, against a model of lists and owners."""
import gc
import random
import unittest

import qlx

NULL, CUBE, TAG, MATERIAL, DOCUMENT, HEAD = 5140, 5159, 5616, 5703, 110059, 110063
OBJECTS, TAGS = 5155, 5694  # branches
MARK = 1000123  # the mark by which a node is known again, whatever wrapper it is seen through
SMALL, CAPITAL = "cannot call insert function on itself", "Cannot call insert function on itself"
REFUSED = "the object cannot be inserted there"
SAME = "Cannot call insert function with same parent and previous objects"


class Node:
    """What the model knows of an element or a head. `up` is the parent, or the head of the list."""

    def __init__(self, type, owner=None, id=None):
        self.type, self.owner = type, owner  # `owner`: of a head, the node that it belongs to
        self.takes = {OBJECTS: (NULL, CUBE), TAGS: (TAG,)}.get(id, ())
        self.alive, self.up, self.kids, self.row, self.branches = True, None, [], [self], {}
        self.is_branch = owner is not None
        self.is_fixed = self.is_branch

    is_head = property(lambda self: self.type == HEAD)

    def top(self):
        node = self
        while node.up and not node.up.is_head:
            node = node.up
        return node

    def head(self):
        return self.top().up

    def around(self):
        """The node, and all that it stands in."""
        node = self
        while node:
            yield node
            node = node.owner if node.is_head else node.up

    def document(self):
        return next((node for node in self.around() if node.type == DOCUMENT), None)

    def within(self):
        found = [self]
        for node in found:
            found += node.kids
            found += node.branches.values()
        return found

    def take_out(self):
        self.row.remove(self)
        self.up, self.row = None, [self]

    def put(self, up, row, before):
        """In front of the node `before`, or last for None."""
        if before is self:
            return
        self.take_out()
        self.up, self.row = up, row
        row.insert(row.index(before) if before else len(row), self)

    def can_stand_in(self, up):
        if self.is_fixed or self.is_head or any(node is self for node in up.around()):
            return False
        if up.is_head:
            return not up.is_branch or self.type in up.takes
        return DOCUMENT not in (self.type, up.type)

    def can_stand_beside(self, other):
        if other.up:
            return self.can_stand_in(other.up)
        return not other.is_head and self.can_stand_in(other)


class Handle:
    def __init__(self, wrapper, node, is_owned):
        self.wrapper, self.node, self.is_owned = wrapper, node, is_owned


def attempt(call, *args):
    try:
        call(*args)
    except BaseException as error:
        return type(error), str(error)


class Scene:
    """The scene, and its model."""

    def __init__(self, test, seed):
        self.test, self.random = test, random.Random(seed)
        self.numbers, self.nodes, self.handles = 0, {}, []
        self.active = self.know(qlx.documents.GetActiveDocument(), Node(DOCUMENT))
        self.active.is_fixed = True
        self.hold(qlx.documents.GetActiveDocument(), self.active, False)

    def know(self, witness, node):
        """`witness` is a wrapper that owns nothing: what it says of life is the scene's own word."""
        self.numbers += 1
        node.number, node.witness = self.numbers, witness
        witness.AddUniqueID(MARK, b"%d" % node.number)
        self.nodes[node.number] = node
        return node

    def recognise(self, wrapper):
        return wrapper and self.nodes[int(bytes(wrapper.FindUniqueID(MARK)))]

    def hold(self, wrapper, node, is_owned):
        self.handles.append(Handle(wrapper, node, is_owned))

    def any(self):
        return self.random.choice(self.handles)

    def kill(self, node):
        node.take_out()
        for gone in node.within():
            gone.alive = False
            for head in self.nodes.values():
                if head.owner is gone:
                    head.owner = None

    def expect(self, outcome, call, *args):
        self.test.assertEqual(attempt(call, *args), outcome)
        return outcome is None

    # What every call says of dead arguments; None when all of them live.
    def dead(self, *handles):
        for handle in handles:
            if handle and not handle.node.alive:
                return ReferenceError, "the object '%s' is not alive" % QUALIFIED[type(handle.wrapper)]

    # The steps

    def create(self):
        kind = self.random.choice((NULL, CUBE, CUBE, TAG, MATERIAL, DOCUMENT, HEAD))
        if kind == HEAD:
            wrapper, node = qlx.GeListHead(), qlx.BaseList2D(NULL)
            node.InsertUnder(wrapper)
            witness = node.GetListHead()
            node.Remove()
        else:
            wrapper = qlx.documents.BaseDocument() if kind == DOCUMENT else qlx.BaseList2D(kind)
            head = qlx.GeListHead()
            head.InsertFirst(wrapper)
            witness = head.GetFirst()
            wrapper.Remove()
        self.hold(wrapper, self.know(witness, Node(kind)), True)

    def insert_beside(self, first, second, name, is_behind):
        outcome, node, beside = self.dead(first, second), first.node, second.node
        if not outcome and (node is beside or not node.can_stand_beside(beside)):
            outcome = AssertionError, SMALL if node is beside else REFUSED
        if not self.expect(outcome, getattr(first.wrapper, name), second.wrapper):
            return
        if is_behind:
            rest = beside.row[beside.row.index(beside) + 1:]
            node.put(beside.up, beside.row, next(iter(rest), None))
        else:
            node.put(beside.up, beside.row, beside)
        first.is_owned = (not beside.up or beside.up.is_head) and not beside.document()

    def insert_before(self, first, second):
        self.insert_beside(first, second, "InsertBefore", False)

    def insert_after(self, first, second):
        self.insert_beside(first, second, "InsertAfter", True)

    def insert_below(self, moved, up, handles, text, is_first, call, *args):
        outcome = self.dead(*handles)
        if not outcome and not moved.node.can_stand_in(up.node):
            outcome = AssertionError, text if moved.node is up.node else REFUSED
        if self.expect(outcome, call, *args):
            moved.node.put(up.node, up.node.kids, up.node.kids[0] if is_first and up.node.kids else None)
            moved.is_owned = False

    def insert_under(self, first, second):
        self.insert_below(first, second, (first, second), SMALL, True, first.wrapper.InsertUnder, second.wrapper)

    def insert_under_last(self, first, second):
        self.insert_below(first, second, (first, second), SMALL, False, first.wrapper.InsertUnderLast,
                          second.wrapper)

    def head_insert_first(self, first, second):
        self.insert_below(second, first, (first, second), CAPITAL, True, first.wrapper.InsertFirst, second.wrapper)

    def head_insert_last(self, first, second):
        self.insert_below(second, first, (first, second), CAPITAL, False, first.wrapper.InsertLast, second.wrapper)

    def head_insert(self, first, second):
        parent, prev = (self.random.choice((None, self.any(), self.any())) for _ in range(2))
        if self.random.random() < 0.7 and first.node.alive:  # mostly those of the list
            own = [handle for handle in self.handles if handle.node.alive and handle.node.head() is first.node]
            parent = self.random.choice(own + [None])
            prev = self.random.choice([handle for handle in own if not parent or handle.node.up is parent.node] +
                                      [None])
        node, up, pred = second.node, parent and parent.node, prev and prev.node
        outcome = self.dead(first, second, parent, prev)
        if not outcome:
            place = pred.up if pred else up or first.node
            fits = ((not up or up.head() is first.node) and
                    (not pred or (pred.up is up if up else pred.head() is first.node)))
            if node in (first.node, up, pred):
                outcome = AssertionError, CAPITAL
            elif up and up is pred:
                outcome = AssertionError, SAME
            elif not fits or not node.can_stand_in(place):
                outcome = AssertionError, REFUSED
        if not self.expect(outcome, first.wrapper.Insert, second.wrapper, parent and parent.wrapper,
                           prev and prev.wrapper):
            return
        row = place.kids
        node.put(place, row, next(iter(row[row.index(pred) + 1 if pred else 0:]), None))
        second.is_owned = False

    def set_parent(self, first, second):
        outcome, node = self.dead(first, second), second.node
        if not outcome and (first.node.is_fixed or any(at is first.node for at in node.around())):
            outcome = AssertionError, REFUSED
        if self.expect(outcome, first.wrapper.SetParent, second.wrapper):
            first.node.owner = node

    def remove(self, first, _):
        if self.expect(self.dead(first), first.wrapper.Remove):
            first.node.take_out()
            first.is_owned = True

    def flush_all(self, first, _):
        if self.expect(self.dead(first), first.wrapper.FlushAll):
            for node in first.node.kids[:]:
                self.kill(node)

    def know_copy(self, wrapper, node, original):
        """Knows the copy that the wrapper presents, and all that is in it."""
        self.know(wrapper, node)
        self.know_copies_in(node, original)

    def know_copies_in(self, node, original):
        rows = [(node.witness, node, original.kids)]
        for id, branch in original.branches.items():
            if branch.kids or id in node.branches:
                head = self.branch(node, id)
                rows.append((head.witness, head, branch.kids))
        for wrapper, up, originals in rows:
            children = wrapper.GetChildren()
            self.test.assertEqual(len(children), len(originals))
            for child, one in zip(children, originals):
                copy = Node(one.type)
                copy.up, copy.row = up, up.kids
                up.kids.append(copy)
                self.know_copy(child, copy, one)

    def branch(self, node, id):
        """The node of the model for a branch that the scene has."""
        if id not in node.branches:
            head = next(one["head"] for one in node.witness.GetBranchInfo() if one["id"] == id)
            node.branches[id] = self.know(head, Node(HEAD, node, id))
        return node.branches[id]

    def clone(self, first, _):
        node = first.node
        if not node.alive or node.is_head:
            text = "the plugin 'qlx.BaseList2D' (ID 110063) is missing. Could not allocate instance"
            self.expect(self.dead(first) or (BaseException, text), first.wrapper.GetClone)
            return
        if len(node.within()) > 15:
            return
        copy = first.wrapper.GetClone()
        head = qlx.GeListHead()
        head.InsertFirst(copy)
        made = Node(node.type)
        self.know_copy(head.GetFirst(), made, node)
        copy.Remove()
        self.hold(copy, made, True)

    def copy_to(self, first, second):
        outcome, source, target = self.dead(first, second), first.node, second.node
        if not outcome and source.type != target.type:
            outcome = TypeError, "The object have to be of the same internal type."
        if not outcome and len(source.within()) > 15:
            return
        if not self.expect(outcome, first.wrapper.CopyTo, second.wrapper, 0) or source is target or source.is_head:
            return
        original = Node(source.type)  # as it was: the copy may end what it was made of
        rows = [(original, source)]
        for copy, one in rows:
            copy.kids = [Node(kid.type) for kid in one.kids]
            copy.branches = {id: Node(HEAD, copy) for id in one.branches}
            rows += zip(copy.kids, one.kids)
            rows += ((copy.branches[id], one.branches[id]) for id in one.branches)
        for row in [target] + list(target.branches.values()):
            for gone in row.kids[:]:
                self.kill(gone)
        self.know_copies_in(target, original)

    def see_again(self, first, _):
        """Another wrapper of a node, which owns nothing."""
        if not first.node.alive or len(self.handles) > 40:
            return
        see = self.random.choice(("GetNext", "GetPred", "GetUp", "GetDown", "GetDownLast", "GetListHead",
                                  "GetDocument", "GetChildren", "branch"))
        if see == "branch":
            id = OBJECTS if first.node.type == DOCUMENT else TAGS
            if first.node.type in (DOCUMENT, NULL, CUBE):
                self.branch(first.node, id)
                heads = [one["head"] for one in first.wrapper.GetBranchInfo() if one["id"] == id]
                self.hold(heads[0], first.node.branches[id], False)
            return
        seen = getattr(first.wrapper, see)()
        for wrapper in seen if isinstance(seen, list) else [seen]:
            if wrapper:
                node = self.recognise(wrapper)
                self.test.assertTrue(node.alive)
                self.hold(wrapper, node, False)

    def drop(self, first, _):
        """The last reference goes, at once or by the collector."""
        if first.node is self.active:
            return
        self.handles.remove(first)
        if self.random.random() < 0.1:
            cell = [first.wrapper]
            cell.append(cell)
            first.wrapper = None
            del cell
            gc.collect(0)
        first.wrapper = None
        node = first.node
        if not first.is_owned or not node.alive or node.is_fixed:
            return
        if node.is_head or not node.up:
            self.kill(node)

    STEPS = (insert_before, insert_after, insert_under, insert_under_last, head_insert_first, head_insert_last,
             head_insert, set_parent, remove, flush_all, clone, copy_to, see_again, drop)
    WEIGHTS = (8, 8, 8, 8, 4, 4, 10, 2, 8, 1, 4, 4, 14, 18)
    OF_HEADS = head_insert_first, head_insert_last, head_insert, set_parent, flush_all

    def step(self):
        living = sum(node.alive for node in self.nodes.values())
        if len(self.handles) < 8 or (living < 50 and self.random.random() < 0.15):
            return self.create()
        step, first = self.random.choices(self.STEPS, self.WEIGHTS)[0], self.any()
        if step in self.OF_HEADS:
            first = self.random.choice([handle for handle in self.handles if handle.node.is_head] or [None])
        if first:
            step(self, first, self.any())

    # What must agree

    def check(self, node):
        test, wrapper = self.test, node.witness
        test.assertIs(wrapper.IsAlive(), node.alive)
        if not node.alive:
            return test.assertIsNone(wrapper())
        row, at = node.row, node.row.index(node)
        expected = {
            "GetNext": row[at + 1] if at + 1 < len(row) else None,
            "GetPred": row[at - 1] if at else None,
            "GetUp": None if not node.up or node.up.is_head else node.up,
            "GetDown": node.kids[0] if node.kids else None,
            "GetDownLast": node.kids[-1] if node.kids else None,
            "GetListHead": node.head(),
            "GetDocument": node.document(),
        }
        if node.is_head:
            expected.update(GetParent=node.owner, GetFirst=expected["GetDown"], GetLast=expected["GetDownLast"])
        for name, other in expected.items():
            found = getattr(wrapper, name)()
            test.assertIs(self.recognise(found), other, name)
            test.assertTrue(found is None or found == other.witness)
        test.assertEqual([self.recognise(child) for child in wrapper.GetChildren()], node.kids)

    def check_dead(self, handle, other):
        wrapper, name = handle.wrapper, QUALIFIED[type(handle.wrapper)]
        outcome = ReferenceError, "the object '%s' is not alive" % name
        self.test.assertIs(wrapper.IsAlive(), False)
        self.test.assertIsNone(wrapper())
        for call in (wrapper.GetNext, wrapper.Remove, lambda: wrapper == wrapper, lambda: wrapper != other.witness,
                     lambda: other.witness == wrapper, lambda: wrapper[1000], lambda: wrapper.InsertUnder(),
                     lambda: wrapper.GetClone("bad")):
            self.test.assertEqual(attempt(call), outcome)
        if isinstance(wrapper, qlx.BaseList2D):
            self.test.assertRegex(repr(wrapper), "^<dead %s object at 0x[0-9a-f]+>$" % name)
        self.test.assertFalse(wrapper == 1)

    def check_all(self):
        for node in self.nodes.values():
            self.check(node)
        for handle in self.handles:
            self.test.assertIs(handle.wrapper.IsAlive(), handle.node.alive)
            if not handle.node.alive:
                self.check_dead(handle, self.active)
            else:
                self.test.assertTrue(handle.wrapper == handle.node.witness)
        for number, node in list(self.nodes.items()):
            if not node.alive and self.random.random() < 0.5 and all(node is not one.node for one in self.handles):
                del self.nodes[number]

    def end(self):
        for handle in self.handles[:]:
            self.drop(handle, None)
        self.check_all()
        for row in [self.active] + list(self.active.branches.values()):
            for node in row.kids[:]:
                node.witness.Remove()  # owned now, and its node ends with it
                self.kill(node)
                self.test.assertTrue(node.witness.IsAlive())
                copies = [one.witness for one in node.within() if one is not node]
                node.witness = None
                self.test.assertFalse(any(one.IsAlive() for one in copies))
                self.nodes.pop(node.number, None)
        living = [node.type for node in self.nodes.values()
                  if node.witness.IsAlive() and node is not self.active and node.owner is not self.active]
        self.test.assertEqual(living, [])
        gc.collect()


QUALIFIED = {qlx.GeListHead: "qlx.GeListHead", qlx.BaseList2D: "qlx.BaseList2D", qlx.BaseObject: "qlx.BaseObject",
             qlx.TextureTag: "qlx.TextureTag", qlx.Material: "qlx.Material",
             qlx.documents.BaseDocument: "qlx.documents.BaseDocument"}


class OwnershipTest(unittest.TestCase):
    def test_scenes_agree_with_the_model(self):
        for seed in range(6):
            with self.subTest(seed=seed):
                scene = Scene(self, seed)
                for number in range(3000):
                    scene.step()
                    for handle in scene.random.sample(scene.handles, 2):
                        scene.check(handle.node)
                    if number % 20 == 0:
                        scene.check_all()
                scene.end()
