"""Between two servents over a link of its own: what was sent, what arrived, and what did not.

The servents live in two network namespaces joined by a pair of virtual interfaces with packets of
1500 bytes. The link may be slow (a token bucket) or lose packets (nftables, both directions)."""
import os
import subprocess
from contextlib import ExitStack, contextmanager

import programs

NAME_BYTES = 115  # of 255 results: a hit of 31,900 bytes
FILES = 255

# Name, rate, percent lost, and the part of the descriptors that it gets: slow links get fewer.
LINKS = (
    ("no limit", None, 0, 1),
    ("100 Mbit/s", "100mbit", 0, 1),
    ("1 % of packets lost", None, 1, 0.5),
    ("20 Mbit/s, 1 % lost", "20mbit", 1, 0.1),
)
# Hits alone, one at a time: nothing that follows one shows that its last packet was lost.
HITS_ALONE = ("1 % of packets lost, hits alone", None, 1, 0)
# What the debug log says when a chunk begins with the rest of a descriptor that was cut.
CUT = "Format_in_data: "


def _run(*command, text=None):
    done = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise programs.Failure(f"{' '.join(command)}: {done.stderr.strip()}")


def _inside(name, *command, text=None):
    _run("ip", "netns", "exec", name, *command, text=text)


@contextmanager
def _namespaces():
    names = [f"velmora-{os.getpid()}-{side}" for side in "ab"]
    made = []
    try:
        for name in names:
            _run("ip", "netns", "add", name)
            made.append(name)
        # Without segments of their own making the interfaces would hand 64 KiB over in one piece.
        _run("ip", "link", "add", "va", "mtu", "1500", "netns", names[0], "type", "veth",
             "peer", "name", "vb", "mtu", "1500", "netns", names[1])
        for name, device, address in ((names[0], "va", "10.77.0.1"), (names[1], "vb", "10.77.0.2")):
            _inside(name, "ip", "link", "set", "lo", "up")
            _inside(name, "ip", "link", "set", device, "gso_max_segs", "1", "up")
            _inside(name, "ip", "address", "add", f"{address}/24", "dev", device)
        yield names
    finally:
        for name in made:
            subprocess.run(["ip", "netns", "del", name], check=False)


def _worsen(names, rate, percent):
    for name, device in zip(names, ("va", "vb")):
        if rate:
            _inside(name, "tc", "qdisc", "add", "dev", device, "root", "tbf", "rate", rate, "burst",
                    "32kb", "limit", "256kb")
        if percent:
            _inside(name, "nft", "-f", "-", text=(
                "table inet loss {\n chain arriving {\n"
                "  type filter hook input priority 0;\n"
                f"  iifname \"{device}\" meta l4proto tcp numgen random mod 100 < {percent} drop\n"
                " }\n}\n"))


def _share(profile):
    with open(os.path.join(profile, "Velmora_shared.dat"), "w", encoding="latin-1") as file:
        file.write(f'"Rows in this file:",{FILES}\r\n'
                   '"Format: Row #, Filename, Size, Path, Uploads"\r\n')
        for row in range(1, FILES + 1):
            name = f"record {row:03} ".ljust(NAME_BYTES - 4, "x") + ".mp3"
            file.write(f'{row},"{name}",1000000,"/nowhere",0\r\n')


def _numbers(servent, control):
    return [int(part) for part in servent.get(control).split("/")]


def _neighbour(servent, address):
    """What the servent sent to that neighbour as copies, and what it received from it."""
    for row in servent.rows("lHosts"):
        if row[0].startswith(address + ":") and row[3] == "Connected":
            sent, received, _ = map(int, row[2].split("/"))
            return sent, received
    raise programs.Failure(f"{address} is not connected")


def _keeping_log(name, path):
    return ("ip", "netns", "exec", name, "sh", "-c", f'exec "$@" --verbose 2>{path}', "sh")


def _cut(*logs):
    lines = [line for log in logs for line in open(log, encoding="utf-8", errors="replace")]
    return sum(CUT in line for line in lines)


