#!/usr/bin/env python3
"""--resume: what an earlier run left is not computed again, and the result is that of a fresh run."""

import json
import os
import re
import subprocess
import time
import unittest

from command import CommandTest, PROGRAM, flac_bytes, tone, wav_bytes

FORMATS = (["--format", "csv"], ["--format", "npy"])


class ResumeTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.names = []
        for i in range(6):
            self.names.append(self.write_old(f"{i}.wav", wav_bytes(tone(600 + 300 * i, 200 + 50 * i))))

    def write_old(self, name, content):
        """Writes a file that no table is older than."""
        self.write(name, content)
        os.utime(self.path(name), (1000000000, 1000000000))
        return name

    def change(self, name, samples=900):
        self.write(name, wav_bytes(tone(samples, 777)))
        future = time.time() + 100
        os.utime(self.path(name), (future, future))

    def resume(self, *arguments, names=None, code=0, feature="MEAN"):
        result = self.features(*(self.names if names is None else names), "--feature", feature, "-o", "t", "--resume",
                               *arguments)
        self.assertEqual(result.returncode, code, result.stderr)
        return result

    def table(self, path="t"):
        return self.read(path), self.read(path + ".json")

    def fresh(self, *arguments, names=None, feature="MEAN"):
        """What a run gives that has nothing to resume from."""
        for suffix in ("", ".json"):
            if "fresh" + suffix in self.files():
                os.remove(self.path("fresh" + suffix))
        self.features(*(self.names if names is None else names), "--feature", feature, "-o", "fresh", "--resume",
                      *arguments)
        return self.table("fresh")

    def state(self):
        return [(os.stat(self.path(name)).st_ino, os.stat(self.path(name)).st_mtime_ns) for name in ("t", "t.json")]

    def mark(self):
        """Changes the table without a trace, where its first input stands, so that it can be seen whether that was
        taken over."""
        times = os.stat(self.path("t"))
        content = bytearray(self.read("t"))
        place = 140 if content.startswith(b"\x93NUMPY") else content.index(b"\n0.wav,0.032,") + 13
        content[place:place + 1] = b"7"
        self.write("t", bytes(content))
        os.utime(self.path("t"), ns=(times.st_atime_ns, times.st_mtime_ns))
        return bytes(content)


