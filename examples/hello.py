"""A first script: what runs here, and what it can use.

    ./run examples/hello.py     runs this file
    ./run my_script.py 1 2 3    runs yours
"""
import platform
import sys

import qlx

public = [name for name in dir(qlx) if not name.startswith("_")]

print("Hello from qlxpy!")
print()
print("  Python  ", platform.python_version(), "in", sys.prefix)
print("  qlx     ", qlx.__doc__)
print("          ", len(public), "public " + ("name:" if len(public) == 1 else "names, among them"),
      ", ".join(public[:4]))
print()
print("Next: ./run -c 'import qlx; print(qlx)'")
