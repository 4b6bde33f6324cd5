#!/usr/bin/env python3
"""Files that other programs annotated: what is refused, why, and what lenient reading saves of them."""

import json
import unittest

from wav_chunks import (AnnotationTest, adtl, audio, chunk, cue, labl, ltxt, point, riff, smpl)

LOOK_HINT = ("; 'murvane-audio annotations list --lenient' shows what can be saved of it, {}'murvane-audio annotations "
             "validate' tells all that is wrong")
EDIT_HINT = LOOK_HINT.format("edits with --lenient, such as 'add --lenient', keep that, ")
LOOK_HINT = LOOK_HINT.format("")
MISFIT = "a.wav: its annotations do not fit together: "
STEREO = "a.wav: only mono files can be annotated, this has 2 channels"


class Foreign(AnnotationTest):
    def listed(self, *arguments):
        result = self.annotations("list", "a.wav", "--format", "json", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr)
        item, = json.loads(result.stdout)
        return [(a["start_sample"], a["stop_sample"], a["label"]) for a in item["annotations"]]

    def assert_lenient(self, file, *expected, refusal=None, hint=EDIT_HINT):
        """What lenient reading gives; None: strict reading gives the same, else it refuses like this."""
        self.write("a.wav", file)
        self.assertEqual(self.listed("--lenient"), list(expected))
        if refusal is None:
            self.assertEqual(self.listed(), list(expected))
            return
        before = self.read("a.wav")
        for arguments in (("list", "a.wav"), ("export", "a.wav", "--format", "csv"),
                          ("add", "a.wav", "--label", "x", "--start", "0", "--stop", "1"), ("clear", "a.wav"),
                          ("copy", "a.wav", "a.wav"), ("append", "a.wav", "a.wav")):
            self.assert_failed(self.annotations(*arguments), refusal + hint)
        self.assertEqual(self.read("a.wav"), before)

    def test_points_have_no_length(self):
        self.assert_lenient(riff(audio(), cue(point(1, 100), point(2, 200)), adtl(labl(1, b"one"), labl(2, b"two"))),
                            (100, 100, "one"), (200, 200, "two"),
                            refusal=MISFIT + '2 cue points without a length ("ltxt" chunk)')

    def test_points_may_have_no_label(self):
        self.assert_lenient(riff(audio(), cue(point(1, 100), point(2, 200))), (100, 100, ""), (200, 200, ""),
                            refusal=MISFIT + '2 cue points without a length ("ltxt" chunk), 2 cue points without a label '
                            '("labl" chunk)')

    def test_lengths_may_have_no_label(self):
        self.assert_lenient(riff(audio(), cue(point(1, 100)), adtl(ltxt(1, 50))), (100, 150, ""),
                            refusal=MISFIT + '1 cue point without a label ("labl" chunk)')

    def test_labels_without_a_cue_point_are_told_of(self):
        self.write("a.wav", riff(audio(), cue(point(1, 100)), adtl(ltxt(1, 50), labl(1, b"x"), labl(7, b"lost"))))
        for options in ([], ["--lenient"]):
            self.assert_told(self.annotations("list", "a.wav", *options), "a.wav: warning: the label lost at offset 48134 "
                             "belongs to cue point 7, which is not there")
            self.assertEqual(self.listed(*options), [(100, 150, "x")])
        self.write("a.wav", riff(audio(), adtl(*(labl(i, b"lost") for i in range(9)))))
        messages = self.messages(self.annotations("list", "a.wav"))
        self.assertEqual(len(messages), 6)
        self.assertEqual(messages[-1], "murvane-audio: a.wav: warning: 4 more labels of missing cue points")

    def test_a_label_within_a_gap_is_refused(self):
        self.assert_lenient(riff(audio(), cue(point(3, 100)), adtl(ltxt(3, 50), labl(3, b"x"), labl(1, b"lost"))),
                            (100, 150, "x"), refusal=MISFIT + "1 label without a cue point")

    def test_the_list_may_be_in_lower_case(self):
        self.assert_lenient(riff(audio(), cue(point(1, 100)), adtl(ltxt(1, 50), labl(1, b"x"), name=b"list")),
                            (100, 150, "x"))

    def test_order_of_chunks_is_free(self):
        annotations = [adtl(labl(2, b"two"), ltxt(1, 10), labl(1, b"one"), ltxt(2, 20)), cue(point(2, 200), point(1, 100))]
        self.write("a.wav", riff(*annotations, audio()))
        self.assertEqual(self.listed(), [(100, 110, "one"), (200, 220, "two")])
        self.assertEqual(self.listed("--lenient"), [(200, 220, "two"), (100, 110, "one")])

    def test_padding_may_be_missing_or_anything(self):
        for padding in (b"", b"\0", b"!"):
            texts = [ltxt(1, 50), labl(1, b"odd!", padding=padding), ltxt(2, 60), labl(2, b"even5")]
            self.assert_lenient(riff(audio(), cue(point(1, 100), point(2, 200)), adtl(*texts)),
                                (100, 150, "odd!"), (200, 260, "even5"))

    def test_labels_may_lack_their_end_or_have_more(self):
        for end in (b"", b"\0", b"\0\0\0", b"\0rest"):
            self.assert_lenient(riff(audio(), cue(point(1, 100)), adtl(ltxt(1, 50), labl(1, b"label", end=end))),
                                (100, 150, "label"))

    def test_positions_are_those_of_the_sample_offset(self):
        self.assert_lenient(riff(audio(), cue(point(1, 100, position=0)), adtl(ltxt(1, 50), labl(1, b"x"))),
                            (100, 150, "x"))

    def test_lengths_may_carry_text_and_any_purpose(self):
        self.assert_lenient(riff(audio(), cue(point(1, 100)), adtl(ltxt(1, 50, b"beat", b"text"), labl(1, b"x"))),
                            (100, 150, "x"))

    def test_positions_past_the_end_are_shown_as_they_are(self):
        self.assert_lenient(riff(audio(), cue(point(1, 23999), point(2, 4294967295)),
                                 adtl(ltxt(1, 50), labl(1, b"x"), ltxt(2, 4294967295), labl(2, b"y"))),
                            (23999, 24049, "x"), (4294967295, 8589934590, "y"))

    def test_loops_of_samplers_are_regions(self):
        self.write("a.wav", riff(audio(), smpl((7, 100, 199), (8, 300, 200))))
        self.assertEqual(self.listed("--lenient"), [(100, 200, ""), (300, 300, "")])
        self.assertEqual(self.listed(), [])

    def test_a_loop_gives_its_cue_point_a_length(self):
        self.assert_lenient(riff(audio(), cue(point(1, 100)), smpl((1, 100, 199)), adtl(labl(1, b"region"))),
                            (100, 200, "region"), refusal=MISFIT + '1 cue point without a length ("ltxt" chunk)')

    def test_a_loop_like_its_cue_point_is_not_listed_twice(self):
        self.write("a.wav", riff(audio(), cue(point(1, 100)), smpl((1, 100, 199)), adtl(ltxt(1, 100), labl(1, b"x"))))
        self.assertEqual(self.listed("--lenient"), [(100, 200, "x")])

    def test_numbers_that_come_twice(self):
        self.write("a.wav", riff(audio(), cue(point(1, 100), point(1, 200)),
                                 adtl(ltxt(1, 1), labl(1, b"x"), ltxt(1, 50), labl(1, b"y"))))
        self.assertEqual(self.listed("--lenient"), [(100, 150, "y"), (200, 250, "y")])
        self.assertEqual(self.listed(), [(200, 250, "y")])

    def test_numbers_may_be_too_large_for_the_library(self):
        self.assert_lenient(riff(audio(), cue(point(1 << 20, 100)), adtl(ltxt(1 << 20, 50), labl(1 << 20, b"x"))),
                            (100, 150, "x"), refusal="a.wav: Error, cue point ID 1048576 is not below 1048576")

    def test_stereo_can_be_looked_at(self):
        self.assert_lenient(riff(audio(channels=2), cue(point(1, 100)), adtl(ltxt(1, 50), labl(1, b"x"))),
                            (100, 150, "x"), refusal=STEREO, hint=LOOK_HINT)
        self.assert_failed(self.annotations("clear", "a.wav", "--lenient"), STEREO)

    def test_without_a_rate_there_are_samples_only(self):
        self.write("a.wav", riff(audio(rate=0), cue(point(1, 100)), adtl(ltxt(1, 50), labl(1, b"x"))))
        item, = json.loads(self.annotations("list", "a.wav", "--lenient", "--format", "json").stdout)
        annotation, = item["annotations"]
        self.assertEqual((annotation["start_s"], annotation["start_sample"]), (None, 100))
        self.assertIn(b"a.wav: 0 Hz, 24000 samples, 1 annotation\n", self.annotations("list", "a.wav", "--lenient").stdout)
        self.assert_failed(self.annotations("export", "a.wav", "--lenient", "--format", "csv"),
                           "a.wav: its sample rate is 0, so its annotations have no times")
        self.assert_failed(self.annotations("list", "a.wav"), "a.wav: its sample rate is 0" + LOOK_HINT)

    def test_no_edit_is_advised_where_the_header_forbids_it(self):
        self.write("a.wav", riff(cue(point(1, 100)), audio())[:-2])
        self.assert_failed(self.annotations("add", "a.wav", "--label", "x", "--start", "0", "--stop", "1"),
                           MISFIT + '1 cue point without a length ("ltxt" chunk), 1 cue point without a label ("labl" chunk)' +
                           LOOK_HINT)

    def test_no_hint_where_there_is_nothing_to_save(self):
        self.write("a.wav", riff(audio(channels=2)))
        self.assert_failed(self.annotations("list", "a.wav"), STEREO)


