#!/usr/bin/python3
"""An independent computation of the features that `murvane-audio features` prints.

    features_reference.py check --csv features.csv --wav call.wav --window-ms 32 --overlap-ms 16 [--suppress-dc]
                                [--tolerance 1e-9]
    features_reference.py --self-test

Origin: written from the mathematics of every feature, on numpy. It shares nothing with the library, and goes about it
another way: a feature here maps the matrix of all windows of a file to the matrix of all results, so that memory from
window to window is a running sum or maximum down a column; the transform is numpy's.

Tolerance: 1e-9, absolute for values up to 1 and relative above. Both sides round every operation to 2^-53, in another
order; a spectrum's bin of power p comes out of a transform with a relative error of about 1e-15/sqrt(p), and products
of five such bins stay far below 1e-9. A real defect (a bin, a band or a sample more or less) is far above it. Times and
numbers of rows must agree too; NaN equals NaN. Samples are taken to be finite.

`check` takes the features to compute from the columns' names. Several --wav are the files of the CSV in its order;
memory does not reach from one file to the next. Exit status: 0 everything agrees, 1 something does not, 2 nothing to
compare with: a missing file or column, an unknown feature, a feature that does not exist on such windows.
"""

import argparse
import csv
import os
import re
import struct
import sys

import numpy as np

sys.dont_write_bytecode = True  # the tree stays as it is

from reference.audio import cut_windows, read_wav
from reference.features import compute, require


def group_columns(header):
    """[(feature's name, number of its values)] in the order of the columns."""
    require(header[:2] == ["file", "time"], "the columns do not begin with file,time")
    groups = []
    for title in header[2:]:
        match = re.fullmatch(r"(.*)\[(\d+)\]", title)
        if match and int(match[2]) > 0:
            require(groups and groups[-1] == (match[1], int(match[2])), f"column {title} is out of place")
            groups[-1] = (match[1], int(match[2]) + 1)
        else:
            groups.append((match[1], 1) if match else (title, 1))
    require(groups, "there is no column of a feature")
    return groups


def expected_rows(arguments, header):
    """[(file, time, values)] as they should be."""
    groups, rows = group_columns(header), []
    for path in arguments.wav:
        samples, rate = read_wav(path)
        windows, times = cut_windows(samples, rate, arguments.window_ms, arguments.overlap_ms, arguments.suppress_dc)
        values = []
        for name, count in groups:
            values.append(compute(name, windows))
            width = values[-1].shape[1]
            require(width == count or not len(windows), f"{name} has {width} values, there are columns for {count}")
        rows += [(path, *row) for row in zip(times, np.hstack(values))]
    return rows


def differences(found, expected):
    """Absolute up to 1, relative above; 0 where both are NaN or the same infinity."""
    same = (found == expected) | (np.isnan(found) & np.isnan(expected))
    with np.errstate(invalid="ignore"):
        apart = np.abs(found - expected) / np.maximum(1.0, np.abs(expected))
    return np.where(same, 0.0, np.where(np.isfinite(apart), apart, np.inf))


def check(arguments):
    with open(arguments.csv, newline="", encoding="utf-8") as file:
        header, *lines = list(csv.reader(file)) or [[]]
    expected = expected_rows(arguments, header)
    complaints, largest = [], 0.0
    if len(lines) != len(expected):
        complaints.append(f"{len(lines)} rows instead of {len(expected)}")
    for number, (line, (path, time, values)) in enumerate(zip(lines, expected), start=2):
        require(len(line) == len(header), f"line {number} has {len(line)} fields, the header {len(header)}")
        if os.path.basename(line[0]) != os.path.basename(path):
            complaints.append(f"line {number}: file {line[0]} instead of {path}")
        found, wanted = np.array([float(text) for text in line[1:]]), np.concatenate([[time], values])
        apart = differences(found, wanted)
        largest = max(largest, float(apart.max()))
        for at in np.flatnonzero(apart > arguments.tolerance):
            complaints.append(f"line {number}: {header[at + 1]} is {line[at + 1]} instead of {wanted[at]!r}")
    for complaint in complaints[:10]:
        print(complaint)
    verdict = f"{len(complaints)} disagreements" if complaints else "all agree"
    print(f"{len(lines)} rows, {len(header) - 2} columns, largest difference {largest:.3g}: {verdict}")
    return 1 if complaints else 0


def parse_arguments(words):
    parser = argparse.ArgumentParser(description="Checks features against an independent computation.")
    parser.add_argument("--self-test", action="store_true", help="run the hand-computed cases")
    command = parser.add_subparsers(dest="command").add_parser("check", help="check a CSV of features")
    command.add_argument("--csv", required=True)
    command.add_argument("--wav", required=True, action="append")
    command.add_argument("--window-ms", type=int, default=32)
    command.add_argument("--overlap-ms", type=int, default=16)
    command.add_argument("--suppress-dc", action="store_true")
    command.add_argument("--tolerance", type=float, default=1e-9)
    arguments = parser.parse_args(words)
    if not arguments.self_test and arguments.command is None:
        parser.error("check or --self-test is needed")
    return arguments


def main(words):
    arguments = parse_arguments(words)
    if arguments.self_test:
        from reference import cases

        return cases.run(main)
    try:
        return check(arguments)
    except (ValueError, OSError, ValueError, struct.error) as error:
        print(error, file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
