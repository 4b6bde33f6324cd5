#!/usr/bin/env python3
"""Every feature that the command lists, or that an example prints, has a section in docs/features.md with a picture, every
picture is the one that the values of the command and the example give now, and programs print what docs/expressions.md shows."""

import filecmp
import os
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

ROOT = os.environ["MURVANE_SOURCE"]
COMMAND = os.environ["MURVANE_AUDIO"]
FORMULAS = os.environ["MURVANE_FORMULAS"]
UNNAMED = os.environ["MURVANE_UNNAMED_FEATURES"]
CALL = os.path.join(os.environ["MURVANE_SAMPLE_CALL_FOLDER"], "sample-call")
DOCS = os.path.join(ROOT, "docs")

# Of the example's columns: their sections and pictures.
UNNAMED_SECTIONS = {
    "CLIPPINGRATE": ("CLIPPINGRATE", "clippingrate"),
    "ENERGYHISTOGRAM": ("ENERGYHISTOGRAM", "energyhistogram"),
    "MEANENERGYABOVETHRESH": ("Mean energy above a threshold", "meanenergyabovethresh"),
    "MEANMAX": ("Mean of maxima", "meanmax"),
    "NONLOGPEAKS_SPECTRUM": ("nonLogPeaks", "nonlogpeaks"),
    "PONDERATEDPEAKS_SPECTRUM": ("ponderatedPeaks", "ponderatedpeaks"),
}


def listed():
    """Features by name, functions of formulas: the names in front of the lines, a block of each."""
    text = subprocess.run([COMMAND, "list"], check=True, stdout=subprocess.PIPE, encoding="utf-8").stdout
    features, _, functions = text.partition("\n\n")
    return [re.findall(r"^\w+", block, flags=re.MULTILINE) for block in (features, functions)]


def sections():
    """{title: text} of docs/features.md."""
    with open(os.path.join(DOCS, "features.md"), encoding="utf-8") as file:
        parts = re.split(r"^##+ (.+)\n", file.read(), flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


class FeatureDocs(unittest.TestCase):
    def test_every_listed_feature_has_a_section_with_its_picture(self):
        titles, (features, _) = sections(), listed()
        self.assertGreater(len(features), 20)
        for name in features:
            self.assertTrue(name in titles, name)
            self.assertIn(f"(images/features/{name.lower()}.svg)", titles[name], name)

    def test_every_feature_without_a_name_has_a_section_with_its_picture(self):
        titles, (features, _) = sections(), listed()
        for column, (title, picture) in UNNAMED_SECTIONS.items():
            self.assertNotIn(title, features)
            self.assertTrue(title in titles, title)
            self.assertIn(f"(images/features/{picture}.svg)", titles[title], column)
        text = subprocess.run([UNNAMED, CALL + ".wav"], check=True, stdout=subprocess.PIPE, encoding="utf-8").stdout
        columns = re.findall(r'"(\w+)[^"]*"', text.partition("\n")[0])
        self.assertEqual(set(columns), set(UNNAMED_SECTIONS))

    def test_every_listed_function_is_in_the_table_of_functions(self):
        with open(os.path.join(DOCS, "expressions.md"), encoding="utf-8") as file:
            described = re.findall(r"^\| \[`(\w+)\(x", file.read(), flags=re.MULTILINE)
        self.assertGreater(len(described), 10)
        for name in listed()[1]:
            self.assertIn(name, described)

    def test_every_link_leads_to_a_file(self):
        for page in ("features.md", "expressions.md", "add-a-feature.md"):
            with open(os.path.join(DOCS, page), encoding="utf-8") as file:
                links = re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", file.read())
            self.assertTrue(links, page)
            for link in links:
                self.assertTrue(os.path.exists(os.path.join(DOCS, link)), f"{page}: {link}")

    def test_files_named_in_the_steps_for_a_new_feature_exist(self):
        with open(os.path.join(DOCS, "add-a-feature.md"), encoding="utf-8") as file:
            names = re.findall(r"`((?:audio|bench|cli|docs|script|support|tests)/[\w./-]+)`", file.read())
        self.assertGreater(len(names), 10)
        for name in names:
            self.assertTrue(os.path.exists(os.path.join(ROOT, name)), name)

    def test_formulas_print_what_is_shown(self):
        with open(os.path.join(DOCS, "expressions.md"), encoding="utf-8") as file:
            blocks = re.findall(r"^```console\n\$ (.+)\n((?:.*\n)+?)```$", file.read(), flags=re.MULTILINE)
        self.assertGreater(len(blocks), 5)
        for line, shown in blocks:
            program, recording, *words = shlex.split(line)
            self.assertEqual(program, "build/release/bin/formulas")
            self.assertEqual(recording, "build/release/share/murvane-audio/sample-call.wav")
            result = subprocess.run([FORMULAS, CALL + ".wav", *words], capture_output=True, encoding="utf-8")
            self.assertEqual(result.stdout + result.stderr, shown, line)

    def test_pictures_are_those_that_the_values_give(self):
        with tempfile.TemporaryDirectory() as folder:
            words = [sys.executable, "-B", os.path.join(DOCS, "plot_features.py"), "--command", COMMAND]
            words += ["--unnamed", UNNAMED, "--call", CALL + ".wav", "--phases", CALL + ".csv", "--output", folder]
            subprocess.run(words, check=True)
            drawn = sorted(os.listdir(os.path.join(folder, "features")))
            self.assertEqual(drawn, sorted(os.listdir(os.path.join(DOCS, "images", "features"))))
            for name in ["sample-call.svg"] + [os.path.join("features", name) for name in drawn]:
                path = os.path.join(DOCS, "images", name)
                self.assertTrue(filecmp.cmp(os.path.join(folder, name), path, shallow=False), f"script/docs: {name}")
                self.assertLess(os.path.getsize(path), 60_000, name)


if __name__ == "__main__":
    unittest.main(verbosity=2)
