#!/usr/bin/env python3
"""The command among other processes: signals, pipes, terminals, memory and time."""

import os
import pty
import re
import select
import signal
import subprocess
import time
import unittest

from command import PROGRAM, CommandTest


class Interrupted(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_silence("hour.wav", 3600)
        self.write("old.csv", b"old")

    def start_long(self, *arguments, **options):
        """A run over enough inputs to go on for much longer than the test takes."""
        return self.start(*arguments, *["hour.wav"] * 500, **options)

    def assert_ends(self, process, *lines):
        self.assertEqual(process.wait(30), 130)
        self.assertEqual(process.stderr.read().decode().splitlines(), list(lines))

    def test_the_output_is_left_as_it_was_and_temporaries_are_gone(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            for options in (["-o", "old.csv"], ["-o", "new.csv"], ["--format", "npy", "-o", "new.npy"]):
                process = self.start_long("features", "--feature", "SPECTRUM", *options)
                self.wait_for(lambda: any(os.path.getsize(self.path(name)) > 0 for name in self.files()
                                          if ".tmp-" in name and ".json" not in name))
                process.send_signal(number)
                self.assert_ends(process, "murvane-audio: interrupted")
                self.assertEqual(self.files(), ["hour.wav", "old.csv"])
                self.assertEqual(self.read("old.csv"), b"old")

    def test_standard_output_ends_with_a_whole_line(self):
        with open(self.path("out"), "wb") as out:
            process = self.start_long("features", "--feature", "MEAN", stdout=out)
            self.wait_for(lambda: os.path.getsize(self.path("out")) > 0)
            process.send_signal(signal.SIGINT)
            self.assert_ends(process, "murvane-audio: interrupted")
        self.assertTrue(self.read("out").endswith(b",0\n"))

    def test_a_reader_that_does_not_read_keeps_nobody(self):
        process = self.start_long("features", "--feature", "MEAN", stdout=subprocess.PIPE)
        self.addCleanup(process.stdout.close)
        select.select([process.stdout], [], [], 60)
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(30), 130)

    def test_info_stops_as_well(self):
        process = self.start_long("info", "-o", "new.txt", "--log-level", "DEBUG")
        process.stderr.readline()
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(30), 130)
        self.assertEqual(self.files(), ["hour.wav", "old.csv"])


class ClosedPipe(CommandTest):
    def test_a_reader_that_goes_away_ends_the_command(self):
        self.write_silence("hour.wav", 3600)
        for subcommand in (["features", "hour.wav", "--feature", "SPECTRUM"], ["list"]):
            read_end, write_end = os.pipe()
            process = subprocess.Popen([PROGRAM, *subcommand], cwd=self.folder, stdout=write_end,
                                       stderr=subprocess.PIPE)
            os.close(write_end)
            if subcommand[0] == "features":
                self.assertTrue(os.read(read_end, 10).startswith(b"file,time,"))
            os.close(read_end)
            message = process.communicate(timeout=60)[1]
            self.assertEqual((process.returncode, message), (141, b""))


