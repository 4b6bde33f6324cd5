#!/usr/bin/env python3
"""murvane-audio annotations add, copy, append and clear."""

import os
import resource
import signal
import stat
import unittest

from wav_chunks import (AnnotationTest, adtl, annotation_chunks, audio, chunk, cue, file_chunks, labl, ltxt, note,
                        point, riff)

A = (4000, 4000, b"SF_440")
B = (16000, 4000, b"AM_1000x50")
C = (100, 50, b"sf_100")


class Add(AnnotationTest):
    def add(self, *arguments):
        return self.annotations("add", "a.wav", *arguments)

    def test_the_chunks_are_those_of_the_library(self):
        self.write("a.wav", riff(audio()))
        self.assert_told(self.add("--label", "SF_440", "--start", "0.5", "--stop", "1.0"),
                         output="a.wav: 0 removed, 1 added; 1 annotation\n")
        self.assert_told(self.add("--label", "AM_1000x50", "--start", "2", "--stop", "2.5"))
        self.assertEqual(self.read("a.wav"), riff(audio(), adtl(ltxt(1, 4000), labl(1, b"SF_440"), ltxt(2, 4000),
                                                               labl(2, b"AM_1000x50")),
                                                  cue(point(1, 4000), point(2, 16000))))

    def test_fillers_do_not_pile_up(self):
        self.write("a.wav", riff(audio()))
        for i in range(5):
            self.assert_told(self.add("--label", f"SF_{i}", "--start-sample", str(i), "--stop-sample", str(i + 9)))
        self.assertEqual(self.annotations_in("a.wav"), [(i, 9, b"SF_%d" % i) for i in range(5)])

    def test_fillers_stay_when_asked_to(self):
        self.write_annotated("a.wav", A)
        self.assert_told(self.add("--label", "x", "--start", "2", "--stop", "2", "--keep-fillers"))
        self.assertEqual(self.annotations_in("a.wav"), [(0, 0, b"SF_MIN"), A, (16000, 0, b"x")])

    def test_a_filler_is_not_added(self):
        self.write_annotated("a.wav", A)
        before = self.read("a.wav")
        filler = ["--label", "SF_MIN", "--start", "0", "--stop", "0"]
        self.assert_failed(self.add(*filler),
                           "a.wav: annotation 1 (SF_MIN) is what gaps read as; only --keep-fillers keeps it")
        self.assertEqual(self.read("a.wav"), before)
        self.assert_told(self.add(*filler, "--keep-fillers"))
        self.assertEqual(self.annotations_in("a.wav")[-1], (0, 0, b"SF_MIN"))

    def test_times_are_rounded_to_samples_halves_up(self):
        self.write("a.wav", riff(audio()))
        for start, stop, expected in (("0.00006", "0.1", (0, 800)), ("0.0000625", "0.1", (1, 800)),
                                      ("0", "0.00006", (0, 0)), ("0", "625e-7", (0, 1))):
            self.assert_told(self.add("--label", "x", "--start", start, "--stop", stop))
            self.assertEqual(self.annotations_in("a.wav")[-1][:2], expected, (start, stop))

    def test_seconds_and_samples_may_be_mixed(self):
        self.write("a.wav", riff(audio()))
        self.assert_told(self.add("--label", "x", "--start-sample", "4000", "--stop", "0.75"))
        self.assertEqual(self.annotations_in("a.wav"), [(4000, 2000, b"x")])

    def test_any_label_is_kept_to_the_byte(self):
        self.write("a.wav", riff(audio()))
        labels = [b"", b"caf\xc3\xa9", b"caf\xe9", b"two\nlines\t", b"-x", b" "]
        for label in labels:
            self.assert_told(self.add(*([b"--label=" + label] if label else ["--label", ""]), "--start", "1", "--stop", "2"))
        self.assertEqual([a[2] for a in self.annotations_in("a.wav")], labels)

    def test_what_ends_beyond_the_audio_is_cut_off_with_a_warning(self):
        self.write("a.wav", riff(audio()))
        warning = "a.wav: warning: annotation 1 (x) ends at 4 s, beyond the end of the audio at 3 s; it is cut off there"
        for option in (["--dry-run"], []):
            self.assert_told(self.add("--label", "x", "--start", "2", "--stop", "4", *option), warning)
        self.assertEqual(self.annotations_in("a.wav"), [(16000, 8000, b"x")])

    def test_a_point_at_the_very_end_is_taken(self):
        self.write("a.wav", riff(audio()))
        self.assert_told(self.add("--label", "x", "--start", "3", "--stop", "3"))
        self.assertEqual(self.annotations_in("a.wav"), [(24000, 0, b"x")])

    def test_what_starts_beyond_the_audio_is_refused(self):
        before = riff(audio())
        self.write("a.wav", before)
        self.assert_failed(self.add("--label", "x", "--start", "3.0001", "--stop", "4"),
                           "a.wav: annotation 1 (x) starts at 3.0001 s, beyond the end of the audio at 3 s")
        self.assert_failed(self.add("--label", "x", "--start-sample", "4294967295", "--stop", "1e300"),
                           "a.wav: annotation 1 (x) starts at 536870.911875 s, beyond the end of the audio at 3 s")
        self.assertEqual(self.read("a.wav"), before)

    def test_times_that_make_no_sense_are_wrong_usage(self):
        before = riff(audio())
        self.write("a.wav", before)
        for start, stop, text in (("--start=-1", "--stop=1", "the start -1 is no time"),
                                  ("--start=nan", "--stop=1", "the start nan is no time"),
                                  ("--start=0", "--stop=inf", "the stop inf is no time"),
                                  ("--start=2", "--stop=1", "the start 2 is after the stop 1"),
                                  ("--start-sample=-1", "--stop=1", "the start -1 is no time"),
                                  ("--start-sample=2", "--stop-sample=1", "the start 2 is after the stop 1"),
                                  ("--start=x", "--stop=1", "--start"),
                                  ("--start-sample=1.5", "--stop=1", "--start-sample"),
                                  ("--start=1", "--start-sample=1", "--start and --start-sample are the same; only one can be given\n"),
                                  ("--stop=1", "--label=y", "either --start or --start-sample is needed\n"),
                                  ("--start=1", "--label=y", "either --stop or --stop-sample is needed\nTry 'murvane-audio annotations add --help'.\n")):
            self.assert_usage_error(self.add(start, stop, *(["--label=x"] if "label" not in stop else [])), text)
        self.assert_usage_error(self.add("--start", "0", "--stop", "1"), "--label is needed")
        self.assert_usage_error(self.annotations("add", "--label=x", "--start=0", "--stop=1"), "takes FILE")
        self.assert_failed(self.add("--label=x", "--start=2", "--stop-sample=8000"),
                           "a.wav: annotation 1 (x) starts at 2 s, after its stop at 1 s")
        self.assertEqual(self.read("a.wav"), before)

    def test_samples_and_other_chunks_pass_through(self):
        odd = chunk(b"odd ", b"abc", padding=b"!")
        info = chunk(b"LIST", b"INFO" + chunk(b"ISFT", b"x\0"))
        self.write("a.wav", riff(odd, audio(), info, annotation_chunks(A), chunk(b"tail", b"1"), tail=b"beyond"))
        self.assert_told(self.add("--label", "x", "--start", "1", "--stop", "2"))
        file = self.read("a.wav")
        self.assertTrue(file.endswith(b"beyond"))
        self.assertIn(odd, file)
        self.assertIn(info, file)
        names = [name for name, _ in file_chunks(file[:-6])]
        self.assertEqual(names, [b"odd ", b"fmt ", b"data", b"LIST", b"LIST", b"tail", b"cue "])

    def test_all_encodings_of_whole_bytes_are_taken(self):
        for tag, bits in ((1, 8), (1, 24), (1, 32), (3, 32), (6, 8), (7, 8)):
            self.write("a.wav", riff(audio(tag=tag, bits=bits)))
            self.assert_told(self.add("--label", "x", "--start", "2.9", "--stop", "3"))
            self.assertEqual(self.annotations_in("a.wav"), [(23200, 800, b"x")])


