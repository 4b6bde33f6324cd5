#!/usr/bin/env python3
"""TextGrids in 'murvane-audio annotations import' and 'export'."""

import unittest

from wav_chunks import AnnotationTest, audio, riff

HEAD = 'File type = "ooTextFile"\nObject class = "TextGrid"\n\n'

LONG = HEAD + '''xmin = 0
xmax = 3
tiers? <exists>
size = 3
item []:
    item [1]:
        class = "IntervalTier"
        name = "tones"
        xmin = 0
        xmax = 3
        intervals: size = 4
        intervals [1]:
            xmin = 0
            xmax = 0.5
            text = ""
        intervals [2]:
            xmin = 0.5
            xmax = 1
            text = "SF_440"
        intervals [3]:
            xmin = 1
            xmax = 2.5
            text = "say ""hi""
on two lines ! no comment"
        intervals [4]:
            xmin = 2.5
            xmax = 3
            text = ""
    item [2]:
        class = "TextTier"
        name = "clicks"
        xmin = 0
        xmax = 3
        points: size = 2
        points [1]:
            number = 0.25
            mark = ""
        points [2]:
            number = 2
            mark = "é"
    item [3]:
        class = "IntervalTier"
        name = "empty"
        xmin = 0
        xmax = 3
        intervals: size = 0
'''

SHORT = HEAD + '''0
3
<exists>
3
"IntervalTier"
"tones"
0 3 4
0 0.5 ""
0.5 1 "SF_440"
1 2.5 "say ""hi""
on two lines ! no comment"
2.5 3 ""
"TextTier" "clicks" 0 3 2 ! a point tier
0.25 ""
2 "é"
! "nothing" 7
"IntervalTier" "empty" 0 3 0
'''

MEANT = [(2000, 0, b""), (4000, 4000, b"SF_440"), (8000, 12000, b'say "hi"\non two lines ! no comment'),
         (16000, 0, "é".encode())]


