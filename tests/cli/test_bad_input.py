#!/usr/bin/env python3
"""Inputs that are not what they should be: one clear line each, and the others are still done."""

import os
import struct
import threading
import unittest

from command import CommandTest, flac_bytes, fmt_chunk, give_up_superuser_rights, tone, wav_bytes


class BadInput(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("good.wav")
        self.good = self.features("good.wav", "--feature", "MEAN").stdout

    def assert_refused(self, name, message):
        """The input is refused with this message, by both subcommands, and those around it are done."""
        rows = self.good.split(b"\n", 1)[1]
        result = self.features("good.wav", name, "good.wav", "--feature", "MEAN")
        self.assert_failed(result, f"{name}: {message}")
        self.assertEqual(result.stdout, self.good + rows)
        self.assert_failed(self.run_here("info", name), f"{name}: {message}")

    def assert_taken(self, name, message):
        """The input is taken like good.wav, with a warning."""
        result = self.features(name, "--feature", "MEAN")
        self.assertEqual(self.messages(result), [f"murvane-audio: {name}: warning: {message}"])
        self.assertEqual((result.returncode, result.stdout), (0, self.good.replace(b"good.wav", name.encode())))
        info = self.run_here("info", name)
        self.assertEqual(info.returncode, 0)
        self.assertIn(b"\n  samples         4000\n", info.stdout)

    def test_a_missing_file(self):
        self.assert_refused("missing.wav", "No such file or directory")
        self.assert_refused("good.wav/x.wav", "Not a directory")

    def test_an_empty_name(self):
        self.assert_failed(self.run_here("info", ""), "'': No such file or directory")

    def test_a_directory(self):
        os.mkdir(self.path("folder.wav"))
        self.assert_refused("folder.wav", "is a directory")

    def test_an_empty_file(self):
        self.write("empty.wav", b"")
        self.assert_refused("empty.wav", "is empty")

    def test_a_file_that_may_not_be_read(self):
        self.write_wav("secret.wav")
        os.chmod(self.path("secret.wav"), 0)
        self.assert_failed(self.run_here("info", "secret.wav", preexec_fn=give_up_superuser_rights),
                           "secret.wav: Permission denied")

    def test_text_that_is_called_wav(self):
        self.write("text.wav", b"This is not a recording.\n" * 10)
        result = self.features("text.wav", "--feature", "MEAN")
        message, = self.messages(result)
        self.assertRegex(message, r"^murvane-audio: text.wav: cannot be read as audio: .+")
        self.assertEqual((result.returncode, result.stdout), (1, b""))

    def test_a_header_that_breaks_off(self):
        whole = wav_bytes(tone(4000))
        for size in list(range(1, 44)):
            self.write("part.wav", whole[:size])
            result = self.features("part.wav", "--feature", "MEAN")
            self.assertEqual((result.returncode, result.stdout), (1, b""), size)
            message, = self.messages(result)
            self.assertTrue(message.startswith("murvane-audio: part.wav: "), message)

    def test_no_rate(self):
        self.write("none.wav", wav_bytes(tone(100), rate=0))
        self.assert_refused("none.wav", "cannot be read as audio: its header says 0 samples a second")

    def test_audio_in_two_pieces(self):
        self.write("two.wav", wav_bytes(tone(100), tail=b"data" + struct.pack("<I", 200) + tone(100)))
        self.assert_refused("two.wav", "cannot be read as audio: it has 2 data chunks")

    def test_stereo(self):
        self.write("stereo.wav", wav_bytes(tone(4000), channels=2))
        self.assert_refused("stereo.wav", "has 2 channels; only mono audio can be analysed")

    def test_no_audio(self):
        self.write("none.wav", wav_bytes(b""))
        self.assert_refused("none.wav", "holds no audio")
        self.write("listed.wav", wav_bytes(b"", tail=b"LIST" + struct.pack("<I", 4) + b"INFO"))
        self.assert_refused("listed.wav", "holds no audio")

    def test_a_file_cut_short(self):
        self.write("cut.wav", wav_bytes(tone(4000))[:5044])
        self.assert_refused("cut.wav", "is cut short: its header promises 8000 bytes of audio, the file holds 5000")
        self.write("behind.wav", wav_bytes(tone(4000), data_size=8001))
        self.assert_refused("behind.wav", "is cut short: its header promises 8001 bytes of audio, the file holds 8000")

    def test_a_cut_is_found_behind_other_chunks(self):
        data = tone(4000)
        chunks = b"WAVE" + fmt_chunk() + b"odd " + struct.pack("<I", 3) + b"abc\0" + b"data" + struct.pack("<I", 9000)
        self.write("cut.wav", b"RIFF" + struct.pack("<I", len(chunks) + 9000) + chunks + data)
        self.assert_refused("cut.wav", "is cut short: its header promises 9000 bytes of audio, the file holds 8000")

    def test_sizes_of_a_stream_are_no_sizes(self):
        for data_size, riff_size in ((0xFFFFFFFF, 0xFFFFFFFF), (0x7FFFF000, 0x7FFFF024), (0x80000000, 0x80000024),
                                     (0xFFFFFFFF, 0)):
            self.write("stream.wav", wav_bytes(tone(4000), data_size=data_size, riff_size=riff_size))
            self.assert_taken("stream.wav", "its header gives no true length; taking all 8000 bytes to the end")

    def test_a_header_that_was_never_completed(self):
        for riff_size in (0, 8, 36, 0xFFFFFFFF, 8036):
            self.write("crash.wav", wav_bytes(tone(4000), data_size=0, riff_size=riff_size))
            self.assert_taken("crash.wav", "its header was never completed; taking all 8000 bytes to the end")

    def test_a_header_that_was_never_completed_and_a_feature_that_fails(self):
        self.write("crash.wav", wav_bytes(tone(400000), data_size=0, riff_size=0))
        result = self.features("crash.wav", "good.wav", "--feature", "RANGE(0,999)", "--log-level", "ERROR")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(len(self.messages(result)), 2)

    def test_streams_are_read_as_they_come(self):
        for name, content in (("pipe", wav_bytes(tone(4000))),
                              ("endless", wav_bytes(tone(4000), data_size=0xFFFFFFFF, riff_size=0xFFFFFFFF))):
            os.mkfifo(self.path(name))
            writer = threading.Thread(target=self.write, args=(name, content))
            writer.start()
            result = self.features(name, "--feature", "MEAN")
            writer.join()
            self.assert_done(result)
            self.assertEqual(result.stdout, self.good.replace(b"good.wav", name.encode()))

    def test_a_feature_that_cannot_be_computed_is_named(self):
        self.assert_failed(self.features("good.wav", "--feature", "MEAN", "RANGE(0,999)"),
                           "good.wav: the feature RANGE(0,999) cannot be computed of a window of 256 samples")

    def test_a_file_too_low_in_rate_for_window_and_overlap(self):
        self.write_wav("slow.wav", rate=100)
        result = self.features("slow.wav", "--feature", "MEAN", "--overlap-ms", "31", "--log-level", "ERROR")
        self.assert_failed(result, "slow.wav: windows of 32 ms that overlap by 31 ms cannot be cut at 100 Hz")

    def test_a_compressed_file_that_breaks_off_is_told(self):
        self.write("whole.flac", flac_bytes(list(range(100))))
        self.assert_done(self.features("whole.flac", "--feature", "MEAN"))
        self.write("cut.flac", self.read("whole.flac")[:-300])
        result = self.features("cut.flac", "--feature", "MEAN")
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        self.assertRegex(result.stderr, rb"^murvane-audio: cut.flac: cannot be read to its end: \d+ windows instead of "
                         rb"3199\n$")
        info = self.run_here("info", "cut.flac")
        self.assertEqual((info.returncode, info.stdout), (1, b""))
        self.assertRegex(info.stderr, rb"^murvane-audio: cut.flac: cannot be read to its end: \d+ samples instead of "
                         rb"409600\n$")

    def test_a_name_cannot_move_the_cursor(self):
        result = self.features("\x1b[2Jmissing.wav", "--feature", "MEAN")
        self.assert_failed(result, "?[2Jmissing.wav: No such file or directory")

    def test_records_of_the_library_name_the_input_and_are_not_repeated(self):
        self.write("odd.wav", wav_bytes(tone(9600)))
        result = self.features("odd.wav", "--feature", "SPECTRUM", "--window-ms", "20", "--overlap-ms", "0")
        self.assertEqual(result.returncode, 0)
        for line in self.messages(result):
            self.assertTrue(line.startswith("murvane-audio: odd.wav: "), line)
        self.assertLessEqual(len(self.messages(result)), 3)


class Logging(CommandTest):
    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")
        self.output = self.features("a.wav", "--feature", "MEAN").stdout

    def test_lower_levels_tell_more_and_leave_the_output_alone(self):
        result = self.features("a.wav", "--feature", "MEAN", "--log-level", "trace")
        self.assertEqual((result.returncode, result.stdout), (0, self.output))
        self.assertIn("murvane-audio: a.wav: ENTER: WindowedAudioFileReader::getNextWindow", self.messages(result))
        debug = self.features("a.wav", "--feature", "MEAN", "--log-level", "DEBUG")
        self.assertIn("murvane-audio: a.wav: Last chunk of audio read, end of file reached", self.messages(debug))

    def test_errors_of_the_command_are_told_at_every_level(self):
        self.assert_failed(self.features("none.wav", "--feature", "MEAN", "--log-level", "OFF"),
                           "none.wav: No such file or directory")

    def test_a_configuration_sends_records_elsewhere(self):
        self.write("log.properties", b"log4cplus.rootLogger=DEBUG, FILE\n"
                                     b"log4cplus.appender.FILE=log4cplus::FileAppender\n"
                                     b"log4cplus.appender.FILE.File=records.log\n"
                                     b"log4cplus.appender.FILE.layout=log4cplus::PatternLayout\n"
                                     b"log4cplus.appender.FILE.layout.ConversionPattern=%x|%p|%m%n\n")
        result = self.features("a.wav", "--feature", "MEAN", "--log-config", "log.properties")
        self.assert_done(result)
        self.assertEqual(result.stdout, self.output)
        self.assertIn(b"a.wav|DEBUG|Last chunk of audio read, end of file reached\n", self.read("records.log"))


if __name__ == "__main__":
    unittest.main()
