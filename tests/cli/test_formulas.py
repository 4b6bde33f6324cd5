#!/usr/bin/env python3
"""Formulas in the tables of murvane-audio features: --expr."""

import json
import struct
import unittest

from command import CommandTest, read_csv, tone, wav_bytes


def column(table, name):
    header, rows = table
    return [row[header.index(name)] for row in rows]


class Formulas(CommandTest):
    def table(self, *arguments):
        result = self.features(*arguments)
        self.assert_done(result)
        return read_csv(result.stdout)

    def test_a_formula_agrees_with_the_feature_of_its_name(self):
        self.write_wav("a.wav", 20000)
        for name, formula in (("FLATNESS_SPECTRUM", "flatness(spectrum(x))"), ("AMPLITUDE", "x"),
                              ("HARMONICPRODUCT_SPECTRUM", "harmonicProduct(spectrum(x))"),
                              ("ZEROCROSSINGRATE", "zeroCrossingRate(x)"), ("SILENCERATIO", "silenceRatio(x)"),
                              ("SPECTRALRANGE(440,20)_SPECTRUM",
                               "spectralRange(spectrum(x), frequencyHz=440, widthHz=20)"),
                              ("MAXSPECTRALRANGES(350,440)_SPECTRUM",
                               'maxSpectralRanges(spectrum(x), frequenciesList="350 440")')):
            self.assertEqual(self.table("a.wav", "--expr", formula)[1], self.table("a.wav", "--feature", name)[1], name)

    def test_a_formula_is_called_by_its_text_or_by_the_name_before_it(self):
        self.write_wav("a.wav", 256)
        formula = 'maxSpectralRanges(spectrum(x), frequenciesList="350 440")'
        result = self.features("a.wav", "--expr", formula, "--expr", "f0=peaks(spectrum(x))", "--expr", " zcr(x)")
        self.assert_usage_error(result, 'unknown function "zcr"')
        result = self.features("a.wav", "--expr", formula, "--expr=flat = flatness( spectrum(x) )")
        self.assert_done(result)
        quoted = formula.replace('"', '""')
        self.assertTrue(result.stdout.startswith(
            ",".join(["file,time", *(f'"{quoted}[{i}]"' for i in range(4)), "flat\n"]).encode()), result.stdout)

    def test_columns_are_in_the_order_of_the_arguments_across_both_kinds(self):
        self.write_wav("a.wav", 5000)
        parts = [("--feature", "MEAN"), ("--expr", "two=2*flatness(spectrum(x))"), ("--feature", "SPECTRUM500HZ"),
                 ("--feature", "SLIDINGWINDOW(3)_MEAN"), ("--expr", "zeroCrossingRate(x)"), ("--expr", "1"),
                 ("--feature", "RANGE(0,2)")]
        alone = [self.table("a.wav", *part) for part in parts]
        header, rows = self.table("a.wav", *(word for part in parts for word in part))
        self.assertEqual(header[2:], [name for table in alone for name in table[0][2:]])
        for i, row in enumerate(rows):
            self.assertEqual(row[2:], [value for table in alone for value in table[1][i][2:]])

    def test_a_formula_may_begin_with_a_minus(self):
        self.write_wav("a.wav")
        for arguments in (["--expr", "-flatness(spectrum(x))"], ["--expr=-flatness(spectrum(x))"]):
            values = column(self.table("a.wav", *arguments), "-flatness(spectrum(x))")
            flatness = column(self.table("a.wav", "--feature", "FLATNESS_SPECTRUM"), "FLATNESS_SPECTRUM")
            self.assertEqual(values, ["-" + value for value in flatness])

    def test_rows_do_not_depend_on_the_file_before(self):
        self.write_wav("a.wav", 3000)
        self.write("b.wav", wav_bytes(struct.pack("<h", -1) + tone(5000, 333.0, 20000)))
        options = ["--expr", "r=zeroCrossingRate(x)", "--feature", "TEMPORALMEAN_MEAN"]
        alone = self.table("b.wav", *options)[1]
        self.assertEqual(self.table("a.wav", "b.wav", *options)[1][-len(alone):], alone)

    def test_each_place_where_a_function_remembers_has_its_own_memory(self):
        self.write_wav("a.wav", 5000)
        header, rows = self.table("a.wav", "--expr", "once=zeroCrossingRate(x)", "--expr", "d=zeroCrossingRate(x) - "
                                  "zeroCrossingRate(x)", "--feature", "ZEROCROSSINGRATE")
        self.assertEqual({row[3] for row in rows}, {"0"})
        self.assertEqual([row[2] for row in rows], [row[4] for row in rows])

    def test_a_matrix_holds_formulas_as_well(self):
        self.write_wav("a.wav", 5000)
        options = ["--expr", "f=flatness(spectrum(x))", "--feature", "MEAN"]
        self.assert_done(self.features("a.wav", *options, "--format", "npy", "-o", "t.npy"))
        self.assertEqual(json.loads(self.read("t.npy.json"))["columns"], ["f", "MEAN"])
        rows = self.table("a.wav", *options)[1]
        values = struct.unpack(f"<{2 * len(rows)}d", self.read("t.npy")[128:])
        self.assertEqual([float(value) for row in rows for value in row[2:]], list(values))


