#!/usr/bin/env python3
"""--shard: a run over a part of a list, and what it tells of itself."""

import hashlib
import json
import os
import signal
import subprocess
import time
import unittest

from command import PROGRAM, CommandTest, digest_of, read_csv, tone, wav_bytes
from test_table import read_npy


class Shards(CommandTest):
    def setUp(self):
        super().setUp()
        self.names = [self.write(f"{i}.wav", wav_bytes(tone(600 + 300 * i, 200 + 50 * i))) for i in range(10)]

    def shard(self, index, count, *arguments, names=None, code=0):
        output = f"{index}-of-{count}"
        result = self.features(*(self.names if names is None else names), "--feature", "MEAN", "--shard",
                               f"{index}/{count}", "-o", output, *arguments)
        self.assertEqual(result.returncode, code, result.stderr)
        return self.read(output), json.loads(self.read(output + ".json"))

    def inputs(self, manifest):
        return [item["name"] for item in manifest["inputs"]]

    def test_every_input_is_in_exactly_one_part_in_the_order_of_the_list(self):
        for count in (1, 2, 3, 7, 10, 13):
            parts = [self.inputs(self.shard(i, count)[1]) for i in range(1, count + 1)]
            self.assertEqual(sum(parts, []), self.names)
            sizes = {len(part) for part in parts}
            self.assertLessEqual(max(sizes) - min(sizes), 1)
            for i, part in enumerate(parts):
                self.assertEqual(part, self.names[10 * i // count:10 * (i + 1) // count])

    def test_rows_are_those_of_a_run_over_these_inputs(self):
        for options in (["--format", "csv"], ["--format", "npy"]):
            table, manifest = self.shard(2, 3, *options)
            self.assert_done(self.features(*self.names[3:6], "--feature", "MEAN", "-o", "direct", *options))
            self.assertEqual(table, self.read("direct"))

    def test_the_manifest_tells_all_about_the_part(self):
        self.write("noise.wav", b"noise")
        names = ["0.wav", "missing.wav", "noise.wav", "1.wav"]
        table, manifest = self.shard(1, 1, "--window-ms", "20", "--overlap-ms", "5", "--suppress-dc", "--expr",
                                     "z=zeroCrossingRate(x)", names=names, code=1)
        lists = manifest.pop("list")
        self.assertEqual(lists["count"], 4)
        self.assertRegex(lists["digest"], "^[0-9a-f]{16}$")
        lines = table.split(b"\n")
        texts = [[line + b"\n" for line in lines if line.startswith(name + b",")] for name in (b"0.wav", b"1.wav")]
        rows = [len(text) for text in texts]
        sizes = [sum(len(line) for line in text) for text in texts]
        digests = [digest_of(b"".join(text)) for text in texts]
        self.assertEqual(manifest, {
            "version": 1, "format": "csv", "columns": ["MEAN", "z"],
            "computed": [{"feature": "MEAN"}, {"expr": "z=zeroCrossingRate(x)"}],
            "window": {"size_ms": 20, "overlap_ms": 5, "suppress_dc": True}, "shard": {"index": 1, "count": 1},
            "inputs": [
                {"name": "0.wav", "status": "ok", "rate_hz": 8000, "first_row": 0, "row_count": rows[0],
                 "first_time_s": 0.02, "byte_count": sizes[0], "rows_digest": digests[0]},
                {"name": "missing.wav", "status": "failed"}, {"name": "noise.wav", "status": "failed"},
                {"name": "1.wav", "status": "ok", "rate_hz": 8000, "first_row": rows[0], "row_count": rows[1],
                 "first_time_s": 0.02, "byte_count": sizes[1], "rows_digest": digests[1]}],
            "row_count": sum(rows), "byte_count": len(table)})

    def test_all_parts_know_the_list_by_the_same_number(self):
        digests = {json.dumps(self.shard(i, 3)[1]["list"]) for i in (1, 2, 3)}
        self.assertEqual(len(digests), 1)
        others = [self.names[::-1], self.names + ["0.wav"], self.names[:-1], ["./0.wav", *self.names[1:]],
                  ["0.wa", "v1.wav", *self.names[2:]]]
        for names in others:
            digests.add(json.dumps(self.shard(1, 3, names=names, code=1 if "0.wa" in names else 0)[1]["list"]))
        self.assertEqual(len(digests), 1 + len(others))

    def test_entries_of_an_audio_set_keep_their_positions_when_they_lead_nowhere(self):
        self.write("list.txt", b"0.wav\nnone.wav\n# comment\n1.wav\nnone.wav\n2.wav\n3.wav\n")
        arguments = ["--audioset", "list.txt"]
        first = self.shard(1, 2, *arguments, names=[], code=1)[1]
        second = self.shard(2, 2, *arguments, names=[], code=1)[1]
        tell = [(os.path.basename(item["name"]), item["status"]) for item in first["inputs"] + second["inputs"]]
        self.assertEqual(tell, [("0.wav", "ok"), ("none.wav", "failed"), ("1.wav", "ok"), ("none.wav", "failed"),
                                ("2.wav", "ok"), ("3.wav", "ok")])

    def test_names_may_come_from_standard_input(self):
        names = "\n".join(self.names).encode()
        result = subprocess.run([PROGRAM, "features", "-", "--feature", "MEAN", "--shard", "2/3", "-o", "t.csv"],
                                cwd=self.folder, input=names, capture_output=True, timeout=60)
        self.assert_done(result)
        manifest = json.loads(self.read("t.csv.json"))
        self.assertEqual(self.inputs(manifest), self.names[3:6])
        self.assertEqual(manifest["list"], self.shard(1, 3)[1]["list"])

    def test_an_empty_part_is_a_table_without_rows(self):
        table, manifest = self.shard(1, 2, names=["0.wav"])
        self.assertEqual((read_csv(table), manifest["columns"], manifest["inputs"]), ((["file", "time"], []), None, []))
        table, manifest = self.shard(1, 2, "--format", "npy", names=["0.wav"])
        self.assertEqual((read_npy(table), manifest["columns"], manifest["inputs"]), (((0, 0), []), None, []))

    def test_a_part_whose_inputs_all_fail_is_a_table_without_rows(self):
        table, manifest = self.shard(1, 2, names=["missing.wav", "0.wav"], code=1)
        self.assertEqual((table, self.inputs(manifest)), (b"file,time\n", ["missing.wav"]))

    def test_a_list_of_nothing_is_no_part(self):
        self.write("list.txt", b"# nothing\n")
        self.assert_failed(self.features("--audioset", "list.txt", "--feature", "MEAN", "--shard", "1/2", "-o", "t"),
                           "no file to process")
        self.assertNotIn("t", self.files())

    def test_failures_are_those_of_the_part(self):
        names = ["0.wav", "missing-1.wav", "1.wav", "missing-2.wav"]
        self.shard(2, 2, "--failures", "f.txt", names=names, code=1)
        self.assertEqual(self.read("f.txt"), b"missing-2.wav\tNo such file or directory\n")

    def test_the_same_bytes_whatever_the_number_of_jobs(self):
        names = [*self.names, "missing.wav", *self.names] * 3
        for options in ([], ["--format", "npy"]):
            parts = []
            for jobs in ("1", "2", "7"):
                self.shard(2, 3, "--jobs", jobs, *options, names=names, code=1)
                parts.append((self.read("2-of-3"), self.read("2-of-3.json")))
            self.assertTrue(parts[0] == parts[1] == parts[2])

    def test_wrong_parts_are_refused(self):
        for text in ("", "1", "0/3", "4/3", "1/0", "-1/3", "1/-3", "1/3x", "x/3", "1/3/5", " 1/3", "1/1000001",
                     "99999999999999999999/3"):
            self.assert_usage_error(self.features("0.wav", "--feature", "MEAN", "--shard=" + text, "-o", "t"),
                                    "--shard" if text == "" else f"the shard '{text}' is refused")
        self.assert_usage_error(self.features("0.wav", "--feature", "MEAN", "--shard", "1/2"),
                                "--shard needs --output PATH")
        self.assert_usage_error(self.features("0.wav", "--feature", "MEAN", "--shard", "1/2", "-o", "/dev/null"),
                                "needs a file to write, which /dev/null is not")
        self.assertEqual(self.files(), sorted(self.names))

    def test_the_manifest_replaces_no_input(self):
        os.rename(self.path("0.wav"), self.path("t.csv.json"))
        self.assert_usage_error(self.features("t.csv.json", "--feature", "MEAN", "--shard", "1/2", "-o", "t.csv"),
                                "would replace", "t.csv.json")

    def test_an_interrupted_part_leaves_the_older_one_and_its_manifest(self):
        self.shard(1, 1)
        before = (self.read("1-of-1"), self.read("1-of-1.json"))
        self.write_silence("hour.wav", 3600)
        process = subprocess.Popen([PROGRAM, "features", *["hour.wav"] * 300, "--feature", "SPECTRUM", "--shard", "1/1",
                                    "-o", "1-of-1"], cwd=self.folder, stderr=subprocess.PIPE)
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.communicate(timeout=30)[1], b"murvane-audio: interrupted\n")
        self.assertEqual((self.read("1-of-1"), self.read("1-of-1.json")), before)
        self.assertEqual([name for name in self.files() if ".tmp" in name], [])

    def test_no_moment_of_a_replacement_has_a_table_beside_the_manifest_of_another(self):
        """Killed at any moment, a run leaves a table with its own manifest, or one without any."""
        short, long = self.names[:2], self.names
        valid = set()
        for names in (short, long):
            table, _ = self.shard(1, 1, names=names)
            valid.add((hashlib.sha256(table).digest(), hashlib.sha256(self.read("1-of-1.json")).digest()))
        for i in range(60):
            process = subprocess.Popen([PROGRAM, "features", *(short, long)[i % 2], "--feature", "MEAN", "--shard",
                                        "1/1", "-o", "1-of-1"], cwd=self.folder)
            time.sleep(0.0005 * i)
            process.kill()
            process.wait()
            for name in self.files():
                if ".tmp-" in name:
                    os.remove(self.path(name))
            if "1-of-1.json" in self.files():
                pair = tuple(hashlib.sha256(self.read(name)).digest() for name in ("1-of-1", "1-of-1.json"))
                self.assertIn(pair, valid)

    def test_a_table_is_as_old_as_the_beginning_of_its_run(self):
        self.write_silence("hour.wav", 3600)
        before = time.time()
        self.shard(1, 1, names=["hour.wav"] * 3)
        after = time.time()
        modified = os.stat(self.path("1-of-1")).st_mtime
        self.assertLess(before - 0.1, modified)
        self.assertLess(modified, (before + after) / 2)


if __name__ == "__main__":
    unittest.main()
