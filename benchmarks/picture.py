"""Draws results as a picture: the table operation x payload, each cell coloured by its ratio.

    picture.py RESULTS.json PICTURE.svg

draws what a run of scripts/benchmark left in its build folder (time.json or instructions.json).
"""

import sys
from xml.sax.saxutils import escape

import table
from results import Results

_ROW, _COLUMN, _LABELS, _TOP = 24, 62, 230, 100


def _colour(ratio):
    """Green below 1, red above, pale near 1; full at half and at twice the opponent's cost."""
    strength = min(abs(ratio - 1) / (0.5 if ratio < 1 else 1.0), 1.0)
    full = (46, 139, 87) if ratio <= 1 else (205, 62, 50)
    return "#%02x%02x%02x" % tuple(round(250 + (part - 250) * strength) for part in full)


def _text(x, y, text, size=13, anchor="start", weight="normal", fill="#1a1a1a"):
    return (f'<text x="{x}" y="{y}" font-size="{size}" text-anchor="{anchor}" '
            f'font-weight="{weight}" fill="{fill}">{escape(text)}</text>')


def write(path, results, against):
    cells = {}
    for operation in results.rows():
        for payload in results.columns():
            found = results.ratio(operation, payload, against)
            if found is not None:
                cells[operation, payload] = found
    rows = [row for row in results.rows() if any(cell[0] == row for cell in cells)]
    columns = [column for column in results.columns() if any(cell[1] == column for cell in cells)]
    width = max(_LABELS + _COLUMN * len(columns) + 20, 640)
    bottom = _TOP + _ROW * len(rows)
    legend = [item for item in table.PAYLOADS.items() if item[0] in columns]
    height = bottom + 24 + 18 * len(legend) + 30

    measure = "processor time" if results.kind == "time" else "instructions"
    other = {"opponent": "the schema compiler's classes", "dynamic": "DynamicMessage"}[against]
    lines = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
        f'viewBox="0 0 {width} {height}" font-family="DejaVu Sans, Arial, sans-serif">',
        f'<rect width="{width}" height="{height}" fill="#ffffff"/>',
        _text(16, 28, f"This library beside {other}: {measure}", 17, weight="bold"),
        _text(16, 50, f"Each number is ours / theirs. Below 1 (green) this library needs less; "
              "above 1 (red), more. generic: calls through Message&.", 12, fill="#444444"),
    ]
    if cells:
        mean = table.geometric_mean([ratio for ratio, _ in cells.values()])
        lines.append(_text(16, 67, f"Geometric mean of the {len(cells)} cells: {mean:.2f}. "
                           f"Run-time {results.notes.get('run-time', 'unknown')}, "
                           f"{results.notes.get('compiler', 'unknown compiler')}."
                           + (" ? marks cells whose spread leaves open whether they exceed 1.05."
                              if results.kind == "time" else ""), 12, fill="#444444"))
    for i, column in enumerate(columns):
        lines.append(_text(_LABELS + _COLUMN * i + _COLUMN / 2, _TOP - 8, column, 13, "middle",
                           "bold"))
    for j, row in enumerate(rows):
        y = _TOP + _ROW * j
        lines.append(_text(_LABELS - 10, y + 17, row, 13, "end"))
        for i, column in enumerate(columns):
            if (row, column) not in cells:
                continue
            ratio, spread = cells[row, column]
            x = _LABELS + _COLUMN * i
            colour = _colour(ratio)
            dark = sum(int(colour[k:k + 2], 16) for k in (1, 3, 5)) < 400
            mark = "?" if results.kind == "time" and table.unsure(ratio, spread) else ""
            lines.append(f'<rect x="{x + 1}" y="{y + 1}" width="{_COLUMN - 2}" '
                         f'height="{_ROW - 2}" rx="3" fill="{colour}"/>')
            lines.append(_text(x + _COLUMN / 2, y + 17, f"{ratio:.2f}{mark}", 13, "middle",
                               fill="#ffffff" if dark else "#1a1a1a"))
    for k, (name, text) in enumerate(legend):
        lines.append(_text(40, bottom + 30 + 18 * k, name, 12, "end", "bold"))
        lines.append(_text(50, bottom + 30 + 18 * k, text, 12))
    lines.append("</svg>")
    with open(path, "w") as file:
        file.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    write(sys.argv[2], Results.load(sys.argv[1]), "opponent")
