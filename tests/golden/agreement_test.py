#!/usr/bin/python3
"""Every feature's numbers agree with an independent computation over the sample call: those that have a name as the command
gives them, those that have none as an example of the library does.

    agreement_test.py COMMAND UNNAMED_FEATURES SAMPLE_CALL

The expected values come from features_reference.py beside this file, which states its origin and its tolerance (1e-9).
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

REFERENCE = pathlib.Path(__file__).parent / "features_reference.py"

OF_WINDOWS = ["ZEROCROSSINGRATE", "ZEROCROSSINGRATE(8000)", "SPECTRUM", "SPECTRUM100HZ", "SPECTRUM200HZ", "SPECTRUM500HZ",
              "SILENCERATIO", "NOISERATIO", "AMPLITUDEDISTRIBUTION", "TEMPORALAMPLITUDEDISTRIBUTION", "MEAN",
              "TEMPORALMEAN_MEAN_AMPLITUDE", "RANGE(0,8)", "RANGE(100,28)", "SLIDINGWINDOW(5)_ZEROCROSSINGRATE"]
OF_SPECTRA = ["FLATNESS", "SPECTRALWEIGHTEDAREA", "SPECTRALRANGE(440,20)", "MAXSPECTRALRANGES(350,440,480,620)",
              "OLDHARMONICPRODUCT", "HARMONICPRODUCT", "ROBUSTHARMONICPRODUCT", "ANTIHARMONICPRODUCT", "PEAKS",
              "NEIGHBOURHOODOFMAX", "LOWFREQENERGYRATIO", "LOWFREQENERGYRATIOS", "DELTATOSLIDINGMEAN_FLATNESS",
              "TEMPORALMEAN", "RANGE(3,16)", "MEAN_RANGE(0,32)", "SLIDINGWINDOW(3)_FLATNESS"]
NAMES = OF_WINDOWS + [name + "_SPECTRUM" for name in OF_SPECTRA]


class Agreement(unittest.TestCase):
    def check_table(self, command, *cut):
        with tempfile.TemporaryDirectory() as folder:
            table = pathlib.Path(folder) / "features.csv"
            with table.open("wb") as output:
                subprocess.run(command, stdout=output, stderr=subprocess.DEVNULL, check=True)
            checked = subprocess.run([sys.executable, str(REFERENCE), "check", "--csv", table, "--wav", CALL, *cut],
                                     capture_output=True, text=True)
        self.assertEqual(checked.returncode, 0, checked.stdout + checked.stderr)
        print(checked.stdout.strip())

    def check(self, *cut):
        features = [argument for name in NAMES for argument in ("--feature", name)]
        self.check_table([COMMAND, "features", CALL, *features, *cut], *cut)

    def test_features_that_no_name_builds(self):
        self.check_table([UNNAMED, CALL], "--window-ms", "32", "--overlap-ms", "16")

    def test_overlapping_windows_as_the_demo_cuts_them(self):
        self.check("--window-ms", "32", "--overlap-ms", "16")

    def test_windows_without_overlap_and_without_offset(self):
        self.check("--window-ms", "16", "--overlap-ms", "0", "--suppress-dc")

    def test_long_windows_with_much_overlap(self):
        self.check("--window-ms", "64", "--overlap-ms", "54")


if __name__ == "__main__":
    COMMAND, UNNAMED, CALL = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1])
