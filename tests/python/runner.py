"""Runs the unittest cases of one file; prints the end mark when all of them pass."""
import importlib.util
import io
import os
import sys
import unittest


def run(path):
    """What went wrong, or the end mark; nothing of the tests stays behind."""
    spec = importlib.util.spec_from_file_location("tests_of_file", path)
    module = importlib.util.module_from_spec(spec)
    sys.modules[spec.name] = module
    try:
        spec.loader.exec_module(module)
        report = io.StringIO()
        tests = unittest.defaultTestLoader.loadTestsFromModule(module)
        result = unittest.TextTestRunner(report, verbosity=2).run(tests)
    finally:
        folder = os.path.dirname(path)
        for name, imported in list(sys.modules.items()):
            if name != "__main__" and os.path.dirname(getattr(imported, "__file__", None) or "") == folder:
                del sys.modules[name]
    if result.wasSuccessful() and result.testsRun:
        return None, "end of tests: %d ran" % result.testsRun
    return report.getvalue() or "no test ran", None


sys.dont_write_bytecode = True
fault, mark = run(sys.argv[1])
if fault:
    sys.exit(fault)
print(mark)
