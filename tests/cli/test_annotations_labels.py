#!/usr/bin/env python3
"""murvane-audio annotations import and export: Audacity's labels, CSV and JSON."""

import json
import unittest

from wav_chunks import AnnotationTest, audio, riff

A = (4000, 4000, b"SF_440")
B = (16000, 4000, b"AM_1000x50")


class LabelTest(AnnotationTest):
    def export(self, *arguments):
        result = self.annotations("export", "a.wav", *arguments)
        self.assert_done(result)
        return result.stdout

    def imported(self, name, content, *options):
        """The annotations of a file without any after an import."""
        self.write("b.wav", riff(audio()))
        self.write(name, content)
        self.assert_told(self.annotations("import", "b.wav", name, *options))
        return self.annotations_in("b.wav")

    def assert_import_refused(self, name, content, message, *options):
        file = riff(audio())
        self.write("b.wav", file)
        self.write(name, content)
        self.assert_failed(self.annotations("import", "b.wav", name, *options), message)
        self.assertEqual(self.read("b.wav"), file)


class ImportAndExport(LabelTest):
    def test_the_extension_tells_the_format_in_any_case(self):
        self.write_annotated("a.wav", A, B)
        for name, form in (("l.txt", "audacity"), ("l.CSV", "csv"), ("l.json", "json"), ("l.TextGrid", "textgrid"),
                           ("l.textgrid", "textgrid")):
            self.assert_done(self.annotations("export", "a.wav", "--output", name))
            self.assertEqual(self.read(name), self.export("--format", form))
            self.write("b.wav", riff(audio()))
            self.assert_told(self.annotations("import", "b.wav", name),
                             output="b.wav: 0 removed, 2 added; 2 annotations\n")
            self.assertEqual(self.annotations_in("b.wav"), [A, B])

    def test_a_format_that_is_not_told_is_wrong_usage(self):
        self.write_annotated("a.wav", A)
        formats = "the formats are audacity, csv, json, textgrid"
        self.assert_usage_error(self.annotations("export", "a.wav"), "no --format given; " + formats)
        self.assert_usage_error(self.annotations("export", "a.wav", "-o", "l.lab"), "'l.lab' tells no format; " + formats)
        self.assert_usage_error(self.annotations("import", "a.wav", "l.lab"), "'l.lab' tells no format")
        self.assert_usage_error(self.annotations("import", "a.wav", "l", "--format", "xml"), "unknown format 'xml'")
        self.assert_usage_error(self.annotations("import", "a.wav"), "takes FILE and LABELS, 1 name is given")
        self.assertEqual(self.files(), ["a.wav"])

    def test_an_import_replaces_unless_it_appends(self):
        self.write_annotated("a.wav", A)
        self.write("l.txt", b"2\t2.5\tAM_1000x50\n")
        self.assert_told(self.annotations("import", "a.wav", "l.txt", "--append"))
        self.assertEqual(self.annotations_in("a.wav"), [A, B])
        self.assert_told(self.annotations("import", "a.wav", "l.txt", "--backup"),
                         output="a.wav: 1 removed, 0 added; 1 annotation; the old file is a.wav.bak\n")
        self.assertEqual(self.annotations_in("a.wav"), [B])
        self.assertEqual(self.annotations_in("a.wav.bak"), [A, B])

    def test_labels_that_were_never_written_replace_none(self):
        self.write_annotated("a.wav", A, B)
        before = self.read("a.wav")
        self.write("l.txt", b"")
        for name in ("l.txt", "/dev/null"):
            for options in ([], ["--dry-run"]):
                self.assert_failed(self.annotations("import", "a.wav", name, "--format", "audacity", *options),
                                   f"a.wav: {name} is empty, which is no label file to replace 2 annotations by; "
                                   "'murvane-audio annotations clear' removes them")
        self.assertEqual(self.read("a.wav"), before)
        self.assert_told(self.annotations("import", "a.wav", "l.txt", "--append"),
                         output="a.wav: 0 removed, 0 added; 2 annotations\n")
        self.assertEqual(self.read("a.wav"), before)

    def test_labels_that_are_none_replace_all_with_a_warning(self):
        for name, content in (("l.json", b"[]"), ("l.csv", b"start_s,stop_s,label\n"), ("l.txt", b"\n")):
            self.write_annotated("a.wav", A)
            self.write(name, content)
            self.assert_told(self.annotations("import", "a.wav", name),
                             f"a.wav: warning: {name} holds no annotations; 1 annotation replaced by none",
                             output="a.wav: 1 removed, 0 added; 0 annotations\n")
            self.assertEqual(self.read("a.wav"), riff(audio()))
            self.assert_told(self.annotations("import", "a.wav", name),
                             output="a.wav: 0 removed, 0 added; 0 annotations\n")

    def test_what_changed_is_told_whatever_the_order(self):
        def row(start, length, label):
            return f"{start / 8000}\t{(start + length) / 8000}\t{label.decode()}\n".encode()
        c = (200, 80, b"c")
        d = (200, 80, b"d")
        for before, after, removed, added in (
                ([A, B, c], [c, B, A], "", ""), ([A, B, c], [B, A, B, c], "", "+B"), ([A, A, B], [B, A], "-A", ""),
                ([A, A], [A, A, A], "", "+A"), ([A, B, c, A], [A, d, B, A], "-c", "+d"), ([], [c, A], "", "+c+A"),
                ([A, c, B], [], "-c-A-B", "")):
            self.write_annotated("a.wav", *before)
            self.write("l.csv", b"start_s,stop_s,label\n" + b"".join(row(*a) for a in after).replace(b"\t", b","))
            lines = self.annotations("import", "a.wav", "l.csv", "--dry-run").stdout.decode().splitlines()
            names = {"SF_440": "A", "AM_1000x50": "B"}
            changes = [line[0] + names.get(line.split()[-1], line.split()[-1]) for line in lines[1:]]
            self.assertEqual("".join(changes), removed + added, (before, after))

    def test_a_dry_run_imports_nothing(self):
        self.write_annotated("a.wav", A)
        before = self.read("a.wav")
        self.write("l.txt", b"2\t2.5\tAM_1000x50\n")
        self.assert_told(self.annotations("import", "a.wav", "l.txt", "--dry-run"), output=(
            "a.wav: 1 removed, 1 added; 1 annotation (dry run: nothing written)\n"
            "- 0.5 s to 1 s  SF_440\n+ 2 s to 2.5 s  AM_1000x50\n"))
        self.assertEqual(self.read("a.wav"), before)

    def test_times_that_make_no_sense_leave_the_file_alone(self):
        for content, reason in ((b"0\t1\tx\n-1\t1\ty\n", "annotation 2 (y) has the time -1 s; times are 0 s or more"),
                                (b"0\tnan\tx\n", "annotation 1 (x) has the time nan s; times are 0 s or more"),
                                (b"2\t1\tx\n", "annotation 1 (x) starts at 2 s, after its stop at 1 s"),
                                (b"3.1\t4\tx\n", "annotation 1 (x) starts at 3.1 s, beyond the end of the audio at 3 s"),
                                (b"0\t0\tSF_MIN\n",
                                 "annotation 1 (SF_MIN) is what gaps read as; only --keep-fillers keeps it")):
            self.assert_import_refused("l.txt", content, "b.wav: l.txt: " + reason)

    def test_what_ends_beyond_the_audio_is_cut_off_with_a_warning(self):
        self.write("a.wav", riff(audio()))
        self.write("l.txt", b"0\t1\tx\n" + b"1\t3.5\ty\n" * 7)
        result = self.annotations("import", "a.wav", "l.txt")
        lines = self.messages(result)
        self.assertEqual(lines[0], "murvane-audio: a.wav: warning: annotation 2 (y) ends at 3.5 s, beyond the end of the "
                                   "audio at 3 s; it is cut off there")
        self.assertEqual(lines[5:], ["murvane-audio: a.wav: warning: 2 more annotations are cut off there"])
        self.assertEqual(self.annotations_in("a.wav"), [(0, 8000, b"x")] + [(8000, 16000, b"y")] * 7)

    def test_label_files_that_cannot_be_read(self):
        self.assert_import_refused("l.csv", b"", "l.csv: cannot be read as csv: line 1: no column start_s; the columns "
                                                 "start_s, stop_s and label are needed")
        self.assert_import_refused("l.json", b"", "l.json: cannot be read as json: line 1: the text ends too early")
        self.write("b.wav", riff(audio()))
        self.assert_failed(self.annotations("import", "b.wav", "l.txt"), "l.txt: No such file or directory")
        self.assert_failed(self.annotations("import", "b.wav", ".", "--format", "csv"), ".: is a directory")

    def test_fillers_are_exported_when_asked_for(self):
        self.write_annotated("a.wav", A)
        self.assertEqual(self.export("--format", "audacity"), b"0.5\t1\tSF_440\n")
        self.assertEqual(self.export("--format", "audacity", "--keep-fillers"), b"0\t0\tSF_MIN\n0.5\t1\tSF_440\n")

    def test_times_have_as_many_decimals_as_tell_samples_apart(self):
        for rate, sample, text in ((8000, 0, "0"), (8000, 1, "0.0001"), (8000, 2, "0.00025"), (8000, 3, "0.0004"),
                                   (8000, 4000, "0.5"), (8000, 12345, "1.5431"), (8000, 7999, "0.9999"),
                                   (44100, 1, "0.00002"), (44100, 22050, "0.5"), (44100, 14700, "0.33333"),
                                   (44100, 10 ** 5 - 1, "2.26755"), (1, 7, "7"), (3, 1, "0.3"), (3, 2, "0.7"),
                                   (2000000000, 4000, "0.000002"), (2000000000, 4001, "0.0000020005")):
            self.write_annotated("a.wav", (sample, 0, b"x"), rate=rate)
            self.assertEqual(self.export("--format", "audacity").decode().split("\t")[0], text, (rate, sample))

    def test_an_output_does_not_replace_the_recording(self):
        self.write_annotated("a.wav", A)
        self.assert_usage_error(self.annotations("export", "a.wav", "-o", "./a.wav", "--format", "csv"), "would replace")
        self.assertEqual(self.annotations_in("a.wav"), [A])