class DryRunAndBackup(AnnotationTest):
    def test_a_dry_run_shows_what_would_change_and_touches_nothing(self):
        self.write_annotated("a.wav", A, B, C)
        before = self.read("a.wav"), os.stat(self.path("a.wav")).st_mtime_ns
        self.assert_told(self.annotations("clear", "a.wav", "--label", "SF_.*", "--dry-run"), output=(
            "a.wav: 2 removed, 0 added; 1 annotation (dry run: nothing written)\n"
            "- 0.0125 s to 0.01875 s  sf_100\n"
            "- 0.5 s to 1 s  SF_440\n"))
        self.assert_told(self.annotations("add", "a.wav", "--label", "", "--start", "1", "--stop", "2", "-n", "--backup"),
                         output="a.wav: 0 removed, 1 added; 4 annotations (dry run: nothing written)\n"
                                '+ 1 s to 2 s  ""\n')
        self.assertEqual((self.read("a.wav"), os.stat(self.path("a.wav")).st_mtime_ns), before)
        self.assertEqual(self.files(), ["a.wav"])

    def test_a_backup_is_the_old_file_and_none_is_overwritten(self):
        self.write_annotated("a.wav", A)
        self.write("a.wav.bak.1", b"mine")
        contents = [self.read("a.wav")]
        for number, name in enumerate(("a.wav.bak", "a.wav.bak.2", "a.wav.bak.3")):
            self.assert_told(self.annotations("add", "a.wav", "--label", "x", "--start", "1", "--stop", "2", "--backup"),
                             output=f"a.wav: 0 removed, 1 added; {number + 2} annotations; the old file is {name}\n")
            self.assertEqual(self.read(name), contents[-1])
            contents.append(self.read("a.wav"))
        self.assertEqual(self.read("a.wav.bak"), contents[0])
        self.assertEqual(self.read("a.wav.bak.1"), b"mine")

    def test_a_backup_keeps_mode_and_time(self):
        self.write_annotated("a.wav", A)
        os.chmod(self.path("a.wav"), 0o640)
        os.utime(self.path("a.wav"), (1000000000, 1000000000))
        self.assert_told(self.annotations("clear", "a.wav", "--backup"))
        status = os.stat(self.path("a.wav.bak"))
        self.assertEqual((stat.S_IMODE(status.st_mode), status.st_mtime), (0o640, 1000000000))
        self.assertEqual(stat.S_IMODE(os.stat(self.path("a.wav")).st_mode), 0o640)

    def test_nothing_to_change_writes_nothing(self):
        self.write_annotated("a.wav", A)
        self.write("empty.wav", riff(audio()))
        os.utime(self.path("a.wav"), (1000000000, 1000000000))
        for arguments in (("clear", "a.wav", "--label", "none"), ("append", "empty.wav", "a.wav"),
                          ("copy", "a.wav", "a.wav")):
            self.assert_told(self.annotations(*arguments, "--backup"),
                             output="a.wav: 0 removed, 0 added; 1 annotation\n")
        self.assertEqual(os.stat(self.path("a.wav")).st_mtime, 1000000000)
        self.assertEqual(self.files(), ["a.wav", "empty.wav"])

    def interfere(self, act, *options):
        """Has `act(process)` happen between reading and writing: the command is kept from warning of a long label."""
        self.write_annotated("a.wav", (23999, 5, b"x" * 200000))
        return self.run_meanwhile(act, "annotations", "add", "a.wav", "--label", "y", "--start", "1", "--stop", "2", *options)

    def test_what_gives_up_leaves_no_backup(self):
        changed = riff(audio(samples=5))
        code, lines = self.interfere(lambda _: self.write("a.wav", changed), "--backup")
        self.assertEqual((code, lines[1:]), (1, ["murvane-audio: a.wav: is left alone: it changed since it was read"]))
        self.assertEqual((self.read("a.wav"), self.files()), (changed, ["a.wav"]))
        code, lines = self.interfere(lambda process: process.send_signal(signal.SIGINT), "--backup")
        self.assertEqual((code, lines[1:]), (130, ["murvane-audio: a.wav: interrupted"]))
        self.assertEqual(self.files(), ["a.wav"])

    def test_a_backup_is_named_when_writing_fails(self):
        def no_room():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (len(before), len(before)))
        self.write("a.wav", riff(audio()))
        before = self.read("a.wav")
        result = self.annotations("add", "a.wav", "--label", "x", "--start", "1", "--stop", "2", "--backup",
                                  preexec_fn=no_room)
        self.assert_failed(result, "a.wav: cannot be written: File too large; a.wav.bak is a copy of it")
        self.assertEqual((self.read("a.wav"), self.read("a.wav.bak"), self.files()), (before, before, ["a.wav", "a.wav.bak"]))