class TextGrid(AnnotationTest):
    def imported(self, content, *options):
        self.write("b.wav", riff(audio()))
        self.write("l.TextGrid", content)
        self.assert_told(self.annotations("import", "b.wav", "l.TextGrid", *options))
        return self.annotations_in("b.wav")

    def exported(self):
        result = self.annotations("export", "a.wav", "--format", "textgrid")
        self.assert_done(result)
        return result.stdout.decode()

    def tiers(self):
        """(class, name, values) of each tier of an export; the values are numbers and texts as they stand."""
        tiers = []
        for item in self.exported().split("    item [")[1:]:
            lines = [line.strip() for line in item.splitlines()]
            values = [line.split(" = ", 1)[1] for line in lines if " = " in line]
            kind, name, start, stop, size = values[:5]
            self.assertEqual((start, stop), ("0", "3"))
            self.assertEqual(len(values) - 5, int(size) * (3 if kind == '"IntervalTier"' else 2))
            tiers.append((kind.strip('"'), name.strip('"'), values[5:]))
        return tiers

    def assert_refused(self, content, message):
        file = riff(audio())
        self.write("b.wav", file)
        self.write("l.TextGrid", content)
        self.assert_failed(self.annotations("import", "b.wav", "l.TextGrid"),
                           "l.TextGrid: cannot be read as textgrid: " + message)
        self.assertEqual(self.read("b.wav"), file)

    def test_the_long_and_the_short_form_are_read(self):
        for text in (LONG, SHORT, LONG.replace("\n", "\r\n").replace("hi\"\"\r\n", "hi\"\"\n")):
            self.assertEqual(self.imported(text.encode()), MEANT)

    def test_utf8_and_utf16_are_read(self):
        for text in (LONG, SHORT):
            for mark, code in ((b"\xef\xbb\xbf", "utf-8"), (b"\xff\xfe", "utf-16-le"), (b"\xfe\xff", "utf-16-be")):
                self.assertEqual(self.imported(mark + text.encode(code)), MEANT)
        wide = SHORT.replace("é", "😀")
        self.assertEqual(self.imported(wide.encode("utf-16"))[-1], (16000, 0, "😀".encode()))

    def test_other_encodings_are_refused(self):
        utf8 = "; a TextGrid is UTF-8, or UTF-16 with a byte order mark"
        self.assert_refused(SHORT.encode("latin-1"), "it is not UTF-8" + utf8)
        for broken in (SHORT.encode("utf-16")[:-1], b"\xff\xfe" + b"\x00\xd8", b"\xff\xfe" + b"\x00\xdc\x00\xd8"):
            self.assert_refused(broken, "it is not UTF-16, though it begins like that" + utf8)

    def test_tiers_can_be_chosen(self):
        self.assertEqual(self.imported(LONG.encode(), "--tier", "clicks"), [MEANT[0], MEANT[3]])
        self.assertEqual(self.imported(LONG.encode(), "--tier", "clicks", "--tier", "tones"), MEANT)
        self.assertEqual(self.imported(LONG.encode(), "--tier", "empty"), [])
        self.assert_failed(self.annotations("import", "b.wav", "l.TextGrid", "--tier", "words"),
                           'l.TextGrid: cannot be read as textgrid: it has no tier "words"; its tiers are tones, clicks, '
                           "empty")
        self.write("l.txt", b"")
        self.assert_usage_error(self.annotations("import", "b.wav", "l.txt", "--tier", "x"),
                                "--tier goes with textgrid only; the format is audacity")

    def test_a_textgrid_without_tiers(self):
        self.assertEqual(self.imported(HEAD.encode() + b"0 3 <absent>"), [])

    def test_other_texts_are_refused_with_their_line(self):
        for text, message in (("", 'line 1: the file type "ooTextFile" is missing at the end'),
                              ("hello", 'line 1: the file type "ooTextFile" is missing at the end'),
                              (HEAD.replace("TextGrid", "PitchTier"), "line 2: it is no TextGrid"),
                              ('"ooTextGrid" "TextGrid"', "line 1: it is no TextGrid"),
                              (HEAD + "0 x", "line 4: the end of the TextGrid is missing at the end"),
                              (HEAD + '0 "3"', "line 4: the end of the TextGrid is needed here"),
                              (HEAD + "0 3 <exists> 1.5", "line 4: the number of tiers cannot be 1.5"),
                              (HEAD + "0 3 <exists> -1", "line 4: the number of tiers cannot be -1"),
                              (HEAD + "0 3 <exists> 4000000000", "line 4: the class of a tier is missing at the end"),
                              (HEAD + '0 3 <exists> 1\n"Tier"',
                               'line 5: a tier is of the class IntervalTier or TextTier, not "Tier"'),
                              (SHORT.replace('"SF_440"', "440"), "line 12: the text of an interval is needed here"),
                              (SHORT.replace("0.5 1 ", "0.5 "), "line 12: the end of an interval is needed here"),
                              (SHORT.replace("0 3 4\n", "0 3 4000000000\n"),
                               "line 16: the start of an interval is needed here"),
                              (SHORT.replace('"empty"', '"empty'), "line 20: a quote is not closed")):
            self.assert_refused(text.encode(), message)

    def test_gaps_are_written_as_intervals_without_text(self):
        self.write_annotated("a.wav", (4000, 4000, b"SF_440"), (8000, 4000, b'"x"'), (16000, 8000, b"y"))
        self.assertEqual(self.tiers(), [("IntervalTier", "annotations", [
            "0", "0.5", '""', "0.5", "1", '"SF_440"', "1", "1.5", '"""x"""', "1.5", "2", '""', "2", "3", '"y"'])])

    def test_no_annotations_are_one_gap(self):
        self.write("a.wav", riff(audio()))
        self.assertEqual(self.tiers(), [("IntervalTier", "annotations", ["0", "3", '""'])])

    def test_what_overlaps_gets_tiers_of_its_own(self):
        self.write_annotated("a.wav", (16000, 8000, b"c"), (0, 16000, b"a"), (4000, 4000, b"b"), (4000, 4000, b"d"))
        self.assertEqual([(name, [value for value in values if value.isalpha() or value.strip('"').isalpha()])
                          for _, name, values in self.tiers()],
                         [("annotations", ['"a"', '"c"']), ("annotations 2", ['"b"']), ("annotations 3", ['"d"'])])

    def test_what_has_no_length_is_a_point(self):
        self.write_annotated("a.wav", (8000, 0, b"x"), (8000, 0, b""), (0, 0, b"y"), (24000, 0, b"z"))
        self.assertEqual(self.tiers()[1:], [("TextTier", "points", ["0", '"y"', "1", '"x"', "3", '"z"']),
                                            ("TextTier", "points 2", ["1", '""'])])

    def test_labels_that_cannot_be_written(self):
        for label, length, reason in ((b"", 10, '(""): a TextGrid takes an interval without a label for a gap'),
                                      (b"\xff", 10, '("\\ufffd"): its label is not UTF-8, which a TextGrid cannot hold'),
                                      (b"x", 30000, "(x): it goes beyond the end of the audio, where a TextGrid ends")):
            self.write_annotated("a.wav", (1, 1, b"first"), (2, length, label))
            self.assert_failed(self.annotations("export", "a.wav", "--format", "textgrid"),
                               f"a.wav: cannot be written as textgrid: annotation 2 {reason}")


if __name__ == "__main__":
    unittest.main()
