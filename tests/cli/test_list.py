#!/usr/bin/env python3
"""murvane-audio list."""

import re
import unittest

from command import CommandTest, run

# What could be a feature: the names known to the library, with parameters that would fit.
NAMES = {
    "AMPLITUDE": "", "MEAN": "", "TEMPORALMEAN": "", "SLIDINGWINDOW": "(2)", "RANGE": "(0,1)",
    "ENERGYHISTOGRAM": "", "CLIPPINGRATE": "", "ZEROCROSSINGRATE": "", "SPECTRUM": "", "SPECTRUM100HZ": "",
    "SPECTRUM200HZ": "", "SPECTRUM500HZ": "", "FLATNESS": "", "SPECTRALRANGE": "(440,20)",
    "MAXSPECTRALRANGES": "(350,440)", "OLDHARMONICPRODUCT": "", "HARMONICPRODUCT": "", "ROBUSTHARMONICPRODUCT": "",
    "ANTIHARMONICPRODUCT": "", "SPECTRALSLOPE": "", "SPECTRALWEIGHTEDAREA": "", "SILENCERATIO": "", "NOISERATIO": "",
    "AMPLITUDEDISTRIBUTION": "", "TEMPORALAMPLITUDEDISTRIBUTION": "", "PEAKS": "", "NONLOGPEAKS": "",
    "NEIGHBOURHOODOFMAX": "", "LOWFREQENERGYRATIO": "", "LOWFREQENERGYRATIOS": "", "DELTATOSLIDINGMEAN": "",
    "MYFEATURE": "",
}

FUNCTIONS = ["spectrum(x)", "flatness(x)", "harmonicProduct(x)", "silenceRatio(x)", "nonLogPeaks(x)", "peaks(x)",
             "ponderatedPeaks(x)", "zeroCrossingRate(x)", "spectralRange(x, frequencyHz=..., widthHz=...)",
             'maxSpectralRanges(x, frequenciesList="...")', "lowFreqEnergyRatios(x)"]


