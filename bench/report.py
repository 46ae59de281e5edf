#!/usr/bin/env python3
"""Reads the JSON of one qel_bench run with repetitions and prints the medians, their spread,
the ratios and the bars of docs/PERFORMANCE.md as Markdown tables.

    build/bench/bench/qel_bench --benchmark_repetitions=5 \\
        --benchmark_report_aggregates_only=true \\
        --benchmark_out=qel_bench.json --benchmark_out_format=json
    python3 bench/report.py qel_bench.json

The spread of a case is the standard deviation of its repetitions as a percentage of their
median. A row that compares two cases is not measurable when their standard deviations together
are at least the difference it measures: its figure is noise, and it says so. A bar is met or
missed only when its figure meets or misses it across the whole spread; otherwise it is not
measurable; the scaling bars are not measurable either when the control (the same calls without
the library) misses the bar itself. The report ends with a line on what could not be measured;
its exit status is 0 whenever it could read the file, whatever the figures.
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
NOT_MEASURABLE = "not measurable"


class Case:
    """One case of the run: its median and the standard deviation of its repetitions."""

    def __init__(self, median, stddev):
        self.median = median
        self.stddev = stddev  # None when the run had no repetitions

    def ns(self, key):
        return scaled(self.median, key)

    def sd(self, key):
        return None if self.stddev is None else scaled(self.stddev, key)

    def spread(self, key="cpu_time"):
        """The standard deviation as a percentage of the median, as text."""
        sd, median = self.sd(key), self.ns(key)
        if sd is None:
            return "?"
        return f"{100 * sd / median:.0f}%" if median else "?"


def scaled(b, key):
    if key not in ("cpu_time", "real_time"):
        return b.get(key, 0)
    return b[key] * {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[b["time_unit"]]


def load(path):
    with open(path) as f:
        data = json.load(f)
    medians, stddevs, singles = {}, {}, {}
    for b in data["benchmarks"]:
        name = b.get("run_name", b["name"])
        kind = b.get("aggregate_name")
        if kind == "median":
            medians[name] = b
        elif kind == "stddev":
            stddevs[name] = b
        elif b.get("run_type", "iteration") == "iteration":
            singles.setdefault(name, b)
    cases = {name: Case(b, stddevs.get(name)) for name, b in medians.items()}
    for name, b in singles.items():
        cases.setdefault(name, Case(b, None))
    return data.get("context", {}), cases


def within(a, b, key):
    """The difference b - a, and whether the two standard deviations together are smaller."""
    diff = b.ns(key) - a.ns(key)
    sa, sb = a.sd(key), b.sd(key)
    if sa is None or sb is None:
        return diff, None
    return diff, sa + sb < abs(diff)


class Bar:
    def __init__(self, name, figure, at_worst, at_best):
        self.name, self.figure = name, figure
        # Whether the bar holds at the unfavourable and at the favourable end of the spread
        # (None when the spread is unknown: judged on the median alone).
        self.at_worst, self.at_best = at_worst, at_best

    def verdict(self):
        if self.at_worst:
            return "met"
        if self.at_best is False:
            return "**missed**"
        if self.at_worst is None:
            return "met" if self.at_best else "**missed**"
        return NOT_MEASURABLE


def ends(value, spread):
    """The lowest and the highest value within the spread (both the value when unknown)."""
    return (value, value) if spread is None else (value - spread, value + spread)


def ratio_ends(top, top_sd, bottom, bottom_sd):
    lo_top, hi_top = ends(top, top_sd)
    lo_bottom, hi_bottom = ends(bottom, bottom_sd)
    if lo_bottom <= 0:
        return float("-inf"), float("inf")
    return lo_top / hi_bottom, hi_top / lo_bottom


def bar(name, figure, value, lo, hi, holds, spread_known):
    """A bar that holds when holds(x); x ranges over [lo, hi] within the spread."""
    if not spread_known:
        return Bar(name, figure, None, holds(value))
    worst = holds(lo) and holds(hi)
    best = holds(lo) or holds(hi)
    return Bar(name, figure, worst, best)


def count(items, word):
    return f"{len(items)} {word}" + ("" if len(items) == 1 else "s")


def main(path):
    context, m = load(path)
    print(f"Run: {context.get('date', '?')}, {context.get('num_cpus', '?')} CPUs at "
          f"{context.get('mhz_per_cpu', '?')} MHz, load average "
          f"{', '.join(f'{x:.2f}' for x in context.get('load_avg', []))}, Google Benchmark "
          f"library built as {context.get('library_build_type', '?')}\n")
    bars, noisy, unknown = [], [], False

    print("| family | floor CPU ns | library CPU ns | overhead ns | overhead / floor "
          "| spread floor / library | floor real ns | library real ns "
          "| allocs floor / library |")
    print("|---|---:|---:|---:|---:|---:|---:|---:|---:|")
    for family in PAIRS:
        f, l = m.get("floor/" + family), m.get("library/" + family)
        if f is None or l is None:
            print(f"| {family} | not run | | | | | | | |")
            continue
        fc, lc = f.ns("cpu_time"), l.ns("cpu_time")
        overhead, clear = within(f, l, "cpu_time")
        unknown = unknown or clear is None
        mark = ""
        if clear is False:
            noisy.append(family)
            mark = f" ({NOT_MEASURABLE})"
        print(f"| {family} | {fc:.0f} | {lc:.0f} | {overhead:.0f}{mark} "
              f"| {100 * overhead / fc:.1f}% | {f.spread()} / {l.spread()} "
              f"| {f.ns('real_time'):.0f} | {l.ns('real_time'):.0f} "
              f"| {f.ns('allocs'):.0f} / {l.ns('allocs'):.0f} |")
        if family == "QelEventAcquire/5":
            sf, sl = f.sd("cpu_time"), l.sd("cpu_time")
            sd = None if sf is None or sl is None else sf + sl
            lo, hi = ends(overhead, sd)
            bars.append(bar("QelEventAcquire/5 overhead < 350 ns", f"{overhead:.0f} ns",
                            overhead, lo, hi, lambda x: x < 350, sd is not None))

    p1, p198 = m.get("lookup/pos1"), m.get("lookup/pos198")
    if p1 and p198:
        a, b = p1.ns("cpu_time"), p198.ns("cpu_time")
        print("\n| look-up | CPU ns | spread | allocs |")
        print("|---|---:|---:|---:|")
        print(f"| lookup/pos1 | {a:.1f} | {p1.spread()} | {p1.ns('allocs'):.0f} |")
        print(f"| lookup/pos198 | {b:.1f} | {p198.spread()} | {p198.ns('allocs'):.0f} |")
        # One-sided: the far end of the catalogue may be found faster, never much slower.
        ratio = b / a
        sa, sb = p1.sd("cpu_time"), p198.sd("cpu_time")
        known = sa is not None and sb is not None
        unknown = unknown or not known
        lo, hi = ratio_ends(b, sb, a, sa)
        bars.append(bar("look-up pos198 at most 20% slower than pos1", f"{ratio:.2f}", ratio,
                        lo, hi, lambda x: x <= 1.2, known))
        allocs = max(p1.ns("allocs"), p198.ns("allocs"))
        bars.append(Bar("look-up makes no heap allocation", f"{allocs:.0f} per call",
                        allocs == 0, allocs == 0))

    rows = [(fn, [m.get(f"builder/{fn}/{n}") for n in SIZES]) for fn in BUILDERS]
    rows += [(f"stringUtils::{fn}", [m.get(f"stringUtils/{fn}/{n}") for n in SIZES])
             for fn in ("split", "trim")]
    if any(all(runs) for _, runs in rows):
        print("\n| alone | 10 B | 1 KB | 1 MB | 1 MB / 1 KB | / 1024 | spread 10 B / 1 KB / 1 MB |")
        print("|---|---:|---:|---:|---:|---:|---:|")
        for name, runs in rows:
            if not all(runs):
                continue
            t = [r.ns("cpu_time") for r in runs]
            ratio = t[2] / t[1]
            print(f"| {name} | {t[0]:.0f} ns | {t[1]:.0f} ns | {t[2] / 1e3:.0f} µs | {ratio:.0f} "
                  f"| {ratio / 1024:.2f} | {' / '.join(r.spread() for r in runs)} |")
            if not name.startswith("stringUtils"):
                s1, s2 = runs[1].sd("cpu_time"), runs[2].sd("cpu_time")
                known = s1 is not None and s2 is not None
                unknown = unknown or not known
                lo, hi = ratio_ends(t[2], s2, t[1], s1)
                bars.append(bar(f"{name} 1 MB / 1 KB < 1.3 x 1024", f"{ratio / 1024:.2f} x 1024",
                                ratio, lo, hi, lambda x: x < 1.3 * 1024, known))

    scaling = []
    for name in SCALING:
        one = m.get(f"scaling/{name}/real_time/threads:1")
        two = m.get(f"scaling/{name}/real_time/threads:2")
        if one and two:
            scaling.append((name, one, two))
    if scaling:
        print("\n| scaling (20 µs service) | 1 thread calls/s | 2 threads calls/s | 2 / 1 "
              "| spread 1 / 2 |")
        print("|---|---:|---:|---:|---:|")
    # scaling/floor, the same calls without the library, shows what the machine allowed: when
    # it did not reach the bar itself, two threads did not have two cores, and the library's
    # rows cannot be judged.
    control = None
    for name, one, two in scaling:
        if name == "floor":
            control = two.ns("items_per_second") / one.ns("items_per_second")
    for name, one, two in scaling:
        key = "items_per_second"
        ratio = two.ns(key) / one.ns(key)
        gain, clear = within(one, two, key)
        unknown = unknown or clear is None
        mark = ""
        if clear is False:
            noisy.append(f"scaling/{name}")
            mark = f" ({NOT_MEASURABLE})"
        print(f"| scaling/{name} | {one.ns(key):.0f} | {two.ns(key):.0f} | {ratio:.2f}{mark} "
              f"| {one.spread(key)} / {two.spread(key)} |")
        if name != "floor":
            title = f"scaling/{name} 2 threads >= 1.8 x 1 thread"
            if control is not None and control < 1.8:
                bars.append(Bar(title, f"{ratio:.2f} (control {control:.2f})", False, True))
                continue
            s1, s2 = one.sd(key), two.sd(key)
            lo, hi = ratio_ends(two.ns(key), s2, one.ns(key), s1)
            bars.append(bar(title, f"{ratio:.2f}", ratio, lo, hi, lambda x: x >= 1.8,
                            clear is not None))

    print("\n| bar | figure | |")
    print("|---|---:|---|")
    for b in bars:
        print(f"| {b.name} | {b.figure} | {b.verdict()} |")

    unjudged = [b.name for b in bars if b.verdict() == NOT_MEASURABLE]
    print()
    if unknown:
        print("Spread unknown for some cases: the run has no repetitions of them "
              "(--benchmark_repetitions=5); their rows and bars rest on one run.")
    if control is not None and control < 1.8:
        print(f"The scaling control (the same calls without the library) reached only "
              f"{control:.2f}: two threads did not have two cores, so the scaling bars are not "
              "measurable.")
    if noisy or unjudged:
        print(f"Not measurable: {count(noisy, 'row')} whose spread is larger than the effect "
              f"they measure ({', '.join(noisy) or 'none'}) and {count(unjudged, 'bar')} whose "
              f"figure lies on both sides of the bar within its spread, or whose control failed "
              f"({', '.join(unjudged) or 'none'}). These figures are noise, not results: run "
              "again on a quieter machine.")
    else:
        print("Every row and bar is measurable: each spread is smaller than the effect measured.")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: report.py RESULTS.json")
    main(sys.argv[1])