class CopyAndAppend(AnnotationTest):
    def test_copy_replaces_and_append_adds(self):
        self.write_annotated("a.wav", A, B)
        self.write_annotated("b.wav", C)
        self.assert_told(self.annotations("append", "a.wav", "b.wav"),
                         output="b.wav: 0 removed, 2 added; 3 annotations\n")
        self.assertEqual(self.annotations_in("b.wav"), [C, A, B])
        self.assert_told(self.annotations("copy", "a.wav", "b.wav"), output="b.wav: 1 removed, 0 added; 2 annotations\n")
        self.assertEqual(self.annotations_in("b.wav"), [A, B])
        self.assertEqual(self.annotations_in("a.wav"), [A, B])

    def test_a_file_may_be_appended_to_itself(self):
        self.write_annotated("a.wav", A, B)
        self.assert_told(self.annotations("append", "a.wav", "a.wav"))
        self.assertEqual(self.annotations_in("a.wav"), [A, B, A, B])

    def test_times_stay_where_rates_differ(self):
        self.write_annotated("a.wav", (4000, 4000, b"x"), (1, 1, b"y"))
        self.write("b.wav", riff(audio(samples=30000, rate=11025)))
        self.assert_told(self.annotations("copy", "a.wav", "b.wav"))
        self.assertEqual(self.annotations_in("b.wav"), [(5513, 5513, b"x"), (1, 1, b"y")])

    def test_one_that_starts_beyond_the_end_leaves_the_file_alone(self):
        self.write_annotated("a.wav", A, B)
        self.write("b.wav", riff(audio(samples=15999)))
        before = self.read("b.wav")
        self.assert_failed(self.annotations("copy", "a.wav", "b.wav"), "b.wav: a.wav: annotation 2 (AM_1000x50) starts "
                           "at 2 s, beyond the end of the audio at 1.9999 s")
        self.assertEqual(self.read("b.wav"), before)

    def test_copying_nothing_clears(self):
        self.write("a.wav", riff(audio()))
        self.write_annotated("b.wav", A, B)
        self.assert_told(self.annotations("copy", "a.wav", "b.wav"))
        self.assertEqual(self.read("b.wav"), riff(audio()))

    def test_both_files_must_be_there(self):
        self.write_annotated("a.wav", A)
        self.assert_failed(self.annotations("copy", "a.wav", "b.wav"), "b.wav: No such file or directory")
        self.assert_failed(self.annotations("copy", "b.wav", "a.wav"), "b.wav: No such file or directory")
        self.assert_usage_error(self.annotations("copy", "a.wav"), "takes FROM and TO, 1 name is given\n",
                                "Try 'murvane-audio annotations copy --help'.")
        self.assert_usage_error(self.annotations("copy", "a.wav", "b.wav", "c.wav"), "3 names are given\n")
        self.assertEqual(self.files(), ["a.wav"])


