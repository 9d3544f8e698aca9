"""Writes what the build needs to know of the interpreter that runs this file.

    describe_python.py          print the interpreter's own file, if it can be embedded
    describe_python.py FOLDER   write the files

The exit code tells whether it can be embedded, and standard error why not.

python_interpreter.cmake  paths and version, for the build
python_interpreter.h      the same, for the module
python_weak.h             makes the library's symbols weak, so that the module loads without it
"""
import os
import subprocess
import sys
import sysconfig


def write(folder, name, text):
    path = os.path.join(folder, name)
    if os.path.exists(path):
        with open(path) as existing:
            if existing.read() == text:
                return
    with open(path, "w") as out:
        out.write(text)


def main():
    if sys.version_info < (3, 7):
        sys.exit("version %d.%d, 3.7 or later is needed" % sys.version_info[:2])
    soname = sysconfig.get_config_var("INSTSONAME")
    if not sysconfig.get_config_var("Py_ENABLE_SHARED"):
        sys.exit("it has no shared library")
    library = os.path.join(sysconfig.get_config_var("LIBDIR") or "", soname or "")
    include = sysconfig.get_path("include")
    for needed in (library, os.path.join(include, "Python.h")):
        if not os.path.exists(needed):
            sys.exit("there is no " + needed)
    if len(sys.argv) == 1:
        print(os.path.realpath(sys.executable))
        return
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    facts = {
        "LIBRARY": library,
        "SONAME": soname,
        "VERSION": "%d.%d" % sys.version_info[:2],
        "EXECUTABLE": os.path.abspath(sys.executable),
        "STDLIB": sysconfig.get_path("stdlib"),
    }
    cmake = "".join('set(QLX_PYTHON_%s "%s")\n' % item for item in sorted(facts.items()))
    write(folder, "python_interpreter.cmake", cmake + 'set(QLX_PYTHON_INCLUDE "%s")\n' % include)
    lines = ["// The interpreter that the build was given."]
    lines += ['#define QLX_PYTHON_%s "%s"' % item for item in sorted(facts.items())]
    write(folder, "python_interpreter.h", "\n".join(lines) + "\n")
    listing = subprocess.check_output(["nm", "-D", "--defined-only", library]).decode()
    names = sorted({line.split()[-1].split("@")[0] for line in listing.splitlines() if line})
    names = [name for name in names if name.startswith(("Py", "_Py"))]
    write(folder, "python_weak.h", "".join("#pragma weak %s\n" % name for name in names))


main()
