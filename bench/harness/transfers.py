"""Uploads and downloads of 1 GiB, on loopback, from and into a file system in memory."""
import os
import shutil
import subprocess
import time
from contextlib import contextmanager

import programs
from report import median, paired_ratio, spread

GIB = 1 << 30
NAME = "big file.bin"


def make_file(context):
    """1 GiB that no file system can store as holes, made once."""
    folder = os.path.join(context.memory, "shared")
    path = os.path.join(folder, NAME)
    if not os.path.exists(path):
        os.makedirs(folder)
        block = os.urandom(1 << 24)
        with open(path, "wb") as file:
            for number in range(GIB // len(block)):
                file.write(number.to_bytes(8, "little") + block[8:])
        os.link(path, os.path.join(folder, "big.bin"))  # a name that needs no escaping
    return folder


@contextmanager
def uploader(context, address="127.0.7.1", packet=1 << 20, delay=0, **fields):
    folder = make_file(context)
    profile = context.folder()
    with open(os.path.join(profile, "Velmora_shared.dat"), "w", encoding="latin-1") as file:
        file.write('"Rows in this file:",2\r\n"Format: Row #, Filename, Size, Path, Uploads"\r\n')
        for row, name in ((1, "big.bin"), (2, NAME)):
            file.write(f'{row},"{name}",{GIB},"{folder}",0\r\n')
    with programs.servent(context, address, profile=profile, pack_upload=packet,
                          speed_upload=delay, **fields) as servent:
        yield servent


def _rate(run, key="seconds"):
    if run["bytes"] != GIB:
        raise programs.Failure(f"{run['bytes']} bytes came instead of {GIB}")
    return run["bytes"] / run[key] / GIB


def upload(context, report):
    folder = make_file(context)
    ours, theirs, whole = [], [], []
    with uploader(context) as servent, programs.nginx(context, folder) as (_, port):
        for _ in range(context.rounds):
            run = context.load("fetch", "--to", servent.uploads, "--path", "/get/1/big.bin")
            ours.append(_rate(run, "body_seconds"))
            whole.append(_rate(run))
            theirs.append(_rate(context.load("fetch", "--to", f"127.0.0.1:{port}", "--path",
                                             "/big.bin"), "body_seconds"))
        ratio = paired_ratio(ours, theirs)
        met = report.add(
            "upload of 1 GiB, packet 1 MiB, delay 0",
            f"{median(ours):.2f} GiB/s{spread(ours)} ({median(whole):.2f} from the request on)",
            f"nginx, read and write: {median(theirs):.2f} GiB/s: ratio {ratio:.2f}", "0.8",
            ratio >= 0.8,
            note="From the first byte of the file to the last, read by one program that throws "
                 "the bytes away. Velmora holds the first packet back for 50 ms and more, so that "
                 "the header arrives alone; the figure in brackets counts that, too. nginx: one "
                 "process, sendfile off, two buffers of 512 KiB.")
        if not met:
            load = ("fetch", "--to", servent.uploads, "--path", "/get/1/big.bin")
            with programs.beside(context, *load), programs.beside(context, *load):
                report.profile("Upload", programs.profile_of(servent.process, 1))


def paced(context, report):
    seconds = 1 if context.quick else 2
    for interval, wanted in ((20, 0.98), (1, 0.95)):
        packet = 65536
        packets = seconds * 1000 // interval
        ratios = []
        with uploader(context, packet=packet, delay=interval) as servent:
            for _ in range(context.rounds):
                run = context.load("fetch", "--to", servent.uploads, "--path", "/get/1/big.bin",
                                   "--bytes", packet * packets)
                # The first packet's interval lies before the measurement begins.
                rate = (run["bytes"] - packet) / run["body_seconds"]
                ratios.append(rate / (packet * 1000 / interval))
        report.add(f"upload, packets of 64 KiB every {interval} ms",
                   f"{median(ratios):.3f} of the pace", f"{packet} bytes / {interval} ms",
                   str(wanted), median(ratios) >= wanted)


def stopped(context, report):
    readers = 20
    with uploader(context) as servent:
        run = context.load("fetch", "--to", servent.uploads, "--path", "/get/1/big.bin",
                           "--stopped", readers, "--server", servent.process.pid)
    each = run["kib_each"] / 1024
    report.add(f"upload, {readers} readers that stopped reading, packet 1 MiB",
               f"{each:.2f} MiB of memory a slot", "", "one packet (1 MiB)", each <= 1.1,
               note="Up to a tenth beside the packet passes, for the slot itself.")


@contextmanager
def downloader(context, source, folder):
    """A second servent that found the file at the first and has queued it."""
    with programs.servent(context, "127.0.7.2", down_config=folder) as servent:
        servent.ask("enter", control="new_host", text=source.address)
        servent.wait("the connection", lambda: any(
            "Connected" in row for row in servent.rows("lHosts")))
        time.sleep(0.1)
        servent.ask("enter", control="Tsearch", text="big.bin")
        servent.wait("a result", lambda: servent.rows("lfound"))
        servent.ask("activate", control="lfound", row=1)
        servent.wait("the queued download", lambda: servent.rows("ldown"))
        yield servent


def _free_memory(folder):
    """A virtual machine gives memory that is free for some seconds back to its host, and getting
    it again takes longer than filling it: everybody finds what was freed just now."""
    path = os.path.join(folder, "memory")
    block = bytes(1 << 20)
    with open(path, "wb") as file:
        for _ in range(GIB // len(block)):
            file.write(block)
    os.unlink(path)


def _own_download(context, source, folder, report=None):
    path = os.path.join(folder, "big.bin")
    with downloader(context, source, folder) as servent:
        _free_memory(folder)
        start = time.perf_counter()
        servent.ask("press", control="resume_down")
        text = programs.profile_of(servent.process, 1) if report else None
        while not os.path.exists(path):
            if time.perf_counter() - start > 60:
                raise programs.Failure(f"the download hangs: {servent.rows('ldown')}")
            time.sleep(0.002)
        took = time.perf_counter() - start
    if os.path.getsize(path) != GIB:
        raise programs.Failure("the download is not whole")
    if report:
        report.profile("Download", text)
    else:
        _same_content(context, path)
    os.unlink(path)
    return 1 / took


def _same_content(context, path):
    original = os.path.join(make_file(context), "big.bin")
    if subprocess.run(["cmp", "-s", original, path], check=False).returncode != 0:
        raise programs.Failure("the downloaded file differs")


def _command(path, *command, extra=0):
    """A command-line client that writes the path; `extra` bytes of header come with the file."""
    _free_memory(os.path.dirname(path))
    start = time.perf_counter()
    subprocess.run([*command], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=120,
                   check=False)
    took = time.perf_counter() - start
    size = os.path.getsize(path) if os.path.exists(path) else 0
    if not GIB <= size <= GIB + extra:
        raise programs.Failure(f"{command[0]} got {size} bytes")
    os.unlink(path)
    return 1 / took


def download(context, report):
    shared = make_file(context)
    folder = os.path.join(context.memory, "fetched")
    os.makedirs(folder, exist_ok=True)
    path = os.path.join(folder, "other.bin")
    with uploader(context) as source, programs.nginx(context, shared) as (_, port):
        url = f"http://{source.uploads}/get/1/big.bin"
        contenders = {
            "velmora": lambda: _own_download(context, source, folder),
            "curl": lambda: _command(path, "curl", "-s", "--http0.9", "-o", path, url, extra=200),
            "wget": lambda: _command(path, "wget", "-q", "--tries=1", "-O", path, url, extra=200),
            "aria2c": lambda: _command(
                path, "aria2c", "-q", "--file-allocation=none", "-d", folder, "-o",
                "other.bin", f"http://127.0.0.1:{port}/big.bin"),
        }
        order = list(contenders)
        rates = {name: [] for name in order}
        for _ in range(1 if context.quick else 7):
            for name in order:
                rates[name].append(contenders[name]())
            order.append(order.pop(0))  # nobody is always the first, or always behind the same one
        missed = False
        for other, wanted in (("curl", 1.2), ("wget", 1.5), ("aria2c", None)):
            ratio = paired_ratio(rates["velmora"], rates[other])
            server = "the same upload server" if wanted else "nginx"
            met = report.add(
                f"download of 1 GiB into memory, against {other}",
                f"{median(rates['velmora']):.2f} GiB/s{spread(rates['velmora'])}",
                f"{other} from {server} {median(rates[other]):.2f} GiB/s: ratio {ratio:.2f}",
                f"{wanted} times" if wanted else "", ratio >= wanted if wanted else None,
                note=DOWNLOAD_NOTE if other == "curl" else "")
            missed = missed or met is False
        if missed:
            _own_download(context, source, folder, report)
    shutil.rmtree(folder)


DOWNLOAD_NOTE = (
    "From asking for it until the file has its final name; connecting and the 50 ms that the "
    "upload server lets the header stand alone are in everybody's time. Each finds 1 GiB of memory "
    "that was freed a moment ago, and the order changes from round to round. The server is "
    "Velmora's, packet 1 MiB, delay 0. curl and wget take its reply for the old kind without a "
    "header and write the header into the file. What Velmora wrote is compared with the original, "
    "byte by byte.")
