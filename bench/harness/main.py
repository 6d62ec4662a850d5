"""Measures every row of docs/BENCHMARKS.md, in turn, and writes it. Called by scripts/bench."""
import argparse
import sys
import time
import traceback

import loss
import machine
import micro
import relay
import resting
import transfers
from programs import Context
from report import Report, document

ROWS = {
    "relay": relay.relay,
    "light": relay.light,
    "hold": relay.hold,
    "turns": relay.turns,
    "routing": micro.routing,
    "query": micro.query,
    "cache": micro.cache,
    "results": micro.results,
    "upload": transfers.upload,
    "paced": transfers.paced,
    "stopped": transfers.stopped,
    "download": transfers.download,
    "start": resting.start,
    "idle": resting.idle,
    "window": resting.window,
    "loss": loss.between_servents,
}


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--build", required=True, help=argparse.SUPPRESS)
    parser.add_argument("--out", help="write the page here")
    parser.add_argument("--quick", action="store_true",
                        help="every row once, in about two minutes: shows that it works")
    parser.add_argument("--only", help="these rows only, for example relay,hold: "
                        + ",".join(ROWS))
    parser.add_argument("--descriptors", type=int,
                        help="so many over each link between two servents")
    options = parser.parse_args()
    chosen = options.only.split(",") if options.only else list(ROWS)
    if unknown := [name for name in chosen if name not in ROWS]:
        parser.error(f"no row {unknown[0]}; there are {', '.join(ROWS)}")

    context, report, loads = Context(options.build, options.quick), Report(), []
    begin = time.monotonic()
    try:
        for name in chosen:
            print(f"{name} ({time.monotonic() - begin:.0f} s)", flush=True)
            loads.append(machine.load_average())
            try:
                if name == "loss":
                    ROWS[name](context, report, options.descriptors)
                else:
                    ROWS[name](context, report)
            except Exception as error:  # the other rows are still worth having
                traceback.print_exc()
                report.failures.append((name, f"{type(error).__name__}: {error}"))
    finally:
        context.close()
    if options.out:
        text = document(report, machine.facts(), machine.versions(), context.rounds, options.quick,
                        loads)
        with open(options.out, "w", encoding="utf-8") as file:
            file.write(text)
    print(f"{time.monotonic() - begin:.0f} s, {len(report.rows)} rows, "
          f"{sum(row.met is False for row in report.rows)} goals missed, "
          f"{len(report.failures)} not measured")
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main())