class Resume(ResumeTest):
    def test_a_first_run_is_like_any_other_and_leaves_a_manifest(self):
        self.resume()
        self.assert_done(self.features(*self.names, "--feature", "MEAN", "-o", "plain"))
        self.assertEqual(self.read("t"), self.read("plain"))
        self.assertNotIn("plain.json", self.files())
        manifest = json.loads(self.read("t.json"))
        self.assertEqual([item["name"] for item in manifest["inputs"]], self.names)
        self.assertEqual(manifest["byte_count"], len(self.read("t")))

    def test_when_nothing_changed_the_files_stay(self):
        for options in FORMATS:
            self.resume(*options)
            before = self.table()
            self.mark()
            state = self.state()
            self.assert_done(self.resume(*options))
            self.assertEqual(self.state(), state)
            self.assertNotEqual(self.read("t"), before[0])
            for suffix in ("", ".json"):
                os.remove(self.path("t" + suffix))

    def test_what_changed_is_computed_again_and_the_rest_taken_over(self):
        for options in FORMATS:
            self.resume(*options)
            self.change("3.wav", 2000)
            self.assert_done(self.resume(*options))
            self.assertEqual(self.table(), self.fresh(*options))
            marked = self.mark()
            self.change("4.wav", 500)
            self.resume(*options)
            self.assertEqual(self.read("t")[130:300], marked[130:300])  # behind the head, which counts the rows
            for suffix in ("", ".json"):
                os.remove(self.path("t" + suffix))
            self.write_old("3.wav", wav_bytes(tone(1500)))
            self.write_old("4.wav", wav_bytes(tone(1500)))

    def test_any_change_of_the_list_gives_what_a_fresh_run_would(self):
        self.write_old("new.wav", wav_bytes(tone(1234)))
        self.write_old("tiny.wav", wav_bytes(tone(10)))
        self.write_old("noise.wav", b"noise" * 20)
        lists = [self.names, [*self.names, "new.wav"], ["new.wav", *self.names], self.names[::-1], self.names[2:4],
                 [*self.names[:3], "tiny.wav", "new.wav", "tiny.wav", *self.names[3:]], ["0.wav"] * 3,
                 ["0.wav", "1.wav"] * 3, ["new.wav"], [*self.names, "missing.wav", "noise.wav"],
                 ["missing.wav", *self.names], ["tiny.wav"], self.names]
        for options in FORMATS:
            for jobs in ("1", "2", "7"):
                for names in lists:
                    self.features(*names, "--feature", "MEAN", "SPECTRUM500HZ", "-o", "t", "--resume", "--jobs", jobs,
                                  "--log-level", "OFF", *options)
                    table = self.table()
                    self.features(*names, "--feature", "MEAN", "SPECTRUM500HZ", "-o", "fresh", "--log-level", "OFF",
                                  "--resume", *options)
                    self.assertEqual(table, self.table("fresh"), (options, jobs, names))
                    os.remove(self.path("fresh"))
                    os.remove(self.path("fresh.json"))
            os.remove(self.path("t"))
            os.remove(self.path("t.json"))

    def test_inputs_that_failed_are_tried_again(self):
        names = [*self.names, "late.wav"]
        self.resume(names=names, code=1)
        before = self.state()
        self.assert_failed(self.resume(names=names, code=1), "late.wav: No such file or directory")
        self.assertEqual(self.state(), before)
        self.write_old("late.wav", wav_bytes(tone(1000)))
        self.assert_done(self.resume(names=names))
        self.assertEqual(self.table(), self.fresh(names=names))

    def test_inputs_that_fail_half_way_every_time_change_nothing(self):
        self.write_old("half.flac", flac_bytes([5, 6, 7] * 20, promised=1000000))
        for options in FORMATS:
            names = ["half.flac", *self.names[:2], "half.flac", *self.names[2:], "half.flac"]
            for jobs in ("1", "3"):
                self.resume("--jobs", jobs, *options, names=names, code=1, feature="SPECTRUM")
                before = self.state()
                self.resume("--jobs", jobs, *options, names=names, code=1, feature="SPECTRUM")
                self.assertEqual(self.state(), before)
            for suffix in ("", ".json"):
                os.remove(self.path("t" + suffix))

    def test_inputs_that_are_gone_leave_no_rows(self):
        self.resume()
        os.remove(self.path("2.wav"))
        self.assert_failed(self.resume(code=1), "2.wav: No such file or directory")
        self.assertEqual(self.table(), self.fresh())
        self.assertNotIn(b"2.wav,", self.read("t"))

    def test_only_inputs_older_than_the_beginning_of_the_run_are_taken_over(self):
        self.write_silence("hour.wav", 3600)
        os.utime(self.path("hour.wav"), (1000000000, 1000000000))
        names = ["0.wav", *["hour.wav"] * 3]
        process = subprocess.Popen([PROGRAM, "features", *names, "--feature", "SPECTRUM", "-o", "t", "--resume",
                                    "--jobs", "1"], cwd=self.folder)
        time.sleep(0.3)
        self.write("0.wav", wav_bytes(tone(2222)))  # too late for the rows, but before the table is there
        self.assertIsNone(process.poll())
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(self.read("t").count(b"\n0.wav,"), 3)
        self.resume(names=names, feature="SPECTRUM")
        self.assertEqual(self.read("t").count(b"\n0.wav,"), 16)

    def test_an_input_as_old_as_the_table_is_computed_again(self):
        self.resume()
        self.mark()
        modified = os.stat(self.path("t")).st_mtime_ns
        os.utime(self.path("0.wav"), ns=(modified, modified))
        self.resume()
        self.assertEqual(self.table(), self.fresh())

    def test_names_that_are_no_text_are_known_again(self):
        names = [b"caf\xe9.wav", "comma, \"quote\"\n.wav", "stra\u00dfe.wav"]
        for name in names:
            self.write_old(name, wav_bytes(tone(700)))
        self.resume(names=names)
        before = self.state()
        self.resume(names=names)
        self.assertEqual(self.state(), before)

    def test_columns_of_other_rates_do_not_slip_in(self):
        self.write_old("16.wav", wav_bytes(tone(3000), rate=16000))
        for options in FORMATS:
            self.resume("--log-level", "ERROR", *options, names=["0.wav", "1.wav"], feature="AMPLITUDE")
            names = ["16.wav", "0.wav", "1.wav"]
            result = self.resume("--log-level", "ERROR", *options, names=names, feature="AMPLITUDE", code=1)
            self.assertEqual(self.messages(result)[0], "murvane-audio: 0.wav: does not fit into the table: AMPLITUDE "
                             "gives 256 values at 8000 Hz, but AMPLITUDE gives 512 values for the inputs before")
            self.assertEqual(self.table(), self.fresh("--log-level", "OFF", *options, names=names, feature="AMPLITUDE"))
            for suffix in ("", ".json"):
                os.remove(self.path("t" + suffix))

    def test_a_plain_table_of_numbers_can_be_resumed(self):
        self.assert_done(self.features(*self.names, "--feature", "MEAN", "--format", "npy", "-o", "t"))
        before = self.state()
        self.assert_done(self.resume("--format", "npy"))
        self.assertEqual(self.state(), before)

    def test_parts_can_be_resumed_and_joined(self):
        for options in FORMATS:
            def run(path, *arguments):
                parts = []
                for i in (1, 2, 3):
                    parts.append(f"{path}{i}")
                    result = self.features(*self.names, "--feature", "MEAN", "--shard", f"{i}/3", "-o", parts[-1],
                                           *options, *arguments)
                    self.assert_done(result)
                return parts

            run("part")
            before = self.table("part1")
            self.change("5.wav", 1800)
            parts = run("part", "--resume")
            self.assertEqual(self.table("part1"), before)
            self.assert_done(self.run_here("merge", *parts, "-o", "merged"))
            self.assert_done(self.features(*self.names, "--feature", "MEAN", "-o", "direct", *options))
            self.assertEqual(self.read("merged"), self.read("direct"))

    def test_a_joined_table_is_as_old_as_its_oldest_part(self):
        for i in (1, 2):
            self.features(*self.names, "--feature", "MEAN", "--shard", f"{i}/2", "-o", f"part{i}", "--format", "npy")
            time.sleep(0.02)
        self.change("1.wav")
        past = os.stat(self.path("part2")).st_mtime_ns - 1000000
        os.utime(self.path("1.wav"), ns=(past, past))  # between the parts
        self.assert_done(self.run_here("merge", "part1", "part2", "-o", "t"))
        self.resume("--format", "npy")
        self.assertEqual(self.table(), self.fresh("--format", "npy"))


