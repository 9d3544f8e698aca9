"""Prints what a crossing costs as a ratio to the bare C API: crossing.py CROSSING_BENCH"""
import json
import subprocess
import sys

PEERS = {
    "ScopeCrossing": "BareCrossing",
    "TableCrossing": "BareCrossing",
    "ScopeWindow": "BareWindow",
}

report = subprocess.run(
    [sys.argv[1], "--benchmark_format=json", "--benchmark_repetitions=15", "--benchmark_min_time=0.05",
     "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true"],
    check=True, stdout=subprocess.PIPE).stdout
median = {row["run_name"]: row["cpu_time"] for row in json.loads(report)["benchmarks"]
          if row["aggregate_name"] == "median"}
print("crossing, medians of 15 interleaved runs")
for name, peer in PEERS.items():
    print(f"  {name:14} {median[name]:7.1f} ns   {peer:13} {median[peer]:7.1f} ns   ratio {median[name] / median[peer]:.2f}")
