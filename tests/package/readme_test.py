#!/usr/bin/env python3
"""What README.md shows is true: its program is examples/first-features.cpp to the letter, and works; its demo output is
what the summary of the sample call, the list of its annotations and the detectors print.

    readme_test.py FIRST_FEATURES CALL_SUMMARY CALL_PROGRESS MURVANE_AUDIO SAMPLE_CALL
"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
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

    def test_the_annotations_it_shows_are_those_of_the_annotated_call(self):
        shown = re.search(r"```\n( +start_s .*?)```", README, re.DOTALL).group(1)
        phases = pathlib.Path(CALL.replace(".wav", ".csv")).read_text(encoding="utf-8").split("\n", 1)[1]
        with tempfile.TemporaryDirectory() as folder:
            annotated, labels = pathlib.Path(folder, "call.wav"), pathlib.Path(folder, "labels.csv")
            shutil.copy(CALL, annotated)
            labels.write_text("label,start_s,stop_s\n" + phases, encoding="utf-8")
            subprocess.run([MURVANE_AUDIO, "annotations", "import", annotated, labels, "--format", "csv"], check=True,
                           capture_output=True)
            printed = subprocess.run([MURVANE_AUDIO, "annotations", "list", annotated], check=True,
                                     capture_output=True, text=True).stdout.split("\n", 1)[1]
        self.assertEqual(len(printed.splitlines()), 1 + len(phases.splitlines()))
        self.assertTrue(printed.startswith(shown), printed)

    def test_the_detectors_find_what_it_says(self):
        printed = subprocess.run([CALL_PROGRESS, CALL, "--phases", CALL.replace(".wav", ".csv")], check=True,
                                 capture_output=True, text=True).stdout.splitlines()
        self.assertIn(f"```\n{printed[-1]}\n```", README)


if __name__ == "__main__":
    FIRST_FEATURES, CALL_SUMMARY, CALL_PROGRESS, MURVANE_AUDIO, CALL = sys.argv[1:6]
    unittest.main(argv=sys.argv[:1])
