#!/usr/bin/env python3
"""What README.md shows is true: its program is examples/first-features.cpp to the letter, and works; its demo output is
what the summary of the sample call prints.

    readme_test.py FIRST_FEATURES CALL_SUMMARY SAMPLE_CALL
"""

import pathlib
import re
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
README = (ROOT / "README.md").read_text(encoding="utf-8")


class Readme(unittest.TestCase):
    def test_its_program_is_the_first_example(self):
        shown = re.search(r"```cpp\n(.*?)```", README, re.DOTALL).group(1)
        self.assertEqual(shown, (ROOT / "examples" / "first-features.cpp").read_text(encoding="utf-8"))

    def test_its_program_prints_a_line_per_window(self):
        printed = subprocess.run([FIRST_FEATURES, CALL], check=True, capture_output=True, text=True).stdout.splitlines()
        self.assertEqual(len(printed), 2152)
        time, flatness = map(float, printed[60].split())
        self.assertAlmostEqual(time, 0.992)
        self.assertLess(flatness, 0.01, "a dial tone is not flat")

    def test_its_demo_output_is_what_the_demo_prints(self):
        printed = subprocess.run([CALL_SUMMARY, CALL, CALL.replace(".wav", ".csv")], check=True, capture_output=True,
                                 text=True).stdout
        self.assertIn(printed, README)


if __name__ == "__main__":
    FIRST_FEATURES, CALL_SUMMARY, CALL = sys.argv[1:4]
    unittest.main(argv=sys.argv[:1])
