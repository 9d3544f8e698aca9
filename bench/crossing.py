"""Prints what a crossing costs as a ratio to the bare C API: crossing.py CROSSING_BENCH"""
import sys

from measure import of_program

PEERS = {
    "ScopeCrossing": "BareCrossing",
    "TableCrossing": "BareCrossing",
    "ScopeWindow": "BareWindow",
}

median = of_program(sys.argv[1], 0.05)
print("crossing, medians of 15 interleaved runs")
for name, peer in PEERS.items():
    print(f"  {name:14} {median[name]:7.1f} ns   {peer:13} {median[peer]:7.1f} ns   ratio {median[name] / median[peer]:.2f}")
