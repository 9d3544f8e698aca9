"""Runs the unittest cases of one file; prints the end mark when all of them pass."""
import importlib.util
import io
import sys
import unittest

sys.dont_write_bytecode = True
spec = importlib.util.spec_from_file_location("tests_of_file", sys.argv[1])
module = importlib.util.module_from_spec(spec)
sys.modules[spec.name] = module
spec.loader.exec_module(module)
report = io.StringIO()
result = unittest.TextTestRunner(report, verbosity=2).run(unittest.defaultTestLoader.loadTestsFromModule(module))
if result.wasSuccessful() and result.testsRun:
    print("end of tests: %d ran" % result.testsRun)
else:
    sys.exit(report.getvalue() or "no test ran")
