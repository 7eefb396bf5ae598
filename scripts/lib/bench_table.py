#!/usr/bin/python3
"""Gathers the comparisons that the benchmark programs wrote (one JSON object a line) into
one table, Markdown so that it can be quoted as it stands, and one JSON file for comparing
runs. The programs judged each target; this only counts their verdicts. Exit status 0
when every target was met.

usage: bench_table.py LINES OUTPUT.json KEY=VALUE...   (run facts kept in the JSON)
"""
import json
import sys


def figure(value):
    if value is None:
        return "n/a"
    return f"{value:.2f}" if value < 1000 else f"{value:.0f}"


def main(lines_file, output_file, *facts):
    try:
        with open(lines_file) as lines:
            comparisons = [json.loads(line) for line in lines if line.strip()]
    except (OSError, ValueError) as error:  # no program wrote, or one died while writing
        print(f"bench-full: no comparisons to tabulate from {lines_file}: {error}")
        return 1
    rows = [["program", "ours / reference", "ours ns", "ref ns", "ratio", "target", "verdict"]]
    for c in comparisons:
        rows.append([c["program"], f"{c['ours']} / {c['reference']}", figure(c["ours_ns"]), figure(c["reference_ns"]),
                     figure(c["ratio"]), c["target"] or "-", c["verdict"]])
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    rows.insert(1, ["-" * width for width in widths])
    for row in rows:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")

    run = dict(fact.split("=", 1) for fact in facts)
    run["comparisons"] = comparisons
    with open(output_file, "w") as output:
        json.dump(run, output, indent=1)
        output.write("\n")

    met = sum(c["verdict"] == "met" for c in comparisons)
    missed = sum(c["verdict"] == "missed" for c in comparisons)
    print(f"bench-full: {met} met, {missed} missed")
    return 1 if missed else 0


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