def _settled(servents):
    """The counters are shown twice a second."""
    before = None
    for _ in range(20):
        subprocess.run(["sleep", "0.6"], check=True)
        now = [(one.get("net_stat"), one.get("byteout_stat")) for one in servents]
        if now == before:
            return
        before = now


def measure(context, link, descriptors, hits, hit_every):
    _, rate, percent, _ = link
    with ExitStack() as stack:
        names = stack.enter_context(_namespaces())
        _worsen(names, rate, percent)
        profile = context.folder()
        _share(profile)
        sides, logs = [], []
        for name, address, options in ((names[0], "10.77.0.1", {"profile": profile}),
                                       (names[1], "10.77.0.2", {})):
            logs.append(os.path.join(context.folder(), "log"))
            sides.append(stack.enter_context(programs.servent(
                context, address, prefix=_keeping_log(name, logs[-1]), query_config=FILES,
                **options)))
        near, far = sides
        far.ask("set", control="stop_search", value=True)
        near.ask("enter", control="new_host", text=far.address)
        far.wait("the connection", lambda: any("Connected" in row for row in far.rows("lHosts")))
        run = context.load(
            "loss_load", "--feed-namespace", names[0], "--feed", near.messages, "--tap-namespace",
            names[1], "--tap", far.messages, "--descriptors", descriptors, "--hits", hits,
            "--hit-every", hit_every, timeout=1800)
        _settled(sides)
        near_sent, near_received = _neighbour(near, far.address)
        far_sent, far_received = _neighbour(far, near.address)
        pings = _numbers(far, "ping_stat")[0]
        arrived_hits = _numbers(far, "reply_stat")[0]
        return {
            "seconds": run["seconds"],
            "descriptors": near_sent,
            "lost": near_sent - (far_received - arrived_hits),
            "hits": run["asked"],
            "lost_hits": run["asked"] - arrived_hits,
            "back": far_sent + pings,
            "lost_back": far_sent + pings - near_received,
            "unsent": run["sent"] - near_sent,
            "cut": _cut(*logs),
            "unknown": _numbers(far, "unknown_stat")[0] + _numbers(near, "unknown_stat")[0],
        }


def between_servents(context, report, descriptors=None):
    if os.getuid() != 0:
        raise programs.Failure("network namespaces need root")
    descriptors = descriptors or (50_000 if context.quick else 1_000_000)
    for link in (*LINKS, HITS_ALONE):
        part = int(descriptors * link[3])
        alone = link is HITS_ALONE
        # No more than are answered before a neighbour that is fed nothing any more is dropped.
        hits = min(max(descriptors // 1000, 100) if alone else max(part // 5000, 20), 1000)
        run = measure(context, link, part, hits, 60 if link[1] else 10 if alone else 20)
        report.add(
            f"between two servents, {link[0]}",
            f"{run['lost']:,} of {run['descriptors']:,} descriptors, {run['lost_hits']:,} of "
            f"{run['hits']:,} hits of 32,000 bytes and {run['lost_back']:,} of {run['back']:,} "
            f"answers lost, {run['cut']:,} chunks cut, in {run['seconds']:.0f} s",
            f"{run['unsent']:,} not passed on, {run['unknown']:,} read as unknown",
            "nothing lost", not any(run[key] for key in (
                "lost", "lost_hits", "lost_back", "cut", "unsent", "unknown")),
            note=LOSS_NOTE if link is LINKS[0] else "")


LOSS_NOTE = (
    "Two servents in network namespaces, packets of 1500 bytes. One is fed pings and queries, "
    "which it relays to the other, and answers that one's queries with hits; the counters of the "
    "one that received are held against those of the one that sent, and the debug logs are searched "
    "for cut chunks. A chunk that ends inside a descriptor loses the rest of it, as nothing is kept "
    "between two reads; the remnant at the front of the next chunk may be taken for descriptors "
    "that nobody sent (a negative number, or unknown ones).")
