#!/usr/bin/env python3
"""What a run is to do, kept in files: --config, --save-config, --computer and --save-computer."""

import os
import stat
import unittest

from command import CommandTest

CONFIG = """# what we train on
features.window-ms   = 64
features.overlap-ms  = 48
features.suppress-dc = yes
features.column.10.expr   = "f0=harmonicProduct(spectrum(x))"
features.column.2.feature = FLATNESS_SPECTRUM
features.column.3.expr    = maxSpectralRanges(spectrum(x), frequenciesList="350 440")
"""

ARGUMENTS = ["--window-ms", "64", "--overlap-ms", "48", "--suppress-dc", "--feature", "FLATNESS_SPECTRUM", "--expr",
             'maxSpectralRanges(spectrum(x), frequenciesList="350 440")', "--expr", "f0=harmonicProduct(spectrum(x))"]


class Config(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav", 5000)

    def table(self, *arguments):
        result = self.features("a.wav", *arguments)
        self.assert_done(result)
        return result.stdout

    def test_a_file_says_what_arguments_would(self):
        self.write("c", CONFIG.encode())
        self.assertEqual(self.table("--config", "c"), self.table(*ARGUMENTS))

    def test_columns_are_in_the_order_of_their_numbers(self):
        self.write("c", b"features.column.10.expr = 1\nfeatures.column.9.expr = 2\nfeatures.column.011.feature = MEAN\n")
        self.assertTrue(self.table("--config", "c").startswith(b"file,time,2,1,MEAN\n"))

    def test_arguments_win(self):
        self.write("c", CONFIG.encode())
        self.assertEqual(self.table("--config", "c", "--overlap-ms", "32", "--suppress-dc=no"),
                         self.table("--window-ms", "64", "--overlap-ms", "32", *ARGUMENTS[5:]))
        self.assertEqual(self.table("--expr", "x*x", "--config", "c"), self.table(*ARGUMENTS[:5], "--expr", "x*x"))

    def test_what_was_saved_reproduces_the_run(self):
        columns = ["--feature", "RANGE(0, 2)", "--expr", "a =\n x * 2", "--expr", " -x", "--feature", "MEAN",
                   *(f"--expr=c{i}={i}" for i in range(10)), "--expr", "\t1 + 2 "]
        for options in (columns, [*columns, "--window-ms", "20", "--overlap-ms", "0", "--suppress-dc"]):
            direct = self.table(*options, "--save-config", "saved", "--log-level", "ERROR")
            self.assertEqual(self.table("--config", "saved", "--log-level", "ERROR"), direct)
            self.assert_done(self.features("--config", "saved", "--save-config", "again"))
            self.assertEqual(self.read("again"), self.read("saved"))

    def test_a_saved_file_is_readable(self):
        self.assert_done(self.features(*ARGUMENTS, "--save-config", "c"))
        self.assertEqual(self.read("c").decode().splitlines(), [
            "features.column.1.feature = FLATNESS_SPECTRUM",
            'features.column.2.expr = "maxSpectralRanges(spectrum(x), frequenciesList=\\"350 440\\")"',
            "features.column.3.expr = f0=harmonicProduct(spectrum(x))", "features.format = csv",
            "features.overlap-ms = 48", "features.suppress-dc = true", "features.window-ms = 64"])
        self.assertEqual(self.files(), ["a.wav", "c"])

    def test_saving_keeps_the_mode_and_replaces_the_file_that_was_read(self):
        self.write("c", CONFIG.encode())
        os.chmod(self.path("c"), 0o640)
        self.assert_done(self.features("--config", "c", "--window-ms", "100", "--save-config", "c"))
        self.assertEqual(stat.S_IMODE(os.stat(self.path("c")).st_mode), 0o640)
        self.assertIn(b"features.window-ms = 100\n", self.read("c"))

    def test_no_output_replaces_what_says_what_to_do(self):
        self.write("c", CONFIG.encode())
        self.write("log.properties", b"log4cplus.rootLogger=OFF\n")
        self.assert_done(self.features("--feature", "MEAN", "--save-computer", "c.xml"))
        before = {name: self.read(name) for name in self.files()}
        run = ("a.wav", "--config", "c", "--computer", "c.xml", "--log-config", "log.properties")
        for option in ("--output", "--failures", "--save-computer", "--save-config"):
            for name in ("c", "c.xml", "log.properties"):
                if (option, name) != ("--save-config", "c"):
                    self.assert_usage_error(self.features(*run, option, "./" + name),
                                            f"the output ./{name} would replace the input {name}")
        self.assertEqual({name: self.read(name) for name in self.files()}, before)

    def test_the_format_is_kept(self):
        self.assert_done(self.features("--feature", "MEAN", "--format", "npy", "--save-config", "c"))
        self.assert_usage_error(self.features("a.wav", "--config", "c"), "--format npy needs --output")
        self.assert_done(self.features("a.wav", "--config", "c", "-o", "t.npy"))
        self.assertTrue(self.read("t.npy").startswith(b"\x93NUMPY"))


class WrongConfig(CommandTest):
    def assert_refused(self, text, *texts):
        self.write_wav("a.wav")
        self.write("c", text.encode())
        self.assert_usage_error(self.features("a.wav", "--config", "c", "-o", "t.csv"), *texts)
        self.assertEqual(self.files(), ["a.wav", "c"])

    def test_an_unknown_key_is_named_with_file_and_line(self):
        self.assert_refused("# x\n\n features.windowms = 3\n", "c: line 3: features.windowms: unknown key",
                            "features.window-ms")
        for key in ("features.column.1", "features.column.x.expr", "features.column.1.kind", "window-ms",
                    "features.column.-1.expr", "features.column.99999999999.expr", "features.column..expr"):
            self.assert_refused(f"{key} = x\n", f"c: line 1: {key}: unknown key")

    def test_a_value_out_of_range_is_named_with_file_key_and_line(self):
        self.assert_refused("features.format = xml\n",
                            "c: line 1: features.format: unknown format 'xml'; the formats are csv and npy")
        for value in ("0", "-5", "60001"):
            self.assert_refused(f"#\nfeatures.window-ms = {value}\n",
                                f"c: line 2: features.window-ms: a window of {value} ms is refused; it must be 1 to 60000")
        self.assert_refused("features.overlap-ms = -1\n", "c: line 1: features.overlap-ms: expected 0 or more")

    def test_a_wrong_value_is_named_with_file_key_and_line(self):
        self.assert_refused("features.overlap-ms = 1\nfeatures.window-ms = 3x\n",
                            "c: line 2: features.window-ms: expected a whole number")
        self.assert_refused("features.suppress-dc = 2\n", "c: line 1: features.suppress-dc: expected true or false")
        self.assert_refused("features.column.1.feature = SPECTRM\n",
                            "c: line 1: features.column.1.feature: unknown feature 'SPECTRM'", "SPECTRUM")
        self.assert_refused("features.column.1.expr = f=flat(x)\n",
                            'c: line 1: features.column.1.expr: wrong formula: column 1: unknown function "flat"')

    def test_a_line_of_another_form_is_named(self):
        self.assert_refused("features.window-ms = 32\nfeatures\n", "c: line 2: expected key = value")

    def test_two_columns_of_one_number_are_refused(self):
        self.assert_refused("features.column.1.expr = x\nfeatures.column.01.feature = MEAN\n", "c: line 1: features."
                            "column.1.expr: there is another column of this number")

    def test_what_does_not_fit_together_is_refused_as_for_arguments(self):
        self.assert_refused("features.column.1.expr = x\nfeatures.overlap-ms = 32\n", "an overlap of 32 ms is refused")
        self.assert_refused("features.column.1.expr = x\nfeatures.format = xml\n", "unknown format 'xml'")
        self.assert_refused("features.window-ms = 32\n", "no feature given")
        self.assert_refused("features.column.1.expr = x\nfeatures.column.2.expr = x\n", "two columns")

    def test_files_that_cannot_be_read_or_written_are_told(self):
        self.write_wav("a.wav")
        self.assert_usage_error(self.features("a.wav", "--config", "none"), "cannot read none: No such file")
        self.assert_usage_error(self.features("a.wav", "--config", "."), "cannot read .: Is a directory")
        self.assert_usage_error(self.features("a.wav", "--config", "/dev/zero"), "cannot read /dev/zero: longer than")
        self.assert_failed(self.features("a.wav", "--feature", "MEAN", "--save-config", "no/c"),
                           "cannot write no/c: No such file or directory")
        self.assert_usage_error(self.features("a.wav", "--feature", "MEAN", "--save-config", "a.wav"), "a.wav")
        self.assert_usage_error(self.features("a.wav", "--feature", "MEAN", "-o", "t", "--save-config", "t"),
                                "two outputs would go to t")
        self.assertEqual(self.files(), ["a.wav"])


# Archives of SPECTRUM500HZ and MEAN as programs write them, through a pointer to the base of the computer.
TEXT = (b"22 serialization::archive 18 0 34 AudioFeatureComputerWithInputsImpl 1 0\n"
        b"0 0 0 0 0 2 0 13 SPECTRUM500HZ 4 MEAN\n")


def sized(text):
    return len(text).to_bytes(8, "little") + text


BINARY = (sized(b"serialization::archive") + bytes.fromhex("1200 04080408 01000000 0000") +
          sized(b"AudioFeatureComputerWithInputsImpl") + bytes.fromhex("01") + bytes(17) +
          bytes.fromhex("00 0200000000000000 00000000") + sized(b"SPECTRUM500HZ") + sized(b"MEAN"))

NAMES = ["FLATNESS_SPECTRUM", "SPECTRALRANGE(440,20)_SPECTRUM", "MEAN"]


class Computer(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav", 5000)
        self.assert_done(self.features("--feature", *NAMES, "--save-computer", "c.xml"))

    def test_the_features_of_an_archive_stand_where_it_is_named(self):
        for before, after in (([], []), (["--expr", "x"], ["--feature", "SPECTRUM"])):
            result = self.features("a.wav", *before, "--computer", "c.xml", *after)
            self.assert_done(result)
            self.assertEqual(result.stdout, self.features("a.wav", *before, "--feature", *NAMES, *after).stdout)

    def test_text_and_binary_archives_are_told_by_how_they_begin(self):
        expected = self.features("a.wav", "--feature", "SPECTRUM500HZ", "MEAN").stdout
        for archive in (TEXT, BINARY):
            self.write("archive", archive)
            result = self.features("a.wav", "--computer", "archive")
            self.assert_done(result)
            self.assertEqual(result.stdout, expected)

    def test_an_xml_archive_may_call_the_computer_otherwise(self):
        self.write("mine.xml", self.read("c.xml").replace(b"<computer", b"<mine").replace(b"</computer", b"</mine"))
        result = self.features("a.wav", "--computer", "mine.xml")
        self.assert_done(result)
        self.assertEqual(result.stdout, self.features("a.wav", "--computer", "c.xml").stdout)

    def test_a_saved_configuration_needs_the_archive_no_more(self):
        self.assert_done(self.features("--computer", "c.xml", "--save-config", "c"))
        expected = self.features("a.wav", "--computer", "c.xml").stdout
        os.remove(self.path("c.xml"))
        self.assertEqual(self.features("a.wav", "--config", "c").stdout, expected)

    def test_a_computer_holds_no_formulas(self):
        self.assert_usage_error(self.features("--expr", "x", "--save-computer", "d.xml"), "holds no formulas")
        self.assertEqual(self.files(), ["a.wav", "c.xml"])

    def test_what_is_no_archive_is_told(self):
        self.write("text", b"22 serialization::archivist")
        self.write("empty", b"")
        self.write("other.xml", b"<?xml version='1.0'?><html/>")
        for name in ("a.wav", "text", "empty", "other.xml"):
            self.assert_usage_error(self.features("a.wav", "--computer", name), f"{name}: ", "archive")
        self.assert_usage_error(self.features("a.wav", "--computer", "none"), "cannot read none: No such file")

    def test_an_archive_cut_anywhere_is_told(self):
        for whole in (self.read("c.xml").rstrip(), TEXT.rstrip(), BINARY):
            for size in [*range(0, len(whole) - 5, len(whole) // 12), len(whole) - 1]:
                self.write("cut", whole[:size])
                self.assert_usage_error(self.features("a.wav", "--computer", "cut"), "cut: ", "archive")

    def test_any_byte_of_an_archive_may_be_wrong(self):
        # Boost leaves the half-loaded object behind when loading through a pointer fails, which is no finding of ours.
        environment = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}
        for whole in (self.read("c.xml"), TEXT, BINARY):
            for place in range(0, len(whole), len(whole) // 25):
                self.write("odd", whole[:place] + bytes([whole[place] ^ 0x15]) + whole[place + 1:])
                result = self.features("a.wav", "--computer", "odd", env=environment)
                self.assertIn(result.returncode, (0, 2), (place, whole))

    def test_a_name_that_is_unknown_here_is_told(self):
        self.write("odd.xml", self.read("c.xml").replace(b"<item>MEAN<", b"<item>MEEN<"))
        self.assert_usage_error(self.features("a.wav", "--computer", "odd.xml"), "odd.xml: unknown feature 'MEEN'")


if __name__ == "__main__":
    unittest.main()
