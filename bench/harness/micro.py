"""The micro-benchmarks: each program's own figures, read from its JSON."""
import json
import os
import subprocess

import programs
from report import median


def _run(context, name, repetitions):
    """Medians by benchmark: nanoseconds of processor time, and the counters."""
    path = os.path.join(context.folder(), name + ".json")
    done = subprocess.run(
        [context.program(name), f"--benchmark_out={path}", "--benchmark_out_format=json",
         f"--benchmark_repetitions={repetitions}"], capture_output=True, text=True, timeout=300,
        check=False)
    if done.returncode != 0:
        raise programs.Failure(f"{name}: {done.stderr.strip()}")
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    unit = {"ns": 1, "us": 1e3, "ms": 1e6}
    times, counters = {}, {}
    for run in runs:
        if run.get("error_occurred"):
            raise programs.Failure(f"{run['name']}: {run['error_message']}")
        if run["run_type"] != "iteration":
            continue
        benchmark = run["run_name"].split("/min_time")[0].split("/iterations")[0]
        times.setdefault(benchmark, []).append(run["cpu_time"] * unit[run["time_unit"]])
        counters[benchmark] = run
    return {name: median(values) for name, values in times.items()}, counters


def routing(context, report):
    ns, _ = _run(context, "routing_bench", context.rounds)
    report.add("routing table look-up, 401 entries", f"{ns['known_identifier']:.1f} ns",
               f"scan of two words {ns['scan_of_two_words']:.0f} ns, of strings "
               f"{ns['scan_of_strings']:.0f} ns", "10 ns", ns["known_identifier"] <= 10,
               note=f"An identifier that is there. One that is not, with its entering and the "
                    f"leaving of the oldest: {ns['new_identifier']:.0f} ns.")


def query(context, report):
    ns, _ = _run(context, "query_bench", context.rounds)

    def middle(contender):
        return median([value for name, value in ns.items() if name.startswith(contender)]) / 1000

    ours, sqlite, scan = middle("velmora_index"), middle("sqlite_fts5"), middle("plain_scan")
    slowest = max(value for name, value in ns.items() if name.startswith("velmora_index")) / 1000
    report.add("a query over 32,767 names, limit 50", f"{ours:.1f} µs",
               f"SQLite FTS5 {sqlite:.0f} µs: {sqlite / ours:.0f} times; plain scan of stored "
               f"upper case {scan:.0f} µs", "10 µs, 20 times SQLite",
               ours <= 10 and sqlite / ours >= 20,
               note="The middle one of twenty mixed queries, each contender's own, after comparing "
                    "all results with the scan's. The slowest of ours, two words that are both too "
                    f"short to be looked up, takes {slowest:.0f} µs.")


def cache(context, report):
    ns, _ = _run(context, "cache_bench", context.rounds)
    known, new = ns["pong_into_cache/of_a_known_host"], ns["pong_into_cache/of_a_new_host"]
    report.add("a pong into a cache of 10,000 rows", f"{max(known, new) / 1000:.2f} µs",
               f"array with shifted rows {ns['shifted_array'] / 1000:.0f} µs", "1 µs",
               max(known, new) <= 1000)


def results(context, report):
    ns, counters = _run(context, "results_bench", context.rounds)
    usual = counters["memory_of_200000/usual_names"]
    budget = counters["memory_of_200000/at_the_budget"]
    report.add("200,000 search results, memory at the budget", f"{budget['MiB']:.0f} MiB",
               f"{usual['MiB']:.0f} MiB with usual names, {usual['per_wire_byte']:.1f} bytes for "
               "one on the wire", "128 MiB", budget["MiB"] <= 128)
    if not report.add("a hit of 50 results", f"{ns['hit_of_50'] / 1000:.1f} µs", "", "20 µs",
                      ns["hit_of_50"] <= 20000,
                      note="From the descriptor into the list, decoding included."):
        report.profile("A hit of 50 results", programs.profile_command(
            "results_bench", context.program("results_bench"), "--benchmark_filter=hit_of_50"))
    report.add("one screen of 50 rows of 200,000", f"{ns['screen_of_rows'] / 1e6:.3f} ms", "",
               "5 ms", ns["screen_of_rows"] <= 5e6)
