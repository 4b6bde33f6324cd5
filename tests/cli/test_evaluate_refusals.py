#!/usr/bin/env python3
"""What murvane-audio evaluate refuses, what it says then, and what it leaves."""

import os
import signal
import struct
import unittest

from command import give_up_superuser_rights, tone, wav_bytes
from evaluation import EvaluateTest, samples_of, stored
from wav_chunks import adtl, annotated, annotations_of, audio, cue, labl, ltxt, point, riff


class BadInput(EvaluateTest):
    def setUp(self):
        super().setUp()
        self.write_wav("good.wav")
        self.write_wav("other.wav")

    def assert_refused(self, name, *messages, options=()):
        """The file is refused, leaves nothing, and those around it are done."""
        before = self.files()
        result = self.evaluate("good.wav", name, "other.wav", "--channel", "c=flatness(spectrum(x))", "--annotate",
                               "0", *options)
        self.assert_failed(result, *(f"{name}: {message}" for message in messages))
        made = ["good.annotated.wav", "good.prob.wav", "other.annotated.wav", "other.prob.wav"]
        self.assertEqual(self.files(), sorted(before + made))
        for output in made:
            os.remove(self.path(output))

    def test_what_is_no_file_to_read(self):
        self.assert_refused("missing.wav", "No such file or directory")
        os.mkdir(self.path("folder.wav"))
        self.assert_refused("folder.wav", "is a directory")
        self.write("empty.wav", b"")
        self.assert_refused("empty.wav", "is empty")
        os.mkfifo(self.path("pipe.wav"))
        self.assert_refused("pipe.wav", "is no regular file; only files that can be read twice are evaluated")

    def test_what_is_no_mono_wav_of_16_bits(self):
        only = "; only WAV files of 16-bit PCM are evaluated"
        self.write("stereo.wav", wav_bytes(tone(4000), channels=2))
        self.assert_refused("stereo.wav", "has 2 channels; only mono audio can be analysed")
        self.write("bytes.wav", wav_bytes(tone(4000), bits=8))
        self.assert_refused("bytes.wav", "is WAV (Microsoft) (.wav) Unsigned 8 bit PCM" + only)
        self.write("float.wav", wav_bytes(bytes(4000), bits=32, tag=3))
        self.assert_refused("float.wav", "is WAV (Microsoft) (.wav) 32 bit float" + only)
        self.write("ulaw.wav", wav_bytes(tone(4000), bits=8, tag=7))
        self.assert_refused("ulaw.wav", "is WAV (Microsoft) (.wav) U-Law" + only)
        self.write("sun.wav", b".snd" + struct.pack(">IIIII", 24, 800, 3, 8000, 1) + bytes(800))
        self.assert_refused("sun.wav", "is AU (Sun/NeXT) (.au) Signed 16 bit PCM" + only)

    def test_text(self):
        self.write("text.wav", b"This is not a recording.\n" * 10)
        result = self.evaluate("text.wav", "--channel", "c=1")
        message, = self.messages(result)
        self.assertRegex(message, r"^murvane-audio: text.wav: cannot be read as audio: .+")
        self.assertEqual(result.returncode, 1)

    def test_audio_that_is_not_whole(self):
        self.write("none.wav", wav_bytes(b""))
        self.assert_refused("none.wav", "holds no audio")
        self.write("cut.wav", wav_bytes(tone(4000))[:5044])
        self.assert_refused("cut.wav", "is cut short: its header promises 8000 bytes of audio, the file holds 5000")
        self.write("crash.wav", wav_bytes(tone(4000), data_size=0, riff_size=0))
        self.assert_refused("crash.wav", "its header was never completed: it says 0 bytes of audio though 8000 follow")
        self.write("odd.wav", wav_bytes(tone(4000) + b"x", tail=b"\0", riff_size=36 + 8002))
        self.assert_refused("odd.wav", "its data chunk has 8001 bytes, which do not divide into samples of 16 bits")

    def test_what_the_library_could_not_take_apart(self):
        only = "; only WAV files of 16-bit PCM are evaluated"
        for bits in (12, 15):
            self.write("bits.wav", wav_bytes(tone(4000), bits=bits))
            self.assert_refused("bits.wav", f"has {bits} bits in use of each sample" + only)
        nested = b"adtl"
        for _ in range(70):
            nested = b"adtlLIST" + struct.pack("<I", len(nested)) + nested
        nested = b"LIST" + struct.pack("<I", len(nested)) + nested
        self.write("deep.wav", wav_bytes(tone(4000), tail=nested))
        for level in ("WARN", "OFF"):
            self.assert_refused("deep.wav", "cannot be taken apart: offset 8812: reading a list: lists are nested more "
                                            "than 64 deep", options=("--log-level", level))
        self.write("deep.wav", wav_bytes(tone(4000), tail=nested[12 * 10:]))
        self.assert_done(self.evaluate("deep.wav", "--channel", "c=1"))

    def test_outputs_that_no_wav_file_has_room_for(self):
        self.write_silence("day.wav", 3600 * 24)
        size = 3600 * 24 * 8000 * 2
        self.assert_refused("day.wav", f"its output of {size * 4} bytes would not fit into a WAV file",
                            options=("--channel", "d=1", "--channel", "e=1"))

    def test_the_size_of_a_stream_is_found_out(self):
        self.write("a.wav", wav_bytes(tone(4000), data_size=0xFFFFFFFF, riff_size=0xFFFFFFFF))
        result = self.evaluate("a.wav", "--channel", "c=1")
        self.assertEqual((result.returncode, self.messages(result)),
                         (0, ["murvane-audio: a.wav: warning: its header gives no true length; taking all 8000 bytes "
                              "to the end"]))
        params, (audio, curve) = self.channels_of("a.prob.wav")
        self.assertEqual((audio, curve), (samples_of(tone(4000)), [32767] * 4000))

    def test_rates_that_no_blocks_can_be_cut_at(self):
        self.write_wav("slow.wav", rate=50)
        self.assert_refused("slow.wav", "blocks of 16 ms cannot be cut at 50 Hz")
        self.write_wav("fast.wav", rate=2000000)
        self.assert_refused("fast.wav", "blocks of 16 ms cannot be cut at 2000000 Hz")

    def test_annotations_that_make_no_sense(self):
        self.write("a.wav", riff(audio(), cue(point(1, 0))))
        self.assert_refused("a.wav", 'its annotations do not fit together: 1 cue point without a length ("ltxt" chunk), '
                                     '1 cue point without a label ("labl" chunk); \'murvane-audio annotations list '
                                     "--lenient' shows what can be saved of it, edits with --lenient, such as 'add "
                                     "--lenient', keep that, 'murvane-audio annotations validate' tells all that is wrong")
        self.assert_done(self.evaluate("a.wav", "--channel", "c=1"))

    def test_the_size_of_a_stream_can_be_evaluated_but_not_annotated(self):
        self.write("a.wav", wav_bytes(tone(4000), data_size=0xFFFFFFFF, riff_size=0xFFFFFFFF))
        self.assert_refused("a.wav", "warning: its header gives no true length; taking all 8000 bytes to the end",
                            "its header gives no true length: it says 4294967295 bytes of audio, the file holds 8000; "
                            "use a copy made by an audio tool that does not trust this length")

    def test_formulas_that_do_not_give_one_value(self):
        for formula, count in (("peaks(spectrum(x))", 6), ("x", 128), ("spectrum(x)", 64)):
            self.assert_failed(self.evaluate("good.wav", "--channel", "one=1", "--channel", "c d=" + formula),
                               f"good.wav: the channel c d gives {count} values for 128 samples; it must give one")
        result = self.evaluate("good.wav", "--channel", "c=x + spectrum(x)")
        message, = self.messages(result)
        self.assertTrue(message.startswith("murvane-audio: good.wav: the formula c cannot be computed of a window of "
                                           "128 samples: column 3: cannot combine"), message)
        self.assertEqual((result.returncode, self.files()), (1, ["good.wav", "other.wav"]))

    def test_a_formula_is_looked_at_for_each_rate(self):
        self.write_wav("low.wav", 1000, rate=63)  # blocks of one sample
        result = self.evaluate("low.wav", "good.wav", "--channel", "c=x", "--log-level", "ERROR")
        self.assert_failed(result, "good.wav: the channel c gives 128 values for 128 samples; it must give one")
        self.assertEqual(self.channels_of("low.prob.wav")[1][1][:5],
                         [stored(sample / 32768) for sample in samples_of(tone(1000))[:5]])


