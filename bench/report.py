"""Prints medians and ratios of a results file of the benchmarks; fails if a benchmark failed or a row is missing."""

import json
import statistics
import sys
from collections import defaultdict

SPEED, WINDOW, MEMORY = "audio_seconds_per_second", "seconds_per_window", "peak_rss_bytes"
ELAPSED, PROCESSOR, FILE = "elapsed_seconds", "processor_seconds", "processor_seconds_per_file"


class Results:
    """The figures of all repetitions, by name and counter."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            document = json.load(file)
        self.context = document["context"]
        self.failures = []
        self.values = defaultdict(list)
        runs = [run for run in document["benchmarks"] if run["run_type"] == "iteration"]
        # They were run in random order; families are numbered as they were registered.
        for run in sorted(runs, key=lambda run: (run["family_index"], run["per_family_instance_index"])):
            # What follows the name proper tells how it was run.
            name = run["run_name"].split("/iterations:")[0].split("/repeats:")[0]
            if run.get("error_occurred"):
                self.failures.append(f"{name}: {run['error_message']}")
            for counter in (SPEED, WINDOW, MEMORY, ELAPSED, PROCESSOR, FILE):
                if counter in run:
                    self.values[name, counter].append(run[counter])

    def median(self, name, counter):
        """The median over the repetitions; a row that is missing is a failure."""
        values = self.values.get((name, counter))
        if not values:
            self.failures.append(f"{name}: no {counter}")
            return float("nan")
        return statistics.median(values)

    def names(self, section, suffix=""):
        """Rows of a section, in the order of the benchmarks, without section and suffix."""
        names = dict.fromkeys(name for name, _ in self.values)
        return [
            name[len(section) + 1 : len(name) - len(suffix)]
            for name in names
            if name.startswith(section + "/") and name.endswith(suffix)
        ]


def print_table(title, columns, rows):
    print(f"\n{title}\n")
    cells = [columns] + rows
    widths = [max(len(row[i]) for row in cells) for i in range(len(columns))]
    for number, row in enumerate(cells):
        padded = [row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])]
        print("| " + " | ".join(padded) + " |")
        if number == 0:
            print("|-" + "-|-".join("-" * width for width in widths) + "-|")


def print_speeds(results):
    rows = []
    for section in ("input", "spectrum", "computer", "analysis", "evaluator", "command"):
        names = results.names(section, "/library")
        if not names:
            results.failures.append(f"{section}: no rows")
        for name in names:
            library = results.median(f"{section}/{name}/library", SPEED)
            bare = results.median(f"{section}/{name}/bare", SPEED)
            rows.append([f"{section}: {name}", f"{library:,.0f}", f"{bare:,.0f}", f"{bare / library:.2f}"])
    columns = ["seconds of audio per second of processor time", "library", "bare loop", "ratio of times"]
    print_table("Speed (larger is faster; a ratio above 1 is what the library costs beyond a bare loop)", columns, rows)


def print_windows(results, section, title, columns):
    rows = []
    for name in results.names(section, "/library"):
        library = 1e9 * results.median(f"{section}/{name}/library", WINDOW)
        bare = 1e9 * results.median(f"{section}/{name}/bare", WINDOW)
        rows.append([name, f"{library:.1f}", f"{bare:.1f}", f"{library / bare:.2f}", f"{library - bare:+.1f}"])
    if not rows:
        results.failures.append(f"{section}: no rows")
    print_table(title, columns + ["ratio", "difference, ns"], rows)


def print_features(results):
    print_windows(results, "feature", "Each feature, nanoseconds per window of 256 samples, 128 bins or one value",
                  ["feature, one window at a time", "library, ns", "bare loop, ns"])
    print_windows(results, "formula", "Formulas beside the same features by name, nanoseconds per window of 256 samples",
                  ["formula, windows at a time", "formula, ns", "name, ns"])


def print_transforms(results):
    sizes = ["128", "256", "512", "1024"]
    kinds = dict.fromkeys(name.rsplit("/", 1)[0] for name in results.names("transform") if name.endswith(tuple(sizes)))
    rows = [
        [kind] + [f"{1e9 * results.median(f'transform/{kind}/{size}', WINDOW):.0f}" for size in sizes] for kind in kinds
    ]
    if not rows:
        results.failures.append("transform: no rows")
    print_table("Transforms and power spectra, nanoseconds per window", ["samples in a window"] + sizes, rows)


def print_batches(results):
    rows = []
    for name in results.names("batch", "/1"):
        one, two = (results.median(f"batch/{name}/{jobs}", ELAPSED) for jobs in (1, 2))
        rows.append([name, f"{one:.3f}", f"{two:.3f}", f"{one / two:.2f}"])
    if not rows:
        results.failures.append("batch: no rows")
    print_table("200 files of 30 s, seconds of real time",
                ["columns, as csv", "--jobs 1", "--jobs 2", "times as fast"], rows)
    many, one = (1e6 * results.median(f"file/{inputs}", FILE) for inputs in ("many", "one"))
    print(f"\nA file costs {many - one:.0f} microseconds of processor time beyond its audio: 5000 files of a second take"
          f" {many:.0f} each, of one file of 5000 seconds each second takes {one:.0f}.")


def print_shares(results):
    print("\nShares\n")

    def per_window(name, section="computer"):
        return 1e9 * results.median(f"{section}/{name}/library", WINDOW)

    for group in ("one window at a time", "8 windows at a time"):
        one = per_window(f"1 feature, {group}")
        three = per_window(f"3 features, {group}")
        separate = per_window(f"3 computers of 1 feature each, {group}")
        others = per_window("Flatness", "feature") + per_window("LowFreqEnergyRatios", "feature")
        print(
            f"One spectrum for three features, {group}: {one:.0f} ns for SPECTRUM, {three:.0f} ns with"
            f" FLATNESS_SPECTRUM and LOWFREQENERGYRATIOS_SPECTRUM; these two alone take {others:.0f} ns of a spectrum"
            f" given. Three computers with a spectrum each: {separate:.0f} ns."
        )
    for rows in ("spectra and 3 values", "4 values"):
        compute = 1 / results.median(f"analysis/{rows}/library", SPEED)
        for output in ("csv", "npy"):
            whole = 1 / results.median(f"command/{rows} to {output}/library", SPEED)
            print(
                f"Printing {rows} to {output}: {(whole - compute) / whole:.0%} of the command's time,"
                f" {(whole - compute) / compute:.1f} times the computation (starting up counted as printing)."
            )
    for name in results.names("memory"):
        print(f"Most memory of the command, {name}: {results.median(f'memory/{name}', MEMORY) / 1e6:.1f} MB")


def print_annotations(results):
    counts = results.names("annotations/list")
    if not counts:
        results.failures.append("annotations: no rows")

    def milliseconds(task, count, counter):
        return 1e3 * results.median(f"annotations/{task}/{count}", counter)

    rows = []
    for count in counts:
        for name, counter in (("elapsed", ELAPSED), ("processor", PROCESSOR)):
            tasks = ("list", "edit", "command list", "command edit", "copy")
            figures = [milliseconds(task, count, counter) for task in tasks]
            ratios = [figure / figures[-1] for figure in figures[1:-1]]
            rows.append([f"{int(count):,}, {name}"] + [f"{figure:.1f}" for figure in figures]
                        + [f"{ratio:.2f}" for ratio in ratios])
    print_table("An hour of audio with annotations, milliseconds; the copy is `cp` of the file, flushed to disk",
                ["annotations, time", "list", "add one", "command lists", "command adds", "copy",
                 "add / copy", "command lists / copy", "command adds / copy"], rows)
    print()
    for few, many in zip(counts, counts[1:]):
        costs = [
            1e6 * (milliseconds(task, many, PROCESSOR) - milliseconds(task, few, PROCESSOR)) / (int(many) - int(few))
            for task in ("list", "edit", "command list", "command edit")
        ]
        print(
            f"Processor time of each annotation between {int(few):,} and {int(many):,}:"
            f" {costs[0]:,.0f} ns to list, {costs[1]:,.0f} ns to add one more;"
            f" {costs[2]:,.0f} ns and {costs[3]:,.0f} ns by the command."
        )


def main():
    results = Results(sys.argv[1])
    for key in ("processor", "num_cpus", "system", "compiler", "kernels", "revision", "date", "load_avg"):
        print(f"{key}: {results.context.get(key, 'unknown')}")
    print_speeds(results)
    print_features(results)
    print_transforms(results)
    print_batches(results)
    print_shares(results)
    print_annotations(results)
    for failure in results.failures:
        print(f"FAILED {failure}", file=sys.stderr)
    return 1 if results.failures else 0


if __name__ == "__main__":
    sys.exit(main())
