"""The features from their mathematics: each maps the matrix of all inputs of a file, one window per row, to the matrix
of all results."""

import math
import re

import numpy as np


def require(condition, message):
    if not condition:
        raise ValueError(message)


def running_mean(rows):
    return np.cumsum(rows, axis=0) / np.arange(1, len(rows) + 1)[:, np.newaxis]


def column(values):
    return np.asarray(values, float)[:, np.newaxis]


def mean(rows):
    return column(rows.mean(axis=1) if rows.shape[1] else np.zeros(len(rows)))


def spectrum(rows):
    n = rows.shape[1]
    hann = 0.5 - 0.5 * np.cos(2.0 * np.pi * np.arange(n) / np.float64(n - 1))
    powers = np.abs(np.fft.rfft(rows * hann, axis=1)[:, : n // 2]) ** 2
    total = powers.sum(axis=1, keepdims=True)
    return np.divide(powers, total, out=np.zeros_like(powers), where=total != 0.0)


def reduced_spectrum(bands):
    def feature(rows):
        full = spectrum(rows)
        length = full.shape[1]
        if length < bands:
            return full
        group = length // bands
        # The last, unfinished group lands on the last band: on its own bins where the bands do not share out the
        # spectrum evenly, and on the bin that happens to lie at its place where they do.
        stored = (length - 1) // group
        result = full[:, : group * bands].reshape(len(full), bands, group).sum(axis=2)
        if stored < bands:
            result[:, -1] = full[:, bands - 1]
        result[:, -1] += full[:, stored * group :].sum(axis=1)
        return result

    return feature


def flatness(rows):
    length = rows.shape[1]
    if length == 0:
        return np.ones((len(rows), 1))
    result = np.ones(len(rows))
    # Zeros stay out of the product. Its blocks of 21 are part of the definition: one that underflows makes it 0.
    factors = np.where(rows == 0.0, 1.0, rows)
    for start in range(0, length, 21):
        result *= np.prod(factors[:, start : start + 21], axis=1) ** (1.0 / length)
    return column(np.where(result == 1.0, 1.0, result * length))


def weighted_area(rate, low_hz, high_hz):
    def feature(rows):
        length = rows.shape[1]
        first = max(0, int(low_hz / rate * 2.0 * length - 0.5))
        last = int(high_hz / rate * 2.0 * length + 0.5)
        require(first < last < length, "the band of the weighted area does not fit the spectrum")
        bins = np.arange(first, last + 1)
        return column((rate // (2 * length)) * (rows[:, bins] @ bins.astype(float)))

    return feature


def bins_below(frequency_hz, length):
    return int(frequency_hz / (4000.0 / length)) if length else 0


def harmonic_product(bin_of):
    """Products over the harmonics 2 to 5; `bin_of(i, h, length)` is where the h-th of candidate i is looked up."""

    def feature(rows):
        length = rows.shape[1]
        if length == 0:
            return np.empty((len(rows), 0))
        largest = (length - 1) // 5
        candidates = np.arange(largest + 1)
        result = (largest + 1.0) * rows[:, candidates]
        for harmonic in range(2, 6):
            result = result * (largest + 1.0) * rows[:, bin_of(candidates, harmonic, length)]
        result[:, : max(1, bins_below(100.0, length))] = 0.0
        return result

    return feature


def plain_bin(i, harmonic, _):
    return i * harmonic


def robust_bin(i, harmonic, length):
    return np.where((i + 1) * harmonic < length, (i + 1) * harmonic, i * harmonic)


def old_harmonic_product(rows):
    length = rows.shape[1]
    result = np.zeros((len(rows), length))
    candidates = np.arange(length // 4)
    result[:, candidates] = np.prod([length * rows[:, (candidates + 1) * h - 1] for h in (1, 2, 3, 4)], axis=0)
    return result


def anti_harmonic_product(rows):
    largest = (rows.shape[1] - 1) // 5
    require(largest >= 2, "the spectrum is too short for the anti-harmonic product")
    candidates = np.arange(2, largest + 1)
    scale = (largest + 1.0) ** 2
    products = np.prod([scale * rows[:, h * candidates - candidates // 2] for h in range(1, 6)], axis=0)
    return np.where(rows.max(axis=1, keepdims=True) == 0.0, 1.0, products)


def erase_lobe(heights, top, step):
    """Erases from beside the top to where the values rise; one value that rises before a fall is still erased."""
    previous, at = top[1], top[0] + step
    while 0 <= at < len(heights):
        beyond = heights[at + step] if 0 <= at + step < len(heights) else math.inf
        if previous <= heights[at] and previous <= beyond:
            return
        previous, heights[at] = heights[at], 0.0
        if step < 0 and at == 1:
            heights[0] = 0.0
            return
        at += step


def highest_peaks(rows, count):
    """Heights and positions of the highest peaks, a column each."""
    require(rows.shape[1] > 0, "no peak of nothing")
    positions = np.zeros((len(rows), count), dtype=int)
    peak_heights = np.zeros((len(rows), count))
    for row, heights in enumerate(np.abs(rows)):
        for peak in range(count):
            position = int(np.argmax(heights))
            top = (position, heights[position])
            positions[row, peak], peak_heights[row, peak] = top
            heights[position] = 0.0
            erase_lobe(heights, top, +1)
            erase_lobe(heights, top, -1)
    return peak_heights, positions


def peaks(rows):
    heights, positions = highest_peaks(rows, 3)
    return np.hstack([heights, np.log(np.maximum(positions, 1e-6))])


def ponderated_peaks(rows):
    average = mean(rows)
    return highest_peaks(rows, 3)[0] * np.where(average == 0.0, 0.0, 1.0 / average)


def non_log_peaks(rows):
    return highest_peaks(rows, 5)[1].astype(float)


def spectral_range(centre_hz, width_hz):
    def feature(rows):
        length = rows.shape[1]
        require(length > 0 and centre_hz > 0, "a spectral range needs a spectrum and a centre")
        width_of_bin = 4000.0 / length
        centre = int(centre_hz / width_of_bin + 0.5)
        reach = math.ceil(width_hz / width_of_bin)
        require(reach < centre and centre + reach < length, "the spectral range does not fit the spectrum")
        position = (centre_hz - centre * width_of_bin) / width_of_bin
        return np.hstack([rows[:, centre - reach : centre + reach + 1], np.full((len(rows), 1), position)])

    return feature


def max_spectral_ranges(*centres_hz):
    def feature(rows):
        ranges = np.stack([spectral_range(centre, 20)(rows) for centre in centres_hz])
        best = np.argmax(ranges[:, :, :-1].max(axis=2), axis=0)  # the first of equals
        return ranges[best, np.arange(len(rows))]

    return feature


def share_of_bins(*limits_hz):
    """The sums between one limit and the next, from 0 on."""

    def feature(rows):
        limits = [0] + [bins_below(limit, rows.shape[1]) for limit in limits_hz]
        return np.stack([rows[:, a:b].sum(axis=1) for a, b in zip(limits, limits[1:])], axis=1)

    return feature


def zero_crossing_rate(*_):
    def feature(rows):
        if rows.shape[1] == 0:
            return np.zeros((len(rows), 1))
        # What precedes a window is the last sample of the window before, wherever that lay in the signal; nothing
        # precedes the first, and a zero there counts as a crossing: NaN is not zero and has no sign.
        before = np.concatenate([[np.nan], rows[:-1, -1]])[:, np.newaxis]
        previous = np.hstack([before[: len(rows)], rows[:, :-1]])
        crossing = (previous * rows < 0.0) | ((rows == 0.0) & (previous != 0.0))
        return column(crossing.sum(axis=1) / rows.shape[1])

    return feature


def peak_amplitude(rows):
    return np.abs(rows).max(axis=1, keepdims=True, initial=0.0)


def clipping_rate(thousandths):
    return lambda rows: column((np.abs(rows) >= thousandths / 1000).mean(axis=1))


def energy_histogram(top_thousandths, bins):
    def feature(rows):
        places = np.minimum(np.floor(rows**2 * bins / (top_thousandths / 1000)), bins - 1).astype(int)
        return np.stack([(places == place).sum(axis=1) for place in range(bins)], axis=1).astype(float)

    return feature


def mean_energy_above(thousandths):
    def feature(rows):
        energies = rows**2
        accepted = energies > thousandths / 1000
        sums = np.cumsum((energies * accepted).sum(axis=1))
        counts = np.cumsum(accepted.sum(axis=1))
        return column(np.where(counts > 0, sums / np.maximum(counts, 1), 0.0))

    return feature


def mean_of_maxima(samples, floor_thousandths):
    """A sample closes the open segment every samples // 2 + 1 samples, and opens the next: the first is one shorter."""

    def feature(rows):
        floor = floor_thousandths / 1000
        length = samples // 2 + 1
        magnitudes = np.abs(rows).ravel()
        accepted, closed, results = [], 0, []
        for row in range(len(rows)):
            seen = (row + 1) * rows.shape[1]
            # Segment i ends before sample length * (i + 1) - 1 of the stream, whose arrival closes it.
            while length * (closed + 1) <= seen:
                end = length * (closed + 1) - 1
                top = magnitudes[max(0, end - length) : end].max()
                closed += 1
                above = np.mean(accepted) - floor if accepted else None
                if above is None or top - floor > 2 * above:
                    accepted = [top]
                elif not 0.5 * above > top - floor:
                    accepted.append(top)
            open_segment = magnitudes[max(0, length * closed - 1) : seen]
            results.append([np.mean(accepted), min(accepted)] if accepted else [open_segment.max()] * 2)
        return np.array(results)

    return feature


def silence_ratio(divisor):
    def feature(rows):
        return column((np.abs(rows) < peak_amplitude(rows) / divisor).sum(axis=1) / np.float64(rows.shape[1]))

    return feature


def amplitude_distribution(temporal):
    def feature(rows):
        peak = peak_amplitude(rows)
        if temporal:
            peak = np.maximum.accumulate(peak, axis=0)
        above = [(np.abs(rows) > peak / divisor).sum(axis=1) for divisor in (5.0, 10.0, 50.0)]
        counts = np.diff([np.zeros(len(rows), int), *above, np.full(len(rows), rows.shape[1])], axis=0)
        return counts.T / np.float64(rows.shape[1])

    return feature


def neighbourhood_of_max(rows):
    last = rows.shape[1] - 1
    require(last >= 3, "the neighbourhood of the maximum needs four values")
    start = np.clip(np.argmax(rows, axis=1) - 1, 0, last - 2)
    return np.take_along_axis(rows, start[:, np.newaxis] + np.arange(3), axis=1)


def delta_to_sliding_mean(rows):
    require(rows.shape[1] == 1, "the delta to the sliding mean takes one value per window")
    sums = np.concatenate([[0.0], np.cumsum(rows[:, 0])])
    ends = np.arange(1, len(rows) + 1)
    starts = np.maximum(0, ends - 5)
    return rows - column((sums[ends] - sums[starts]) / (ends - starts))


def value_range(start, length):
    def feature(rows):
        require(length > 0 and start + length <= rows.shape[1], "the range is empty or leaves the vector")
        return rows[:, start : start + length]

    return feature


def sliding_window(count):
    """The newest value stands last; where there is none yet, NaN, as in the table."""

    def feature(rows):
        require(rows.shape[1] == 1 and count > 0, "the sliding window takes one value per window, and keeps some")
        padded = np.concatenate([np.full(count - 1, np.nan), rows[:, 0]])
        return np.lib.stride_tricks.sliding_window_view(padded, count)

    return feature


# Everything known of a name: the numbers of parameters it takes, and what makes the feature of them.
FEATURES = {
    "AMPLITUDE": ((0,), lambda: lambda rows: rows),
    "MEAN": ((0,), lambda: mean),
    "TEMPORALMEAN": ((0,), lambda: running_mean),
    "ZEROCROSSINGRATE": ((0, 1), zero_crossing_rate),
    "SPECTRUM": ((0,), lambda: spectrum),
    "SPECTRUM100HZ": ((0,), lambda: reduced_spectrum(40)),
    "SPECTRUM200HZ": ((0,), lambda: reduced_spectrum(20)),
    "SPECTRUM500HZ": ((0,), lambda: reduced_spectrum(8)),
    "FLATNESS": ((0,), lambda: flatness),
    "SPECTRALRANGE": ((2,), spectral_range),
    "MAXSPECTRALRANGES": (range(1, 1000), max_spectral_ranges),
    "OLDHARMONICPRODUCT": ((0,), lambda: old_harmonic_product),
    "HARMONICPRODUCT": ((0,), lambda: harmonic_product(plain_bin)),
    "ROBUSTHARMONICPRODUCT": ((0,), lambda: harmonic_product(robust_bin)),
    "ANTIHARMONICPRODUCT": ((0,), lambda: anti_harmonic_product),
    "SPECTRALWEIGHTEDAREA": ((0,), lambda: weighted_area(8000, 500, 1500)),
    "SILENCERATIO": ((0,), lambda: silence_ratio(50)),
    "NOISERATIO": ((0,), lambda: silence_ratio(10)),
    "AMPLITUDEDISTRIBUTION": ((0,), lambda: amplitude_distribution(False)),
    "TEMPORALAMPLITUDEDISTRIBUTION": ((0,), lambda: amplitude_distribution(True)),
    "PEAKS": ((0,), lambda: peaks),
    "NEIGHBOURHOODOFMAX": ((0,), lambda: neighbourhood_of_max),
    "LOWFREQENERGYRATIO": ((0,), lambda: share_of_bins(1000.0)),
    "LOWFREQENERGYRATIOS": ((0,), lambda: share_of_bins(100.0, 1000.0)),
    "DELTATOSLIDINGMEAN": ((0,), lambda: delta_to_sliding_mean),
    "RANGE": ((2,), value_range),
    "SLIDINGWINDOW": ((1,), sliding_window),
    # Without a factory name; thresholds and floors in thousandths of full scale.
    "CLIPPINGRATE": ((1,), clipping_rate),
    "ENERGYHISTOGRAM": ((2,), energy_histogram),
    "MEANENERGYABOVETHRESH": ((1,), mean_energy_above),
    "MEANMAX": ((2,), mean_of_maxima),
    "NONLOGPEAKS": ((0,), lambda: non_log_peaks),
    "PONDERATEDPEAKS": ((0,), lambda: ponderated_peaks),
}


def element_feature(element):
    match = re.fullmatch(r"\s*([^_(),]+?)\s*(?:\(([^()]*)\))?", element)
    require(match and match[1].upper() in FEATURES, f"unknown feature {element}")
    counts, make = FEATURES[match[1].upper()]
    texts = match[2].split(",") if (match[2] or "").strip() else []
    numbers = [re.match(r"\s*(\d+)", text) for text in texts]
    require(all(numbers) and len(texts) in counts, f"wrong parameters in {element}")
    return make(*(int(number[1]) for number in numbers))


def compute(name, windows):
    """The feature of a name such as FLATNESS_SPECTRUM: its last element sees the windows, each other one its right."""
    rows = windows
    with np.errstate(all="ignore"):
        for element in reversed(re.split(r"_(?![^()]*\))", name)):
            rows = element_feature(element)(rows)
    return rows