class Refused(ResumeTest):
    def test_tables_made_otherwise(self):
        self.resume("--expr", "f=zeroCrossingRate(x)")
        before = self.state()
        for arguments, message in (
                (["--feature", "ZEROCROSSINGRATE"], "it holds MEAN f=zeroCrossingRate(x), not ZEROCROSSINGRATE"),
                (["--feature", "MEAN", "--expr", "f=flatness(spectrum(x))"], "not MEAN f=flatness(spectrum(x))"),
                (["--feature", "MEAN", "--expr", "f=zeroCrossingRate(x)", "--window-ms", "64"],
                 "it is made of windows of 32 ms that overlap by 16 ms, not of windows of 64 ms"),
                (["--feature", "MEAN", "--expr", "f=zeroCrossingRate(x)", "--format", "npy"],
                 "its format is csv, not npy"),
                (["--feature", "MEAN", "--expr", "f=zeroCrossingRate(x)", "--shard", "1/2"],
                 "it is a whole table, not shard 1/2")):
            self.assert_usage_error(self.features(*self.names, "-o", "t", "--resume", *arguments), "cannot resume t: ",
                                    message, "remove it, or name another --output")
        self.assertEqual(self.state(), before)

    def test_another_part(self):
        self.resume("--shard", "1/3")
        self.assert_usage_error(self.resume("--shard", "2/3", code=2), "it is shard 1/3, not shard 2/3")
        self.assert_usage_error(self.resume(code=2), "it is shard 1/3, not a whole table")

    def test_no_output_to_resume(self):
        self.assert_usage_error(self.features("0.wav", "--feature", "MEAN", "--resume"), "--resume needs --output PATH")
        self.assert_usage_error(self.features("0.wav", "--feature", "MEAN", "--resume", "-o", "/dev/null"),
                                "needs a file to write, which /dev/null is not")