class List(CommandTest):
    def lines(self):
        """The lines of the features, and those of the functions."""
        result = run("list")
        self.assert_done(result)
        lines = result.stdout.decode().splitlines()
        middle = lines.index("")
        return lines[:middle], lines[middle + 1:]

    def listed(self):
        return [line.split()[0].split("(")[0].split("[")[0] for line in self.lines()[0]]

    def test_exactly_the_features_that_can_be_computed_are_listed(self):
        self.write_wav("a.wav")
        listed = self.listed()
        self.assertEqual(len(listed), len(set(listed)))
        self.assertLessEqual(set(listed), set(NAMES))
        for name, parameters in NAMES.items():
            known = self.features("a.wav", "--feature", name + parameters).returncode != 2
            self.assertEqual(known, name in listed, name)

    def test_a_line_tells_parameters_input_output_and_meaning(self):
        lines, functions = self.lines()
        for line in lines + [line.replace(", ", ",") for line in functions]:
            self.assertRegex(line, r"^\S+ +\S.* -> \S.*  \S.*[^.]$")
        spectrum = next(line for line in lines if line.startswith("SPECTRUM "))
        self.assertIn("N samples", spectrum)
        self.assertIn("L = N/2 values", spectrum)
        self.assertTrue(any(line.startswith("RANGE(start,length) ") for line in lines))

    def test_a_name_is_explained_with_an_example_that_works(self):
        self.write_wav("call.wav")
        for name in self.listed():
            result = run("list", name.capitalize())
            self.assert_done(result)
            text = result.stdout.decode()
            self.assertTrue(text.startswith(name), text)
            for word in ("parameters", "input", "output"):
                self.assertIn(f"\n  {word} ", text)
            example = text.splitlines()[-1]
            self.assertRegex(example, r"^Example: murvane-audio features call.wav --feature '.*'$")
            self.assert_done(self.features("call.wav", "--feature", example.split("'")[1]))

    def test_the_output_shape_is_the_number_of_columns(self):
        self.write_wav("call.wav")
        n, bins = 256, 128
        known = {"the same values": n, "L = N/2 values": bins, "L values": bins, "(L-1)/5 + 1 values": 26,
                 "(L-1)/5 - 1 values": 24, "length values": 32, "n values": 5, "as many values": 40,
                 "2w + 2 values": 4}
        for name in self.listed():
            text = run("list", name).stdout.decode()
            example = text.splitlines()[-1].split("'")[1]
            shape = next(line for line in text.splitlines() if line.startswith("  output "))[10:].strip()
            expected = known[shape] if shape in known else int(shape.split()[0])
            header = self.features("call.wav", "--feature", example).stdout.decode().splitlines()[0]
            columns = header.count("[") if "[" in header else 1
            self.assertEqual(columns, expected, name)

    def test_a_name_with_parameters_is_explained_as_well(self):
        self.assertEqual(run("list", "RANGE(0,8)").stdout, run("list", "RANGE").stdout)

    def test_an_unknown_name_draws_names_that_come_close(self):
        self.assert_usage_error(run("list", "RNGE"), "unknown feature or function 'RNGE'", "RANGE")
        self.assert_usage_error(run("list", "nonlogpeaks"), "nonLogPeaks")
        self.assert_usage_error(run("list", "MEAN", "RANGE"), "at a time")

    def test_each_element_of_a_composed_name_is_explained_in_the_order_of_computation(self):
        for name in ("FLATNESS_SPECTRUM_RANGE(0,8)", "flatness_Spectrum_RANGE( 0, 8)"):
            result = run("list", name)
            self.assert_done(result)
            head, *parts = result.stdout.decode().split("\n\n")
            self.assertTrue(head.startswith(f"{name}: a composed name; the last element sees the window"), head)
            self.assertEqual([part.rstrip("\n") + "\n" for part in parts],
                             [run("list", element).stdout.decode().split("\nIn formulas")[0]
                              for element in ("RANGE", "SPECTRUM", "FLATNESS")])

    def test_what_is_wrong_in_a_composed_name_is_told(self):
        self.assert_usage_error(run("list", "MEAN_SPECTRM"), "unknown feature 'SPECTRM' at column 6\n", "SPECTRUM")
        self.assert_usage_error(run("list", "_MEAN"), "the name of a feature is missing at column 1\n")

    def test_functions_are_listed_in_the_order_of_their_registration(self):
        self.assertEqual([line.split("  ")[0] for line in self.lines()[1]], FUNCTIONS)

    def test_a_function_is_explained_with_an_example_that_works(self):
        self.write_wav("call.wav")
        for call in FUNCTIONS:
            name = call.split("(")[0]
            result = run("list", name)
            self.assert_done(result)
            text = result.stdout.decode()
            self.assertIn(f"{call}: ", text)
            for parameter in re.findall(r"(\w+)=", call):
                self.assertRegex(text, f"\n  parameters  .*{parameter}, a ")
            shape = re.findall(r"\n  output +(.*)", text)[-1]
            example = text.splitlines()[-1]
            self.assertTrue(example.startswith(f"Example: murvane-audio features call.wav --expr '{name}("), example)
            table = self.features("call.wav", "--expr", "f=" + example.split("'")[1])
            self.assert_done(table)
            expected = {"L = N/2 values": 128, "(L-1)/5 + 1 values": 26, "2w + 2 values": 4}.get(shape)
            self.assertEqual(table.stdout.split(b"\n")[0].count(b",") - 1, expected or int(shape.split()[0]), name)

    def test_a_name_that_a_feature_and_a_function_share_explains_both(self):
        both = run("list", "flatness").stdout
        feature = run("list", "FLATNESS").stdout
        self.assertTrue(both.startswith(feature + b"\nIn formulas:\nflatness(x): "))


if __name__ == "__main__":
    unittest.main()
