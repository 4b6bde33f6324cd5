#!/usr/bin/env python3
"""What a slip of the shell must not replace: recordings that a run does not read."""

import os
import unittest

from command import CommandTest, flac_bytes

MEAN = ("--feature", "MEAN")


class Recordings(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")
        self.write_wav("call.wav", 512)
        self.write("call.flac", flac_bytes([1, 2]))
        self.assert_done(self.features("a.wav", *MEAN, "--shard", "1/1", "-o", "part.csv"))
        self.before = {name: self.read(name) for name in self.files()}

    def assert_kept(self, output, *arguments, **options):
        kind = "FLAC" if output.endswith("flac") else "RIFF"
        self.assert_usage_error(self.run_here(*arguments, **options), f"the output {output} would replace a recording",
                                f"begins like {kind} audio")
        self.assertEqual({name: self.read(name) for name in self.files()}, self.before)

    def test_no_output_of_features_replaces_one(self):
        for name in ("call.wav", "./call.flac"):
            for option in ("-o", "--failures", "--save-config", "--save-computer"):
                self.assert_kept(name, "features", "a.wav", *MEAN, option, name)
                self.assert_kept(name, "features", "-", *MEAN, option, name, input=b"a.wav\n")
            for option in ("--save-config", "--save-computer"):
                self.assert_kept(name, "features", *MEAN, option, name)

    def test_nothing_is_done_before(self):
        self.assert_kept("call.wav", "features", "a.wav", *MEAN, "--save-config", "c", "--failures", "f.txt", "-o",
                         "call.wav")

    def test_no_output_of_other_subcommands_replaces_one(self):
        self.assert_kept("call.wav", "info", "a.wav", "-o", "call.wav")
        self.assert_kept("call.wav", "evaluate", "a.wav", "--channel", "zeroCrossingRate(x)", "--failures", "call.wav")
        self.assert_kept("call.flac", "merge", "part.csv", "-o", "call.flac")

    def test_links_are_followed(self):
        os.symlink("call.wav", self.path("link"))
        self.assert_usage_error(self.features("a.wav", *MEAN, "-o", "link"), "the output link would replace a recording")
        self.assertEqual(self.read("call.wav"), self.before["call.wav"])

    def test_a_recording_that_is_read_is_called_an_input(self):
        self.assert_usage_error(self.features("call.wav", *MEAN, "-o", "call.wav"), "would replace the input call.wav")

    def test_evaluation_replaces_its_own_recordings(self):
        for _ in range(2):
            self.assert_done(self.run_here("evaluate", "a.wav", "--channel", "zeroCrossingRate(x)", "--annotate", "0"))

    def test_text_is_replaced_whatever_its_first_word_is(self):
        for text in (b"RIFF.wav\tNo such file or directory\n", b"FORM\n", b"", b"ID3"):
            self.write("f.txt", text)
            self.assert_done(self.features("a.wav", *MEAN, "-o", "t.csv", "--failures", "f.txt"))
            self.assertEqual(self.read("f.txt"), b"")


if __name__ == "__main__":
    unittest.main()