class Terminal(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_silence("long.wav", 600)

    def run_on_terminal(self, *arguments, stdout=subprocess.DEVNULL):
        """Runs with standard error on a terminal; gives the exit code, what it showed, and how long that took."""
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        start = time.monotonic()
        process = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                                   stdout=slave if stdout is None else stdout, stderr=slave)
        os.close(slave)
        shown = b""
        while True:
            try:
                piece = os.read(master, 65536)
            except OSError:
                break
            if not piece:
                break
            shown += piece
        return process.wait(60), shown.decode(), time.monotonic() - start

    def test_progress_shows_files_rate_and_time_left(self):
        # Enough to do for the line to be drawn more than once on any machine.
        code, shown, seconds = self.run_on_terminal("features", *["long.wav"] * 40, "--feature", "SPECTRUM", "-o",
                                                    "t.csv")
        self.assertEqual(code, 0)
        lines = shown.split("\r")
        self.assertTrue(any(re.fullmatch(r"[0-9]+/40 files, [0-9:]+ of audio, [0-9]+ x real time, [0-9:]+ left\x1b\[K",
                                         line) for line in lines), shown)
        self.assertLessEqual(len(lines), 10 * seconds + 4)

    def test_the_line_is_gone_at_the_end(self):
        code, shown, _ = self.run_on_terminal("features", "long.wav", "--feature", "MEAN", "-o", "t.csv")
        self.assertTrue(shown.endswith("\r\x1b[K"), shown)
        self.assertNotIn("\n", shown)

    def test_messages_stand_on_lines_of_their_own(self):
        code, shown, _ = self.run_on_terminal("features", "long.wav", "missing.wav", "long.wav", "--feature", "MEAN",
                                              "-o", "t.csv")
        self.assertEqual(code, 1)
        self.assertIn("\r\x1b[Kmurvane-audio: missing.wav: No such file or directory\r\n", shown)

    def test_info_shows_progress(self):
        self.assertIn("0/1 files", self.run_on_terminal("info", "long.wav")[1])

    def test_files_that_are_not_there_are_counted(self):
        self.assertIn("2/3 files", self.run_on_terminal("info", "none.wav", "gone.wav", "long.wav")[1])
        self.write("list.txt", b"none.wav\nlong.wav\n")
        self.assertIn("1/2 files", self.run_on_terminal("features", "--audioset", "list.txt", "--feature", "MEAN", "-o",
                                                        "t.csv", "--jobs", "1")[1])

    def test_there_is_none_among_results_on_the_terminal(self):
        self.write_wav("short.wav")
        self.assertNotIn("files", self.run_on_terminal("info", "short.wav", stdout=None)[1])

    def test_there_is_none_without_a_terminal(self):
        self.assert_done(self.features("long.wav", "--feature", "SPECTRUM", "-o", "t.csv"))


class Resources(CommandTest):
    def test_memory_does_not_grow_with_the_length_of_a_file(self):
        self.write_silence("minute.wav", 60)
        self.write_silence("hour.wav", 3600)
        for arguments in (["features", "--feature", "SPECTRUM500HZ"],
                          ["features", "--feature", "SPECTRUM500HZ", "--format", "npy", "-o", "t.npy"], ["info"]):
            minute = self.peak(*arguments, "minute.wav")
            hour = self.peak(*arguments, "hour.wav")
            self.assertLess(hour - minute, 4, arguments)

    def test_memory_does_not_grow_with_the_number_of_files(self):
        self.write_wav("a.wav", 3000)
        few = self.peak("features", "--feature", "SPECTRUM", *["a.wav"] * 1000)  # more than can wait for their turns
        many = self.peak("features", "--feature", "SPECTRUM", *["a.wav"] * 3000)
        self.assertLess(many - few, 4)

    def test_a_file_that_was_never_completed_is_not_held_in_memory(self):
        for name, seconds in (("minute.wav", 60), ("hour.wav", 3600)):
            self.write_silence(name, seconds)
            with open(self.path(name), "r+b") as file:
                file.seek(40)
                file.write(bytes(4))
                file.seek(44)
                file.write(b"\1" * 16)
        minute = self.peak("info", "minute.wav", "--log-level", "ERROR")
        self.assertLess(self.peak("info", "hour.wav", "--log-level", "ERROR") - minute, 4)

    def test_standard_error_is_empty_on_success(self):
        self.write_wav("a.wav", 50000)
        for arguments in (["features", "a.wav", "--feature", "SPECTRUM", "ZEROCROSSINGRATE"],
                          ["features", "a.wav", "--feature", "SPECTRUM", "--format", "npy", "-o", "t.npy"],
                          ["features", "a.wav", "--feature", "MEAN", "--suppress-dc", "-o", "t.csv"],
                          ["info", "a.wav"], ["list"], ["list", "RANGE"], ["--version"], ["--help"]):
            self.assert_done(self.run_here(*arguments))


if __name__ == "__main__":
    unittest.main()
