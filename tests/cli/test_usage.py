#!/usr/bin/env python3
"""Wrong usage: exit code 2, a message that helps, and nothing done."""

import os
import unittest

from command import CommandTest, run


class Usage(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")

    def assert_refused(self, arguments, *texts):
        self.assert_usage_error(self.features(*arguments), *texts)
        self.assertEqual(self.files(), ["a.wav"])

    def test_without_a_subcommand_the_usage_goes_to_standard_error(self):
        result = run()
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        self.assertIn(b"Subcommands:", result.stderr)

    def test_unknown_subcommands_and_options_are_named(self):
        self.assert_usage_error(run("feature"), "unknown subcommand 'feature'")
        self.assert_usage_error(run("--versoin"), "unknown option '--versoin'")
        self.assert_refused(["a.wav", "--fature", "MEAN"], "'--fature'", "murvane-audio features --help")
        self.assert_refused(["a.wav", "--feature", "MEAN", "--form", "csv"], "'--form'")

    def test_help_and_version_go_to_standard_output(self):
        for arguments in (["--help"], ["-h"], ["help"], ["features", "--help"], ["evaluate", "--help"], ["info", "--help"], ["list", "--help"],
                          ["help", "features"], ["features", "a.wav", "--help"]):
            result = run(*arguments)
            self.assert_done(result)
            self.assertTrue(result.stdout.startswith(b"Usage: murvane-audio"), arguments)
        self.assertRegex(run("--version").stdout, rb"^murvane-audio \d+\.\d+\.\d+\n$")

    def test_every_subcommand_shows_examples(self):
        for subcommand in ("features", "evaluate", "info", "list", "merge"):
            self.assertIn(b"Examples:\n  murvane-audio " + subcommand.encode(), run(subcommand, "--help").stdout)

    def test_a_file_and_a_feature_are_needed(self):
        self.assert_refused(["--feature", "MEAN"], "no file given")
        self.assert_refused(["a.wav"], "no feature given")
        self.assert_refused(["a.wav", "--feature"], "--feature")
        self.assert_refused(["a.wav", "--feature="], "--feature")
        self.assert_usage_error(run("info"), "no file given")

    def test_an_empty_value_is_called_empty(self):
        for arguments, option in ((["--expr", ""], "--expr"), (["--expr="], "--expr"), (["--feature="], "--feature"),
                                  (["--feature", "MEAN", "--failures="], "--failures")):
            self.assert_refused(["a.wav", *arguments], f"the value of '{option}' is empty\n")
        self.assert_usage_error(self.run_here("evaluate", "a.wav", "--channel", "1", "--suffix="),
                                "the value of '--suffix' is empty\n")

    def test_an_unknown_name_draws_names_that_come_close(self):
        self.assert_refused(["a.wav", "--feature", "SPECTRM"], "unknown feature 'SPECTRM' at column 1", "SPECTRUM")
        self.assert_refused(["a.wav", "--feature", "MEAN_zerocrosingrate"],
                            "unknown feature 'zerocrosingrate' at column 6\n  MEAN_zerocrosingrate\n       ^\n",
                            "ZEROCROSSINGRATE")
        self.assert_refused(["a.wav", "--feature", "QQQQQQQQ"], "unknown feature 'QQQQQQQQ'", "murvane-audio list")

    def test_a_malformed_name_draws_the_column(self):
        for name, column, text in (
                ("_MEAN", 1, "the name of a feature is missing"),
                ("MEAN_", 6, "the name of a feature is missing"),
                ("MEAN__AMPLITUDE", 6, "the name of a feature is missing"),
                ("RANGE(0,8", 10, "')' is missing"),
                ("RANGE(0,(8)", 9, "a second '('"),
                ("RANGE(0,8)MEAN", 11, "'_' or the end was expected"),
                ("RANGE(,8)", 7, "a parameter is missing"),
                ("RANGE(0, )_SPECTRUM", 10, "a parameter is missing"),
                ("MEAN)", 5, "'_' or the end was expected"),
                ("MEAN,SPECTRUM", 5, "several features are separate arguments"),
                ("M\u00e4_", 4, "the name of a feature is missing")):
            self.assert_refused(["a.wav", "--feature", name], "malformed feature name: ", text,
                                f" at column {column}\n  {name}\n  {' ' * (column - 1)}^\n")

    def test_wrong_parameters_draw_the_right_ones(self):
        self.assert_refused(["a.wav", "--feature", "SPECTRUM(1)"], "SPECTRUM takes no parameters")
        self.assert_refused(["a.wav", "--feature", "MEAN_RANGE(1)"], "RANGE takes parameters (start,length)",
                            "column 6")

    def test_a_feature_that_is_not_built_by_name_is_called_so(self):
        self.assert_refused(["a.wav", "--feature", "myfeature"], "the feature MYFEATURE cannot be had by name")

    def test_window_and_overlap_must_fit(self):
        for window, overlap in ((0, 0), (-32, 0), (60001, 0), (32, 32), (32, 33), (32, -1), (10, 16)):
            self.assert_refused(["a.wav", "--feature", "MEAN", f"--window-ms={window}", f"--overlap-ms={overlap}"],
                                "ms is refused; it must be")
        self.assert_refused(["a.wav", "--feature", "MEAN", "--window-ms", "10"], "an overlap of 16 ms is refused")
        self.assert_refused(["a.wav", "--feature", "MEAN", "--window-ms", "32x"], "'32x'", "--window-ms")
        self.assert_refused(["a.wav", "--feature", "MEAN", "--window-ms", "99999999999999999999"], "--window-ms")

    def test_formats_are_named(self):
        self.assert_refused(["a.wav", "--feature", "MEAN", "--format", "xml"], "'xml'", "csv and npy")
        self.assert_usage_error(self.run_here("info", "a.wav", "--format", "xml"), "'xml'", "text, csv and json")

    def test_npy_needs_a_file(self):
        self.assert_refused(["a.wav", "--feature", "MEAN", "--format", "npy"], "--output")
        self.assert_refused(["a.wav", "--feature", "MEAN", "--format", "npy", "-o", "/dev/null"], "/dev/null")

    def test_an_output_never_replaces_an_input(self):
        before = self.read("a.wav")
        self.assert_refused(["a.wav", "--feature", "MEAN", "-o", "./a.wav"], "would replace the input a.wav")
        self.assert_usage_error(self.run_here("info", "a.wav", "-o", "a.wav"), "would replace the input a.wav")
        self.assertEqual(self.read("a.wav"), before)

    def test_log_levels_and_configurations_are_checked(self):
        self.assert_refused(["a.wav", "--feature", "MEAN", "--log-level", "LOUD"], "'LOUD'", "TRACE, DEBUG")
        self.assert_refused(["a.wav", "--feature", "MEAN", "--log-config", "none"], "'none'")

    def test_an_argument_behind_a_feature_that_is_neither_name_nor_file_is_taken_for_a_name(self):
        self.assert_refused(["--feature", "MEAN", "SPECTRM", "a.wav"], "unknown feature 'SPECTRM'")


class Arguments(CommandTest):
    def columns(self, *arguments):
        result = self.features(*arguments)
        self.assert_done(result)
        return result.stdout.split(b"\n")[0].decode()

    def test_several_names_may_follow_the_option_and_it_may_be_repeated(self):
        self.write_wav("a.wav")
        expected = "file,time,MEAN,ZEROCROSSINGRATE"
        for arguments in (["a.wav", "--feature", "MEAN", "ZEROCROSSINGRATE"],
                          ["a.wav", "--feature", "MEAN", "--feature", "ZEROCROSSINGRATE"],
                          ["--feature", "MEAN", "ZEROCROSSINGRATE", "a.wav"],
                          ["--feature=MEAN", "--feature=ZEROCROSSINGRATE", "a.wav"],
                          ["--feature", "MEAN", "ZEROCROSSINGRATE", "--", "a.wav"],
                          ["--feature", "MEAN", "--suppress-dc", "--feature", "ZEROCROSSINGRATE", "a.wav"]):
            self.assertEqual(self.columns(*arguments), expected, arguments)

    def test_behind_the_first_file_everything_is_a_file(self):
        self.write_wav("a.wav")
        self.write_wav("MEAN")
        result = self.features("--feature", "ZEROCROSSINGRATE", "a.wav", "MEAN")
        self.assert_done(result)
        self.assertIn(b"\nMEAN,0.032,", result.stdout)

    def test_names_with_leading_dashes_stand_behind_two_dashes(self):
        for name in ("--feature", "-", "-h.wav"):
            self.write_wav(name)
            result = self.features("--feature", "MEAN", "--", name)
            self.assert_done(result)
            self.assertIn(b"\n" + name.encode() + b",0.032,", result.stdout)

    def test_a_missing_file_behind_a_feature_is_a_file_when_it_looks_like_one(self):
        self.write_wav("a.wav")
        result = self.features("--feature", "MEAN", "missing.wav", "a.wav")
        self.assert_failed(result, "missing.wav: No such file or directory")
        self.assertIn(b"\na.wav,", result.stdout)


class ReaderGone(CommandTest):
    """Who wants no more of standard output, as `head` does, draws no message."""

    def run_without_reader(self, *arguments):
        reading, writing = os.pipe()
        os.close(reading)
        self.addCleanup(os.close, writing)
        return self.run_here(*arguments, stdout=writing)

    def test_the_exit_code_is_that_of_a_program_that_the_signal_ends(self):
        self.write_wav("a.wav")
        self.assert_done(self.run_here("annotations", "add", "a.wav", "--label", "b", "--start", "0", "--stop", "0.1"))
        for arguments in (["features", "a.wav", "--feature", "MEAN"], ["info", "a.wav"], ["list"], ["--help"],
                          ["features", "--help"], ["features", "--feature", "MEAN", "--save-config", "-"],
                          ["annotations", "list", "a.wav"], ["annotations", "validate", "a.wav"],
                          ["annotations", "export", "a.wav", "--format", "csv"]):
            result = self.run_without_reader(*arguments)
            self.assertEqual((result.returncode, result.stderr), (141, b""), arguments)

    def test_the_list_of_failures_is_still_written(self):
        self.write_wav("a.wav")
        result = self.run_without_reader("features", "none.wav", "a.wav", "--feature", "MEAN", "--failures", "f.txt")
        self.assertEqual(result.returncode, 141)
        self.assertEqual(self.read("f.txt"), b"none.wav\tNo such file or directory\n")

    def test_a_run_that_wrote_nothing_there_does_not_care(self):
        self.write_wav("a.wav")
        result = self.run_without_reader("features", "a.wav", "--feature", "MEAN", "-o", "t.csv")
        self.assert_done(result)


class HelpText(CommandTest):
    def test_common_options_stand_last(self):
        for subcommand in (["features"], ["evaluate"], ["info"], ["annotations", "list"], ["annotations", "validate"]):
            text = run(*subcommand, "--help").stdout.decode()
            options = [line.split()[0] for line in text.splitlines() if line.startswith("  --") or
                       line.startswith("  -h ")]
            self.assertEqual((options[0], options[-3:]), ("--audioset", ["--log-level", "--log-config", "-h"]),
                             subcommand)


class StandardOutput(CommandTest):
    """In place of an output, '-' is standard output, not a file called like that."""

    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")

    def assert_same(self, plain, dashed):
        for result in (plain, dashed):
            self.assert_done(result)
        self.assertNotEqual(plain.stdout, b"")
        self.assertEqual(dashed.stdout, plain.stdout)
        self.assertEqual(self.files(), ["a.wav"])

    def test_tables_go_there(self):
        self.assert_same(self.features("a.wav", "--feature", "MEAN"), self.features("a.wav", "--feature", "MEAN", "-o", "-"))
        for text in ("text", "csv", "json"):
            self.assert_same(self.run_here("info", "a.wav", "--format", text),
                             self.run_here("info", "a.wav", "--format", text, "--output", "-"))
        self.assert_same(self.run_here("annotations", "list", "--format", "csv", "a.wav"),
                         self.run_here("annotations", "list", "--format", "csv", "a.wav", "-o", "-"))

    def test_configurations_and_archives_go_there(self):
        for option in ("--save-config", "--save-computer"):
            saved = self.features("--feature", "MEAN", option, "-")
            self.assert_done(saved)
            self.assert_done(self.features("a.wav", "--feature", "MEAN", "-o", "t.csv", option, "saved"))
            self.assertEqual(saved.stdout, self.read("saved"))
            both = self.features("a.wav", "--feature", "MEAN", "-o", "t.csv", option, "-")
            self.assert_done(both)
            self.assertEqual(both.stdout, saved.stdout)

    def test_two_outputs_do_not_go_there(self):
        for arguments in (["a.wav", "--save-config", "-"], ["a.wav", "-o", "-", "--save-config", "-"],
                          ["--save-config", "-", "--save-computer", "-"]):
            self.assert_usage_error(self.features("--feature", "MEAN", *arguments),
                                    "two outputs would go to standard output")

    def test_what_needs_a_file_is_refused(self):
        for arguments in (["--format", "npy"], ["--shard", "1/2"], ["--resume"]):
            self.assert_usage_error(self.features("a.wav", "--feature", "MEAN", "-o", "-", *arguments),
                                    arguments[0], "needs --output PATH")
        for subcommand in (["features", "--feature", "MEAN"], ["evaluate", "--channel", "zeroCrossingRate(x)"]):
            self.assert_usage_error(self.run_here(*subcommand, "a.wav", "--failures", "-"), "--failures needs a file")
        self.assert_usage_error(self.run_here("merge", "part.csv", "-o", "-"), "merge needs a file")
        self.assertEqual(self.files(), ["a.wav"])

    def test_a_file_called_like_that_has_its_folder_in_front(self):
        self.assert_done(self.features("a.wav", "--feature", "MEAN", "-o", "./-"))
        self.assertEqual(self.files(), ["-", "a.wav"])


if __name__ == "__main__":
    unittest.main()
