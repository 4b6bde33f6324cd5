#!/usr/bin/env python3
"""Inputs that a list names."""

import os
import unittest

from command import CommandTest


class AudioSet(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("set"))
        for name in ("a.wav", "set/b.wav", "set/c.wav"):
            self.write_wav(name, 512)
        self.write("set/list.txt", b"# tones\n\nc.wav\nb.wav\n")

    def set_path(self, name):
        return os.path.realpath(os.path.join(self.folder, "set", name))

    def names(self, result):
        names = [line.split(",")[0] for line in result.stdout.decode().splitlines()[1:]]
        return [name for i, name in enumerate(names) if i == 0 or names[i - 1] != name]

    def test_its_files_follow_those_of_the_command_line_in_the_order_of_the_list(self):
        result = self.features("a.wav", "--audioset", "set/list.txt", "--feature", "MEAN")
        self.assert_done(result)
        self.assertEqual(self.names(result), ["a.wav", self.set_path("c.wav"), self.set_path("b.wav")])

    def test_it_does_without_files_on_the_command_line(self):
        self.write("set/one.txt", b"b.wav\n")
        result = self.features("--feature", "MEAN", "--audioset", "set/one.txt")
        self.assert_done(result)
        self.assertEqual(self.names(result), [self.set_path("b.wav")])

    def test_it_may_come_through_a_pipe(self):
        reading, writing = os.pipe()
        os.write(writing, os.fsencode(self.set_path("b.wav")) + b"\n")
        os.close(writing)
        self.addCleanup(os.close, reading)
        result = self.features("--audioset", f"/dev/fd/{reading}", "--feature", "MEAN", pass_fds=[reading])
        self.assert_done(result)
        self.assertEqual(self.names(result), [self.set_path("b.wav")])

    def test_a_name_that_leads_nowhere_fails_and_the_others_are_done(self):
        self.write("set/list.txt", b"b.wav\nnone.wav\nc.wav\n")
        result = self.features("--audioset", "set/list.txt", "--feature", "MEAN")
        self.assert_failed(result, "set/list.txt: Could not open  file none.wav (relative path detected). "
                                   "File will be skipped.")
        self.assertEqual(self.names(result), [self.set_path("b.wav"), self.set_path("c.wav")])

    def test_the_working_directory_is_no_place_to_look_for_a_name(self):
        self.write("set/list.txt", b"a.wav\n")
        environment = {key: value for key, value in os.environ.items() if key != "ZANTRIX_CPA_DATA"}
        self.assert_failed(self.features("--audioset", "set/list.txt", "--feature", "MEAN", env=environment),
                           "set/list.txt: Could not open  file a.wav (relative path detected). File will be skipped.")

    def test_a_list_that_cannot_be_read_fails_and_the_files_are_done(self):
        result = self.features("a.wav", "--audioset", "none.txt", "--feature", "MEAN")
        self.assert_failed(result, "none.txt: cannot be read: No such file or directory")
        self.assertEqual(self.names(result), ["a.wav"])

    def test_what_is_no_list_is_told_in_one_line_and_the_files_are_done(self):
        self.write("set/zero.txt", b"b.wav\nc.wav\0d.wav\n")
        self.write_wav("set/tone.wav", 4000)
        for name, why in (("set/tone.wav", "holds RIFF audio instead of names"),
                          ("set/zero.txt", "holds zero bytes, which no name has")):
            result = self.features("a.wav", "--audioset", name, "--feature", "MEAN", "--failures", "f.txt")
            self.assert_failed(result, f"{name}: {why}")
            self.assertEqual(self.names(result), ["a.wav"])
            self.assertEqual(self.read("f.txt").decode(), f"{name}\t{why}\n")

    def test_a_byte_order_mark_is_no_part_of_the_first_name(self):
        for content in (b"\xef\xbb\xbfb.wav\nc.wav\n", b"\xef\xbb\xbf# tones\r\nb.wav\r\nc.wav\r\n",
                        b"\xef\xbb\xbf\nb.wav\nc.wav"):
            self.write("set/list.txt", content)
            result = self.features("--audioset", "set/list.txt", "--feature", "MEAN")
            self.assert_done(result)
            self.assertEqual(self.names(result), [self.set_path("b.wav"), self.set_path("c.wav")])

    def test_what_is_there_but_no_recording_is_called_the_same_everywhere(self):
        os.mkdir(self.path("set/folder"))
        os.mkdir(self.path("data"))
        os.mkdir(self.path("data/other"))
        self.write("set/noise.wav", b"This is not a recording.\n" * 10)
        self.write("set/list.txt", b"folder\r\nnone.wav\r\nother\r\nnoise.wav\r\n" + os.fsencode(self.folder) + b"\n")
        result = self.features("--audioset", "set/list.txt", "--feature", "MEAN", "--failures", "f.txt",
                               env=os.environ | {"ZANTRIX_CPA_DATA": os.fsdecode(self.path("data"))})
        lines = [line.split("\t") for line in self.read("f.txt").decode().splitlines()]
        other = os.path.realpath(self.path("data/other")).decode()
        self.assertEqual([name for name, why in lines],
                         [self.set_path("folder"), "none.wav", other, self.set_path("noise.wav"),
                          os.path.realpath(self.folder)])
        self.assertEqual([why for name, why in lines if "noise" not in name],
                         ["is a directory", "Could not open  file none.wav (relative path detected). File will be "
                          "skipped.", "is a directory", "is a directory"])
        told = [f"{'set/list.txt' if name == 'none.wav' else name}: {why}" for name, why in lines]
        self.assert_failed(result, *told)

    def test_a_list_of_nothing_fails_and_makes_no_output(self):
        self.write("set/list.txt", b"# nothing\n")
        result = self.features("--audioset", "set/list.txt", "--feature", "MEAN", "--output", "new.csv")
        self.assert_failed(result, "no file to process")
        self.assertEqual((result.stdout, self.files()), (b"", ["a.wav", "set"]))

    def test_neither_the_list_nor_its_files_are_overwritten(self):
        for output in ("set/list.txt", "set/b.wav"):
            content = self.read(output)
            self.assert_usage_error(
                self.features("--audioset", "set/list.txt", "--feature", "MEAN", "--output", output), "would replace")
            self.assertEqual(self.read(output), content)


if __name__ == "__main__":
    unittest.main()