class Nothing(ResumeTest):
    """What is there is of no use."""

    def assert_computed(self, warning):
        result = self.resume()
        self.assertEqual([re.sub(": line [0-9]+: .*;", ": line;", line) for line in self.messages(result)],
                         [f"murvane-audio: warning: {warning}; everything is computed"])
        self.assertEqual(self.table(), self.fresh())

    def test_a_table_without_a_manifest(self):
        self.write("t", b"old")
        self.assert_computed("t has no t.json to resume from")

    def test_a_manifest_without_a_table(self):
        self.resume()
        os.remove(self.path("t"))
        self.assert_done(self.resume())
        self.assertEqual(self.table(), self.fresh())

    def test_a_table_that_does_not_belong_to_its_manifest(self):
        self.resume()
        size = len(self.read("t"))
        self.write("t", self.read("t")[:-1])
        self.assert_computed(f"t: has {size - 1} bytes, but its manifest says {size}")
        self.write("t", b"x" + self.read("t")[1:])
        self.assert_computed("t: does not begin as its manifest says")

    def test_a_damaged_manifest(self):
        self.resume()
        self.write("t.json", self.read("t.json")[:100])
        self.assert_computed("t.json: damaged, or not the manifest of a table: line")
        self.write("t.json", b'{\n  "version": 0}')
        self.assert_computed("t.json: damaged, or not the manifest of a table: its format has version 0; this program "
                             "knows version 1")

    def test_rates_that_cannot_be(self):
        self.resume()
        for rate in (b"0", b"999999999999999"):
            self.write("t.json", self.read("t.json").replace(b'"rate_hz": 8000', b'"rate_hz": ' + rate))
            self.assert_done(self.resume())
            self.assertEqual(self.table(), self.fresh())


class ManifestsInStep(ResumeTest):
    def test_a_plain_run_keeps_a_manifest_that_is_there_in_step(self):
        self.resume()
        self.change("0.wav")
        self.assert_done(self.features(*self.names[::-1], "--feature", "MEAN", "-o", "t"))
        self.assertEqual(self.table(), self.fresh(names=self.names[::-1]))

    def test_another_file_of_that_name_stays(self):
        self.write("t.json", b'{"mine": 1}')
        self.assert_done(self.features(*self.names, "--feature", "MEAN", "-o", "t"))
        for options in (["--shard", "1/2"], ["--resume"], ["--format", "npy"]):
            self.assert_usage_error(self.features(*self.names, "--feature", "MEAN", "-o", "t", *options),
                                    "t.json is in the way of the manifest")
        self.assertEqual(self.read("t.json"), b'{"mine": 1}')


if __name__ == "__main__":
    unittest.main()
