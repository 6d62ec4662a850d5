"""Rows of the table, and the document that shows them."""
import statistics
from dataclasses import dataclass, field


@dataclass
class Row:
    work: str       # what is done
    ours: str       # what was measured of Velmora
    against: str    # the other side, measured in turn with it
    goal: str
    met: object     # True, False, or None where there is no goal
    note: str = ""


@dataclass
class Report:
    rows: list = field(default_factory=list)
    profiles: list = field(default_factory=list)  # (title, text)
    failures: list = field(default_factory=list)  # (work, error)

    def add(self, *args, **kwargs):
        row = Row(*args, **kwargs)
        self.rows.append(row)
        mark = {True: "met", False: "MISSED", None: "-"}[row.met]
        print(f"  {row.work}: {row.ours} | {row.against} | {row.goal}: {mark}", flush=True)
        return row.met

    def profile(self, title, text):
        if text:
            self.profiles.append((title, text))


def median(values):
    return statistics.median(values)


def spread(values):
    """Half the way from the lowest to the highest quarter, in percent of the median."""
    if len(values) < 4:
        return ""
    low, _, high = statistics.quantiles(values, n=4)
    return f" ±{50 * (high - low) / statistics.median(values):.0f} %"


def paired_ratio(ours, theirs):
    """The middle of the ratios of pairs that were measured one after the other."""
    return median([a / b for a, b in zip(ours, theirs)])


def millions(value):
    return f"{value / 1e6:.2f} M" if value < 1e7 else f"{value / 1e6:.1f} M"


def _table(rows):
    lines = ["| work | Velmora | measured against | goal | |", "|---|---|---|---|---|"]
    for row in rows:
        mark = {True: "met", False: "**missed**", None: ""}[row.met]
        lines.append(f"| {row.work} | {row.ours} | {row.against} | {row.goal} | {mark} |")
    return lines


def document(report, facts, versions, rounds, quick, loads):
    busiest = max(loads)
    lines = [
        "# Benchmarks", "",
        "Written by `scripts/bench`, which builds the release preset, fetches the programs to",
        "compare with, measures everything below and writes this page. Every figure stands beside",
        "another that was taken in the same run on the same machine, both in turn; the ratios are",
        "what counts.", "",
        f"{facts['processor']}, {facts['cores']} cores, {facts['kernel']}, {facts['date']}.", "",
        f"Medians of {rounds} pairs where nothing else is said.", "",
    ]
    if quick:
        lines += ["**A quick run: every row was measured, but too seldom to be quoted.**", ""]
    if busiest > facts["cores"] + 1.5:
        lines += [f"**The machine was busy with other work (load up to {busiest:.1f}): "
                  "these figures are not to be quoted.**", ""]
    lines += _table(report.rows)
    missed = [row for row in report.rows if row.met is False]
    lines += ["", f"{len(missed)} goals missed." if missed else "No goal was missed."]
    notes = [row for row in report.rows if row.note]
    if notes:
        lines += ["", "## What the rows mean", ""]
        lines += [f"- **{row.work}**: {row.note}" for row in notes]
    if report.failures:
        lines += ["", "## Not measured", ""]
        lines += [f"- {work}: {error}" for work, error in report.failures]
    if report.profiles:
        lines += ["", "## Where the time goes", "",
                  "Samples of the processor while a goal was missed, by function."]
        for title, text in report.profiles:
            lines += ["", f"### {title}", "", *("    " + line for line in text.splitlines())]
    lines += ["", "## The programs", ""]
    lines += [f"- {name}" for name in versions.values()]
    return "\n".join(lines) + "\n"
