"""Relaying, holding connections, and the length of turns."""
import json
import os
import signal
from contextlib import contextmanager

import programs
from report import median, millions, paired_ratio, spread

CONNECTIONS = (4, 10, 100, 1000)
PRESSED, BURSTS = 192, 16  # descriptors in one write of the load


@contextmanager
def _server(context, kind):
    """One of its own for every measurement: none inherits another's slots."""
    if kind == "velmora":
        with programs.servent(context) as servent:
            yield servent.process, servent.messages
        return
    start = {"bare": programs.bare_relay, "nats": programs.nats, "mqtt": programs.mosquitto}[kind]
    with start(context) as (process, endpoint):
        yield process, endpoint


def _once(context, kind, peers, *options):
    with _server(context, kind) as (process, endpoint):
        return context.load("relay_load", "--to", endpoint, "--frames", kind, "--peers", peers,
                            "--server", process.pid, *options)


def _goal(peers):
    return 0.6 if peers <= 10 else 0.8


def _profile(context, report, title, peers, *options):
    with programs.servent(context) as servent, programs.beside(
            context, "relay_load", "--to", servent.messages, "--frames", "velmora", "--peers",
            peers, "--server", servent.process.pid, "--ms", 2500, *options):
        report.profile(title, programs.profile_of(servent.process))


def relay(context, report):
    ms = 300 if context.quick else 800
    per_copy = {}
    missed = False
    for peers in CONNECTIONS:
        for kind in ("velmora", "bare"):  # once with every copy read and compared
            _once(context, kind, peers, "--ms", 200, "--read", 1)
        for batch, name in ((BURSTS, "bursts of 16"), (PRESSED, "pressed")):
            kinds = ("velmora", "bare") if batch == BURSTS else ("velmora", "bare", "nats", "mqtt")
            runs = {kind: [] for kind in kinds}
            for _ in range(context.rounds):
                for kind in kinds:
                    runs[kind].append(_once(context, kind, peers, "--ms", ms, "--batch", batch))
            out = {kind: [run["out_per_s"] for run in runs[kind]] for kind in kinds}
            cpu = {kind: median([run["server_ns_per_copy"] for run in runs[kind]])
                   for kind in kinds}
            per_copy[peers, name] = cpu["velmora"]
            ratio = paired_ratio(out["velmora"], out["bare"])
            goal = _goal(peers)
            met = report.add(
                f"relay, {peers:,} connections, {name}",
                f"{millions(median(out['velmora']))} copies/s{spread(out['velmora'])}, "
                f"{cpu['velmora']:.0f} ns each",
                f"bare epoll {millions(median(out['bare']))}/s, {cpu['bare']:.0f} ns: "
                f"ratio {ratio:.2f}",
                f"{goal} of bare epoll, no loss", ratio >= goal,
                note=RELAY_NOTE if (peers, batch) == (CONNECTIONS[0], BURSTS) else "")
            missed = missed or not met
            for kind, label, goals in (("nats", "NATS", {10: 2, 100: 6}),
                                       ("mqtt", "mosquitto", {10: 40, 100: 90})):
                if kind not in runs:
                    continue
                times = paired_ratio(out["velmora"], out[kind])
                wanted = goals.get(peers)
                report.add(f"relay, {peers:,} connections, against {label}",
                           f"{millions(median(out['velmora']))} copies/s",
                           f"{label} {millions(median(out[kind]))}/s: {times:.1f} times",
                           f"{wanted} times" if wanted else "", times >= wanted if wanted else None)
    for name in ("bursts of 16", "pressed"):
        many, few = per_copy[1000, name], per_copy[10, name]
        report.add(f"processor time of a copy, 1,000 connections against 10, {name}",
                   f"{many:.0f} ns", f"{few:.0f} ns at 10: ratio {many / few:.2f}",
                   "1.2", many / few <= 1.2)
    if missed:
        _profile(context, report, "Relay, 10 connections, pressed", 10, "--batch", PRESSED)


RELAY_NOTE = (
    "K connections send in turn; each descriptor (one ping to seven queries, 23 to 100 bytes, "
    "none twice) must arrive on every other connection, and every byte is accounted for. "
    "\"Bursts of 16\": the load writes 16 descriptors at a time; \"pressed\": 192. The bare epoll "
    "loop cuts descriptors by their length and copies them, and does nothing else: no header is "
    "changed, no table asked, nothing counted, no ping answered; Velmora answers every ping beside "
    "relaying it. Times are of the relay's processor, system calls included.")