class Audacity(LabelTest):
    def test_lines_of_start_stop_and_label(self):
        self.write_annotated("a.wav", A, (8000, 0, b""), (1, 1, b'"quoted", \\ and \xc3\xa9'), (0, 1, b"caf\xe9"))
        self.assertEqual(self.export("--format", "audacity"),
                         b'0.5\t1\tSF_440\n1\t1\t\n0.0001\t0.00025\t"quoted", \\ and \xc3\xa9\n0\t0.0001\tcaf\xe9\n')

    def test_tabs_and_line_ends_cannot_be_written(self):
        for label, shown in ((b"a\tb", '"a\\u0009b"'), (b"a\nb", '"a\\u000ab"'), (b"a\r", '"a\\u000d"')):
            self.write_annotated("a.wav", A, (1, 1, label))
            self.assert_failed(self.annotations("export", "a.wav", "-o", "l.txt"), "a.wav: cannot be written as audacity: "
                               f"annotation 2 ({shown}): this format has no tabs and line ends in labels")
            self.assertEqual(self.files(), ["a.wav"])

    def test_what_audacity_writes_is_read(self):
        self.assertEqual(self.imported("l.txt", b"0.500000\t1.000000\tSF_440\r\n\\\t100.0\t200.0\r\n\r\n2.0\t2.0\t\r\n"
                                                b"1\t1.5"), [A, (16000, 0, b""), (8000, 4000, b"")])
        self.assertEqual(self.imported("l.txt", b"\xef\xbb\xbf0.5\t1\tSF_440"), [A])
        self.assertEqual(self.imported("l.txt", b"\n\n"), [])

    def test_other_lines_are_named(self):
        where = "l.txt: cannot be read as audacity: line "
        for content, message in ((b"0\t1\tx\n0,5\t1\ty\n", '2: "0,5" is no time in seconds'),
                                 (b"0.5 1 x\n", '1: "0.5 1 x" is no time in seconds'),
                                 (b"\n0.5\n", '2: "" is no time in seconds'),
                                 (b"0\t1s\tx\n", '1: "1s" is no time in seconds'),
                                 (b"0\t1\tx\ty\n", "1: more than two tabs"),
                                 (b"0\t1e999\tx\n", '1: "1e999" is no time in seconds'),
                                 (b"0\t" + b"9" * 400 + b"\tx\n", '1: "' + "9" * 40 + '" is no time in seconds')):
            self.assert_import_refused("l.txt", content, where + message)