class Annotated(EvaluateTest):
    """What is told of the annotations of recordings that are annotated."""

    def assert_told(self, *messages, options=()):
        result = self.evaluate("a.wav", "--channel", "c=1", "--annotate", "0", *options)
        self.assertEqual((result.returncode, self.messages(result)),
                         (0, [f"murvane-audio: a.wav: warning: {message}" for message in messages]))

    def test_what_cannot_be_kept_is_told(self):
        self.write("a.wav", riff(audio(), cue(point(1, 100)), adtl(ltxt(1, 50, b"beat"), labl(1, b"x"),
                                                                  labl(1, b"call", name=b"note"))))
        self.assert_told('1 note ("note" chunks) cannot be kept', 'the purpose of 1 length ("ltxt" chunks) cannot be kept')
        self.assertEqual(annotations_of(self.read("a.annotated.wav")), [(100, 50, b"x"), (0, 24000, b"c")])

    def test_what_ends_beyond_the_audio_is_cut_off_with_a_warning(self):
        self.write("a.wav", annotated((23999, 5, b"x")))
        self.assert_told("annotation 1 (x) ends at 3.0005 s, beyond the end of the audio at 3 s; it is cut off there")
        self.assertEqual(annotations_of(self.read("a.annotated.wav"))[0], (23999, 1, b"x"))

    def test_a_file_that_changes_meanwhile_leaves_no_output(self):
        self.write("a.wav", annotated((23999, 5, b"x" * 200000)))
        self.write("a.prob.wav", b"old")
        code, lines = self.run_meanwhile(lambda _: self.write("a.wav", riff(audio())), "evaluate", "a.wav", "--channel",
                                         "c=1", "--annotate", "0")
        self.assertEqual((code, lines[1:]), (1, ["murvane-audio: a.wav: it changed since it was read; "
                                                 "./a.annotated.wav is not written"]))
        self.assertEqual(self.files(), ["a.wav"])

    def test_gaps_among_the_numbers_are_no_annotations_and_nothing_to_tell_of(self):
        self.write("a.wav", annotated((100, 50, b"x"), (200, 50, b"y"), first=7))
        self.assert_told()
        self.assertEqual(annotations_of(self.read("a.annotated.wav")),
                         [(100, 50, b"x"), (200, 50, b"y"), (0, 24000, b"c")])

    def test_who_asks_for_a_log_gets_the_records_of_the_library(self):
        self.write("a.wav", annotated((100, 50, b"x")))
        result = self.evaluate("a.wav", "--channel", "c=1", "--annotate", "0", "--log-level", "DEBUG")
        self.assertIn(b"Sample rate of WAV file : 8000", result.stderr)


