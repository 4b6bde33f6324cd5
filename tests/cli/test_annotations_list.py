#!/usr/bin/env python3
"""murvane-audio annotations list."""

import csv
import io
import json
import os
import unittest

from wav_chunks import (AnnotationTest, adtl, audio, cue, labl, ltxt, point, riff)

TONES = [(4000, 4000, b"SF_440"), (16000, 4000, b"AM_1000x50")]


class List(AnnotationTest):
    def list_json(self, *arguments):
        result = self.annotations("list", "--format", "json", *arguments)
        self.assert_done(result)
        return json.loads(result.stdout)

    def labels_and_samples(self, *arguments):
        item, = self.list_json(*arguments)
        return [(a["start_sample"], a["stop_sample"], a["label"]) for a in item["annotations"]]

    def test_text_is_a_table(self):
        self.write_annotated("a.wav", *TONES)
        self.assert_told(self.annotations("list", "a.wav"), output=(
            "a.wav: 8000 Hz, 3.000000 s, 2 annotations\n"
            "       start_s        stop_s  kind                 Hz          label\n"
            "      0.500000      1.000000  single frequency     440         SF_440\n"
            "      2.000000      2.500000  amplitude modulated  1000x50     AM_1000x50\n"))

    def test_csv_gives_times_samples_and_tones(self):
        self.write_annotated("a.wav", *TONES, (1, 2, b'say "hi", twice'))
        result = self.annotations("list", "a.wav", "--format", "csv")
        self.assert_done(result)
        rows = list(csv.reader(io.StringIO(result.stdout.decode())))
        self.assertEqual(rows, [
            ["file", "start_s", "stop_s", "start_sample", "stop_sample", "label", "kind", "frequency_hz", "carrier_hz",
             "modulation_hz"],
            ["a.wav", "0.5", "1", "4000", "8000", "SF_440", "single frequency", "440", "", ""],
            ["a.wav", "2", "2.5", "16000", "20000", "AM_1000x50", "amplitude modulated", "", "1000", "50"],
            ["a.wav", "0.000125", "0.000375", "1", "3", 'say "hi", twice', "other", "", "", ""]])

    def test_json_gives_the_same(self):
        self.write_annotated("a.wav", *TONES)
        self.assertEqual(self.list_json("a.wav"), [
            {"name": "a.wav", "rate_hz": 8000, "samples": 24000, "annotations": [
                {"start_s": 0.5, "stop_s": 1, "start_sample": 4000, "stop_sample": 8000, "label": "SF_440",
                 "kind": "single frequency", "frequency_hz": 440, "carrier_hz": None, "modulation_hz": None},
                {"start_s": 2, "stop_s": 2.5, "start_sample": 16000, "stop_sample": 20000, "label": "AM_1000x50",
                 "kind": "amplitude modulated", "frequency_hz": None, "carrier_hz": 1000, "modulation_hz": 50}]}])

    def test_times_are_the_nearest_doubles(self):
        self.write_annotated("a.wav", (1, 2, b"x"), (12345, 3, b"y"), rate=44100)
        item, = self.list_json("a.wav")
        self.assertEqual([(a["start_s"], a["stop_s"]) for a in item["annotations"]],
                         [(1 / 44100, 3 / 44100), (12345 / 44100, 12348 / 44100)])

    def test_kinds_follow_the_label(self):
        labels = [b"SF_440", b"SF_0440", b"sf_440", b"SF_", b"SF_440x", b"AM_1000x50", b"am_1000X50", b"AM_5x", b"busy",
                  b"", b"SF_99999999999"]
        self.write_annotated("a.wav", *((100, 10, label) for label in labels))
        item, = self.list_json("a.wav")
        self.assertEqual([(a["kind"], a["frequency_hz"], a["carrier_hz"], a["modulation_hz"])
                          for a in item["annotations"]],
                         [("single frequency", 440, None, None)] * 2 + [("other", None, None, None)] * 3 +
                         [("amplitude modulated", None, 1000, 50)] * 2 + [("other", None, None, None)] * 4)
        self.assertEqual([a["label"].encode() for a in item["annotations"]], labels)

    def test_fillers_are_hidden_unless_asked_for(self):
        self.write_annotated("a.wav", (4000, 100, b"x"))
        self.assertEqual(self.labels_and_samples("a.wav"), [(4000, 4100, "x")])
        self.assertEqual(self.labels_and_samples("a.wav", "--keep-fillers"), [(0, 0, "SF_MIN"), (4000, 4100, "x")])

    def test_only_a_filler_is_a_filler(self):
        almost = [(0, 1, b"SF_MIN"), (1, 0, b"SF_MIN"), (0, 0, b"SF_0"), (0, 0, b"")]
        self.write_annotated("a.wav", *almost, first=0)
        self.assertEqual(self.labels_and_samples("a.wav"),
                         [(start, start + length, label.decode()) for start, length, label in almost])

    def test_identifiers_may_begin_at_0_and_have_gaps(self):
        chunks = riff(audio(), cue(point(7, 70), point(0, 10), point(3, 30)),
                      adtl(*(ltxt(i, 5) + labl(i, b"l%d" % i) for i in (3, 7, 0))))
        self.write("a.wav", chunks)
        self.assertEqual(self.labels_and_samples("a.wav"), [(10, 15, "l0"), (30, 35, "l3"), (70, 75, "l7")])
        self.assertEqual(len(self.labels_and_samples("a.wav", "--keep-fillers")), 8)

    def test_nothing_is_said_about_gaps(self):
        self.write_annotated("a.wav", *TONES)
        self.assert_told(self.annotations("list", "a.wav"))

    def test_records_of_the_library_come_when_asked_for(self):
        self.write_annotated("a.wav", *TONES)
        result = self.annotations("list", "a.wav", "--log-level", "WARN")
        self.assert_told(result, "a.wav: Annotation indexes are not contiguous. This would lead to empty annotations, "
                                 "which should not be a problem.")

    def test_a_file_without_annotations(self):
        self.write("a.wav", riff(audio()))
        self.assert_told(self.annotations("list", "a.wav"), output="a.wav: 8000 Hz, 3.000000 s, no annotations\n")
        self.assertEqual(self.labels_and_samples("a.wav"), [])

    def test_labels_cannot_disturb_the_table(self):
        self.write_annotated("a.wav", (1, 1, b"two\nlines\x1b[2J"), (2, 1, b""), (3, 1, b" x"), (4, 1, b"caf\xe9"),
                             (5, 1, "café".encode()))
        lines = self.annotations("list", "a.wav").stdout.decode().splitlines()[2:]
        self.assertEqual([line[63:] for line in lines],
                         ['"two\\u000alines\\u001b[2J"', '""', '" x"', '"caf\\ufffd"', "café"])

    def test_a_label_that_is_not_utf8_keeps_its_bytes(self):
        self.write_annotated("a.wav", (1, 1, b"caf\xe9"))
        item, = self.list_json("a.wav")
        annotation, = item["annotations"]
        self.assertEqual((annotation["label"], annotation["label_bytes_hex"]), ("caf\ufffd", b"caf\xe9".hex()))
        self.assertIn(b",caf\xe9,", self.annotations("list", "a.wav", "--format", "csv").stdout)

    def test_several_files_and_an_audio_set(self):
        self.write_annotated("a.wav", TONES[0])
        self.write_annotated("b.wav", TONES[1])
        self.write("set.txt", b"# recordings\nb.wav\na.wav\n")
        items = self.list_json("a.wav", "--audioset", "set.txt")
        self.assertEqual([os.path.basename(item["name"]) for item in items], ["a.wav", "b.wav", "a.wav"])
        rows = self.annotations("list", "a.wav", "b.wav", "--format", "csv").stdout.decode().splitlines()
        self.assertEqual([row.split(",")[0] for row in rows], ["file", "a.wav", "b.wav"])

    def test_a_file_that_fails_leaves_the_others(self):
        self.write_annotated("a.wav", TONES[0])
        result = self.annotations("list", "missing.wav", "a.wav", "--format", "json")
        self.assert_failed(result, "missing.wav: No such file or directory")
        self.assertEqual([item["name"] for item in json.loads(result.stdout)], ["a.wav"])

    def test_an_audio_set_with_a_missing_file_fails(self):
        self.write_annotated("a.wav", TONES[0])
        self.write("set.txt", b"a.wav\nmissing.wav\n")
        result = self.annotations("list", "--audioset", "set.txt", "--format", "json")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(json.loads(result.stdout)), 1)
        self.assertIn(b"missing.wav", result.stderr)

    def test_names_come_from_standard_input(self):
        self.write_annotated("a.wav", TONES[0])
        self.write_annotated("-", TONES[1])
        result = self.annotations("list", "--format", "csv", "a.wav", "-", input=b"# recordings\n\na.wav\n")
        self.assert_done(result)
        self.assertEqual(result.stdout.count(b"\na.wav,"), 2)
        self.assertIn(b"\n-,", self.annotations("list", "--format", "csv", "--", "-").stdout)
        self.assert_usage_error(self.annotations("list", "-", "-", input=b"a.wav\n"), "'-' is given twice")

    def test_a_list_without_names_is_no_file(self):
        self.write("set.txt", b"# none\n\n")
        for arguments, lines in ((["--audioset", "set.txt"], b""), (["-"], b"\n"),
                                 (["--format", "json", "-o", "new.json", "-"], b"")):
            result = self.annotations("list", *arguments, input=lines)
            self.assert_failed(result, "no file to process")
            self.assertEqual(result.stdout, b"")
        self.assertEqual(self.files(), ["set.txt"])

    def test_an_audio_set_that_cannot_be_read_fails_and_the_files_are_listed(self):
        self.write_annotated("a.wav", TONES[0])
        result = self.annotations("list", "a.wav", "--audioset", "none.txt")
        self.assert_failed(result, "none.txt: cannot be read: No such file or directory")
        self.assertIn(b"SF_440", result.stdout)

    def test_json_of_no_file_is_an_empty_list(self):
        self.assertEqual(json.loads(self.annotations("list", "missing.wav", "--format", "json").stdout), [])

    def test_an_output_file_appears_when_it_is_whole(self):
        self.write_annotated("a.wav", *TONES)
        self.assert_done(self.annotations("list", "a.wav", "-o", "list.txt"))
        self.assertEqual(self.read("list.txt"), self.annotations("list", "a.wav").stdout)
        self.assertEqual(self.annotations("list", "missing.wav", "-o", "none.txt").returncode, 1)
        self.assertEqual(self.files(), ["a.wav", "list.txt"])

    def test_an_output_does_not_replace_an_input(self):
        self.write_annotated("a.wav", *TONES)
        before = self.read("a.wav")
        self.assert_usage_error(self.annotations("list", "a.wav", "-o", "./a.wav"), "would replace the input")
        self.assertEqual(self.read("a.wav"), before)

    def test_an_output_replaces_neither_an_audio_set_nor_its_files(self):
        self.write_annotated("a.wav", *TONES)
        self.write("set.txt", b"a.wav\n")
        before = self.read("a.wav"), self.read("set.txt")
        for output in ("set.txt", "./a.wav"):
            self.assert_usage_error(self.annotations("list", "--audioset", "set.txt", "-o", output),
                                    f"the output {output} would replace the input")
        self.assert_usage_error(self.annotations("list", "-", "-o", "a.wav", input=b"a.wav\n"), "would replace the input")
        self.assertEqual((self.read("a.wav"), self.read("set.txt")), before)

    def test_wrong_usage(self):
        self.assert_usage_error(self.annotations(), "no action given", "list, add, copy")
        self.assert_usage_error(self.annotations("show"), "unknown action 'show'", "Try 'murvane-audio annotations --help'.")
        self.assert_usage_error(self.annotations("list"), "no file given")
        self.assert_usage_error(self.annotations("list", "a.wav", "--format", "xml"), "unknown format 'xml'")
        self.assert_usage_error(self.annotations("list", "a.wav", "--bogus"), "--bogus",
                                "Try 'murvane-audio annotations list --help'.")

    def test_help_of_all_actions(self):
        result = self.annotations("--help")
        self.assert_done(result)
        actions = [line.split()[0] for line in result.stdout.decode().split("Actions:\n")[1].split("\n\n")[0].splitlines()]
        self.assertEqual(actions, ["list", "add", "copy", "append", "clear", "validate", "import", "export"])
        for action in actions:
            result = self.annotations(action, "--help")
            self.assert_done(result)
            self.assertTrue(result.stdout.startswith(b"Usage: murvane-audio annotations " + action.encode()), action)
        usage = self.annotations("export", "--help").stdout
        self.assertTrue(usage.startswith(b"Usage: murvane-audio annotations export FILE [--format FORMAT] [--output LABELS]"))


if __name__ == "__main__":
    unittest.main()
