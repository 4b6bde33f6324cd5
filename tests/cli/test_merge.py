#!/usr/bin/env python3
"""murvane-audio merge: the parts of a table give back the table."""

import json
import os
import random
import re
import shutil
import signal
import subprocess
import time
import unittest

from command import PROGRAM, CommandTest, flac_bytes, tone, wav_bytes

FORMATS = (["--format", "csv"], ["--format", "npy"])


class MergeTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.names = [self.write(f"{i}.wav", wav_bytes(tone(500 + 300 * i, 200 + 50 * i))) for i in range(8)]

    def parts(self, count, *arguments, names=None):
        """Makes all parts of a list, and gives their names."""
        paths = []
        for i in range(1, count + 1):
            paths.append(f"part{i}")
            result = self.features(*(self.names if names is None else names), "--shard", f"{i}/{count}", "-o",
                                   paths[-1], *arguments)
            self.assertIn(result.returncode, (0, 1), result.stderr)
        return paths

    def merge(self, *arguments):
        return self.run_here("merge", *arguments)

    def table(self, path):
        return [self.read(name) for name in (path, path + ".json") if name in self.files()]

    def assert_same(self, count, *arguments, names=None, order=None):
        """A run over the whole list and the merged parts of it write the same."""
        parts = self.parts(count, *arguments, names=names)
        before = {name: self.read(name) for name in self.files()}
        result = self.merge(*(order(parts) if order else parts), "-o", "merged")
        self.assert_done(result)
        for name, content in before.items():
            self.assertEqual(self.read(name), content)
        self.assertIn(self.features(*(self.names if names is None else names), *arguments, "-o", "direct").returncode,
                      (0, 1))
        merged, direct = self.table("merged"), self.table("direct")
        self.assertEqual(len(merged), 2 if "npy" in arguments else 1)
        self.assertTrue(merged == direct, (merged[-1][:2000], direct[-1][:2000]))
        for name in ("merged", "merged.json", "direct", "direct.json"):
            if name in self.files():
                os.remove(self.path(name))


class Merge(MergeTest):
    def test_parts_give_back_the_bytes_of_one_run(self):
        for options in FORMATS:
            for count in (1, 2, 3, 8, 11):
                self.assert_same(count, "--feature", "MEAN", "SPECTRUM500HZ", *options)

    def test_in_any_order(self):
        for options in FORMATS:
            self.assert_same(5, "--feature", "MEAN", *options, order=lambda parts: random.sample(parts, len(parts)))

    def test_with_inputs_that_fail_are_short_or_have_no_simple_names(self):
        self.write("noise.wav", b"noise" * 20)
        self.write("half.flac", flac_bytes([5, 6, 7] * 20, promised=1000000))
        self.write_wav("tiny.wav", 10)
        self.write_wav("comma, \"quote\"\nline.wav", 700)
        self.write_wav(b"caf\xe9.wav", 700)
        names = ["missing.wav", "tiny.wav", *self.names[:2], "half.flac", "noise.wav", "tiny.wav",
                 "comma, \"quote\"\nline.wav", b"caf\xe9.wav", "missing.wav", "0.wav", "0.wav"]
        for options in FORMATS:
            for count in (2, 3, 4, 12, 20):
                self.assert_same(count, "--feature", "RANGE(0,2)", "--expr", "z=zeroCrossingRate(x)", "--suppress-dc",
                                 "--log-level", "ERROR", *options, names=names)

    def test_the_first_input_with_rows_decides_the_columns_wherever_it_is(self):
        self.write_wav("tiny.wav", 10)
        self.write_wav("tiny16.wav", 10, rate=16000)
        self.write_wav("16.wav", 3000, rate=16000)
        for names in (["tiny.wav", "16.wav", "tiny.wav"], ["tiny16.wav", "0.wav", "tiny16.wav", "1.wav"],
                      ["tiny16.wav", "tiny.wav", "missing.wav"]):
            for options in FORMATS:
                for count in (1, 2, 3, 4):
                    self.assert_same(count, "--feature", "AMPLITUDE", "--log-level", "ERROR", *options, names=names)

    def test_parts_with_parts_of_an_audio_set(self):
        self.write("list.txt", b"0.wav\nnone.wav\n1.wav\n2.wav\n")
        for options in FORMATS:
            self.assert_same(3, "--audioset", "list.txt", "--feature", "MEAN", *options, names=["3.wav"])

    def test_it_replaces_an_older_output(self):
        parts = self.parts(2, "--feature", "MEAN")
        self.write("t", b"old")
        self.assert_done(self.merge(*parts, "-o", "t"))
        self.assertTrue(self.read("t").startswith(b"file,time,MEAN\n"))

    def test_no_manifest_of_another_table_stays_beside_the_output(self):
        parts = self.parts(2, "--feature", "MEAN")
        self.assert_done(self.features("0.wav", "--feature", "MEAN", "--shard", "1/1", "-o", "t"))
        self.assert_done(self.merge(*parts, "-o", "t"))
        manifest = json.loads(self.read("t.json"))
        self.assertEqual(manifest["byte_count"], len(self.read("t")))
        self.assertEqual([item["name"] for item in manifest["inputs"]], self.names)
        self.assertNotIn("shard", manifest)

    def test_memory_does_not_grow_with_the_parts(self):
        small = self.peak("merge", *self.parts(2, "--feature", "MEAN"), "-o", "t")
        self.write_silence("hour.wav", 3600)
        large = self.peak("merge", *self.parts(2, "--feature", "SPECTRUM100HZ", names=["hour.wav"] * 2), "-o", "t")
        self.assertGreater(os.path.getsize(self.path("t")), 30 << 20)
        self.assertLess(large - small, 8)