class Outputs(EvaluateTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav", 1000)
        os.mkdir(self.path("out"))

    def assert_refused(self, arguments, *texts):
        self.assert_usage_error(self.evaluate(*arguments, "--channel", "c=1"), *texts)
        self.assertEqual(self.files(), ["a.wav", "out"])

    def test_suffix_and_folder_are_chosen(self):
        os.mkdir(self.path("in"))
        self.write_wav("in/b.c.wav", 300)
        self.write_wav("in/d", 300)
        self.assert_done(self.evaluate("a.wav", "in/b.c.wav", "in/d", "--channel", "c=1", "--output-dir", "out/",
                                       "--suffix", "x y", "--annotate", "0"))
        self.assertEqual(sorted(os.listdir(self.path("out"))),
                         [b"a.annotated.wav", b"a.x y.wav", b"b.c.annotated.wav", b"b.c.x y.wav", b"d.annotated.wav",
                          b"d.x y.wav"])
        self.assertEqual(self.files(), ["a.wav", "in", "out"])

    def test_the_folder_must_exist(self):
        self.assert_refused(["a.wav", "--output-dir", "none"], "the output folder 'none' does not exist")
        self.assert_refused(["a.wav", "--output-dir", "a.wav"], "the output folder 'a.wav' is no folder")
        self.assert_refused(["a.wav", "--output-dir", ""], "the output folder '' does not exist")

    def test_suffixes_that_are_none(self):
        self.assert_refused(["a.wav", "--suffix", ""], "suffix ''")
        self.assert_refused(["a.wav", "--suffix", "../x"], "suffix '../x'")
        self.assert_refused(["a.wav", "--suffix", "annotated", "--annotate", "10"], "--annotate", "'annotated'")

    def assert_first_is_done(self, arguments, message, made):
        """The first input is done as it is alone; the one behind it fails."""
        options = [argument for argument in arguments if argument.startswith("--") or argument in ("p.annotated", "1")]
        self.assert_done(self.evaluate("a.wav", *options, "--channel", "c=1"))
        before = {name: self.read(name) for name in made}
        result = self.evaluate(*arguments, "--channel", "c=1")
        self.assert_failed(result, message)
        self.assertEqual({name: self.read(name) for name in made}, before)
        for name in made:
            os.remove(self.path(name))

    def test_of_two_inputs_of_one_output_the_first_is_done(self):
        self.assert_first_is_done(["a.wav", "out/a.flac"],
                                  "out/a.flac: its output ./a.prob.wav is that of a.wav, which stands before it",
                                  ["a.prob.wav"])
        self.assert_first_is_done(["a.wav", "a.wav"],
                                  "a.wav: its output ./a.prob.wav is that of a.wav, which stands before it",
                                  ["a.prob.wav"])
        self.write_wav("a.p.wav", 500)
        self.assert_first_is_done(["a.wav", "a.p.wav", "--suffix=p.annotated", "--annotate=1"],
                                  "a.p.wav: its output ./a.p.annotated.wav is that of a.wav, which stands before it",
                                  ["a.annotated.wav", "a.p.annotated.wav"])
        self.write("out/list.txt", b"../a.wav\n")
        result = self.evaluate("a.wav", "--audioset", "out/list.txt", "--channel", "c=1")
        message, = self.messages(result)
        self.assertRegex(message, r"a\.wav: its output \./a\.prob\.wav is that of a\.wav, which stands before it$")
        self.assertEqual(result.returncode, 1)

    def test_an_input_that_is_refused_takes_no_place(self):
        self.write_wav("a.p.wav", 500)
        self.write_wav("a.p.p.wav", 400)
        result = self.evaluate("a.wav", "a.p.wav", "a.p.p.wav", "--channel", "c=1", "--suffix", "p.annotated",
                               "--annotate", "1")
        self.assert_failed(result, "a.p.wav: its output ./a.p.annotated.wav is that of a.wav, which stands before it")
        self.assertEqual(self.files(), ["a.annotated.wav", "a.p.annotated.wav", "a.p.p.annotated.wav",
                                        "a.p.p.p.annotated.wav", "a.p.p.wav", "a.p.wav", "a.wav", "out"])

    def test_links_from_one_output_to_another_are_seen(self):
        self.write("out/a.annotated.wav", b"old")
        os.symlink("a.annotated.wav", self.path("out/a.prob.wav"))
        result = self.evaluate("a.wav", "--channel", "c=1", "--annotate", "0", "--output-dir", "out")
        self.assert_failed(result, "a.wav: two of its outputs would go to out/a.annotated.wav")
        self.assertEqual(self.read("out/a.annotated.wav"), b"old")

    def test_the_list_of_failures_replaces_no_output(self):
        for failures in ("out/a.prob.wav", "./out//a.prob.wav", os.fsdecode(self.path("out/a.prob.wav")),
                         "out/a.annotated.wav"):
            self.assert_refused(["a.wav", "--output-dir", "out", "--annotate", "0", "--failures", failures],
                                "two outputs would go to out/a.")
        self.assert_done(self.evaluate("a.wav", "--channel", "c=1", "--output-dir", "out"))
        before = self.read("out/a.prob.wav")
        self.assert_refused(["a.wav", "--output-dir", "out", "--failures", "out/../out/a.prob.wav"],
                            "two outputs would go to out/a.prob.wav")
        self.assertEqual(self.read("out/a.prob.wav"), before)
        self.write("log.properties", b"log4cplus.rootLogger=OFF\n")
        self.assert_usage_error(self.evaluate("a.wav", "--channel", "c=1", "--log-config", "log.properties",
                                              "--failures", "log.properties"), "would replace the input log.properties")

    def test_no_input_is_replaced(self):
        before = self.read("a.wav")
        os.symlink("../a.wav", self.path("out/a.prob.wav"))
        self.assert_refused(["a.wav", "--output-dir", "out"],
                            "the output out/a.prob.wav would replace the input a.wav")
        os.rename(self.path("out/a.prob.wav"), self.path("out/b.annotated.wav"))
        self.assert_refused(["b.wav", "a.wav", "--output-dir", "out", "--annotate", "1"],
                            "the output out/b.annotated.wav would replace the input a.wav")
        self.write("out/list.txt", b"# a list\n")
        os.symlink("list.txt", self.path("out/a.prob.wav"))
        self.assert_refused(["a.wav", "--audioset", "out/list.txt", "--output-dir", "out"],
                            "would replace the input out/list.txt")
        self.assertEqual(self.read("a.wav"), before)

    def test_older_outputs_are_replaced(self):
        self.write("a.prob.wav", b"old" * 10000)
        self.assert_done(self.evaluate("a.wav", "--channel", "c=1"))
        self.assertEqual(len(self.read("a.prob.wav")), 44 + 4000)

    def test_a_full_disk_is_told(self):
        self.write_wav("b.wav", 1000)
        os.symlink("/dev/full", self.path("a.prob.wav"))
        os.symlink("/dev/full", self.path("b.annotated.wav"))
        result = self.evaluate("a.wav", "b.wav", "--channel", "c=1", "--annotate", "0")
        self.assertEqual(result.returncode, 1)
        lines = self.messages(result)
        self.assertRegex(lines[0], r"^murvane-audio: a.wav: Could not write output file: .*/a.prob.wav, No space left on "
                                   "device$")
        self.assertEqual(lines[1], "murvane-audio: a.wav: cannot be evaluated")
        self.assertIn("murvane-audio: b.wav: cannot write ./b.annotated.wav: No space left on device", lines[2:])
        self.assertEqual(self.files(), ["a.prob.wav", "a.wav", "b.annotated.wav", "b.wav", "out"])

    def test_a_folder_that_takes_no_files_is_told_with_the_reason(self):
        os.chmod(self.path("out"), 0o555)
        result = self.evaluate("a.wav", "--channel", "c=1", "--output-dir", "out", "--failures", "f.txt",
                               preexec_fn=give_up_superuser_rights)
        self.assert_failed(result, "a.wav: cannot write out/a.prob.wav: Permission denied")
        self.assertEqual(self.read("f.txt"), b"a.wav\tcannot write out/a.prob.wav: Permission denied\n")

    def test_a_folder_in_the_way_is_told(self):
        os.mkdir(self.path("a.prob.wav"))
        result = self.evaluate("a.wav", "--channel", "c=1")
        self.assertEqual(result.returncode, 1)
        self.assertRegex(self.messages(result)[0], "Could not open output file for writing: .*/a.prob.wav$")


class Interrupted(EvaluateTest):
    def test_a_signal_ends_the_run_and_leaves_whole_files_only(self):
        self.write_silence("0.wav", 1200)
        names = [f"{i}.wav" for i in range(100)]
        for name in names[1:]:
            os.link(self.path("0.wav"), self.path(name))
        process = self.start("evaluate", *names, "--channel", "c=zeroCrossingRate(x)", "--log-level", "INFO")
        process.stderr.readline()
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(60), 130)
        self.assertTrue(process.stderr.read().endswith(b"murvane-audio: interrupted\n"))
        outputs = [name for name in self.files() if name not in names]
        self.assertLess(len(outputs), 100)
        for name in outputs:
            self.assertRegex(name, r"^\d+\.prob\.wav$")
            self.assertEqual(os.path.getsize(self.path(name)), 44 + 2 * 2 * 8000 * 1200)


