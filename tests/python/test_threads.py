"""Threads of the application: classes of scripts that run on them, handles, the lock, and calls that they stop."""
import contextlib
import gc
import io
import os
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import qlx
from qlx import documents
from qlx.threading import *

import calls

ALL = qlx.SCENEFILTER_OBJECTS | qlx.SCENEFILTER_MATERIALS
DEAD = "the object 'qlx.threading.BaseThread' is not alive"


class Work(QLXThread):
    """Its Main is what it was made with."""

    def __init__(self, main=None):
        self.work, self.result = main, None

    def Main(self):
        self.result = self.work(self)


def run(main):
    thread = Work(main)
    assert thread.Start()
    thread.Wait()
    return thread.result


def until(condition):
    end = time.monotonic() + 20
    while not condition():
        assert time.monotonic() < end
        time.sleep(0.001)


def until_break(thread):
    until(thread.TestBreak)
    return True


@contextlib.contextmanager
def printed():
    """What is printed to sys.stderr."""
    old, sys.stderr = sys.stderr, io.StringIO()
    lines = []
    try:
        yield lines
    finally:
        text, sys.stderr = sys.stderr.getvalue(), old
        lines.extend(text.splitlines())


class ThreadsTest(unittest.TestCase):
    def test_arguments(self):
        own, handle = QLXThread(), QLXThread().Get
        common = [calls.Call("TestBreak"), calls.Call("IsRunning"), calls.Call("End", "|b", "wait")]
        rows = common + [calls.Call("Get"), calls.Call("Main"), calls.Call("TestDBreak"), calls.Call("Wait", "|b", "checkevents"),
                         calls.Call("Start", "|ii", "mode priority")]
        calls.check(self, own, rows)
        calls.check(self, own.Get(), common)
        gone = handle()
        del handle
        calls.check_dead(self, gone, common, DEAD, skip=("TestBreak", "IsRunning"))
        calls.check(self, qlx.threading, [calls.Call("GeCheckBackgroundThreadsRunning", "ib", "typeclass all"),
                                          calls.Call("GeStopBackgroundThreads", "ii", "typeclass flags")])
        for call, error, text in ((BaseThread, NotImplementedError, "this type cannot be instantiated"),
                                  (lambda: QLXThread(1), TypeError, ""), (own.Main, EnvironmentError, "This method is abstract and cannot be called."),
                                  (lambda: IdentifyThread(own), TypeError, "argument 1 must be qlx.threading.BaseThread or None, not qlx.threading.QLXThread"),
                                  (lambda: IdentifyThread(gone), ReferenceError, DEAD), (gone.TestBreak, ReferenceError, DEAD),
                                  (lambda: type("No", (BaseThread,), {}), TypeError, ""), (lambda: object.__new__(Work), TypeError, "")):
            with self.assertRaises(error) as raised:
                call()
            self.assertIn(text, str(raised.exception))
        self.assertEqual((own.TestDBreak(), own.TestBreak(), own.Wait(), own.End(), own.IsRunning()), (False, False, None, None, False))

    def test_a_class_without_main_ends_at_once(self):
        thread = QLXThread()
        for _ in range(3):
            self.assertIs(thread.Start(), True)
            thread.Wait()
        self.assertIs(thread.IsRunning(), False)

    def test_a_run(self):
        seen = []
        thread = Work(lambda self: seen.append((self.IsRunning(), self.Get().IsRunning(), GeIsMainThread(), GeIsMainThreadAndNoDrawThread(),
                                                GeGetCurrentThreadId(), IdentifyThread(GeGetCurrentThread()), until_break(self))))
        for _ in range(2):
            self.assertTrue(thread.Start(mode=1, priority=0))
            self.assertFalse(thread.Start())
            number = IdentifyThread(thread.Get())
            self.assertEqual((thread.IsRunning(), thread.TestBreak()), (True, False))
            thread.Get().End(False)
            thread.Wait()
            self.assertEqual((thread.IsRunning(), thread.TestBreak(), IdentifyThread(thread.Get())), (False, True, 0))
            self.assertEqual(seen.pop(), (True, True, False, False, number, number, True))
        handle = thread.Get()
        del thread
        with self.assertRaisesRegex(ReferenceError, DEAD):
            handle.End()

    def test_the_threads_that_always_live(self):
        main, dummy, escape = GeGetCurrentThread(), GeGetDummyThread(), GeGetEscTestThread()
        for thread, runs, breaks in ((main, True, [False, False]), (dummy, False, [False, False]), (escape, False, [True, False])):
            self.assertEqual((thread.IsRunning(), thread.TestBreak()), (runs, False))
            self.assertIsNone(thread.End())
            self.assertEqual([thread.TestBreak(), thread.TestBreak()], breaks)
        number = GeGetCurrentThreadId()
        self.assertEqual((GeIsMainThread(), IdentifyThread(main), IdentifyThread(dummy), IdentifyThread(bt=None)), (True, number, 0, 0))
        python = []
        other = threading.Thread(target=lambda: python.append((GeGetCurrentThread(), GeIsMainThread(), GeGetCurrentThreadId() in (0, number))))
        other.start()
        other.join()
        self.assertEqual(python, [(None, False, False)])
        self.assertTrue(GeGetCPUCount() == GeGetCurrentThreadCount() > 0)
        self.assertEqual([GeCheckBackgroundThreadsRunning(kind, kind == 0) for kind in (0, 1, 2, 3, -1)], [False] * 5)
        self.assertIsNone(GeStopBackgroundThreads(1, 0))

    def test_what_callbacks_answer(self):
        def fault(*_):
            raise ValueError("bad")

        name = lambda self: open("/proc/thread-self/comm", "rb").read().rstrip(b"\n").decode(errors="ignore")
        wrong = "TypeError: %s expected %s, not %s"
        stop = wrong % ("TestDBreak", "bool or int", "%s")
        for method, answer, expected, words in (
                ("TestDBreak", lambda self: True, True, ""), ("TestDBreak", lambda self: 0, False, ""), ("TestDBreak", lambda self: 2, True, ""),
                ("TestDBreak", lambda self: None, True, stop % "None"), ("TestDBreak", lambda self: "", True, stop % "str"), ("TestDBreak", fault, True, "ValueError: bad"),
                ("TestDBreak", lambda self: self.TestBreak(), False, ""), ("TestDBreak", lambda self: self.End(), True, stop % "None"),
                ("TestDBreak", lambda self: [self.End(False), self.TestBreak()][1], True, ""), ("TestDBreak", staticmethod(lambda: True), False, ""),
                ("GetThreadName", lambda self: "loader", "loader", ""), ("GetThreadName", lambda self: "äöü" * 9, "äöüäöüä", ""),
                ("GetThreadName", lambda self: None, "Python", wrong % ("GetThreadName", "str", "None")), ("GetThreadName", fault, "Python", "ValueError: bad"),
                ("GetThreadName", lambda self: "\udcff", "Python", "surrogates not allowed"), ("GetThreadName", staticmethod(lambda: "no"), "Python", "")):
            with self.subTest(method=method, expected=expected, words=words), printed() as lines:
                thread = type("Asked", (Work,), {method: answer})(Work.TestBreak if method == "TestDBreak" else name)
                self.assertEqual(thread.TestBreak() if method == "TestDBreak" else "", expected if method == "TestDBreak" else "")
                thread.Start()
                thread.Wait()
                self.assertEqual(thread.result, expected)
            self.assertIn(words, lines[-1] if lines else "")
            self.assertEqual(bool(words), bool(lines))
        self.assertEqual(run(name), "Python")
        for main, words in ((fault, "ValueError: bad"), (lambda self: 1, wrong % ("Main", "None", "int"))):
            with printed() as lines:
                thread = type("Main", (QLXThread,), {"Main": main})()
                thread.Start()
                thread.Wait()
            self.assertEqual(lines[-1], words)

    def test_what_a_thread_does_to_itself_and_others(self):
        ended = []
        self.assertEqual(run(lambda self: [self.End(), self.Wait(True), self.Start(), self.Get().End(True), self.TestBreak()]),
                         [None, None, False, None, True])
        self.assertEqual(run(lambda self: run(lambda inner: run(lambda last: 3))), 3)
        first, second = Work(lambda self: second.Wait()), Work(until_break)
        first.Start(), second.Start()
        waiting = [Work(lambda self, one=one: (one.Wait(), ended.append(one))) for one in (first, second) * 10]
        for thread in waiting:
            thread.Start()
        second.End()
        for thread in waiting:
            thread.Wait()
        self.assertEqual(len(ended), 20)
        del ended[:], waiting[:], first, second, thread
        gc.collect()
        shared = Work(lambda self: ended.append(1))
        starters = [Work(lambda self: shared.Start()) for _ in range(8)]
        for starter in starters:
            starter.Start()
        for thread in starters + [shared]:
            thread.Wait()
        self.assertEqual(len(ended), sum(starter.result for starter in starters))

    def test_the_lock(self):
        GeThreadUnlock()
        order, counts = [], [0, 0]

        def take(self):
            order.append("waits")
            GeThreadLock()
            order.append("has it")
            GeThreadLock()  # and keeps both

        def count(self):
            for _ in range(2000):
                GeThreadLock()
                counts[0] += 1
                counts[1] += counts[0] % 2
                counts[0] += 1
                GeThreadUnlock()

        GeThreadLock()
        GeThreadLock()
        thread = Work(take)
        thread.Start()
        until(lambda: order)
        GeThreadUnlock()
        time.sleep(0.02)
        self.assertEqual(order, ["waits"])
        GeThreadUnlock()
        thread.Wait()
        self.assertEqual(order, ["waits", "has it"])
        threads = [Work(count) for _ in range(4)]
        for thread in threads:
            thread.Start()
        for thread in threads:
            thread.Wait()
        self.assertEqual(counts, [16000, 8000])

    def test_a_signal_ends_a_wait(self):
        self.addCleanup(signal.signal, signal.SIGALRM, signal.signal(signal.SIGALRM, signal.default_int_handler))
        locked, end = threading.Event(), threading.Event()

        def hold(self):
            GeThreadLock()
            locked.set()
            end.wait()

        thread = Work(hold)
        thread.Start()
        locked.wait()
        for wait in (thread.Wait, thread.End, thread.Get().End, GeThreadLock):
            signal.setitimer(signal.ITIMER_REAL, 0.02)
            with self.assertRaises(KeyboardInterrupt):
                wait()
        end.set()
        thread.Wait()

    def test_calls_that_a_thread_stops(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "large.obj")
            with open(path, "w") as file:
                file.write("o large\n" + "".join("v %d %d 0\n" % (i, i % 7) for i in range(100000)) +
                           "".join("f %d %d %d\n" % (i, i + 1, i + 2) for i in range(1, 99999)))
            document = documents.BaseDocument()
            for _ in range(3):
                document.InsertObject(qlx.BaseObject(5159))
            stopped, kept, mine = QLXThread(), QLXThread(), Work(lambda self: documents.LoadDocument(path, ALL, self.Get()))
            stopped.End()
            asking = type("Asking", (QLXThread,), {"TestDBreak": lambda self: True})()
            for thread, stops in ((stopped, True), (asking, True), (kept, False)):
                for word, call, result in (("load", lambda: documents.LoadDocument(path, ALL, thread.Get()), None),
                                           ("merge", lambda: documents.MergeDocument(document, path, 0, thread=thread.Get()), False),
                                           ("", lambda: document.ExecutePasses(thread.Get(), False, True, True, 0), False)):
                    with self.subTest(word=word, stops=stops), calls.errors() as lines:
                        self.assertIs(call() == result if stops else bool(call()), True)
                    self.assertEqual(lines, ["qlxpy: can't %s %s: stopped" % (word, path)] if stops and word else [])
            mine.Start()
            with calls.errors() as lines:
                mine.End()
            self.assertEqual((mine.result, lines), (None, ["qlxpy: can't load %s: stopped" % path]))
            gone = stopped.Get()
            del stopped, thread
            with self.assertRaisesRegex(ReferenceError, DEAD):
                documents.LoadDocument(path, ALL, gone)

            class Vanishing(QLXThread):
                def TestDBreak(self):
                    vanishing.clear()
                    return False

            vanishing = [Vanishing()]
            self.assertTrue(documents.LoadDocument(path, ALL, vanishing[0].Get()).IsAlive())
            self.assertEqual(vanishing, [])

    def test_processes_that_end_while_threads_run(self):
        begin = ("import atexit, sys, time\nfrom qlx.threading import *\nbegan = []\n"
                 "def until(test):\n  while not test(): time.sleep(0.001)\nclass T(QLXThread):\n  def Main(self):\n    ")
        left = "threads of scripts that still run at the end are left behind: 'T', 'T', 'T', 'T', 'T'\n"
        stop = "Stop: a script let go of the running thread 'T'\n"
        started = "\nt = T(); t.Start()\n"
        for text, code, out, errors in (
                ("while not self.TestBreak(): time.sleep(0.001)\n    print('ends', flush=True)" + started, 0, "ends\n", ""),
                ("time.sleep(0.3); print('ends', flush=True)" + started + "until(t.IsRunning)", 0, "ends\n", ""),
                ("self.work()\ndef spin():\n  while True: pass\nGeThreadLock()\nthreads = [T() for i in range(5)]\n"
                 "def wait(other):\n  until(other.IsRunning); other.Wait()\n"
                 "works = spin, lambda: time.sleep(60), GeThreadLock, lambda: wait(threads[4]), lambda: wait(threads[3])\n"
                 "for t, t.work in zip(threads, works): t.Start()\nimport signal\n"
                 "signal.signal(signal.SIGALRM, signal.default_int_handler); signal.setitimer(signal.ITIMER_REAL, 0.5)", 0, "", left),
                ("began.append(1); time.sleep(0.2); print('ends', flush=True)" + started + "until(lambda: began); del t; time.sleep(0.4)", 0,
                 "ends\n", stop),
                ("began.append(1); time.sleep(0.2); print('ends', flush=True)" + started + "until(lambda: began); del t", 0, "ends\n", stop),
                ("print('never')\n  def GetThreadName(self): began.append(1); until(lambda: began[1:]); return ''" + started +
                 "until(lambda: began); del t; began.append(1); time.sleep(0.2)", 0, "", stop + "TypeError: thread object is dead\n"),
                ("sys.exit(4)" + started + "t.Wait()", 0, "", ""),
                ("pass\ndef late(t, T):\n  print(t.Start())\n  try: T()\n  except BaseException as e: print(e)" + started +
                 "t.Wait(); atexit.register(late, t, T)", 0, "False\ncould not allocate 'T (ID 1026947)' instance\n", "")):
            with self.subTest(text=text):
                environment = dict(os.environ, QLX_DIAGNOSTICS="1")
                done = subprocess.run([os.environ["QLXPY"], "-c", begin + text], env=environment, timeout=60,
                                      stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                self.assertEqual((done.returncode, done.stdout.decode()), (code, out))
                if errors is not None:
                    self.assertEqual(done.stderr.decode(), errors)


if __name__ == "__main__":
    unittest.main()
