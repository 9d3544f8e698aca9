"""Prints what the binding kit costs in C calls of the interpreter, against its peers: kit_calls.py KIT_BENCH"""
import sys

from measure import of_program, verdict

# What is measured, ours and the peer, and the most that the ratio is to be.
RATIOS = (
    ("method without arguments", "PlainKit", "PlainC", 1.5),
    ("method without arguments", "PlainKit", "PlainPybind11", 0.5),
    ("two arguments by position", "PositionKit", "PositionC", 1.0),
    ("two arguments by position", "PositionKit", "PositionPybind11", 0.5),
    ("two arguments by keyword", "KeywordKit", "KeywordC", 1.0),
    ("two arguments by keyword", "KeywordKit", "KeywordPybind11", 0.5),
    ("wrapper made and dropped", "WrapKit", "WrapC", 1.2),
    ("the same with its type chosen", "ChooseKit", "WrapC", 1.2),
)
LINK_NS = 3

median = of_program(sys.argv[1], 0.02)
print("the kit in C calls, medians of 15 interleaved runs")
for title, ours, peer, bound in RATIOS:
    if peer not in median:
        print(f"  {title:30} {peer} is not built: skipped")
        continue
    print(f"  {title:30} {ours:11} {median[ours]:6.1f} ns   {peer:16} {median[peer]:6.1f} ns   "
          f"{verdict(median[ours] / median[peer], bound)}")
more = median["LinkKit"] - median["LinkBare"]
print(f"  {'link resolved':30} {'LinkKit':11} {median['LinkKit']:6.1f} ns   {'LinkBare':16} {median['LinkBare']:6.1f} ns   "
      f"{more:.1f} ns more   bound {LINK_NS} ns{'' if more < LINK_NS else '   OVER'}")
