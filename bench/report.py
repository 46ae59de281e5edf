#!/usr/bin/env python3
"""Reads the JSON of one qel_bench run with repetitions and prints the medians, the ratios and
the bars of docs/PERFORMANCE.md as Markdown tables.

    build/default/bench/qel_bench --benchmark_repetitions=5 \\
        --benchmark_report_aggregates_only=true \\
        --benchmark_out=qel_bench.json --benchmark_out_format=json
    python3 bench/report.py qel_bench.json
"""
import json
import sys

PAIRS = ["QelEventAcquire/0", "QelEventAcquire/5", "QelEventAcquire/32", "QelRelease",
         "drelResCtlRequest/5", "QelMutiResStateRequest/16", "qelRuleCtl",
         "QelEventAcquireWrapper/pos1", "QelEventAcquireWrapper/pos198", "QelNotifyWapper/130",
         "QelNotifyWapper/9000", "QelNotifyWapper/14"]
BUILDERS = ["getTargetLoadList", "getColocationList", "getGameAdpList", "getGameUpgradeList"]
SIZES = [10, 1024, 1048576]
SCALING = ["floor", "flat", "class"]


def load(path):
    with open(path) as f:
        data = json.load(f)
    medians = {}
    for b in data["benchmarks"]:
        if b.get("aggregate_name") == "median":
            medians[b["run_name"]] = b
    return data.get("context", {}), medians


def ns(b, key):
    scale = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[b["time_unit"]]
    return b[key] * scale


def verdict(ok):
    return "met" if ok else "**missed**"


def main(path):
    context, m = load(path)
    print(f"Run: {context.get('date', '?')}, {context.get('num_cpus', '?')} CPUs at "
          f"{context.get('mhz_per_cpu', '?')} MHz, load average "
          f"{', '.join(f'{x:.2f}' for x in context.get('load_avg', []))}\n")
    bars = []

    print("| family | floor CPU ns | library CPU ns | overhead ns | overhead / floor "
          "| floor real ns | library real ns | allocs floor / library |")
    print("|---|---:|---:|---:|---:|---:|---:|---:|")
    for family in PAIRS:
        f, l = m.get("floor/" + family), m.get("library/" + family)
        if f is None or l is None:
            print(f"| {family} | not run | | | | | | |")
            continue
        fc, lc = ns(f, "cpu_time"), ns(l, "cpu_time")
        print(f"| {family} | {fc:.0f} | {lc:.0f} | {lc - fc:.0f} | {100 * (lc - fc) / fc:.1f}% "
              f"| {ns(f, 'real_time'):.0f} | {ns(l, 'real_time'):.0f} "
              f"| {f.get('allocs', 0):.0f} / {l.get('allocs', 0):.0f} |")
        if family == "QelEventAcquire/5":
            bars.append(("QelEventAcquire/5 overhead < 350 ns", f"{lc - fc:.0f} ns",
                         lc - fc < 350))

    p1, p198 = m.get("lookup/pos1"), m.get("lookup/pos198")
    if p1 and p198:
        a, b = ns(p1, "cpu_time"), ns(p198, "cpu_time")
        print("\n| look-up | CPU ns | allocs |")
        print("|---|---:|---:|")
        print(f"| lookup/pos1 | {a:.1f} | {p1.get('allocs', 0):.0f} |")
        print(f"| lookup/pos198 | {b:.1f} | {p198.get('allocs', 0):.0f} |")
        ratio = max(a, b) / min(a, b)
        bars.append(("look-up pos198 vs pos1 within 20%", f"{ratio:.2f}", ratio <= 1.2))
        allocs = max(p1.get("allocs", 0), p198.get("allocs", 0))
        bars.append(("look-up makes no heap allocation", f"{allocs:.0f} per call", allocs == 0))

    rows = [(fn, [m.get(f"builder/{fn}/{n}") for n in SIZES]) for fn in BUILDERS]
    rows += [(f"stringUtils::{fn}", [m.get(f"stringUtils/{fn}/{n}") for n in SIZES])
             for fn in ("split", "trim")]
    if any(all(runs) for _, runs in rows):
        print("\n| alone | 10 B | 1 KB | 1 MB | 1 MB / 1 KB | / 1024 |")
        print("|---|---:|---:|---:|---:|---:|")
        for name, runs in rows:
            if not all(runs):
                continue
            t = [ns(r, "cpu_time") for r in runs]
            ratio = t[2] / t[1]
            print(f"| {name} | {t[0]:.0f} ns | {t[1]:.0f} ns | {t[2] / 1e3:.0f} µs | {ratio:.0f} "
                  f"| {ratio / 1024:.2f} |")
            if not name.startswith("stringUtils"):
                bars.append((f"{name} 1 MB / 1 KB < 1.3 x 1024", f"{ratio / 1024:.2f} x 1024",
                             ratio < 1.3 * 1024))

    print("\n| scaling (20 µs service) | 1 thread calls/s | 2 threads calls/s | 2 / 1 |")
    print("|---|---:|---:|---:|")
    for name in SCALING:
        one = m.get(f"scaling/{name}/real_time/threads:1")
        two = m.get(f"scaling/{name}/real_time/threads:2")
        if not one or not two:
            continue
        ratio = two["items_per_second"] / one["items_per_second"]
        print(f"| scaling/{name} | {one['items_per_second']:.0f} | "
              f"{two['items_per_second']:.0f} | {ratio:.2f} |")
        if name != "floor":
            bars.append((f"scaling/{name} 2 threads >= 1.8 x 1 thread", f"{ratio:.2f}",
                         ratio >= 1.8))

    print("\n| bar | figure | |")
    print("|---|---:|---|")
    for name, figure, ok in bars:
        print(f"| {name} | {figure} | {verdict(ok)} |")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: report.py RESULTS.json")
    main(sys.argv[1])
