"""Prints what several runs measured."""

import statistics


def print_medians(runs, places):
    """A line for each name, with the median, the least and the most of its values in `runs`."""
    for name in runs[0]:
        values = [run[name] for run in runs]
        print(
            f"{name:43} {statistics.median(values):10.{places}f}"
            f"   ({min(values):.{places}f} to {max(values):.{places}f})"
        )
