"""The process as a whole: exit codes, start-up scripts, threads, broken installations."""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

QLXPY = os.environ["QLXPY"]


class ProcessTest(unittest.TestCase):
    def setUp(self):
        self.home = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.home, True)

    def write(self, name, text):
        path = os.path.join(self.home, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as out:
            out.write(text if isinstance(text, bytes) else text.encode())
        return path

    def run_qlxpy(self, *arguments, stdin=b"", **variables):
        environment = dict(os.environ, **dict({"QLX_HOME": self.home}, **variables))
        done = subprocess.run([QLXPY] + list(arguments), input=stdin, env=environment, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.home)
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    def test_the_option_without_effect_and_the_version(self):
        self.assertEqual(self.run_qlxpy("-nogui", "-c", "print(2)"), (0, "2\n", ""))
        self.assertEqual(self.run_qlxpy("-V"), (0, "Python %d.%d.%d\n" % sys.version_info[:3], ""))

    def test_files_that_cannot_run(self):
        cases = [("nowhere.py", "no such file or directory"), (".", "is a directory")]
        for path, reason in cases:
            with self.subTest(path=path):
                code, out, err = self.run_qlxpy(path)
                self.assertEqual((code, out), (2, ""))
                self.assertIn("can't open file '%s': %s" % (path, reason), err)

    def test_a_script_file_sees_its_name_its_folder_and_its_arguments(self):
        self.write("neighbour.py", "VALUE = 7")
        path = self.write("script.py", "import sys, neighbour\nprint(__name__, __file__, sys.argv[1:], neighbour.VALUE)")
        self.assertEqual(self.run_qlxpy(path, "x", "--y"), (0, "__main__ %s ['x', '--y'] 7\n" % path, ""))

    def test_names_and_arguments_that_are_not_utf8(self):
        for folder in ("", "d\udcff/"):
            with self.subTest(folder=folder):
                self.write(folder + "neighbour\udcfe.py", "VALUE = 7")
                self.write(folder + "\udcff.py", "import sys\nprint(ascii(sys.argv), ascii(__file__), end=' ')\n"
                           "print(__import__('neighbour\\udcfe').VALUE)")
                name = folder + "\udcff.py"
                # Since 3.9 a script knows itself by its whole path.
                known = os.path.join(self.home, name) if sys.version_info >= (3, 9) else name
                out = "%a %a 7\n" % ([name, "\udcfd"], known)
                self.assertEqual(self.run_qlxpy(name, "\udcfd"), (0, out, ""))

    def test_a_process_of_multiprocessing_has_the_functions_of_the_script(self):
        path = self.write("script.py", "import multiprocessing\n"
                          "def work(): print('works', flush=True)\n"
                          "if __name__ == '__main__':\n"
                          "    process = multiprocessing.get_context('spawn').Process(target=work)\n"
                          "    process.start()\n"
                          "    process.join()\n"
                          "    print(process.exitcode)\n")
        self.assertEqual(self.run_qlxpy(path), (0, "works\n0\n", ""))

    def test_environment(self):
        cases = [
            (dict(PYTHONWARNINGS="ignore,error::UserWarning"), "['ignore', 'error::UserWarning']\n"),
            (dict(QLX_PYTHON_LIBRARY="", PYTHONWARNINGS=""), "[]\n"),
        ]
        for variables, out in cases:
            with self.subTest(variables=variables):
                self.assertEqual(self.run_qlxpy("-c", "import sys; print(sys.warnoptions)", **variables), (0, out, ""))

    def test_startup_scripts(self):
        init = "prefs/python37/python_init.py"
        faults = [
            ("raise ValueError('of the start')", "ValueError: of the start"),
            ("def f(:", "SyntaxError"),
            (b"# \xe4\n", "UTF-8"),
        ]
        for text, expected in faults:
            with self.subTest(text=text):
                path = self.write(init, text)
                code, out, err = self.run_qlxpy("-c", "print('goes on')")
                self.assertEqual((code, out), (0, "goes on\n"))
                self.assertIn(expected, err)
                self.assertIn(path, err)
        self.write(init, "import qlx, sys\nprint(__name__, __file__)\nsys.modules['seen'] = qlx")
        expected = "__main__ %s\nTrue\n" % os.path.join(self.home, init)
        self.assertEqual(self.run_qlxpy("-c", "import qlx, seen; print(seen is qlx)"), (0, expected, ""))

    def test_a_startup_script_that_is_no_file(self):
        path = os.path.join(self.home, "prefs/python37/python_init.py")
        os.makedirs(os.path.dirname(path))
        cases = [(os.mkdir, os.rmdir, "is a folder"), (os.mkfifo, os.remove, "is not a regular file")]
        for make, remove, reason in cases:
            with self.subTest(reason=reason):
                make(path)
                code, out, err = self.run_qlxpy("-c", "print('goes on')")
                self.assertEqual((code, out), (0, "goes on\n"))
                self.assertIn("'%s' %s" % (path, reason), err)
                remove(path)

    def test_a_startup_script_can_ask_the_host_to_end(self):
        self.write("prefs/python37/python_init.py", "import sys\nsys.exit(3)")
        self.assertEqual(self.run_qlxpy("-c", "print('never')"), (3, "", ""))
        self.write("prefs/python37/python_init.py", "import sys\nsys.excepthook = lambda *error: sys.exit(5)\n1/0")
        self.assertEqual(self.run_qlxpy("-c", "print('never')")[:2], (5, ""))

    def test_threads_left_running(self):
        cases = [
            ("threading.Thread(target=time.sleep, args=(60,), daemon=True).start()", ""),
            ("threading.Thread(target=lambda: (time.sleep(0.3), print('waited for'))).start()", "waited for\n"),
            ("def spin():\n  while True: pass\nthreading.Thread(target=spin, daemon=True).start()", ""),
            ("atexit.register(print, 'at exit')", "at exit\n"),
            ("from concurrent.futures import ThreadPoolExecutor as Pool\n"
             "pool = Pool(1)\nprint(pool.submit(int).result())", "0\n"),
        ]
        for text, out in cases:
            with self.subTest(text=text):
                self.assertEqual(self.run_qlxpy("-c", "import atexit, threading, time\n" + text), (0, out, ""))

    def test_broken_installations_end_with_a_reason(self):
        nowhere = os.path.join(self.home, "nowhere")
        broken = os.path.join(self.home, "broken")
        library = os.path.join(broken, "lib", "python%d.%d" % sys.version_info[:2])
        for name in ("os", "site", "io", "abc", "codecs", "encodings/__init__"):
            self.write(os.path.join(library, name + ".py"), "raise RuntimeError('broken on purpose')")
        cases = [
            (dict(PYTHONHOME=nowhere), [nowhere, "standard library"]),
            (dict(PYTHONHOME=broken), ["can't start"]),
            (dict(QLX_PYTHON_LIBRARY=nowhere), [nowhere, "can't be loaded"]),
            (dict(QLX_PYTHON_LIBRARY="libz.so.1"), ["is not the library"]),
        ]
        for variables, words in cases:
            with self.subTest(variables=variables):
                code, out, err = self.run_qlxpy("-c", "print(1)", **variables)
                self.assertEqual((code, out), (2, ""))
                for word in words:
                    self.assertIn(word, err)

    def test_a_home_that_cannot_be_made(self):
        blocked = self.write("file", "")
        code, out, err = self.run_qlxpy("-c", "print('works')", QLX_HOME=os.path.join(blocked, "home"))
        self.assertEqual((code, out), (0, "works\n"))
        self.assertIn(os.path.join(blocked, "home"), err)