class Refused(MergeTest):
    def assert_refused(self, message, *paths, code=1, output="merged"):
        files = {name: self.read(name) for name in self.files()}
        result = self.merge(*paths, "-o", output)
        self.assertEqual((result.returncode, result.stdout), (code, b""), result.stderr)
        text = result.stderr.decode()
        self.assertRegex(text, message)
        self.assertTrue(text.startswith("murvane-audio: "))
        self.assertEqual({name: self.read(name) for name in self.files()}, files)

    def test_parts_that_are_missing(self):
        parts = self.parts(3, "--feature", "MEAN")
        for missing in range(3):
            self.assert_refused(f"shard {missing + 1}/3 is missing", *parts[:missing], *parts[missing + 1:])
        self.assert_refused("nowhere.json: No such file or directory", *parts, "nowhere")

    def test_parts_that_overlap(self):
        parts = self.parts(3, "--feature", "MEAN")
        self.assert_refused("part2: is shard 2/3, and so is part2", *parts, "part2")
        for suffix in ("", ".json"):
            shutil.copy(self.path("part2" + suffix), self.path("copy" + suffix))
        self.assert_refused("(part2: is shard 2/3, and so is copy|copy: is shard 2/3, and so is part2)", *parts, "copy")
        self.features(*self.names, "--feature", "MEAN", "--shard", "2/2", "-o", "other")
        self.assert_refused("other: is shard 2/2, but part1 is shard 1/3", "part1", "other", "part3")

    def test_parts_made_otherwise(self):
        parts = self.parts(2, "--feature", "MEAN")
        for arguments, message in (
                (["--feature", "ZEROCROSSINGRATE"], "other: does not fit to part1: it holds ZEROCROSSINGRATE, not MEAN"),
                (["--feature", "MEAN", "--expr", "f=zeroCrossingRate(x)"], "it holds MEAN f=zeroCrossingRate\\(x\\)"),
                (["--feature", "MEAN", "--window-ms", "64"], "it is made of windows of 64 ms that overlap by 16 ms, "
                                                             "not of windows of 32 ms"),
                (["--feature", "MEAN", "--suppress-dc"], "without DC, not of"),
                (["--feature", "MEAN", "--format", "npy"], "its format is npy, not csv")):
            self.features(*self.names, "--shard", "2/2", "-o", "other", *arguments)
            self.assert_refused(message, "part1", "other")
        for names in (self.names[:-1], self.names[::-1], ["./0.wav", *self.names[1:]]):
            self.features(*names, "--feature", "MEAN", "--shard", "2/2", "-o", "other")
            self.assert_refused("other: is made of another list of inputs than part1", "part1", "other")
        self.assert_done(self.merge(*parts, "-o", "t"))

    def test_formulas_of_the_same_name_are_not_the_same(self):
        self.parts(2, "--expr", "f=zeroCrossingRate(x)")
        self.features(*self.names, "--expr", "f=flatness(spectrum(x))", "--shard", "2/2", "-o", "other")
        self.assert_refused("it holds f=flatness", "part1", "other")

    def test_parts_whose_columns_differ_for_other_rates(self):
        self.write_wav("16.wav", 3000, rate=16000)
        parts = self.parts(2, "--feature", "AMPLITUDE", "--log-level", "ERROR", names=["0.wav", "16.wav"])
        self.assert_refused("part2: has other columns than part1", *parts)

    def test_tables_that_are_no_parts(self):
        self.features(*self.names, "--feature", "MEAN", "-o", "whole", "--format", "npy")
        self.assert_refused("whole: is a whole table", "whole")
        self.features(*self.names, "--feature", "MEAN", "-o", "plain")
        self.assert_refused("plain.json: No such file or directory", "plain")
        self.assert_refused("0.wav.json: No such file", "0.wav")

    def test_parts_that_were_cut_or_changed(self):
        for options in FORMATS:
            parts = self.parts(2, "--feature", "MEAN", *options)
            whole = self.read("part2")
            for content in (whole[:-1], whole + b"x", b"", whole[:len(whole) // 2]):
                self.write("part2", content)
                self.assert_refused(f"part2: has {len(content)} bytes, but its manifest says {len(whole)}", *parts)
            self.write("part2", b"x" + whole[1:])
            self.assert_refused("part2: does not begin as its manifest says", *parts)
            os.remove(self.path("part2"))
            self.assert_refused("part2: No such file or directory", *parts)

    def test_rows_that_were_changed(self):
        for options in FORMATS:
            parts = self.parts(2, "--feature", "MEAN", *options)
            whole = self.read("part2")
            manifest = json.loads(self.read("part2.json"))
            start = len(whole) - manifest["row_count"] * 8 if "npy" in options else whole.index(b"\n") + 1
            for place in (start, (start + len(whole)) // 2, len(whole) - 2):
                self.write("part2", whole[:place] + bytes([whole[place] ^ 1]) + whole[place + 1:])
                self.assert_refused(r"part2: the rows of [4-7]\.wav are not those that its manifest tells of", *parts)
            self.write("part2", whole)
            self.write("part2.json", re.sub(rb', "rows_digest": "[0-9a-f]{16}"', b"", self.read("part2.json")))
            self.assert_done(self.merge(*parts, "-o", "t"))  # as programs that knew no digests wrote it

    def test_manifests_that_were_cut_or_changed(self):
        parts = self.parts(2, "--feature", "MEAN")
        whole = self.read("part2.json")
        for size in range(0, len(whole) - 1, 7):
            self.write("part2.json", whole[:size])
            self.assert_refused(r"part2\.json: (damaged, or not the manifest of a table: |is empty)", *parts)
        for old, new in ((b'"row_count": 12', b'"row_count": 13'), (b'"first_row": 0', b'"first_row": 1'),
                         (b'"byte_count": ', b'"byte_count": 1'), (b'"columns": ["MEAN"]', b'"columns": null'),
                         (b'"version": 1', b'"version": 2'), (b'"index": 2', b'"index": 3'), (b'"MEAN"]', b'"MEAN", 3]'),
                         (b'"count": 2}', b'"count": 1e300}'), (b'"rate_hz": 8000', b'"rate_hz": -8000'),
                         (b'"status": "ok"', b'"status": ["ok"]'), (b"\n}\n", b"\n}\n}"), (b', "rows_digest": "', b', "rows_digest": "0'), (b'"name": "', b'"name": "\xff')):
            self.assertIn(old, whole)
            self.write("part2.json", whole.replace(old, new, 1))
            self.assert_refused(r"part2\.json: damaged, or not the manifest of a table: ", *parts)
        entry = re.search(rb',\n    \{"name": "7.wav".*\}', whole)
        self.write("part2.json", whole.replace(entry[0], b""))
        self.assert_refused("part2.json: damaged", *parts)
        self.write("part2.json", whole.replace(b'"status": "ok"', b'"status": "failed"'))
        self.assert_refused("part2.json: damaged", *parts)

    def test_any_byte_of_a_manifest_may_change(self):
        parts = self.parts(2, "--feature", "MEAN", names=["0.wav", "1.wav"])
        whole = self.read("part2.json")
        chance = random.Random(5)
        for _ in range(150):
            place = chance.randrange(len(whole))
            self.write("part2.json", whole[:place] + bytes([chance.randrange(256)]) + whole[place + 1:])
            self.assertIn(self.merge(*parts, "-o", "merged").returncode, (0, 1))

    def test_the_output_is_none_of_the_parts(self):
        parts = self.parts(2, "--feature", "MEAN")
        for output in ("part1", "part1.json", "./part2"):
            self.assert_refused("would replace", *parts, code=2, output=output)
        os.link(self.path("part2"), self.path("link"))
        self.assert_refused("the output link would replace the input part2", *parts, code=2, output="link")
        os.remove(self.path("link"))
        os.rename(self.path("part2"), self.path("x.json"))
        os.rename(self.path("part2.json"), self.path("x.json.json"))
        self.assert_refused("would replace the input x.json", "part1", "x.json", code=2, output="x")

    def test_a_file_that_is_no_manifest_stays(self):
        parts = self.parts(2, "--feature", "MEAN", "--format", "npy")
        self.write("merged.json", b'{"mine": 1}')
        self.assert_refused("merged.json is in the way of the manifest", *parts, code=2)
        self.assert_done(self.merge(*self.parts(2, "--feature", "MEAN"), "-o", "merged"))
        self.assertEqual(self.read("merged.json"), b'{"mine": 1}')

    def test_parts_without_any_input_that_was_done(self):
        parts = self.parts(2, "--feature", "MEAN", names=["missing.wav", "none.wav", "gone.wav"])
        self.assert_refused("no input was done in any part: there is no table", *parts)

    def test_wrong_usage(self):
        self.assert_usage_error(self.merge("-o", "t"), "no part given")
        self.assert_usage_error(self.merge("part1"), "merge needs --output PATH")
        self.assertTrue(self.merge("--help").stdout.startswith(b"Usage: murvane-audio merge"))

    def test_outputs_that_cannot_be_written(self):
        parts = self.parts(2, "--feature", "MEAN")
        self.assert_refused("cannot write none/t: No such file or directory", *parts, output="none/t")
        self.assert_refused("cannot write /dev/full: No space left on device", *parts, output="/dev/full")

    def test_an_interrupted_merge_leaves_nothing(self):
        self.write_silence("hour.wav", 3600)
        parts = self.parts(2, "--feature", "SPECTRUM100HZ", names=["hour.wav"] * 6)
        os.mkfifo(self.path("pipe"))
        reading = os.open(self.path("pipe"), os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reading)
        process = subprocess.Popen([PROGRAM, "merge", *parts, "-o", "pipe"], cwd=self.folder, stderr=subprocess.PIPE)
        time.sleep(0.3)
        process.send_signal(signal.SIGINT)
        os.set_blocking(reading, True)
        size = 0
        while piece := os.read(reading, 1 << 20):
            size += len(piece)
        self.assertEqual(process.communicate(timeout=30)[1], b"murvane-audio: interrupted\n")
        self.assertEqual(process.returncode, 130)
        self.assertLess(size, 10 << 20)


if __name__ == "__main__":
    unittest.main()