@contextmanager
def _one_processor():
    """What is started meanwhile shares one processor."""
    all_of_them = os.sched_getaffinity(0)
    os.sched_setaffinity(0, {min(all_of_them)})
    try:
        yield
    finally:
        os.sched_setaffinity(0, all_of_them)


def light(context, report):
    peers, rate, ms = 10, 1000, 1000 if context.quick else 2000
    runs = {"velmora": [], "bare": []}
    for _ in range(context.rounds):
        for kind, done in runs.items():
            with _one_processor():
                run = _once(context, kind, peers, "--ms", ms, "--rate", rate)
            done.append(run["server_ns_per_copy"])
    ratio = paired_ratio(runs["velmora"], runs["bare"])
    if not report.add("light load: 1,000 descriptors a second, one at a time, 10 connections",
                      f"{median(runs['velmora']):.0f} ns of processor a copy"
                      f"{spread(runs['velmora'])}",
                      f"bare epoll {median(runs['bare']):.0f} ns: ratio {ratio:.2f}", "1.25",
                      ratio <= 1.25,
                      note="Relay and load share one processor. On two, waking the other one costs "
                           "several times what the relay does, and where the system puts them is "
                           "chance."):
        _profile(context, report, "Light load", peers, "--rate", rate)


def hold(context, report):
    idle, busy = (3000, 200) if context.quick else (15000, 200)
    if context.file_limit < idle + busy + 100:
        raise programs.Failure(f"the limit of {context.file_limit} open files is too low")
    runs = {kind: [] for kind in ("velmora", "bare", "nats", "mqtt")}
    for _ in range(1 if context.quick else 3):
        for kind, done in runs.items():
            with _server(context, kind) as (process, endpoint):
                pings = ("--busy", busy) if kind == "velmora" else ()
                done.append(context.load("hold_load", "--to", endpoint, "--frames", kind,
                                         "--server", process.pid, "--idle", idle, *pings))

    def middle(kind, key):
        return median([run[key] for run in runs[kind]])

    def held(kind):
        return f"{middle(kind, 'bytes_each') / 1024:.2f} KiB in {middle(kind, 'connect_s'):.1f} s"

    each = middle("velmora", "bytes_each")
    report.add(f"{idle:,} idle connections held, {busy} busy",
               f"{held('velmora')}; 2,000 pings a second answered, 99 % within "
               f"{middle('velmora', 'answer_p99_ms'):.1f} ms, "
               f"{100 * middle('velmora', 'server_share'):.0f} % of a processor",
               f"bare epoll {held('bare')}, NATS {held('nats')}, mosquitto {held('mqtt')}",
               "1.5 KiB each, none lost", each <= 1536,
               note="Memory of the process for each idle connection, and the time to connect them "
                    "all; the kernel's buffers are not in it. Every second one query goes to all "
                    "of Velmora's. Medians of 3 runs.")


def turns(context, report):
    runs = []
    for _ in range(1 if context.quick else 3):
        with programs.servent(context, program="turn_length") as servent:
            context.load("flood_load", "--to", servent.messages, "--peers", 10, "--seconds",
                         2 if context.quick else 8)
            servent.process.send_signal(signal.SIGTERM)
            runs.append(json.loads(servent.process.stdout.readline()))

    def row(work, prefix, note):
        p99 = median([run[prefix + "p99_ms"] for run in runs])
        longest = max(run[prefix + "longest_ms"] for run in runs)
        return report.add(
            work, f"half within {median([run[prefix + 'p50_ms'] for run in runs]):.2f} ms, 99 % "
            f"within {p99:.2f} ms, the longest {longest:.1f} ms", "", "5 ms, never above 20 ms",
            p99 <= 5 and longest <= 20, note=note)

    met = [row("a turn of the loop, 10 connections writing all they can", "",
               "Queries, pings and hits of 250 results, unbounded. From asking the system for "
               "events to asking again, less the time asleep; what other programs take of the "
               "processor counts as ours. 3 runs."),
           row("processor time of those turns", "processor_",
               "The same turns, without what other programs took of the processor meanwhile.")]
    if not all(met):
        with programs.servent(context) as servent, programs.beside(
                context, "flood_load", "--to", servent.messages, "--peers", 10, "--seconds", 3):
            report.profile("Flood", programs.profile_of(servent.process))
