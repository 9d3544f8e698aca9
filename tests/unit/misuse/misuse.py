"""Compiles the cases of a source: the first one must compile, the others must fail as their comments say.

    misuse.py COMPILE_COMMANDS SOURCE
"""
import json
import re
import shlex
import subprocess
import sys

commands, source = sys.argv[1:]
with open(commands) as file:
    entry = next(entry for entry in json.load(file) if entry["file"] == source)
command = shlex.split(entry["command"])
command[command.index("-o"):command.index("-o") + 2] = ["-fsyntax-only"]
with open(source) as file:
    text = file.read()
expected = {0: None}
for number, words in re.findall(r"^#elif CASE == (\d+) +// (.*)$", text, re.M):
    expected[int(number)] = words.split()
failed = len(expected) != text.count("CASE == ")
for number, words in expected.items():
    done = subprocess.run(command + ["-DCASE=%d" % number], cwd=entry["directory"], stderr=subprocess.PIPE)
    errors = [line for line in done.stderr.decode().splitlines() if " error: " in line]
    if words is None:
        right = done.returncode == 0
    else:
        # One message names both, so that nobody has to search for the method.
        right = done.returncode != 0 and any(all(word in line for word in words) for line in errors)
    if not right:
        failed = True
        print("case %d, expected %s:\n%s\n" % (number, words or "no fault", "\n".join(errors)))
sys.exit(failed)