class Csv(LabelTest):
    def test_fields_are_quoted_where_they_must_be(self):
        self.write_annotated("a.wav", A, (0, 8000, b'say "hi",\r\nagain'))
        self.assertEqual(self.export("--format", "csv"),
                         b'start_s,stop_s,label\n0.5,1,SF_440\n0,1,"say ""hi"",\r\nagain"\n')

    def test_columns_are_found_by_name(self):
        self.assertEqual(self.imported("l.csv", b"\xef\xbb\xbflabel,who,stop_s,start_s\r\n\"a,\n\"\"b\"\"\",me,1.0,0.5\r\n"
                                                b"\r\n,you,2.5, 2 "), [(4000, 4000, b'a,\n"b"'), (16000, 4000, b"")])

    def test_a_list_of_one_file_can_be_imported(self):
        self.write_annotated("a.wav", A, B)
        rows = self.annotations("list", "a.wav", "--format", "csv").stdout
        self.assertEqual(self.imported("l.csv", rows), [A, B])
        self.assert_import_refused("l.csv", rows + rows.splitlines()[1].replace(b"a.wav", b"c.wav"),
                                   "l.csv: cannot be read as csv: line 4: annotations of a second file, c.wav")

    def test_other_rows_are_named(self):
        columns = b"start_s,stop_s,label\n"
        for content, message in ((b"0,1,x\n", "1: no column start_s; the columns start_s, stop_s and label are needed"),
                                 (b"start_s,stop_s\n", "1: no column label; the columns start_s, stop_s and label are "
                                                       "needed"),
                                 (columns + b"0,1\n", "2: 2 fields instead of 3"),
                                 (columns + b'0,1,"a\nb"\n0,x,y\n', '4: "x" is no time in seconds'),
                                 (columns + b'0,1,"open\n', "2: a quote is not closed"),
                                 (columns + b'0,1,"a"b\n', "2: text follows a closing quote")):
            self.assert_import_refused("l.csv", content, "l.csv: cannot be read as csv: line " + message)


