#!/usr/bin/env python3
"""Inputs that are named on standard input or in a list, by features and info alike."""

import json
import os
import subprocess
import tempfile
import time
import unittest

from command import PROGRAM, CommandTest


class NamesTest(CommandTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("calls"))
        for name in ("a.wav", "calls/b.wav", "calls/c.wav"):
            self.write_wav(name, 512)

    def run_with(self, names, *arguments, **options):
        """Runs with text on standard input."""
        return subprocess.run([PROGRAM, *arguments], cwd=self.folder, input=names, capture_output=True, timeout=300,
                              **options)

    def names(self, result, *failures):
        """The inputs that a run of features told of."""
        self.assertEqual(self.messages(result), ["murvane-audio: " + line for line in failures])
        self.assertEqual(result.returncode, 1 if failures else 0)
        names = [line.rsplit(b",", 2)[0] for line in result.stdout.split(b"\n")[1:-1]]
        return [name.decode("utf-8", "surrogateescape") for name in names[::3]]


class StandardInput(NamesTest):
    def features_of(self, names, *arguments):
        return self.run_with(names, "features", "-", "--feature", "MEAN", *arguments)

    def test_each_line_names_a_file_of_the_working_directory(self):
        self.assertEqual(self.names(self.features_of(b"a.wav\ncalls/c.wav\n./calls/b.wav\n")),
                         ["a.wav", "calls/c.wav", "./calls/b.wav"])

    def test_the_last_line_need_not_end(self):
        self.assertEqual(self.names(self.features_of(b"calls/c.wav\na.wav")), ["calls/c.wav", "a.wav"])

    def test_empty_lines_and_comments_are_skipped_and_nothing_is_trimmed(self):
        self.write_wav(" blanks .wav ", 512)
        self.assertEqual(self.names(self.features_of(b"# comment\n\na.wav\n#a.wav\n blanks .wav \n"), ),
                         ["a.wav", " blanks .wav "])
        self.assertEqual(self.names(self.features_of(b" #a.wav\n a.wav\n\t\na.wav\n"),
                                    " #a.wav: No such file or directory", " a.wav: No such file or directory",
                                    "?: No such file or directory"), ["a.wav"])

    def test_carriage_returns_are_ignored_unless_a_file_is_called_like_that(self):
        self.write_wav("odd.wav\r", 512)
        self.assertEqual(self.names(self.features_of(b"# list\r\n\r\na.wav\r\nodd.wav\r\nnone.wav\r\n"),
                                    "none.wav: No such file or directory"), ["a.wav", '"odd.wav\r"'])

    def test_names_may_be_any_bytes(self):
        for name in ("stra\u00dfe \u20ac \U0001f4de.wav".encode(), b"caf\xe9.wav", b"a\"b.wav"):
            self.write_wav(name, 512)
            result = self.features_of(name + b"\n")
            self.assertEqual(result.returncode, 0)
            self.assertEqual(result.stdout.count(name.replace(b'"', b'""')), 3)

    def test_a_zero_byte_cannot_hide_what_follows(self):
        self.assertEqual(self.names(self.features_of(b"a.wav\0b.wav\ncalls/b.wav\n"),
                                    "a.wav?b.wav: a name with a zero byte leads to no file"), ["calls/b.wav"])

    def test_the_same_file_may_stand_there_twice(self):
        self.assertEqual(self.names(self.features_of(b"a.wav\na.wav\n")), ["a.wav", "a.wav"])

    def test_missing_files_and_folders_fail_alone(self):
        self.assertEqual(self.names(self.features_of(b"none.wav\na.wav\ncalls\n"),
                                    "none.wav: No such file or directory", "calls: is a directory"), ["a.wav"])

    def test_its_names_stand_where_the_dash_does(self):
        self.write("list.txt", b"calls/b.wav\n")
        result = self.run_with(b"calls/c.wav\n", "features", "--feature", "MEAN", "a.wav", "-", "a.wav", "--audioset",
                               "list.txt")
        self.assertEqual(self.names(result), ["a.wav", "calls/c.wav", "a.wav",
                                              os.path.realpath(self.path("calls/b.wav")).decode()])

    def test_the_dash_may_follow_the_features(self):
        self.assertEqual(self.names(self.run_with(b"a.wav\n", "features", "--feature", "MEAN", "-")), ["a.wav"])

    def test_behind_two_dashes_it_is_a_file(self):
        self.write_wav("-", 512)
        self.assertEqual(self.names(self.run_with(b"a.wav\n", "features", "--feature", "MEAN", "--", "-")), ["-"])
        self.assertEqual(self.names(self.run_with(b"a.wav\n", "features", "-", "--feature", "MEAN", "--", "-")),
                         ["a.wav", "-"])

    def test_it_can_be_read_once(self):
        self.assert_usage_error(self.run_with(b"a.wav\n", "features", "-", "-", "--feature", "MEAN"),
                                "'-' is given twice")

    def test_no_name_is_no_file(self):
        result = self.features_of(b"# nothing\n\n", "-o", "t.csv")
        self.assert_failed(result, "no file to process")
        self.assertEqual(self.files(), ["a.wav", "calls"])

    def test_standard_input_that_cannot_be_read_is_told(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        result = subprocess.run([PROGRAM, "features", "a.wav", "-", "--feature", "MEAN", "--failures", "f.txt"],
                                cwd=self.folder, stdin=folder, capture_output=True, timeout=60)
        self.assertEqual(self.names(result, "standard input: cannot be read: Is a directory"), ["a.wav"])
        self.assertEqual(self.read("f.txt"), b"-\tcannot be read: Is a directory\n")

    def test_failures_have_the_name_that_messages_have(self):
        self.features_of(b"none.wav\r\n./calls\n", "--failures", "f.txt")
        self.assertEqual(self.read("f.txt"), b"none.wav\tNo such file or directory\n./calls\tis a directory\n")

    def test_no_output_replaces_a_file_that_is_named_there(self):
        content = self.read("a.wav")
        self.assert_usage_error(self.features_of(b"calls/b.wav\n./a.wav\n", "-o", "a.wav"), "would replace", "./a.wav")
        self.assertEqual(self.read("a.wav"), content)

    def test_audio_is_no_list_of_names(self):
        result = self.features_of(self.read("a.wav"), "a.wav", "--failures", "f.txt")
        self.assertEqual(self.names(result, "standard input: holds RIFF audio instead of names"), ["a.wav"])
        self.assertEqual(self.read("f.txt"), b"-\tholds RIFF audio instead of names\n")

    def test_a_byte_order_mark_is_no_part_of_the_first_name(self):
        self.assertEqual(self.names(self.features_of(b"\xef\xbb\xbfa.wav\n")), ["a.wav"])

    def test_an_endless_line_takes_no_memory(self):
        with open("/dev/zero", "rb") as zeros:
            process = subprocess.Popen([PROGRAM, "features", "-", "--feature", "MEAN"], cwd=self.folder, stdin=zeros,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            time.sleep(1)
            with open(f"/proc/{process.pid}/statm") as statm:
                pages = int(statm.read().split()[1])
            process.terminate()
            self.assertEqual(process.wait(30), 130)
            process.stderr.close()
        self.assertLess(pages * 4096, 100 << 20)


class Lists(NamesTest):
    def features_of(self, content, *arguments):
        self.write("calls/list.txt", content)
        return self.features("--audioset", "calls/list.txt", "--feature", "MEAN", *arguments)

    def resolved(self, *names):
        return [os.path.join(os.path.realpath(self.folder), "calls", name) for name in names]

    def test_carriage_returns_are_ignored_unless_a_file_is_called_like_that(self):
        self.write_wav("calls/odd.wav\r", 512)
        result = self.features_of(b"# list\r\n\r\nb.wav\r\nnone.wav\r\nodd.wav\r\nc.wav")
        self.assertEqual(self.names(result, "calls/list.txt: Could not open  file none.wav (relative path detected). "
                                    "File will be skipped."),
                         [*self.resolved("b.wav"), '"' + self.resolved("odd.wav\r")[0] + '"', *self.resolved("c.wav")])

    def test_names_may_be_absolute_of_any_bytes_and_folders_fail(self):
        os.mkdir(self.path("calls/folder"))
        name = b"caf\xe9 \xe2\x82\xac.wav"
        self.write_wav(b"calls/" + name, 512)
        result = self.features_of(self.path("a.wav") + b"\n" + name + b"\nfolder\nb.wav\nb.wav\n")
        self.assertEqual(self.names(result, self.resolved("folder")[0] + ": is a directory"),
                         [os.path.join(self.folder, "a.wav"),
                          *self.resolved(name.decode("utf-8", "surrogateescape"), "b.wav", "b.wav")])

    def test_failures_name_the_entry_and_lists_that_cannot_be_read(self):
        self.features_of(b"b.wav\nnone.wav\n", "--failures", "f.txt")
        self.assertEqual(self.read("f.txt"), b"none.wav\tCould not open  file none.wav (relative path detected). File "
                                             b"will be skipped.\n")
        self.features("a.wav", "--audioset", "none.txt", "--feature", "MEAN", "--failures", "f.txt")
        self.assertEqual(self.read("f.txt"), b"none.txt\tcannot be read: No such file or directory\n")

    def test_a_folder_is_no_list(self):
        self.assert_failed(self.features("a.wav", "--audioset", "calls", "--feature", "MEAN"),
                           "calls: cannot be read: Is a directory")

    def test_messages_come_in_the_order_of_the_list_whatever_the_number_of_jobs(self):
        content = b"".join(b"none-%d.wav\nb.wav\n" % i for i in range(50))
        results = [self.features_of(content, "--jobs", jobs) for jobs in ("1", "2", "7")]
        expected = [f"calls/list.txt: Could not open  file none-{i}.wav (relative path detected). File will be skipped."
                    for i in range(50)]
        for result in results:
            self.assertEqual(self.names(result, *expected), self.resolved("b.wav") * 50)


class Info(NamesTest):
    def objects(self, result):
        return [item["name"] for item in json.loads(result.stdout)]

    def test_it_takes_names_from_standard_input_and_lists(self):
        self.write("calls/list.txt", b"c.wav\n# b.wav\nb.wav\n")
        result = self.run_with(b"a.wav\n", "info", "--format", "json", "-", "--audioset", "calls/list.txt")
        self.assert_done(result)
        self.assertEqual(self.objects(result), ["a.wav", *(os.path.realpath(self.path("calls/" + name)).decode()
                                                            for name in ("c.wav", "b.wav"))])

    def test_entries_that_lead_nowhere_fail_and_the_others_are_told_of(self):
        self.write("calls/list.txt", b"none.wav\nb.wav\n")
        result = self.run_here("info", "--format", "json", "--audioset", "calls/list.txt")
        self.assert_failed(result, "calls/list.txt: Could not open  file none.wav (relative path detected). File will "
                                   "be skipped.")
        self.assertEqual(len(self.objects(result)), 1)
        self.assert_failed(self.run_here("info", "a.wav", "--audioset", "none.txt"),
                           "none.txt: cannot be read: No such file or directory")

    def test_no_name_is_no_file(self):
        self.assert_failed(self.run_with(b"\n", "info", "-"), "no file to process")
        self.assert_usage_error(self.run_here("info"), "no file given")
        self.assert_usage_error(self.run_with(b"", "info", "-", "-"), "'-' is given twice")

    def test_neither_the_list_nor_its_files_are_overwritten(self):
        self.write("list.txt", b"calls/b.wav\n")
        for output in ("list.txt", "calls/b.wav"):
            self.assert_usage_error(self.run_here("info", "--audioset", "list.txt", "-o", output), "would replace")


class ManyNames(NamesTest):
    def peak_with(self, names, *arguments):
        """The largest resident size of a run that gets these names, which lead to no file, in MB."""
        with tempfile.TemporaryFile() as file:
            file.write(names)
            file.seek(0)
            return self.peak(*arguments, code=1, stdin=file, stderr=subprocess.DEVNULL)

    def test_a_hundred_thousand_names_take_little_more_than_their_text(self):
        names = b"".join(b"calls/of/a/folder/that/does/not/exist/%08d.wav\n" % i for i in range(100000))
        for arguments in (["features", "-", "--feature", "MEAN"], ["info", "-"]):
            few = self.peak_with(names[:4700], *arguments)
            many = self.peak_with(names, *arguments)
            self.assertLess(many - few, 30)
        self.write("list.txt", names)
        self.peak_with(b"", "features", "--audioset", "list.txt", "--feature", "MEAN")


if __name__ == "__main__":
    unittest.main()