class Rescue(AnnotationTest):
    """Lenient edits keep what can be saved, and leave a file that is as it should be."""

    def test_markers_become_annotations_without_length(self):
        self.write("a.wav", riff(audio(), cue(point(5, 100), point(2, 200)), adtl(labl(5, b"five"), labl(2, b"two"))))
        self.assert_told(self.annotations("add", "a.wav", "--lenient", "--label", "x", "--start", "1", "--stop", "2"),
                         output="a.wav: 0 removed, 1 added; 3 annotations\n")
        self.assertEqual(self.annotations_in("a.wav"), [(100, 0, b"five"), (200, 0, b"two"), (8000, 8000, b"x")])
        self.assert_told(self.annotations("validate", "a.wav"), output="a.wav: no defects\n")

    def test_loops_stay_loops(self):
        loops = smpl((1, 100, 199), (2, 300, 399))
        self.write("a.wav", riff(audio(), loops, cue(point(1, 100)), adtl(labl(1, b"region"))))
        self.assert_told(self.annotations("add", "a.wav", "--lenient", "--label", "x", "--start", "1", "--stop", "2"))
        self.assertEqual(self.annotations_in("a.wav"), [(100, 100, b"region"), (8000, 8000, b"x")])
        self.assertIn(loops, self.read("a.wav"))

    def test_from_and_to_may_both_be_foreign(self):
        self.write("a.wav", riff(audio(), cue(point(1, 100)), adtl(labl(1, b"one"))))
        self.write("b.wav", riff(audio(), cue(point(1, 200)), adtl(labl(1, b"two"))))
        self.assert_told(self.annotations("append", "a.wav", "b.wav", "--lenient"))
        self.assertEqual(self.annotations_in("b.wav"), [(200, 0, b"two"), (100, 0, b"one")])

    def test_what_goes_beyond_the_end_is_cut_off(self):
        self.write("a.wav", riff(audio(), cue(point(1, 23000), point(2, 24000)),
                                 adtl(ltxt(1, 2000), labl(1, b"x"), ltxt(2, 5), labl(2, b"y"))))
        end = "beyond the end of the audio at 3 s; it is cut off there"
        self.assert_told(self.annotations("add", "a.wav", "--label", "z", "--start", "1", "--stop", "2"),
                         "a.wav: warning: annotation 1 (x) ends at 3.125 s, " + end,
                         "a.wav: warning: annotation 2 (y) ends at 3.0006 s, " + end)
        self.assertEqual(self.annotations_in("a.wav"), [(23000, 1000, b"x"), (24000, 0, b"y"), (8000, 8000, b"z")])

    def write_with_late_ones(self, *late):
        """Annotation 1 is in the audio, the others start at these samples beyond its end."""
        starts = [100, *late]
        texts = [chunk for i, start in enumerate(starts, 1) for chunk in (ltxt(i, 800), labl(i, b"SF_40%d" % i))]
        return self.write("a.wav", riff(audio(), cue(*(point(i, start) for i, start in enumerate(starts, 1))), adtl(*texts)))

    def test_what_starts_beyond_the_end_is_moved_by_no_edit(self):
        self.write("good.wav", riff(audio()))
        self.write("labels.csv", b"start_s,stop_s,label\n0,0.5,x\n")
        late = "annotation {} (SF_402), which the file has, starts at {} s, beyond the end of the audio at 3 s"
        clear = "; 'murvane-audio annotations clear' can remove such annotations"
        add = ("add", "a.wav", "--label", "NEW", "--start", "0.3", "--stop", "0.4")
        for arguments, number in ((add, 2), (("import", "a.wav", "labels.csv", "--append"), 2),
                                  (("clear", "a.wav", "--label", "SF_401"), 1)):
            for options in ([], ["--dry-run"], ["--lenient", "--backup"]):
                for starts, reason in (((25000,), late.format(number, "3.125")),
                                       ((24001, 99999, 30000), late.format(number, "3.0001") + ", as 2 more do")):
                    self.write_with_late_ones(*starts)
                    before = self.read("a.wav"), self.files()
                    self.assert_failed(self.annotations(*arguments, *options), "a.wav: " + reason + clear)
                    self.assertEqual((self.read("a.wav"), self.files()), before, (arguments, options))

    def test_what_starts_beyond_the_end_can_be_removed(self):
        self.write("good.wav", riff(audio()))
        self.write("labels.csv", b"start_s,stop_s,label\n0,0.5,x\n")
        for arguments, left in ((("clear", "a.wav", "--label", "SF_402"), [(100, 800, b"SF_401")]),
                                (("clear", "a.wav"), []), (("copy", "good.wav", "a.wav"), []),
                                (("import", "a.wav", "labels.csv"), [(0, 4000, b"x")])):
            self.write_with_late_ones(25000)
            self.assert_told(self.annotations(*arguments))
            self.assertEqual(self.annotations_in("a.wav"), left, arguments)

    def test_what_starts_beyond_the_end_does_no_harm_where_nothing_changes(self):
        self.write_with_late_ones(25000)
        before = self.read("a.wav")
        self.assert_told(self.annotations("clear", "a.wav", "--label", "none"),
                         output="a.wav: 0 removed, 0 added; 2 annotations\n")
        self.assertEqual(self.read("a.wav"), before)

    def test_sizes_that_lie_are_corrected_with_a_warning(self):
        self.write("a.wav", riff(audio(), chunk(b"tail", b"1234", size=100)))
        self.assert_told(self.annotations("add", "a.wav", "--label", "x", "--start", "1", "--stop", "2"),
                         "a.wav: warning: its chunks do not have the sizes that they say, which is corrected; "
                         "'murvane-audio annotations validate' tells more")
        self.assertEqual(self.annotations_in("a.wav"), [(8000, 8000, b"x")])


if __name__ == "__main__":
    unittest.main()