class WrongFormulas(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")

    def assert_refused(self, formulas, *texts):
        self.assert_usage_error(self.features("a.wav", "-o", "t.csv", *formulas), *texts)
        self.assertEqual(self.files(), ["a.wav"])

    def test_an_unknown_function_draws_names_that_come_close(self):
        self.assert_refused(["--expr", "flatnes(spectrum(x))"], "wrong formula: column 1: ",
                            'unknown function "flatnes"', "flatness", "\nflatnes(spectrum(x))\n^\n")
        self.assert_refused(["--expr", "f=flatness(spectrum(y))"], 'unknown variable "y"',
                            "column 19", "\nflatness(spectrum(y))\n                  ^\n")

    def test_bad_syntax_draws_line_and_place_and_what_was_expected(self):
        self.assert_refused(["--feature", "MEAN", "--expr", "2 * (x"], "column 7: expected", "\n2 * (x\n      ^\n")
        self.assert_refused(["--expr", "x +\n  * x"], "line 2, column 3: expected", "\n  * x\n  ^\n")
        self.assert_refused(["--expr", "flatness(spectrum(x), n=1)"], "flatness")
        self.assert_refused(["--expr", "spectralRange(spectrum(x), frequencyHz=440)"], "widthHz")
        self.assert_refused(["--expr", "f=g=x"], "column 2: expected")

    def test_empty_formulas_are_refused(self):
        for formula in ("=", "f=", "f= ", " "):
            self.assert_refused([f"--expr={formula}"], "formula")
        self.assert_refused(["--expr"], "--expr")
        self.assert_refused(["--expr", "--feature", "MEAN"], "wrong formula: column 2")

    def test_two_columns_of_one_name_are_refused(self):
        for options in (["--expr", "f=x", "--expr", "f=flatness(x)"], ["--feature", "MEAN", "MEAN"],
                        ["--expr", "MEAN=x", "--feature", "MEAN"], ["--expr", "x", "--expr", "x"],
                        ["--expr", "time=x"], ["--expr", "file=x"]):
            self.assert_refused(options, "two columns would be called")

    def test_a_formula_that_fails_is_named_and_fails_the_file(self):
        for options, name, place in ((["--expr", "s=x + spectrum(x)"], "s", 3),
                                     (["--feature", "MEAN", "--expr", "x - peaks(x)"], "x - peaks(x)", 3)):
            result = self.features("a.wav", *options)
            message, = self.messages(result)
            self.assertEqual(result.returncode, 1)
            self.assertTrue(message.startswith(f"murvane-audio: a.wav: the formula {name} cannot be computed of a "
                                               f"window of 256 samples: column {place}: cannot combine"), message)
            self.assertEqual(result.stdout, b"")

    def test_a_formula_that_fits_one_rate_fails_the_files_of_another(self):
        self.write_wav("b.wav", 9000, rate=16000)
        result = self.features("a.wav", "b.wav", "--expr", "r=spectralRange(x, frequencyHz=440, widthHz=20)",
                               "--log-level", "ERROR")
        self.assertEqual(result.returncode, 1)
        self.assertEqual({line.split(b",")[0] for line in result.stdout.splitlines()}, {b"file", b"a.wav"})
        self.assertIn("b.wav: does not fit into the table: r gives", self.messages(result)[0])


class LibraryWords(CommandTest):
    """What the library alone knows of a refusal is shown, and what it would say a thousand times is said once."""

    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")

    def test_a_list_that_is_none_is_quoted(self):
        result = self.features("a.wav", "--expr", 'maxSpectralRanges(spectrum(x), frequenciesList="350,440")')
        self.assert_usage_error(result, "maxSpectralRanges refuses the values of its parameters",
                                "\nCould not convert string atom 350,440in an integer\n")

    def test_a_number_out_of_range_is_shown_in_full(self):
        result = self.features("a.wav", "--expr", "spectralRange(spectrum(x), frequencyHz=2147483648, widthHz=0)")
        self.assert_usage_error(result, "frequencyHz, found 2147483648\n")
        self.assertEqual(result.stderr.count(b"2147483648"), 2)

    def test_the_assertion_that_a_range_fails_by_is_told_whatever_the_log_level(self):
        for option, text in (("--expr", "spectralRange(spectrum(x), frequencyHz=0, widthHz=0)"),
                             ("--feature", "SPECTRALRANGE(0,0)_SPECTRUM")):
            for level in ("OFF", "WARN", "ERROR"):
                result = self.features("a.wav", option, text, "--failures", "f.txt", "--log-level", level)
                self.assertEqual(result.returncode, 1)
                for told in (self.read("f.txt"), result.stderr):
                    self.assertTrue(told.endswith(b" (Assertion failed: m_uiCenterFrequency > 0)\n"), told)

    def test_spectra_of_odd_sizes_draw_one_warning(self):
        for option, text, window, size in (("--feature", "FLATNESS_SPECTRUM", "33", 264),
                                           ("--expr", "flatness(spectrum(x))", "33", 264),
                                           ("--feature", "FLATNESS_SPECTRUM_RANGE(0,100)", "32", 256)):
            for jobs in ("1", "2"):
                result = self.features("a.wav", option, text, "--window-ms", window, "--jobs", jobs)
                self.assertEqual(self.messages(result), [
                    "murvane-audio: a.wav: warning: spectra of a number of samples that is no power of two (its windows "
                    f"have {size}) are computed slowly"])
                self.assertEqual(result.returncode, 0)
                self.assertGreater(result.stdout.count(b"\n"), 20)
        self.assert_done(self.features("a.wav", "--feature", "MEAN", "--window-ms", "33"))


if __name__ == "__main__":
    unittest.main()
