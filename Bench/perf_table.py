"""Markdown tables from the JSON output of vrkxml_parse_bench.

Usage: perf_table.py RESULTS.json MACHINE.txt
Cases are named document/library/operation.  With repetitions each case
shows the median of its repetitions, and the cases whose repetitions
spread by more than 10 % are listed.  Throughput is MB of input (10^6 bytes) per second of processor
time, whatever the operation.
"""
import json
import math
import re
import sys

PEERS = [("pugixml", "pugixml"), ("libxml2", "libxml2"), ("expat", "expat (SAX)"),
         ("tinyxml2", "tinyxml2"), ("xerces", "Xerces-C")]
# expat builds no tree and writes nothing: every other peer does both.
WRITERS = TREE_PEERS = [peer for peer in PEERS if peer[0] != "expat"]


SHAPES = ["records", "attributes", "prose", "deep", "nonascii", "utf16"]


def document_order(name):
    """Generated documents by size, then in the generator's order; files last."""
    match = re.fullmatch(r"(\w+?)_(\d+)MB", name)
    if match and match.group(1) in SHAPES:
        return (0, int(match.group(2)), SHAPES.index(match.group(1)), name)
    return (1, 0, 0, name)


def load(path):
    """Per case the median of the repetitions (the single run without
    repetitions), and the spread (coefficient of variation) when there is one."""
    data = json.load(open(path))
    runs, medians, spread, failures, documents = {}, {}, {}, {}, set()
    for b in data["benchmarks"]:
        document, library, operation = b["run_name"].split("/", 2)
        key = (document, library, operation)
        documents.add(document)
        if b.get("error_occurred"):
            failures[key] = b.get("error_message", "failed")
        elif b.get("run_type") != "aggregate":
            runs.setdefault(key, b)
        elif b.get("aggregate_name") == "median":
            medians[key] = b
        elif b.get("aggregate_name") == "cv":
            spread[key] = b["cpu_time"]
    runs.update(medians)
    return runs, spread, failures, sorted(documents, key=document_order)


def mbps(run):
    return run["bytes_per_second"] / 1e6 if run and "bytes_per_second" in run else None


def geomean(values):
    values = [v for v in values if v is not None and v > 0]
    return math.exp(sum(math.log(v) for v in values) / len(values)) if values else None


def fmt(value, digits=0):
    if value is None:
        return "–"
    if digits == 0 and value >= 10:
        return f"{value:,.0f}"
    return f"{value:.{max(digits, 1) if value < 10 else digits}f}"


def ratio(a, b):
    return a / b if a is not None and b else None


def table(header, rows, geomean_columns):
    """rows: lists of (value or text); geomean_columns: indexes of numeric columns, each with digits."""
    out = ["| " + " | ".join(header) + " |", "|" + "|".join(["---"] + ["---:"] * (len(header) - 1)) + "|"]
    for row in rows:
        out.append("| " + " | ".join(cell if isinstance(cell, str) else fmt(cell[0], cell[1]) for cell in row) + " |")
    means = ["**geometric mean**"] + [""] * (len(header) - 1)
    for column in geomean_columns:
        digits = next((r[column][1] for r in rows if not isinstance(r[column], str)), 0)
        means[column] = "**" + fmt(geomean([r[column][0] for r in rows if not isinstance(r[column], str)]), digits) + "**"
    out.append("| " + " | ".join(means) + " |")
    return "\n".join(out)


