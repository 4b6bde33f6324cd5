#!/usr/bin/env python3
"""Several files at a time: the same bytes, the same messages, whoever comes first."""

import json
import os
import pty
import signal
import subprocess
import time
import unittest

from command import PROGRAM, CommandTest, flac_bytes, tone, wav_bytes

JOBS = ("1", "2", "7")


class SameOutput(CommandTest):
    """Files of all lengths, and such that fail before, amid and behind their rows."""

    def setUp(self):
        super().setUp()
        self.write_wav("long.wav", 120000)
        self.write_wav("slow.wav", 16000, rate=16000)
        self.write_wav("tiny.wav", 100)
        self.write("noise.txt", b"This is not a recording.\n" * 10)
        self.write("half.flac", flac_bytes([5, 6, 7] * 20, promised=1000000))
        self.names = []
        for i in range(40):
            self.names.append(self.write(f"{i}.wav", wav_bytes(tone(1000 + 97 * i, 300 + 10 * i))))
            if i % 8 == 3:
                self.names += ["long.wav", "missing.wav", "tiny.wav"]
            if i % 8 == 5:
                self.names += ["half.flac", "slow.wav", "noise.txt", "0.wav"]

    def outcomes(self, *arguments, names=None, outputs=("t", "t.json")):
        """What came of a run with each number of jobs: exit code, output, messages, files."""
        outcomes = []
        for jobs in JOBS:
            result = self.features(*(names or self.names), *arguments, "--jobs", jobs)
            files = {}
            for name in outputs:
                if name in self.files():
                    files[name] = self.read(name)
                    os.remove(self.path(name))
            outcomes.append((result.returncode, result.stdout, result.stderr.decode(), files))
        return outcomes

    def assert_same(self, outcomes):
        for jobs, outcome in zip(JOBS, outcomes, strict=True):
            for part, expected in zip(outcome, outcomes[0], strict=True):
                self.assertTrue(part == expected, f"differs with {jobs} jobs: {str(part)[:2000]} instead of "
                                f"{str(expected)[:2000]}")
        return outcomes[0]

    def test_csv_to_standard_output(self):
        code, output, messages, _ = self.assert_same(self.outcomes("--feature", "MEAN", "ZEROCROSSINGRATE"))
        self.assertEqual(code, 1)
        rows = [line.split(",")[0] for line in output.decode().splitlines()[1:]]
        names = [name for i, name in enumerate(rows) if i == 0 or rows[i - 1] != name]
        expected = [name for name in self.names if name not in ("missing.wav", "tiny.wav", "half.flac", "noise.txt")]
        self.assertEqual(names, expected)

    def test_csv_and_npy_to_files(self):
        for options in (["--format", "csv"], ["--format", "npy"]):
            for feature in ("ZEROCROSSINGRATE", "SPECTRUM"):
                outcome = self.assert_same(self.outcomes("--feature", feature, "-o", "t", *options))
                self.assertEqual(outcome[0], 1)
                self.assertIn("t", outcome[3])

    def test_the_output_is_that_of_the_files_that_do_not_fail(self):
        good = [name for name in self.names if name not in ("missing.wav", "half.flac", "noise.txt")]
        for options in (["-o", "t"], ["-o", "t", "--format", "npy"]):
            some = self.outcomes("--feature", "MEAN", *options)
            for outcome in self.outcomes("--feature", "MEAN", *options, names=good):
                self.assertTrue(outcome[3]["t"] == some[0][3]["t"])
                if "npy" in options:
                    self.assertEqual(*(json.loads(files["t.json"])["inputs"] for files in (outcome[3], some[0][3])))

    def test_rows_of_a_failing_file_that_are_too_many_to_wait_stand_in_standard_output_every_time(self):
        names = ["0.wav", "half.flac", "1.wav", "half.flac"]
        code, output, messages, _ = self.assert_same(self.outcomes("--feature", "AMPLITUDE", names=names))
        self.assertIn("half.flac: rows that it gave before stand in the output", messages)
        # 20 blocks of 4096 samples give 1919 windows
        self.assertEqual(output.count(b"half.flac"), 2 * 1919)

    def test_messages_come_in_the_order_of_the_files_and_in_one_piece(self):
        messages = self.assert_same(self.outcomes("--feature", "MEAN"))[2].splitlines()
        told = [line.split(": ")[1] for line in messages]
        self.assertEqual(told, [name for name in self.names
                                if name in ("slow.wav", "missing.wav", "tiny.wav", "half.flac", "noise.txt")])

    def test_records_of_the_library_stay_with_their_files(self):
        messages = self.assert_same(self.outcomes("--feature", "SPECTRUM", "--window-ms", "20", "--overlap-ms", "0",
                                                  "--log-level", "DEBUG"))[2].splitlines()
        told = [line.split(": ")[1] for line in messages]
        order = [name for i, name in enumerate(told) if i == 0 or told[i - 1] != name]
        self.assertEqual(order, self.names)

    def test_a_file_that_does_not_fit_fails_with_the_same_words(self):
        names = ["0.wav", "slow.wav", "1.wav", "slow.wav", "2.wav"]
        outcome = self.assert_same(self.outcomes("--feature", "AMPLITUDE", names=names))
        self.assertEqual(outcome[2].count("slow.wav: does not fit into the table"), 2)
        self.assertNotIn(b"slow.wav", outcome[1])

    def test_the_first_file_with_rows_decides_the_columns(self):
        outcome = self.assert_same(self.outcomes("--feature", "AMPLITUDE", names=["tiny.wav", "missing.wav", "slow.wav",
                                                                                  "0.wav", "tiny.wav"]))
        self.assertIn("0.wav: does not fit into the table", outcome[2])
        self.assertEqual(outcome[1].count(b"\nslow.wav,"), (16000 - 512) // 256 + 1)
        self.assertNotIn("tiny.wav: does not fit", outcome[2])

    def test_a_table_begun_by_a_file_that_fails_is_begun_anew(self):
        names = ["half.flac", "slow.wav", "0.wav", "slow.wav"]
        for options in (["-o", "t"], ["-o", "t", "--format", "npy"]):
            outcome = self.assert_same(self.outcomes("--feature", "AMPLITUDE", *options, names=names))
            self.assertIn("0.wav: does not fit into the table: AMPLITUDE gives 256 values at 8000 Hz, but AMPLITUDE "
                          "gives 512 values for the inputs before", outcome[2])

    def test_features_that_remember_forget_between_files(self):
        outcome = self.assert_same(self.outcomes("--feature", "SLIDINGWINDOW(5)_MEAN", "DELTATOSLIDINGMEAN_MEAN",
                                                 "--suppress-dc", "--expr", "z=zeroCrossingRate(x) - 1"))
        self.assertEqual(outcome[0], 1)


class Order(CommandTest):
    def test_a_short_file_waits_for_a_long_one(self):
        self.write_silence("hour.wav", 3600)
        self.write_wav("short.wav", 1000)
        result = self.features("hour.wav", *["short.wav"] * 200, "--feature", "MEAN", "--jobs", "4", "-o", "t.csv")
        self.assert_done(result)
        lines = self.read("t.csv").split(b"\n")
        self.assertEqual({line.split(b",")[0] for line in lines[1:225000]}, {b"hour.wav"})
        self.assertEqual(len(lines), 1 + 224999 + 200 * 6 + 1)

    def test_files_too_large_to_wait_in_memory(self):
        for i in range(6):
            self.write(f"{i}.wav", wav_bytes(tone(400000, 200 + 100 * i)))
        names = [f"{i}.wav" for i in range(6)]
        outputs = []
        for jobs in ("1", "3", "6"):
            self.assert_done(self.features(*names, "--feature", "SPECTRUM", "-o", "t.csv", "--jobs", jobs))
            outputs.append(self.read("t.csv"))
        self.assertGreater(len(outputs[0]), 40 << 20)
        self.assertTrue(outputs[0] == outputs[1] == outputs[2])

    def test_the_first_file_leaves_while_the_others_are_still_read(self):
        """A pipe that is never written to does not keep what comes before it."""
        self.write_wav("a.wav", 200000)
        os.mkfifo(self.path("pipe"))
        process = subprocess.Popen([PROGRAM, "features", "a.wav", "pipe", "--feature", "SPECTRUM", "--jobs", "2"],
                                   cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertTrue(process.stdout.read(1000000).startswith(b"file,time,"))
        with open(self.path("pipe"), "wb") as pipe:
            pipe.write(wav_bytes(tone(300)))
        output, errors = process.communicate(timeout=60)
        self.assertEqual((process.returncode, errors), (0, b""))
        self.assertTrue(output.split(b"\n")[-2].startswith(b"pipe,0.032,"))


class Threads(CommandTest):
    def threads(self, *arguments):
        """The largest number of threads that a run was seen with. Some belong to a library and sleep."""
        process = subprocess.Popen([PROGRAM, "features", *arguments], cwd=self.folder, stdout=subprocess.DEVNULL)
        most = 0
        while process.poll() is None:
            try:
                most = max(most, len(os.listdir(f"/proc/{process.pid}/task")))
            except OSError:
                break
        self.assertEqual(process.wait(), 0)
        return most

    def test_there_are_as_many_as_jobs_beside_the_one_that_leads(self):
        self.write_silence("hour.wav", 3600)
        self.write_wav("short.wav")
        alone = self.threads("hour.wav", "hour.wav", "--feature", "SPECTRUM100HZ", "--jobs", "1")
        for names, more in ((["hour.wav"], 2), (["hour.wav"] * 2, 3), (["hour.wav"] * 5, 3), (["short.wav"] * 9, 3)):
            most = self.threads(*names, "--feature", "SPECTRUM100HZ", "--jobs", "3")
            self.assertLessEqual(most, alone + more)
            if names[0] == "hour.wav":
                self.assertGreater(most, alone)

    def test_numbers_of_jobs_that_cannot_be_are_refused(self):
        self.write_wav("a.wav")
        for jobs in ("0", "-1", "1025"):
            self.assert_usage_error(self.features("a.wav", "--feature", "MEAN", f"--jobs={jobs}"),
                                    f"{jobs} jobs are refused; it must be 1 to 1024")
        for jobs in ("two", "1.5", "99999999999999999999"):
            self.assert_usage_error(self.features("a.wav", "--feature", "MEAN", "--jobs", jobs), f"'{jobs}'", "--jobs")


class Ends(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_silence("hour.wav", 3600)
        self.write("old.csv", b"old")

    def test_interrupted_runs_leave_nothing(self):
        for options in (["-o", "old.csv"], ["--format", "npy", "-o", "new.npy"]):
            process = self.start("features", *["hour.wav"] * 300, "--feature", "SPECTRUM100HZ", "--jobs", "4", *options)
            self.wait_for(lambda: any(os.path.getsize(self.path(name)) > 0 for name in self.files()
                                      if ".tmp-" in name and ".json" not in name))
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(30), 130)
            self.assertEqual(process.stderr.read(), b"murvane-audio: interrupted\n")
            self.assertEqual(self.files(), ["hour.wav", "old.csv"])
            self.assertEqual(self.read("old.csv"), b"old")

    def test_threads_that_wait_for_pipes_are_woken(self):
        for i in range(3):
            os.mkfifo(self.path(f"pipe{i}"))
        process = self.start("features", "pipe0", "pipe1", "pipe2", "--feature", "MEAN", "--jobs", "3",
                             stdout=subprocess.DEVNULL)
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(30), 130)
        self.assertTrue(process.stderr.read().endswith(b"murvane-audio: interrupted\n"))

    def test_a_thread_whose_reader_does_not_read_is_woken(self):
        process = self.start("features", *["hour.wav"] * 10, "--feature", "MEAN", "--jobs", "3",
                             stdout=subprocess.PIPE)
        self.addCleanup(process.stdout.close)
        process.stdout.read(1)
        time.sleep(0.5)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(30), 130)

    def test_a_reader_that_goes_away_ends_all_threads(self):
        process = self.start("features", *["hour.wav"] * 50, "--feature", "SPECTRUM100HZ", "--jobs", "3",
                             stdout=subprocess.PIPE)
        self.assertTrue(process.stdout.read(10).startswith(b"file,time,"))
        process.stdout.close()
        self.assertEqual((process.wait(60), process.stderr.read()), (141, b""))

    def test_a_full_disk_ends_all_threads(self):
        result = self.features(*["hour.wav"] * 20, "--feature", "SPECTRUM100HZ", "--jobs", "3", "-o", "/dev/full")
        self.assert_failed(result, "cannot write /dev/full: No space left on device")


