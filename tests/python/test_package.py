"""The package and the interpreter as a script finds them."""
import importlib
import importlib.util
import os
import subprocess
import sys
import sysconfig
import types
import unittest

import qlx

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
DOCS = {"gui": "A module to create custom dialogs.", "documents": "Module for document handling.",
        "storage": "Module for IO operations", "bitmaps": "Module for color chooser"}


class PackageTest(unittest.TestCase):
    def test_is_the_built_in_module(self):
        self.assertEqual(qlx.__name__, "qlx")
        self.assertEqual(qlx.__doc__, "Common module for the most required classes and functions.")
        self.assertIn("qlx", sys.builtin_module_names)
        self.assertIs(importlib.import_module("qlx"), qlx)

    def test_debug_constant(self):
        self.assertIs(type(qlx.TAVOR_TARGET_DEBUG), int)
        self.assertEqual(qlx.TAVOR_TARGET_DEBUG, 0)

    def test_survives_being_dropped_and_imported_again(self):
        kept = dict(sys.modules)
        try:
            del sys.modules["qlx"]
            self.assertIs(importlib.import_module("qlx"), qlx)
            for name in [name for name in sys.modules if name.split(".")[0] == "qlx"]:
                del sys.modules[name]
            self.assertIs(importlib.import_module("qlx.modules.hair"), kept["qlx.modules.hair"])
            for name, module in kept.items():
                if name.split(".")[0] == "qlx":
                    self.assertIs(sys.modules[name], module)
            self.assertEqual(repr(sys.modules["qlx"].DESCID_ROOT), "((1000491, 0, 0))")
        finally:
            sys.modules.update(kept)


    def test_tree(self):
        def modules(package):
            return [name for name, value in vars(package).items() if isinstance(value, types.ModuleType)]
        self.assertEqual(modules(qlx), "gui documents storage bitmaps modules plugins utils threading internals".split())
        self.assertEqual(modules(qlx.modules), "character clonix net hair frescoa particles driftmotes render sculpting "
                         "graphview snap takesystem tokensystem colorchooser substance motiontracker volume".split())
        for name in modules(qlx):
            module = importlib.import_module("qlx." + name)
            self.assertIs(module, getattr(qlx, name))
            self.assertEqual(module.__doc__, DOCS.get(name, module.__doc__ or "has a text"))

    def test_contents(self):
        """The list of what is there is that of this build, and nothing is there that is in no list."""
        spec = importlib.util.spec_from_file_location("status", os.path.join(REPOSITORY, "docs", "status.py"))
        status = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(status)
        with open(os.path.join(REPOSITORY, "docs", "status.md"), encoding="utf-8") as page:
            self.assertEqual(page.read(), status.text(), "docs/status.md is old: qlxpy docs/status.py > docs/status.md")
        self.assertEqual(list(status.unlisted()), [], "docs/status.py has no such names")
        for place, names in status.listed():
            found = [name for name, value in vars(importlib.import_module(place)).items()
                     if isinstance(value, type) and name in names]
            self.assertEqual(found, [name for name in names if name in found], place)


class InterpreterTest(unittest.TestCase):
    def test_standard_library_and_site_packages(self):
        import json, logging, math, socket, sqlite3, zlib  # noqa: F401  extension modules among them
        self.assertTrue(os.path.samefile(os.path.dirname(os.__file__), sysconfig.get_path("stdlib")))
        self.assertIn("site", sys.modules)

    def test_search_path_has_the_folders_of_the_module(self):
        home = os.environ["QLX_HOME"]
        self.assertIn(os.path.join(home, "library", "python", "packages", "linux64"), sys.path)
        self.assertIn(os.path.join(home, "prefs", "python37"), sys.path)
        self.assertEqual(sys.path[0], os.path.dirname(os.path.abspath(sys.argv[0])))
        self.assertFalse(getattr(sys.flags, "safe_path", False))

    def test_extension_modules_resolve_against_the_library(self):
        import ctypes
        # Only a library with global symbols is found this way.
        self.assertEqual(ctypes.CDLL(None).Py_IsInitialized(), 1)

    def test_a_child_of_the_same_executable_has_the_package(self):
        child = [sys.executable, "-c", "import qlx; print(qlx.__name__)"]
        self.assertEqual(subprocess.check_output(child), b"qlx\n")

    def test_arguments_are_those_of_the_script(self):
        self.assertEqual(os.path.basename(sys.argv[0]), "runner.py")
        self.assertEqual(len(sys.argv), 2)
