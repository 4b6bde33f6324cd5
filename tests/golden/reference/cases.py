"""Cases computed by hand, and the check held against files that agree and files that do not."""

import contextlib
import csv
import io
import math
import os
import struct
import tempfile
import unittest

import numpy as np

from reference.audio import cut_windows, read_wav
from reference.features import FEATURES, compute


def one(name, *values):
    """The feature of a single window."""
    return list(compute(name, np.array([values], float))[0])


def wav_bytes(data, code=1, bits=16, channels=1, rate=8000):
    form = struct.pack("<HHIIHH", code, channels, rate, rate * channels * bits // 8, channels * bits // 8, bits)
    odd = b"JUNK" + struct.pack("<I", 3) + b"abc\0"  # a chunk to step over, padded
    body = b"WAVE" + odd + b"fmt " + struct.pack("<I", 16) + form + b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", len(body)) + body


class Case(unittest.TestCase):
    def near(self, found, wanted, places=12):
        self.assertEqual(len(found), len(wanted))
        for a, b in zip(found, wanted):
            self.assertAlmostEqual(a, b, places)


class Windows(Case):
    def test_hop_comes_from_counts_and_time_from_milliseconds(self):
        windows, times = cut_windows(np.arange(300.0), 8000, 16, 6)
        self.assertEqual([list(row[:1]) for row in windows], [[0], [80], [160]])
        self.assertEqual(windows.shape[1], 128)
        self.near(times, [0.016, 0.026, 0.036])

    def test_counts_are_truncated(self):
        windows, times = cut_windows(np.arange(352.0), 11025, 16, 0)
        self.assertEqual(windows.shape, (2, 176))
        self.near(times, [0.016, 0.032])

    def test_no_milliseconds_are_one_sample(self):
        self.assertEqual(cut_windows(np.arange(5.0), 8000, 0, 0)[0].shape, (5, 1))

    def test_too_few_samples_give_no_window(self):
        self.assertEqual(len(cut_windows(np.zeros(127), 8000, 16, 0)[0]), 0)

    def test_overlap_must_be_shorter(self):
        self.assertRaises(ValueError, cut_windows, np.zeros(500), 8000, 16, 16)

    def test_dc_offset_is_the_running_mean_of_the_means(self):
        windows, _ = cut_windows(np.array([1.0] * 8 + [4.0] * 8 + [1.0] * 8), 8000, 1, 0, suppress_dc=True)
        self.near(windows[:, 0], [0.0, 1.5, -1.0])


class Spectra(Case):
    def test_sums_to_one_over_half_the_window(self):
        values = one("SPECTRUM", *np.sin(np.arange(256.0)))
        self.assertEqual(len(values), 128)
        self.assertAlmostEqual(sum(values), 1.0, 14)

    def test_constant_leaks_into_the_first_two_bins(self):
        values = one("spectrum", *[0.25] * 256)
        self.near(values[:2], [0.798122, 0.201876], 6)

    def test_silence_is_all_zero(self):
        self.assertEqual(one("SPECTRUM", *[0.0] * 8), [0.0] * 4)

    def test_four_samples_by_hand(self):
        # Weights 0, 3/4, 3/4, 0 on (., 4, 8, .): 3 and 6; terms 9 and -6 - 3i; powers 81 and 45.
        self.near(one("SPECTRUM", 5, 4, 8, 5), [81 / 126, 45 / 126])

    def test_even_bands_keep_a_stray_bin_in_the_last(self):
        window = np.random.default_rng(1).normal(size=256)
        full, bands = one("SPECTRUM", *window), one("SPECTRUM500HZ", *window)
        self.near(bands, [sum(full[i : i + 16]) for i in range(0, 112, 16)] + [sum(full[112:]) + full[7]])

    def test_uneven_bands_lose_bins_before_the_last_group(self):
        window = np.random.default_rng(2).normal(size=256)
        full = one("SPECTRUM", *window)
        for name, count, group in (("SPECTRUM100HZ", 40, 3), ("SPECTRUM200HZ", 20, 6)):
            bands = one(name, *window)
            self.near(bands[:-1], [sum(full[i * group : (i + 1) * group]) for i in range(count - 1)])
            tail = full[(127 // group) * group :]
            self.assertAlmostEqual(bands[-1], sum(full[(count - 1) * group : count * group]) + sum(tail), 12)
        self.near(one("SPECTRUM100HZ", *window)[-1:], [sum(full[117:120]) + sum(full[126:])])

    def test_fewer_bins_than_bands_stay_unreduced(self):
        window = np.random.default_rng(3).normal(size=64)
        self.near(one("SPECTRUM100HZ", *window), one("SPECTRUM", *window))

    def test_as_many_bins_as_bands_double_the_last(self):
        window = np.random.default_rng(4).normal(size=16)
        full = one("SPECTRUM", *window)
        self.near(one("SPECTRUM500HZ", *window), full[:7] + [2 * full[7]])


class SpectralFeatures(Case):
    spectrum = list(np.random.default_rng(5).uniform(0.001, 0.02, 128))

    def test_flatness(self):
        self.near(one("FLATNESS", *[1 / 128] * 128), [1.0])
        self.assertEqual(one("FLATNESS", *[0.0] * 128), [1.0])
        self.assertEqual(one("FLATNESS", *[1.0] + [0.0] * 127), [1.0])
        self.near(one("FLATNESS", 0.5, 0.0, 0.5, 0.0), [4 * 0.25**0.25])

    def test_weighted_area(self):
        wanted = 31 * sum(k * self.spectrum[k] for k in range(15, 49))
        self.near(one("SPECTRALWEIGHTEDAREA", *self.spectrum), [wanted])
        self.assertRaises(ValueError, one, "SPECTRALWEIGHTEDAREA", 1.0)

    def test_harmonic_products(self):
        s = self.spectrum
        plain = [0.0] * 3 + [26**5 * s[i] * s[2 * i] * s[3 * i] * s[4 * i] * s[5 * i] for i in range(3, 26)]
        self.near(one("HARMONICPRODUCT", *s), plain)
        robust = one("ROBUSTHARMONICPRODUCT", *s)
        self.assertAlmostEqual(robust[25], 26**5 * s[25] * s[52] * s[78] * s[104] * s[125])
        self.assertAlmostEqual(robust[3], 26**5 * s[3] * s[8] * s[12] * s[16] * s[20])
        old = one("OLDHARMONICPRODUCT", *s)
        self.assertAlmostEqual(old[0], 128**4 * s[0] * s[1] * s[2] * s[3])
        self.assertAlmostEqual(old[31], 128**4 * s[31] * s[63] * s[95] * s[127])
        self.assertEqual(old[32:], [0.0] * 96)

    def test_anti_harmonic_product(self):
        s = self.spectrum
        values = one("ANTIHARMONICPRODUCT", *s)
        self.assertEqual(len(values), 24)
        self.assertAlmostEqual(values[0], 26**10 * s[1] * s[3] * s[5] * s[7] * s[9], 5)
        self.assertAlmostEqual(values[-1], 26**10 * s[13] * s[38] * s[63] * s[88] * s[113], 5)
        self.assertEqual(one("ANTIHARMONICPRODUCT", *[0.0] * 128), [1.0] * 24)
        self.assertRaises(ValueError, one, "ANTIHARMONICPRODUCT", *[0.1] * 10)

    def test_spectral_ranges(self):
        wide = [float(i) for i in range(256)]
        self.near(one("SPECTRALRANGE(440,20)", *wide), [26, 27, 28, 29, 30, 0.16])
        self.near(one("SPECTRALRANGE( 440x , 20 )", *wide), [26, 27, 28, 29, 30, 0.16])
        self.near(one("MAXSPECTRALRANGES(350,440)", *wide), [26, 27, 28, 29, 30, 0.16])
        self.near(one("MAXSPECTRALRANGES(350,440)", *[1.0] * 256)[-1:], [0.4])
        for name in ("SPECTRALRANGE(0,20)", "SPECTRALRANGE(440,440)", "SPECTRALRANGE(3990,40)"):
            self.assertRaises(ValueError, one, name, *wide)

    def test_low_frequency_ratios(self):
        s = self.spectrum
        self.near(one("LOWFREQENERGYRATIO", *s), [sum(s[:32])])
        self.near(one("LOWFREQENERGYRATIOS", *s), [sum(s[:3]), sum(s[3:32])])
        self.near(one("LOWFREQENERGYRATIOS", *s[:16]), [0.0, sum(s[:4])])
        self.assertEqual(one("LOWFREQENERGYRATIOS"), [0.0, 0.0])

    def test_peaks(self):
        low = math.log(1e-6)
        self.near(one("PEAKS", 0, 1, 5, 1, 0, 0, 3, 0), [5, 3, 0, math.log(2), math.log(6), low])
        self.near(one("PEAKS", 0, 0, -2, 0, 0), [2, 0, 0, math.log(2), low, low])
        # 3 rises to 4, which does not hold the walk up as 1 follows; 2 above 1, with 6 after it, does.
        self.near(one("PEAKS", 0, 0, 9, 3, 4, 1, 2, 6), [9, 6, 0, math.log(2), math.log(7), low])
        # The left walk that erases the second element takes the first, however high.
        self.near(one("PEAKS", 8, 3, 9, 0, 0, 0), [9, 0, 0, math.log(2), low, low])
        self.near(one("PEAKS", 8, 9, 0, 0), [9, 0, 0, math.log(1), low, low])

    def test_neighbourhood_of_the_maximum(self):
        self.assertEqual(one("NEIGHBOURHOODOFMAX", 1, 5, 2, 0), [1, 5, 2])
        self.assertEqual(one("NEIGHBOURHOODOFMAX", 5, 1, 2, 0), [5, 1, 2])
        self.assertEqual(one("NEIGHBOURHOODOFMAX", 0, 1, 2, 5), [1, 2, 5])
        self.assertEqual(one("NEIGHBOURHOODOFMAX", 0, 7, 2, 7), [0, 7, 2])
        self.assertRaises(ValueError, one, "NEIGHBOURHOODOFMAX", 1, 2, 3)


class TemporalFeatures(Case):
    def test_zero_crossing_rate(self):
        self.near(one("ZEROCROSSINGRATE", 0, 0, 0), [1 / 3])
        self.near(one("ZEROCROSSINGRATE(8000)", 1, 0, -1, 1), [2 / 4])
        self.near(one("ZEROCROSSINGRATE", 1, 0, 1), [1 / 3])
        two = compute("ZEROCROSSINGRATE", np.array([[1, 0.5], [-0.5, -1], [0, -1], [0, 1]]))
        self.near(two[:, 0], [0.0, 0.5, 0.5, 0.5])

    def test_silence_and_noise_ratio(self):
        self.assertEqual(one("SILENCERATIO", 1.0, 0.01, -0.019, 0.02), [0.5])
        self.assertEqual(one("NOISERATIO", 1.0, 0.01, -0.099, 0.1), [0.5])
        self.assertEqual(one("SILENCERATIO", 0, 0, 0), [0.0])
        self.assertTrue(math.isnan(one("SILENCERATIO")[0]))

    def test_amplitude_distributions(self):
        self.assertEqual(one("AMPLITUDEDISTRIBUTION", 1.0, 0.15, 0.05, 0.0), [0.25] * 4)
        self.assertEqual(one("AMPLITUDEDISTRIBUTION", 0.0, 0.0), [0.0, 0.0, 0.0, 1.0])
        windows = np.array([[1.0, 0.0], [0.15, -0.05]])
        self.assertEqual(compute("AMPLITUDEDISTRIBUTION", windows)[1].tolist(), [1.0, 0.0, 0.0, 0.0])
        self.assertEqual(compute("TEMPORALAMPLITUDEDISTRIBUTION", windows)[1].tolist(), [0.0, 0.5, 0.5, 0.0])

    def test_means(self):
        windows = np.array([[1.0, 3.0], [3.0, 5.0], [2.0, 10.0]])
        self.near(compute("MEAN", windows)[:, 0], [2.0, 4.0, 6.0])
        self.near(compute("TemporalMean_Mean_Amplitude", windows)[:, 0], [2.0, 3.0, 4.0])
        self.near(compute("TEMPORALMEAN", windows)[2], [2.0, 6.0])
        self.assertEqual(one("MEAN"), [0.0])

    def test_delta_to_the_mean_of_the_last_five(self):
        windows = np.array([[1.0], [2.0], [6.0], [3.0], [8.0], [11.0], [5.0]])
        self.near(compute("DELTATOSLIDINGMEAN", windows)[:, 0], [0.0, 0.5, 3.0, 0.0, 4.0, 5.0, -1.6])
        self.assertRaises(ValueError, one, "DELTATOSLIDINGMEAN", 1, 2)

    def test_a_range_is_a_slice(self):
        window = np.array([[5.0, 1.0, 4.0, 2.0], [0.0, 7.0, 8.0, 9.0]])
        self.near(compute("RANGE(1,2)", window)[0], [1.0, 4.0])
        self.near(compute("RANGE(3,1)", window)[:, 0], [2.0, 9.0])
        for name in ("RANGE(3,2)", "RANGE(4,1)", "RANGE(0,0)"):
            self.assertRaises(ValueError, compute, name, window)

    def test_a_sliding_window_grows_from_its_end(self):
        rows = compute("SLIDINGWINDOW(3)", np.array([[1.0], [2.0], [6.0], [3.0]]))
        self.assertTrue(np.isnan(rows[0, :2]).all() and np.isnan(rows[1, 0]))
        self.near(rows[:, 2], [1.0, 2.0, 6.0, 3.0])
        self.near(rows[3], [2.0, 6.0, 3.0])
        self.assertRaises(ValueError, one, "SLIDINGWINDOW(3)", 1, 2)

    def test_names_compose_from_right_to_left(self):
        window = np.random.default_rng(6).normal(size=(9, 256))
        spectrum = compute("SPECTRUM", window)
        flatness = compute("FLATNESS", spectrum)
        delta = compute("DELTATOSLIDINGMEAN", flatness)
        self.assertTrue((compute("DELTATOSLIDINGMEAN_FLATNESS_SPECTRUM", window) == delta).all())
        for name in ("NONSENSE", "", "MEAN__MEAN", "MEAN(1)", "SPECTRALRANGE(440)", "SPECTRALRANGE(a,b)", "MEAN_"):
            self.assertRaises(ValueError, compute, name, window)


class Files(Case):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.wav, self.csv = os.path.join(folder.name, "call.wav"), os.path.join(folder.name, "features.csv")

    def write_wav(self, data, **form):
        with open(self.wav, "wb") as file:
            file.write(wav_bytes(data, **form))

    def test_encodings_have_full_scale_one(self):
        for data, form, wanted in (
            (struct.pack("<3h", -32768, 16384, 1), {}, [-1.0, 0.5, 2**-15]),
            (bytes([0, 128, 192]), {"bits": 8}, [-1.0, 0.0, 0.5]),
            (bytes([0, 0, 128, 0, 0, 64]), {"bits": 24}, [-1.0, 0.5]),
            (struct.pack("<2i", -(2**31), 2**30), {"bits": 32}, [-1.0, 0.5]),
            (struct.pack("<2f", -1.5, 0.25), {"code": 3, "bits": 32}, [-1.5, 0.25]),
            (struct.pack("<2d", -1.5, 0.25), {"code": 3, "bits": 64}, [-1.5, 0.25]),
            (bytes([0x00, 0x80, 0xFF, 0x7F]), {"code": 7, "bits": 8}, [-32124 / 32768, 32124 / 32768, 0, 0]),
            (bytes([0x2A, 0xAA]), {"code": 6, "bits": 8}, [-32256 / 32768, 32256 / 32768]),
            (bytes([0x55, 0xD5]), {"code": 6, "bits": 8}, [-8 / 32768, 8 / 32768]),
        ):
            self.write_wav(data, **form)
            samples, rate = read_wav(self.wav)
            self.assertEqual((samples.tolist(), rate), (wanted, 8000))

    def test_refuses_what_it_cannot_read(self):
        self.write_wav(bytes(8), channels=2)
        self.assertRaises(ValueError, read_wav, self.wav)
        self.write_wav(bytes(8), code=2, bits=4)
        self.assertRaises(ValueError, read_wav, self.wav)

    # A CSV of some features, as the command prints them; `alter` changes its rows.
    def exit_status(self, alter=lambda rows: None, options=(), names=("SPECTRUM", "MEAN")):
        windows, times = cut_windows(read_wav(self.wav)[0], 8000, 16, 8)
        results = [compute(name, windows) for name in names]
        rows = [["file", "time"]]
        for name, result in zip(names, results):
            count = result.shape[1]
            rows[0] += [name] if count == 1 else [f"{name}[{i}]" for i in range(count)]
        rows += [[self.wav, *map(repr, map(float, row))] for row in np.hstack([times[:, np.newaxis], *results])]
        alter(rows)
        with open(self.csv, "w", newline="", encoding="utf-8") as file:
            csv.writer(file, lineterminator="\n").writerows(rows)
        words = ["check", "--csv", self.csv, "--wav", self.wav, "--window-ms", "16", "--overlap-ms", "8", *options]
        with contextlib.redirect_stdout(io.StringIO()) as self.out, contextlib.redirect_stderr(io.StringIO()):
            return self.main(words)

    def test_check_tells_agreement_from_disagreement(self):
        samples = np.random.default_rng(7).integers(-20000, 20000, 1000).astype("<i2")
        self.write_wav(samples.tobytes())

        def put(row, column, text):
            return lambda rows: rows[row].__setitem__(column, text)

        def nudge(row, column, amount):
            return lambda rows: rows[row].__setitem__(column, repr(float(rows[row][column]) + amount))

        self.assertEqual(self.exit_status(), 0)
        self.assertIn("14 rows, 65 columns", self.out.getvalue())
        self.assertEqual(self.exit_status(nudge(3, 2, 1e-10)), 0)
        self.assertEqual(self.exit_status(nudge(3, 2, 1e-8)), 1)
        self.assertIn("line 4: SPECTRUM[0] is ", self.out.getvalue())
        self.assertEqual(self.exit_status(nudge(3, 2, 1e-8), ["--tolerance", "1e-7"]), 0)
        self.assertEqual(self.exit_status(put(3, 2, "nan")), 1)
        self.assertEqual(self.exit_status(put(3, 2, "inf")), 1)
        self.assertEqual(self.exit_status(nudge(14, 1, 0.001)), 1)
        self.assertEqual(self.exit_status(put(2, 0, "another.wav")), 1)
        self.assertEqual(self.exit_status(lambda rows: rows.pop()), 1)
        self.assertEqual(self.exit_status(options=["--suppress-dc"]), 1)
        self.assertEqual(self.exit_status(options=["--overlap-ms", "4"]), 1)
        commas = ("SPECTRALRANGE(440,200)_SPECTRUM", "PEAKS_SPECTRUM", "MEAN")
        self.assertEqual(self.exit_status(names=commas), 0)

    def test_check_needs_its_files_and_columns(self):
        self.write_wav(bytes(2000))
        self.assertEqual(self.exit_status(), 0)
        self.assertEqual(self.exit_status(lambda rows: rows[0].__setitem__(-1, "NONSENSE")), 2)
        self.assertEqual(self.exit_status(lambda rows: [row.pop(-2) for row in rows]), 2)
        self.assertEqual(self.exit_status(lambda rows: [row.pop(4) for row in rows]), 2)
        self.assertEqual(self.exit_status(lambda rows: rows[5].pop()), 2)
        self.assertEqual(self.exit_status(lambda rows: rows[5].__setitem__(2, "x")), 2)
        self.assertEqual(self.exit_status(lambda rows: rows.clear()), 2)
        self.assertEqual(self.exit_status(options=["--wav", self.wav + ".missing"]), 2)
        self.assertEqual(self.exit_status(options=["--csv", self.csv + ".missing"]), 2)

    def test_memory_ends_with_the_file(self):
        self.write_wav(struct.pack("<256h", *[0] * 256))
        status = self.exit_status(lambda rows: rows.extend(rows[1:]), ["--wav", self.wav], ["ZEROCROSSINGRATE"])
        self.assertEqual(status, 0)

    def test_every_feature_of_the_table_has_a_value_for_an_ordinary_window(self):
        window = np.random.default_rng(8).normal(size=(3, 256))
        self.assertEqual(len(FEATURES), 33)
        for name, (counts, _) in FEATURES.items():
            parameters = {0: "", 1: "(440)", 2: "(440,20)"}[max(min(counts), 1 if name == "MAXSPECTRALRANGES" else 0)]
            parameters = "(4,20)" if name == "RANGE" else parameters
            source = "_MEAN" if name in ("DELTATOSLIDINGMEAN", "SLIDINGWINDOW") else ""
            result = compute(name + parameters + source, window)
            self.assertEqual(len(result), 3)
            self.assertGreater(result.shape[1], 0)


def run(main):
    """Runs all cases; 0 when every one holds.

    :param main: the script's own, so that its exit statuses are among the cases
    """
    Files.main = staticmethod(main)
    suite = unittest.TestSuite()
    for case in (Windows, Spectra, SpectralFeatures, TemporalFeatures, Files):
        suite.addTests(unittest.defaultTestLoader.loadTestsFromTestCase(case))
    return 0 if unittest.TextTestRunner().run(suite).wasSuccessful() else 1