class Shown(CommandTest):
    def test_progress_counts_the_files_of_all_threads(self):
        self.write_silence("long.wav", 600)
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        process = subprocess.Popen([PROGRAM, "features", *["long.wav"] * 100, "missing.wav", "--feature", "SPECTRUM",
                                    "--jobs", "2", "-o", "t.csv"], cwd=self.folder, stderr=slave)
        os.close(slave)
        shown = b""
        while True:
            try:
                shown += os.read(master, 65536)
            except OSError:
                break
        self.assertEqual(process.wait(60), 1)
        lines = shown.decode().split("\r")
        counts = [int(line.split("/101 files")[0]) for line in lines if "/101 files, " in line]
        self.assertGreater(len(counts), 1)
        self.assertEqual(counts, sorted(counts))
        self.assertRegex(shown.decode(), r"\r[1-9][0-9]*/101 files, [0-9]+:[0-9:]+ of audio, [0-9]+ x real time, "
                                         r"[0-9:]+ left\x1b\[K")
        self.assertTrue(shown.decode().endswith("missing.wav: No such file or directory\r\n"), shown[-200:])


class Memory(CommandTest):
    def test_it_does_not_grow_with_the_number_of_files(self):
        self.write_wav("a.wav", 1000)
        options = ("--feature", "SPECTRUM100HZ", "--jobs", "3")
        few = self.peak("features", *["a.wav"] * 2000, *options)  # all buffers are full
        many = self.peak("features", *["a.wav"] * 10000, *options)
        self.assertLess(many - few, 8)

    def test_it_does_not_grow_with_the_length_of_files(self):
        """What waits for its turn is limited, to 8 MB for each job."""
        self.write_silence("minutes.wav", 600)
        self.write_silence("hour.wav", 3600)
        for options in (["SPECTRUM500HZ"], ["SPECTRUM500HZ", "--format", "npy", "-o", "t.npy"]):
            minutes = self.peak("features", *["minutes.wav"] * 6, "--jobs", "3", "--feature", *options)
            hours = self.peak("features", *["hour.wav"] * 6, "--jobs", "3", "--feature", *options)
            self.assertLess(hours - minutes, 30)


if __name__ == "__main__":
    unittest.main()
