"""Starting, being idle, and the window."""
import os
import re
import selectors
import subprocess
import time
from contextlib import ExitStack

import programs
from report import median

HOSTS = 10000


def profile_with_hosts(context):
    profile = context.folder()
    with open(os.path.join(profile, "Velmora_cache.dat"), "w", encoding="latin-1") as file:
        file.write(f'"Rows in this file:",{HOSTS}\r\n'
                   '"Format: Row #, IP, Port, DNS, Files, Size, Date Ponged, Date DNS"\r\n')
        for row in range(1, HOSTS + 1):
            file.write(f'{row},"81.3.{row // 250}.{row % 250}",6346,"host-{row}.example.org",40,'
                       '123456,#2024-06-30 14:05:00#,#2024-06-29 10:00:00#\r\n')
    return profile


def _start_by_line(command):
    """Milliseconds until the program prints its first line."""
    start = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL)
    try:
        with selectors.DefaultSelector() as selector:
            selector.register(process.stdout, selectors.EVENT_READ)
            if not selector.select(10) or not process.stdout.readline():
                raise programs.Failure(f"{command[0]} did not start")
        return (time.perf_counter() - start) * 1000
    finally:
        programs.end(process)
        process.stdout.close()


def _start_by_port(command, port):
    """Milliseconds until its port answers."""
    start = time.perf_counter()
    process = subprocess.Popen(list(map(str, command)), stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    try:
        programs.wait_for_port("127.0.0.1", port, pause=0.0005)
        return (time.perf_counter() - start) * 1000
    finally:
        programs.end(process)


def _commands(context, port, hosts=False):
    profile = profile_with_hosts(context) if hosts else context.folder()
    folder = context.folder()
    return {
        "velmora": [context.program("velmorad"), "--profile", profile, "--listen", "127.0.7.1"],
        "libuv": [context.program("bare_idle"), port],
        "aria2c": ["aria2c", "-q", "--enable-rpc", f"--rpc-listen-port={port + 1}",
                   "--enable-dht=false", "-d", folder],
        "transmission": ["transmission-daemon", "-f", "-g", folder, "-p", port + 2, "-P", port + 3,
                         "-r", "127.0.0.1", "-O", "--no-portmap", "--no-utp", "--no-lpd"],
    }


def start(context, report):
    times = {"velmora": [], "libuv": [], "aria2c": [], "transmission": []}
    for _ in range(3 if context.quick else 15):
        port = next(programs.PORTS)
        for _ in range(3):
            next(programs.PORTS)
        commands = _commands(context, port, hosts=True)
        times["velmora"].append(_start_by_line(commands["velmora"]))
        times["libuv"].append(_start_by_line(commands["libuv"]))
        times["aria2c"].append(_start_by_port(commands["aria2c"], port + 1))
        times["transmission"].append(_start_by_port(commands["transmission"], port + 2))
    middle = {name: median(values) for name, values in times.items()}
    if not report.add(
            f"ready after start, without a screen, {HOSTS:,} cached hosts",
            f"{middle['velmora']:.1f} ms",
            f"bare libuv {middle['libuv']:.1f} ms, aria2c {middle['aria2c']:.1f} ms, "
            f"transmission-daemon {middle['transmission']:.1f} ms", "8 ms",
            middle["velmora"] <= 8,
            note="From starting the process until its first line says that everything is open; "
                 "aria2c and transmission-daemon until their port answers. Medians of 15."):
        command = " ".join(f"'{part}'" for part in _commands(context, 0, hosts=True)["velmora"])
        report.profile("Start and end", programs.profile_command(
            "velmorad", "/bin/sh", "-c",
            f"for i in 1 2 3 4 5 6 7 8 9 10; do timeout 0.1 {command} > /dev/null; done; true"))


class Idler:
    def __init__(self, process):
        self.process = process
        self.tasks = f"/proc/{process.pid}/task"

    def _sum(self, file, pattern):
        total = 0
        for task in os.listdir(self.tasks):
            with open(f"{self.tasks}/{task}/{file}", encoding="utf-8") as text:
                total += int(re.search(pattern, text.read()).group(1))
        return total

    def wakeups(self):
        return self._sum("status", r"\nvoluntary_ctxt_switches:\s+(\d+)")

    def processor_ns(self):
        return self._sum("schedstat", r"^(\d+)")

    def memory_mib(self):
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as text:
            return int(re.search(r"VmRSS:\s+(\d+)", text.read()).group(1)) / 1024


def idle(context, report):
    """All side by side, for the same seconds; the first moments after the start do not count."""
    seconds = 5 if context.quick else 30
    port = next(programs.PORTS)
    for _ in range(3):
        next(programs.PORTS)
    with ExitStack() as stack:
        idlers = {}
        commands = _commands(context, port)
        commands["timer"] = [context.program("bare_idle"), next(programs.PORTS), 500]
        for name, command in commands.items():
            idlers[name] = Idler(stack.enter_context(programs.running(*command)))
        time.sleep(3)
        before = {name: (one.wakeups(), one.processor_ns()) for name, one in idlers.items()}
        time.sleep(seconds)
        wakeups, share, memory = {}, {}, {}
        for name, one in idlers.items():
            wakeups[name] = (one.wakeups() - before[name][0]) / seconds
            share[name] = (one.processor_ns() - before[name][1]) / seconds / 1e7
            memory[name] = one.memory_mib()
    others = (("libuv", "bare libuv"), ("timer", "with an empty timer of 500 ms"),
              ("aria2c", "aria2c"), ("transmission", "transmission-daemon"))

    def beside(values, form):
        return ", ".join(f"{label} {form.format(values[name])}" for name, label in others)

    report.add("idle memory, nothing cached", f"{memory['velmora']:.1f} MiB",
               beside(memory, "{:.1f} MiB"), "6 MiB", memory["velmora"] <= 6,
               note="Resident memory, shared libraries included.")
    report.add("idle, wake-ups a second", f"{wakeups['velmora']:.1f}", beside(wakeups, "{:.1f}"),
               "3", wakeups["velmora"] <= 3)
    report.add("idle, processor", f"{share['velmora']:.4f} %", beside(share, "{:.4f} %"), "0.01 %",
               share["velmora"] <= 0.01)


def _painted(command):
    """What the program itself says on standard error; it is ended then."""
    process = subprocess.Popen(list(map(str, command)), stdout=subprocess.DEVNULL,
                               stderr=subprocess.PIPE, text=True,
                               env={**os.environ, "QT_QPA_PLATFORM": "offscreen"})
    try:
        for line in process.stderr:
            if found := re.search(r"window painted (\d+) ms", line):
                return int(found.group(1))
        raise programs.Failure(f"{command[0]} painted nothing")
    finally:
        process.stderr.close()
        programs.end(process)


def window(context, report):
    ours, bare = [], []
    profile = profile_with_hosts(context)
    for _ in range(2 if context.quick else 9):
        ours.append(_painted([context.program("velmora"), "--profile", profile, "--listen",
                              "127.0.7.1", "--verbose"]))
        bare.append(_painted([context.program("bare_window")]))
    report.add(f"window, start to first paint, {HOSTS:,} cached hosts, no screen",
               f"{median(ours):.0f} ms", f"six empty lists {median(bare):.0f} ms", "120 ms",
               median(ours) <= 120,
               note="Each program's own figure, from its first instruction on. The first start of "
                    "all reads the libraries from disk; the median does not show it.")
