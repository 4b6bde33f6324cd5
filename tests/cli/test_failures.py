#!/usr/bin/env python3
"""--failures: which inputs failed, and why."""

import os
import signal
import subprocess
import time
import unittest

from command import PROGRAM, CommandTest, flac_bytes


class Failures(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")

    def failures(self, *arguments, code=1):
        result = self.features(*arguments, "--feature", "MEAN", "--failures", "f.txt")
        self.assertEqual(result.returncode, code, result.stderr)
        return self.read("f.txt").decode()

    def test_each_input_that_failed_has_a_line_with_its_reason(self):
        self.write("noise.txt", b"This is not a recording.\n" * 10)
        self.write("half.flac", flac_bytes([1, 2, 3], promised=20000))
        lines = self.failures("missing.wav", "a.wav", "half.flac", "noise.txt", "a.wav", "missing.wav").splitlines()
        fields = [line.split("\t") for line in lines]
        self.assertEqual([field[0] for field in fields], ["missing.wav", "half.flac", "noise.txt", "missing.wav"])
        self.assertEqual(fields[0][1], "No such file or directory")
        self.assertEqual(fields[1][1], "cannot be read to its end: 95 windows instead of 155")
        self.assertRegex(fields[2][1], "^cannot be read as audio: .+")
        self.assertEqual({len(field) for field in fields}, {2})

    def test_it_is_empty_when_none_failed(self):
        self.write("f.txt", b"old\n")
        self.assertEqual(self.failures("a.wav", code=0), "")

    def test_it_is_the_same_whatever_the_number_of_jobs(self):
        names = [name for i in range(100) for name in ("a.wav", f"missing-{i}.wav")]
        lists = [self.failures(*names, "--jobs", jobs) for jobs in ("1", "2", "7")]
        self.assertEqual(lists[0].count("\n"), 100)
        self.assertEqual(lists, [lists[0]] * 3)

    def test_names_and_reasons_stay_on_one_line_in_two_fields(self):
        self.assertEqual(self.failures("tab\tline\nreturn\rescape\x1b back\\slash d\u00e9j\u00e0.wav"),
                         "tab\\tline\\nreturn\\rescape\\x1b back\\\\slash d\u00e9j\u00e0.wav\t"
                         "No such file or directory\n")

    def test_bytes_that_are_no_text_stay_as_they_are(self):
        self.features(b"caf\xe9.wav", "--feature", "MEAN", "--failures", "f.txt")
        self.assertEqual(self.read("f.txt"), b"caf\xe9.wav\tNo such file or directory\n")

    def test_reasons_do_not_depend_on_the_log_level(self):
        for level in ("OFF", "TRACE"):
            self.assertEqual(self.failures("missing.wav", "--log-level", level),
                             "missing.wav\tNo such file or directory\n")

    def test_it_is_written_when_the_run_is_interrupted(self):
        self.write_silence("hour.wav", 3600)
        process = subprocess.Popen([PROGRAM, "features", "missing.wav", *["hour.wav"] * 300, "--feature", "SPECTRUM",
                                    "-o", "t.csv", "--failures", "f.txt"], cwd=self.folder, stderr=subprocess.PIPE)
        self.assertIn(b"missing.wav", process.stderr.readline())
        time.sleep(0.2)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.communicate(timeout=30)[1], b"murvane-audio: interrupted\n")
        self.assertEqual(process.returncode, 130)
        self.assertEqual(self.read("f.txt"), b"missing.wav\tNo such file or directory\n")
        self.assertEqual(self.files(), ["a.wav", "f.txt", "hour.wav"])

    def test_it_is_written_when_the_output_fails(self):
        result = self.features("missing.wav", "a.wav", "--feature", "MEAN", "-o", "/dev/full", "--failures", "f.txt")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(self.read("f.txt"), b"missing.wav\tNo such file or directory\n")

    def test_it_replaces_no_input_and_no_other_output(self):
        for arguments in (["--failures", "a.wav"], ["-o", "t.csv", "--failures", "t.csv"],
                          ["-o", "./t.csv", "--failures", "t.csv"],
                          ["--failures", "t.csv", "-o", os.fsdecode(self.path("t.csv"))]):
            self.assert_usage_error(self.features("a.wav", "--feature", "MEAN", *arguments), "t.csv" if
                                    "t.csv" in arguments else "a.wav")
        self.assertEqual(self.files(), ["a.wav"])

    def test_a_list_that_cannot_be_written_is_told(self):
        self.assert_failed(self.features("a.wav", "--feature", "MEAN", "-o", "t.csv", "--failures", "none/f.txt"),
                           "cannot write none/f.txt: No such file or directory")
        self.assertEqual(self.files(), ["a.wav"])
        result = self.features("missing.wav", "a.wav", "--feature", "MEAN", "-o", "t.csv", "--failures", "/dev/full")
        self.assert_failed(result, "missing.wav: No such file or directory",
                           "cannot write /dev/full: No space left on device")
        self.assertEqual(self.files(), ["a.wav", "t.csv"])


if __name__ == "__main__":
    unittest.main()