class Clear(AnnotationTest):
    def test_whole_labels_are_matched_without_regard_to_case(self):
        self.write_annotated("a.wav", A, B, C, (5, 5, b"xSF_1"))
        self.assert_told(self.annotations("clear", "a.wav", "--label", "sf_.*"),
                         output="a.wav: 2 removed, 0 added; 2 annotations\n")
        self.assertEqual(self.annotations_in("a.wav"), [B, (5, 5, b"xSF_1")])

    def test_all_leaves_the_file_as_if_there_had_been_none(self):
        self.write("a.wav", riff(audio(), cue(point(1, 5)), adtl(ltxt(1, 5), labl(1, b"x"))))
        self.assert_told(self.annotations("clear", "a.wav"), output="a.wav: 1 removed, 0 added; 0 annotations\n")
        self.assertEqual(self.read("a.wav"), riff(audio()))

    def test_remains_of_annotations_go_too(self):
        self.write("a.wav", riff(audio(), adtl(note(1, b"x"), labl(5, b"y"))))
        result = self.annotations("clear", "a.wav")
        self.assertEqual((result.returncode, len(self.messages(result))), (0, 2))
        self.assertEqual(self.read("a.wav"), riff(audio()))

    def test_a_label_that_is_too_short_goes_too(self):
        self.write("a.wav", riff(audio(), adtl(chunk(b"labl", b"12"))))
        self.assert_told(self.annotations("clear", "a.wav"),
                         'a.wav: warning: 1 chunk ("ltxt", "labl", "note") too short to be read cannot be kept',
                         output="a.wav: 0 removed, 0 added; 0 annotations\n")
        self.assertEqual(self.read("a.wav"), riff(audio()))

    def test_a_list_that_cannot_be_removed_is_told_by_dry_runs_too(self):
        refusal = ('a.wav: cannot be left without annotations: the list of them is called "list" instead of "LIST", and '
                   "cannot be removed")
        texts = [ltxt(1, 50), labl(1, b"x")]
        self.write("none.wav", riff(audio()))
        for inner in (texts, [*texts, note(1, b"y")]):
            self.write("a.wav", riff(audio(), cue(point(1, 100)), adtl(*inner, name=b"list")))
            before = self.read("a.wav")
            for arguments in (["clear", "a.wav"], ["clear", "a.wav", "--label", "x"], ["copy", "none.wav", "a.wav"]):
                for options in ([], ["--dry-run"], ["--backup"]):
                    self.assert_failed(self.annotations(*arguments, *options), refusal)
            self.assertEqual((self.read("a.wav"), self.files()), (before, ["a.wav", "none.wav"]))

    def test_a_list_with_more_in_it_stays(self):
        for more in (chunk(b"odd ", b"1234"), b"filler", adtl(name=b"LIST")):
            self.write("a.wav", riff(audio(), cue(point(1, 100)), adtl(ltxt(1, 50), labl(1, b"x"), more, name=b"list")))
            self.assert_told(self.annotations("clear", "a.wav"), output="a.wav: 1 removed, 0 added; 0 annotations\n")
            self.assertEqual(self.read("a.wav"), riff(audio(), adtl(more, name=b"list")))

    def test_an_expression_that_is_none_is_wrong_usage(self):
        self.write_annotated("a.wav", A)
        before = self.read("a.wav")
        self.assert_usage_error(self.annotations("clear", "a.wav", "--label", "("), "--label ( is no regular expression")
        self.assertEqual(self.read("a.wav"), before)

    def test_an_expression_that_never_ends_is_told(self):
        self.write_annotated("a.wav", (1, 1, b"a" * 5000))
        before = self.read("a.wav")
        result = self.annotations("clear", "a.wav", "--label", "(a|aa|a*)*b" * 3)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"cannot be matched", result.stderr)
        self.assertEqual(self.read("a.wav"), before)


if __name__ == "__main__":
    unittest.main()