def main():
    runs, spread, failures, documents = load(sys.argv[1])
    machine = [line.rstrip("\n").split("=", 1) for line in open(sys.argv[2]) if "=" in line]
    info = {}
    for key, value in machine:
        info.setdefault(key, []).append(value)

    def run(document, library, operation):
        return runs.get((document, library, operation))

    present = lambda libs, operation: [(k, n) for k, n in libs if any(run(d, k, operation) for d in documents)]
    peers = present(PEERS, "parse_destroy")
    writers = present(WRITERS, "serialize")
    tree_peers = [(k, n) for k, n in TREE_PEERS if k in dict(peers)]

    print("### Machine\n")
    print(f"- CPU: {info['cpu'][0]}, {info['cores'][0]} cores, {info['memory'][0]}")
    print(f"- {info['system'][0]}; {info['compiler'][0]}")
    print(f"- load average when the run started: {info['load'][0]} (1, 5, 15 minutes)")
    print("- packages: " + "; ".join(info.get("package", [])))
    print(f"\nCommand (from the repository root after `cmake --build build-perf`):\n\n```\n{info['command'][0]}\n```\n")

    size = lambda d: next((r["MB"] for (doc, _, _), r in runs.items() if doc == d and "MB" in r), None)

    # Parse + destroy against the peers and the floor.
    compared = [k for k in ("libxml2", "tinyxml2") if k in dict(peers)]
    header = ["document", "MB", "libvrkxml"] + [n for _, n in peers] + ["malloc floor"]
    header += [f"ours ÷ {k}" for k in compared] + ["ours ÷ floor"]
    rows = []
    for d in documents:
        ours = mbps(run(d, "vrkxml", "parse_destroy"))
        floor = mbps(run(d, "floor", "malloc_free"))
        row = [d, (size(d), 2), (ours, 0)] + [(mbps(run(d, k, "parse_destroy")), 0) for k, _ in peers] + [(floor, 0)]
        row += [(ratio(ours, mbps(run(d, k, "parse_destroy"))), 2) for k in compared]
        row.append((ratio(ours, floor), 2))
        rows.append(row)
    print("### Parse + destroy, MB/s\n")
    print(table(header, rows, list(range(2, len(header)))))

    print("\n### Where the parse + destroy time goes (ms per MB of input)\n")
    header = ["document", "parse + destroy", "own work (allocator taken out)", "malloc floor",
              "the rest: allocator with our pattern", "own work share"]
    rows = []
    for d in documents:
        total, own, bare = (mbps(run(d, k, o)) for k, o in
                            (("vrkxml", "parse_destroy"), ("vrkxml", "own_work"), ("floor", "malloc_free")))
        if not (total and own and bare):
            continue
        t, w, f = 1000 / total, 1000 / own, 1000 / bare
        rows.append([d, (t, 2), (w, 2), (f, 2), (t - w - f, 2), f"{w / t * 100:.0f} %"])
    print(table(header, rows, [1, 2, 3]))

    print("\n### Serialize (MB of input per second)\n")
    header = ["document", "libvrkxml UTF-8", "libvrkxml UTF-16"] + [n for _, n in writers]
    rows = [[d, (mbps(run(d, "vrkxml", "serialize_utf8")), 0), (mbps(run(d, "vrkxml", "serialize_utf16")), 0)]
            + [(mbps(run(d, k, "serialize")), 0) for k, _ in writers] for d in documents]
    print(table(header, rows, list(range(1, len(header)))))

    print("\n### libvrkxml operations (MB of input per second)\n")
    operations = [("parse_destroy", "parse + destroy"), ("parse", "parse only"), ("destroy", "destroy only"),
                  ("normalize", "normalize"), ("copy", "copy (cloneNode per node)")]
    header = ["document"] + [n for _, n in operations] + ["text nodes merged by normalize"]
    rows = []
    for d in documents:
        merged = run(d, "vrkxml", "normalize")
        rows.append([d] + [(mbps(run(d, "vrkxml", o)), 0) for o, _ in operations]
                    + [f"{merged['merged_per_node'] * 100:.1f} %" if merged else "–"])
    print(table(header, rows, list(range(1, len(operations) + 1))))

    print("\n### Memory: bytes per byte of input, and allocations\n")
    header = ["document", "nodes", "libvrkxml tree", "libvrkxml heap held", "libvrkxml peak in parse",
              "allocations per node"] + [f"{n} heap held" for _, n in tree_peers]
    rows = []
    for d in documents:
        p = run(d, "vrkxml", "parse_destroy") or {}
        counter = lambda name, digits: (p.get(name), digits)
        rows.append([d, f"{p['nodes']:,.0f}" if "nodes" in p else "–", counter("tree_per_input", 1),
                     counter("heap_per_input", 1), counter("peak_per_input", 1), counter("allocs_per_node", 2)]
                    + [((run(d, k, "parse_destroy") or {}).get("heap_per_input"), 1) for k, _ in tree_peers])
    print(table(header, rows, list(range(2, len(header)))))

    noisy = sorted(((cv, "/".join(key)) for key, cv in spread.items() if cv > 0.10), reverse=True)
    if spread:
        print(f"\n### Spread\n\n{len(noisy)} of {len(spread)} cases spread by more than 10 % "
              "(coefficient of variation of the processor time over the repetitions)"
              + (":" if noisy else "."))
        for cv, name in noisy:
            print(f"- {name}: {cv * 100:.0f} %")

    if failures:
        print("\n### Cases that did not run\n")
        for (d, library, operation), message in failures.items():
            print(f"- {d}/{library}/{operation}: {message}")


main()