class Usage(EvaluateTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav", 500)

    def assert_refused(self, arguments, *texts):
        self.assert_usage_error(self.evaluate(*arguments), *texts)
        self.assertEqual(self.files(), ["a.wav"])

    def test_help_tells_all(self):
        result = self.evaluate("--help")
        self.assert_done(result)
        for text in (b"Usage: murvane-audio evaluate FILE...", b"--context-ms MS", b"powers of two", b"Examples:\n"):
            self.assertIn(text, result.stdout)

    def test_a_file_and_a_channel_are_needed(self):
        self.assert_refused(["a.wav"], "no channel given")
        self.assert_refused(["--channel", "c=1"], "no file given")
        self.assert_refused(["a.wav", "--channel"], "--channel")

    def test_wrong_channels_are_told(self):
        self.assert_refused(["a.wav", "--channel", "=1"], "a channel has no name")
        self.assert_refused(["a.wav", "--channel", " = 1"], "a channel has no name")
        self.assert_refused(["a.wav", "--channel", "c="], "the formula of 'c' is empty")
        self.assert_refused(["a.wav", "--channel", "c=1", "--channel", "c =2"], "two channels would be called 'c'")
        self.assert_refused(["a.wav", "--channel", "c=flatnes(spectrum(x))"], 'unknown function "flatnes"', "flatness",
                            "\nflatnes(spectrum(x))\n^\n")
        self.assert_refused(["a.wav", "--channel", "c (1)=2"], "column 6")

    def test_wrong_thresholds_are_told(self):
        channel = ["a.wav", "--channel", "c d=1"]
        self.assert_refused([*channel, "--threshold", "e=1"], "no channel is called 'e'", "there is 'c d'")
        self.assert_refused([*channel, "--threshold="], "--threshold")
        for text in (" ", "x", "c d=", "c d=1x", "c d=nan", "inf", "1,5"):
            self.assert_refused([*channel, f"--threshold={text}"], f"the threshold '{text}' is not a number")
        self.assert_refused([*channel, "--threshold", "1", "--threshold", "2"], "two thresholds for all channels")
        self.assert_refused([*channel, "--threshold", "c d=1", "--threshold", "c d=1"], "two thresholds for the channel "
                                                                                       "'c d'")

    def test_wrong_times_are_told(self):
        channel = ["a.wav", "--channel", "c=1"]
        for ms in ("0", "-1", "60001"):
            self.assert_refused([*channel, "--window-ms", ms], f"a window of {ms} ms is refused")
        for ms in ("15", "0", "60001"):
            self.assert_refused([*channel, "--context-ms", ms], f"a context of {ms} ms is refused; it must be 16 to")
        self.assert_refused([*channel, "--annotate", "-1"], "--annotate")
        self.assert_refused([*channel, "--annotate"], "--annotate")
        self.assert_refused([*channel, "--window-ms", "x"], "--window-ms")


if __name__ == "__main__":
    unittest.main()