class Json(LabelTest):
    def test_the_recording_is_described_with_its_annotations(self):
        self.write_annotated("a.wav", A, (1, 1, b"caf\xe9"))
        self.assertEqual(json.loads(self.export("--format", "json")), {"rate_hz": 8000, "samples": 24000, "annotations": [
            {"start_s": 0.5, "stop_s": 1, "label": "SF_440"},
            {"start_s": 0.0001, "stop_s": 0.00025, "label": "caf\ufffd", "label_bytes_hex": b"caf\xe9".hex()}]})
        self.write("a.wav", riff(audio()))
        self.assertEqual(json.loads(self.export("--format", "json"))["annotations"], [])

    def test_other_members_do_not_matter(self):
        content = json.dumps({"x": [{}, [], [1, [2.5e-3, -0]], "\u00e9\\", True, False, None], "annotations": [
            {"stop_s": 1, "label": "\ud83d\ude00\n\"\u00e9", "who": {"a": {"b": []}}, "start_s": 5e-1}], "y": {}})
        self.assertEqual(self.imported("l.json", content.encode()), [(4000, 4000, "😀\n\"é".encode())])
        self.assertEqual(self.imported("l.json", json.dumps({"annotations": []}, indent=1).encode()), [])

    def test_a_list_of_one_file_can_be_imported(self):
        self.write_annotated("a.wav", A, (1, 1, b"caf\xe9"))
        self.assertEqual(self.imported("l.json", self.annotations("list", "a.wav", "--format", "json").stdout),
                         [A, (1, 1, b"caf\xe9")])
        self.assert_import_refused("l.json", self.annotations("list", "a.wav", "a.wav", "--format", "json").stdout,
                                   "l.json: cannot be read as json: line 5: annotations of a second file")

    def test_a_zero_byte_in_a_label_is_refused(self):
        self.assert_import_refused("l.json", b'{"annotations": [{"start_s": 0, "stop_s": 1, "label": "a\\u0000b"}]}',
                                   'b.wav: l.json: annotation 1 ("a\\u0000b") has a zero byte in its label, which would '
                                   "end there")

    def test_other_texts_are_refused_with_their_line(self):
        label = '{"annotations": [\n{"start_s": 0, "stop_s": 1, "label": "%s"}]}'
        for content, message in (("{}", 'line 1: there are no "annotations"'),
                                 ("[1]", "line 1: '{' is needed here"),
                                 ('{"annotations": 1}', "line 1: '[' is needed here"),
                                 ('{"annotations": [\n{"label": "x"}]}', "line 2: an annotation needs start_s, stop_s and "
                                                                        "label"),
                                 ('{"annotations": [{"start_s": "0"', "line 1: a number is needed here"),
                                 ('{"annotations": [{"start_s": 01', "line 1: a number is needed here"),
                                 ('{"annotations": [{"start_s": 1e999', "line 1: the number 1e999 is out of range"),
                                 ('{"annotations": [{"start_s": 0,}', "line 1: '\"' is needed here"),
                                 ('{"annotations": [],}', "line 1: '\"' is needed here"),
                                 ('{"annotations": []} x', "line 1: something follows the end"),
                                 ('{"annotations": [', "line 1: the text ends too early"),
                                 ('{"a": tru}', "line 1: a value is needed here"),
                                 ('{"a": ' + "[" * 100000, "line 1: nested too deep"),
                                 (label % "\n", "line 2: a control character in a string"),
                                 (label % "\\x", "line 2: an unknown escape in a string"),
                                 (label % "\\u12", "line 2: four hexadecimal digits are needed here"),
                                 (label % "\\ud800", "line 2: half a character in a string"),
                                 (label % "\\udc00\\ud800", "line 2: half a character in a string"),
                                 ('{"annotations": [{"label": "', "line 1: a string is not closed"),
                                 ('{"annotations": [{"label_bytes_hex": "6"', "line 1: label_bytes_hex must hold two digits "
                                                                             "a byte"),
                                 ('{"annotations": [{"label_bytes_hex": "6G"', "line 1: label_bytes_hex must hold "
                                                                              "lower-case hexadecimal digits")):
            self.assert_import_refused("l.json", content.encode(), "l.json: cannot be read as json: " + message)
        self.assert_import_refused("l.json", b'{"\xff": 1}', "l.json: cannot be read as json: it is not UTF-8")


if __name__ == "__main__":
    unittest.main()
