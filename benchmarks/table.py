"""Prints results as one table: operation x payload, ours/opponent."""

import math

# A cell in time may exceed the opponent by as much; a spread beyond it tells nothing.
TOLERANCE = 0.05

PAYLOADS = {
    "A": "a robot of 6 cameras, 200 sample points each",
    "B": "the same with a 640 × 480 image for each camera",
    "C": "a base calibration",
    "D": "five required doubles",
    "E": "a pan-tilt-zoom system with 64 zoom samples",
    "F": "a focus set: 50 transfer functions of 256 floats, unpacked",
    "Fp": "the same, packed on the wire",
    "G": "A with the fields of every message out of order",
    "H": "a robot rich in unknown fields",
    "I": "one image record",
    "-": "once in a process, no payload",
}


def geometric_mean(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios))


def unsure(ratio, spread):
    """Whether the spread leaves open on which side of the tolerance a ratio lies."""
    limit = 1 + TOLERANCE
    return spread > TOLERANCE and ratio * (1 - spread) <= limit <= ratio * (1 + spread)


def _absolute(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.1f}"


def _print_grid(results, cell_text):
    columns = results.columns()
    rows = [(operation, [cell_text(operation, payload) for payload in columns])
            for operation in results.rows()]
    rows = [row for row in rows if any(row[1])]
    used = [i for i in range(len(columns)) if any(texts[i] for _, texts in rows)]
    widths = {i: max([len(columns[i])] + [len(texts[i]) for _, texts in rows]) for i in used}
    first = max(len(operation) for operation, _ in rows)
    print(" " * first, *(columns[i].rjust(widths[i]) for i in used), sep="  ")
    for operation, texts in rows:
        print(operation.ljust(first), *(texts[i].rjust(widths[i]) for i in used), sep="  ")


def print_absolute(results, side):
    unit = "nanoseconds" if results.kind == "time" else "instructions"
    print(f"{unit} for one run, {side}")
    _print_grid(results, lambda operation, payload:
                "" if (side, operation, payload) not in results.values
                else _absolute(results.median(side, operation, payload)))


def print_ratios(results, against):
    ratios = {}
    noisy = 0

    def cell_text(operation, payload):
        nonlocal noisy
        found = results.ratio(operation, payload, against)
        if found is None:
            return ""
        ratio, spread = ratios[operation, payload] = found
        if results.kind != "time":
            return f"{ratio:.2f}"
        noisy += unsure(ratio, spread)
        return f"{ratio:.2f}±{ratio * spread:.2f}{'?' if unsure(ratio, spread) else ' '}"

    what = ("processor time, ratio of medians ± half the distance between the quartiles"
            if results.kind == "time" else "instructions")
    print(f"ours/{against}: {what}")
    _print_grid(results, cell_text)
    if not ratios:
        return
    values = [ratio for ratio, _ in ratios.values()]
    print(f"{len(values)} cells; geometric mean {geometric_mean(values):.3f}; "
          f"{sum(value > 1 for value in values)} above 1.00, "
          f"{sum(value > 1 + TOLERANCE for value in values)} above {1 + TOLERANCE:.2f}")
    if noisy:
        print(f"The machine was too noisy to tell of {noisy} cells, marked '?', whether they are "
              f"above {1 + TOLERANCE:.2f} (load average {results.notes.get('load', 'unknown')}): "
              "run again when it has less to do, or count instructions.")


def print_results(results, against):
    sides = {cell[0] for cell in results.values}
    others = [side for side in ("opponent", "dynamic") if side in sides]
    if against not in sides:
        print(f"There is no side '{against}' here.")
        print_absolute(results, "ours")
    else:
        print_ratios(results, against)
    for other in others:
        if other == against:
            continue
        values = [found[0] for operation in results.rows() for payload in results.columns()
                  if (found := results.ratio(operation, payload, other)) is not None]
        print(f"against {other}: {len(values)} cells, geometric mean "
              f"{geometric_mean(values):.3f}, largest {max(values):.2f}")
    limit = results.ratio("parse fresh", "I", "limit")
    if limit is not None:
        print(f"parsing an image record: {limit[0]:.2f} of a memcpy of its image and the "
              "allocation for it")
    for name in results.columns():
        print(f"{name:<2} {PAYLOADS[name]}")
