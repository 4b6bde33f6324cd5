#!/usr/bin/env python3
"""murvane-audio list."""

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


class List(CommandTest):
    def listed(self):
        result = run("list")
        self.assert_done(result)
        return [line.split()[0].split("(")[0].split("[")[0] for line in result.stdout.decode().splitlines()]

    def test_exactly_the_features_that_can_be_computed_are_listed(self):
        self.write_wav("a.wav")
        listed = self.listed()
        self.assertEqual(len(listed), len(set(listed)))
        self.assertLessEqual(set(listed), set(NAMES))
        for name, parameters in NAMES.items():
            known = self.features("a.wav", "--feature", name + parameters).returncode != 2
            self.assertEqual(known, name in listed, name)

    def test_a_line_tells_parameters_input_output_and_meaning(self):
        lines = run("list").stdout.decode().splitlines()
        for line in lines:
            self.assertRegex(line, r"^\S+ +\S.* -> \S.*  \S.*[^.]$")
        spectrum = next(line for line in lines if line.startswith("SPECTRUM "))
        self.assertIn("N samples", spectrum)
        self.assertIn("L = N/2 values", spectrum)
        self.assertTrue(any(line.startswith("RANGE(start,length) ") for line in lines))

    def test_a_name_is_explained_with_an_example_that_works(self):
        self.write_wav("call.wav")
        for name in self.listed():
            result = run("list", name.lower())
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
        self.assert_usage_error(run("list", "RNGE"), "unknown feature 'RNGE'", "RANGE")
        self.assert_usage_error(run("list", "MEAN", "RANGE"), "one feature at a time")


if __name__ == "__main__":
    unittest.main()
