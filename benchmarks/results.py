"""What a run of the benchmarks measured, and how it is kept: one JSON file."""

import json
import statistics


class Results:
    """`kind` is "time" (nanoseconds) or "instructions". `values` holds, for each
    (side, operation, payload), one value for each repetition; those with the same index were taken
    next to each other. `notes` says what the values depend on besides the sources."""

    def __init__(self, kind, values, notes):
        self.kind = kind
        self.values = values
        self.notes = notes

    def save(self, path):
        cells = [[*cell, values] for cell, values in self.values.items()]
        with open(path, "w") as file:
            json.dump({"kind": self.kind, "notes": self.notes, "cells": cells}, file, indent=1)

    def rows(self):
        return list(dict.fromkeys(operation for _, operation, _ in self.values))

    def columns(self):
        return sorted({payload for _, _, payload in self.values}, key=lambda p: (p == "-", p))

    def median(self, side, operation, payload):
        values = self.values.get((side, operation, payload))
        return None if values is None else statistics.median(values)

    def ratio(self, operation, payload, against):
        """(ratio of the medians, spread) of our side and another, or None. The spread is half the
        distance between the quartiles of the repetitions' own ratios, relative to the ratio."""
        ours = self.values.get(("ours", operation, payload))
        theirs = self.values.get((against, operation, payload))
        if ours is None or theirs is None or 0 in (statistics.median(ours), min(theirs)):
            return None
        ratio = statistics.median(ours) / statistics.median(theirs)
        if len(ours) < 2:
            return ratio, 0.0
        quartiles = statistics.quantiles([a / b for a, b in zip(ours, theirs)], n=4)
        return ratio, (quartiles[2] - quartiles[0]) / 2 / ratio
