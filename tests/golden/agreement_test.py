#!/usr/bin/python3
"""The command's numbers agree with an independent computation, feature by feature, over the sample call.

    agreement_test.py COMMAND SAMPLE_CALL

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
              "TEMPORALMEAN_MEAN_AMPLITUDE"]
OF_SPECTRA = ["FLATNESS", "SPECTRALWEIGHTEDAREA", "SPECTRALRANGE(440,20)", "MAXSPECTRALRANGES(350,440,480,620)",
              "OLDHARMONICPRODUCT", "HARMONICPRODUCT", "ROBUSTHARMONICPRODUCT", "ANTIHARMONICPRODUCT", "PEAKS",
              "NEIGHBOURHOODOFMAX", "LOWFREQENERGYRATIO", "LOWFREQENERGYRATIOS", "DELTATOSLIDINGMEAN_FLATNESS",
              "TEMPORALMEAN"]
NAMES = OF_WINDOWS + [name + "_SPECTRUM" for name in OF_SPECTRA]


class Agreement(unittest.TestCase):
    def check(self, *cut):
        with tempfile.TemporaryDirectory() as folder:
            table = str(pathlib.Path(folder) / "features.csv")
            features = [argument for name in NAMES for argument in ("--feature", name)]
            subprocess.run([COMMAND, "features", CALL, *features, *cut, "--output", table], check=True)
            checked = subprocess.run([sys.executable, str(REFERENCE), "check", "--csv", table, "--wav", CALL, *cut],
                                     capture_output=True, text=True)
        self.assertEqual(checked.returncode, 0, checked.stdout + checked.stderr)
        print(checked.stdout.strip())

    def test_overlapping_windows_as_the_demo_cuts_them(self):
        self.check("--window-ms", "32", "--overlap-ms", "16")

    def test_windows_without_overlap_and_without_offset(self):
        self.check("--window-ms", "16", "--overlap-ms", "0", "--suppress-dc")

    def test_long_windows_with_much_overlap(self):
        self.check("--window-ms", "64", "--overlap-ms", "54")


if __name__ == "__main__":
    COMMAND, CALL = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])
