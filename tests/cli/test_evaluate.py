#!/usr/bin/env python3
"""Curves of formulas beside the audio: murvane-audio evaluate."""

import math
import os
import pathlib
import re
import shlex
import struct
import unittest

from command import tone, wav_bytes
from evaluation import BLOCK, EvaluateTest, bytes_of, labels_of, stored
from wav_chunks import file_chunks


class Curves(EvaluateTest):
    FLATNESS = "flatness(spectrum(x))"

    def assert_held(self, curve, values, block=BLOCK):
        """The curve has these values, a block each."""
        self.assertEqual(curve, [stored(values[i // block]) for i in range(len(curve))])
        self.assertEqual(math.ceil(len(curve) / block), len(values))

    def test_a_value_is_that_of_its_block_and_holds_for_all_of_it(self):
        self.write_wav("a.wav", 20 * BLOCK)
        window = ("--window-ms", "16", "--overlap-ms", "0")
        for formula in (self.FLATNESS, "zeroCrossingRate(x)", "2 * silenceRatio(x) - 0.5"):
            curve, = self.curves("--channel", "c=" + formula)
            self.assert_held(curve, self.column("a.wav", formula, *window))
            self.assertGreater(len(set(curve)), 1)

    def test_channels_are_in_the_order_of_the_options(self):
        self.write_wav("a.wav", 1000)
        curves = self.curves("--channel", "a=0.5", "--channel", "b=" + self.FLATNESS, "--channel", "c=-1")
        self.assertEqual((set(curves[0]), set(curves[2])), ({16383}, {-32767}))
        self.assertEqual(curves[1], self.curves("--channel", "b=" + self.FLATNESS)[0])

    def test_values_are_clamped_and_what_is_not_a_number_is_0(self):
        self.write_wav("a.wav", 300)
        channels = [f"--channel=c{i}={value}" for i, value in
                    enumerate(("1.5", "-1.5", "0.25", "1/0", "-1/0", "0/0", "0", "-0.00001"))]
        curves = self.curves(*channels)
        self.assertEqual([set(curve) for curve in curves],
                         [{32767}, {-32767}, {8191}, {32767}, {-32767}, {0}, {0}, {0}])

    def test_a_last_block_that_is_short_ends_a_full_length_of_audio(self):
        data = tone(5 * BLOCK + 50)
        self.write("a.wav", wav_bytes(data))
        curve, = self.curves("--channel", "c=" + self.FLATNESS)
        self.write("end.wav", wav_bytes(data[-2 * BLOCK:]))
        value, = self.column("end.wav", self.FLATNESS, "--window-ms", "16", "--overlap-ms", "0")
        self.assertEqual(curve[5 * BLOCK:], [stored(value)] * 50)

    def test_a_file_of_one_sample_has_a_value_for_it(self):
        self.write("a.wav", wav_bytes(struct.pack("<h", 1000)))
        self.write("long.wav", wav_bytes(bytes(2 * BLOCK - 2) + struct.pack("<h", 1000)))
        curve, = self.curves("--channel", "c=" + self.FLATNESS)
        self.assertEqual(curve, [stored(*self.column("long.wav", self.FLATNESS, "--window-ms", "16", "--overlap-ms",
                                                     "0"))])

    def test_the_context_is_the_audio_that_ends_with_the_block(self):
        data = tone(20 * BLOCK)
        self.write("a.wav", wav_bytes(data))
        for formula in (self.FLATNESS, "zeroCrossingRate(x)"):
            for blocks in (1, 2, 4):
                curve, = self.curves("--channel", "c=" + formula, "--context-ms", str(16 * blocks))
                # Before the start there is silence.
                self.write("padded.wav", wav_bytes(bytes(2 * BLOCK * (blocks - 1)) + data))
                self.assert_held(curve, self.column("padded.wav", formula, "--window-ms", str(16 * blocks),
                                                    "--overlap-ms", str(16 * (blocks - 1))))

    def test_blocks_are_as_long_as_told_at_the_rate_of_each_file(self):
        for rate, ms in ((8000, 32), (16000, 16), (44100, 10)):
            self.write_wav("a.wav", 5000, rate=rate)
            block = rate * ms // 1000
            result = self.evaluate("a.wav", "--window-ms", str(ms), "--channel", "z=zeroCrossingRate(x)")
            warning = [f"murvane-audio: a.wav: warning: has {rate} Hz: spectral features take their bins to span 0 to "
                       "4000 Hz, which holds at 8000 Hz only"]
            self.assertEqual((result.returncode, self.messages(result)), (0, warning if rate != 8000 else []))
            params, (_, curve) = self.channels_of("a.prob.wav")
            self.assertEqual(params.framerate, rate)
            values = self.column("a.wav", "zeroCrossingRate(x)", "--window-ms", str(ms), "--overlap-ms", "0")
            whole = len(values) * block
            self.assert_held(curve[:whole], values, block)
            self.assertEqual(len(set(curve[whole:])), 1)

    def test_each_file_is_evaluated_as_if_it_were_alone(self):
        self.write_wav("a.wav", 3000)
        self.write("b.wav", wav_bytes(tone(2000, 1111.0, 20000)))
        channel = ("--channel", "z=zeroCrossingRate(x)", "--context-ms", "64")
        alone = self.curves(*channel, name="b")
        self.assert_done(self.evaluate("a.wav", "b.wav", *channel))
        self.assertEqual(self.channels_of("b.prob.wav")[1][1:], alone)

    def test_lengths_that_are_no_power_of_two_are_told_of_once_and_computed(self):
        data = tone(1600)
        self.write("a.wav", wav_bytes(data))
        for option in ("--window-ms", "--context-ms"):
            result = self.evaluate("a.wav", option, "20", "--channel", "c=" + self.FLATNESS)
            self.assertEqual((result.returncode, self.messages(result)),
                             (0, ["murvane-audio: a.wav: warning: a formula sees 160 samples, which are no power of "
                                  "two: its spectra are computed slowly"]))
            if option == "--window-ms":
                self.assert_held(self.channels_of("a.prob.wav")[1][1],
                                 self.column("a.wav", self.FLATNESS, "--window-ms", "20", "--overlap-ms", "0"), 160)
        self.assert_done(self.evaluate("a.wav", "--window-ms", "20", "--channel", "z=zeroCrossingRate(x)"))

    def test_other_chunks_are_carried_over(self):
        info = b"LIST" + struct.pack("<I", 16) + b"INFOISFT" + struct.pack("<I", 3) + b"abc\0"
        self.write("a.wav", wav_bytes(tone(500), tail=info, riff_size=36 + 1000 + len(info)))
        self.curves("--channel", "c=1")
        self.assertTrue(self.read("a.prob.wav").endswith(info))

    def test_a_formula_without_a_name_is_its_own(self):
        self.write_wav("a.wav", 1000)
        self.assertEqual(self.curves("--channel", "-zeroCrossingRate(x)"),
                         self.curves("--channel=z=-zeroCrossingRate(x)"))
        self.assert_usage_error(self.evaluate("a.wav", "--channel", "-1", "--channel", "-1"),
                                "two channels would be called '-1'")

    def test_an_audio_set_names_more_files(self):
        os.mkdir(self.path("set"))
        self.write_wav("a.wav", 500)
        self.write_wav("set/b.wav", 600)
        self.write("set/list.txt", b"b.wav\nnone.wav\n")
        self.assert_failed(self.evaluate("a.wav", "--audioset", "set/list.txt", "--channel", "c=1"),
                           "set/list.txt: Could not open  file none.wav (relative path detected). File will be skipped.")
        self.assertEqual([name for name in self.files() if "prob" in name], ["a.prob.wav", "b.prob.wav"])
        self.write("set/list.txt", b"# nothing\n")
        self.assert_failed(self.evaluate("--audioset", "set/list.txt", "--channel", "c=1"), "no file to process")


class Decisions(EvaluateTest):
    def setUp(self):
        super().setUp()
        # Zero crossing rates of 0, 1, 0, 1 for 10, 6, 4 and 3 blocks and a bit more than another one.
        quiet, busy = [1000] * BLOCK, [1000, -1000] * (BLOCK // 2)
        self.samples = quiet * 10 + busy * 6 + quiet * 4 + busy * 4 + busy[:20]
        self.write("a.wav", wav_bytes(bytes_of(self.samples)))
        self.runs = [(10 * BLOCK, 6 * BLOCK), (20 * BLOCK, 4 * BLOCK + 20)]
        self.expected = [0] * 10 * BLOCK + [32767] * 6 * BLOCK + [0] * 4 * BLOCK + [32767] * (4 * BLOCK + 20)

    def test_a_threshold_makes_zeros_and_ones(self):
        for options in (["0.5"], ["z=0.5"], ["z = 0.5 "], ["7", "--threshold", "z=0.5"], ["z=0.5", "--threshold", "7"]):
            curves = self.curves("--channel", "z=zeroCrossingRate(x)", "--channel", "two=2", "--threshold", *options)
            self.assertEqual(curves[0], self.expected)
        self.assertEqual(set(curves[1]), {0}, "2 is less than 7")

    def test_it_is_reached_by_equal_values_and_compared_before_these_are_clamped(self):
        channels = ["--channel", "half=0.5", "--channel", "four=4", "--channel", "none=0/0", "--channel", "low=-3"]
        def levels(*thresholds):
            return [curve[0] for curve in self.curves(*channels, *(f"--threshold={text}" for text in thresholds))]
        self.assertEqual(levels("0.5"), [32767, 32767, 0, 0])
        self.assertEqual(levels("0.50000001"), [0, 32767, 0, 0])
        self.assertEqual(levels("four=4", "low=-3"), [16383, 32767, 0, 32767])
        self.assertEqual(levels("four=4.1", "none=-1e300"), [16383, 0, 0, -32767])
        self.assertEqual(self.curves(*channels, "--threshold", "-3")[3][0], 32767)

    def annotated(self, *arguments):
        self.assert_done(self.evaluate("a.wav", *arguments))
        data = self.read("a.annotated.wav")
        self.assertEqual([content for name, content in file_chunks(data) if name == b"data"], [bytes_of(self.samples)])
        return labels_of(data)

    def test_runs_become_annotations_of_a_copy(self):
        channel = ["--channel", "z=zeroCrossingRate(x)"]
        runs = [("z", *run) for run in self.runs]
        self.assertEqual(self.annotated(*channel, "--annotate", "0"), runs)
        self.assertEqual(self.annotated(*channel, "--annotate", "0", "--threshold", "1.01"), [])
        self.assertEqual(self.annotated(*channel, "--annotate", "0", "--threshold", "0"), [("z", 0, len(self.samples))])
        self.assertEqual(self.files(), ["a.annotated.wav", "a.prob.wav", "a.wav"])

    def test_runs_that_are_too_short_are_left_out(self):
        channel = ["--channel", "z=zeroCrossingRate(x)"]
        runs = [("z", *run) for run in self.runs]  # 96 and 66.5 ms
        for shortest, expected in ((1, runs), (66, runs), (67, runs[:1]), (96, runs[:1]), (97, [])):
            self.assertEqual(self.annotated(*channel, "--annotate", str(shortest)), expected, shortest)

    def test_without_a_threshold_a_channel_is_on_from_half(self):
        self.assertEqual(self.annotated("--channel", "half=0.5", "--channel", "less=0.4999", "--annotate", "10"),
                         [("half", 0, len(self.samples))])

    def test_annotations_are_in_the_order_of_time_then_of_channels(self):
        self.assertEqual(self.annotated("--channel", "b=zeroCrossingRate(x)", "--channel", "c=1 - zeroCrossingRate(x)",
                                        "--channel", "a=1", "--annotate", "0"),
                         [("c", 0, 10 * BLOCK), ("a", 0, len(self.samples)), ("b", *self.runs[0]),
                          ("c", 16 * BLOCK, 4 * BLOCK), ("b", *self.runs[1])])

    def test_names_may_have_blanks_and_any_letters(self):
        for name in ("dial tone", "Wählton 拨号音", "a,b;c\"d'e", "tone.1/2 - [x]"):
            self.assertEqual(self.annotated("--channel", f" {name} =zeroCrossingRate(x)", "--annotate", "90",
                                            "--threshold", f"{name}=0.7"), [(name, *self.runs[0])])

    def test_the_annotations_of_the_file_stay(self):
        channel = ["--channel", "z=zeroCrossingRate(x)", "--annotate", "90"]
        self.annotated(*channel)
        os.rename(self.path("a.annotated.wav"), self.path("a.wav"))
        old = ("z", *self.runs[0])
        for count in (2, 3):
            result = self.evaluate("a.wav", *channel)
            self.assertEqual(result.returncode, 0)
            self.assertEqual(labels_of(self.read("a.annotated.wav")), [old] * count)
            self.assertEqual(labels_of(self.read("a.prob.wav")), [old] * (count - 1))
            os.rename(self.path("a.annotated.wav"), self.path("a.wav"))


class Documented(EvaluateTest):
    def test_the_sample_call_is_annotated_as_the_documentation_shows(self):
        text = (pathlib.Path(__file__).resolve().parents[2] / "docs" / "evaluate.md").read_text(encoding="utf-8")
        command = re.search(r"murvane-audio (evaluate sample-call.wav .*?)\n```", text, re.DOTALL).group(1)
        shown = re.findall(r"^\| tone \| ([0-9.]+) \| ([0-9.]+) \|", text, re.MULTILINE)
        with open(os.environ["SAMPLE_CALL"], "rb") as call:
            self.write("sample-call.wav", call.read())
        self.assert_done(self.run_here(*shlex.split(command.replace("\\\n", ""))))
        found = labels_of(self.read("sample-call.annotated.wav"))
        self.assertEqual(shown, [(f"{start / 8000:.3f}", f"{(start + length) / 8000:.3f}")
                                 for _, start, length in found])
        self.assertEqual(set(label for label, _, _ in found), {"tone"})


if __name__ == "__main__":
    unittest.main()
