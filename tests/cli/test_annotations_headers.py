#!/usr/bin/env python3
"""Recordings whose headers do not say how long they are: looked at with a warning, and never edited."""

import struct
import unittest

from command import fmt_chunk, tone, wav_bytes
from wav_chunks import SAMPLES, AnnotationTest, adtl, annotation_chunks, audio, chunk, labl, riff

A = (4000, 4000, b"SF_440")
ADD = ("--label", "x", "--start", "0", "--stop", "0.0001")
BYTES = 2 * SAMPLES

NEVER_SET = f"its header was never completed: it says 0 bytes of audio though {BYTES} follow"
STREAMED = f"its header gives no true length: it says {{}} bytes of audio, the file holds {BYTES}"
CUT = "is cut short: its header promises {} bytes of audio, the file holds {}"
REMEDY = "; use a copy made by an audio tool that does not trust this length"


def unfinished(data_size, riff_size=None, tail=b""):
    return wav_bytes(tone(SAMPLES), data_size=data_size, riff_size=riff_size, tail=tail)


class Headers(AnnotationTest):
    def assert_not_edited(self, file, reason, can_be_seen=True):
        """No action that writes takes the file; those that look at it warn, if they can."""
        self.write_annotated("good.wav", A)
        self.write("bad.wav", file)
        self.write("labels.csv", b"start_s,stop_s,label\n0,0.0001,x\n")
        files = self.files()
        for arguments in (("add", "bad.wav", *ADD), ("copy", "good.wav", "bad.wav"), ("append", "good.wav", "bad.wav"),
                          ("clear", "bad.wav"), ("import", "bad.wav", "labels.csv")):
            for options in ([], ["--dry-run"], ["--lenient", "--backup"]):
                self.assert_failed(self.annotations(*arguments, *options), f"bad.wav: {reason}{REMEDY}")
        self.assertEqual((self.read("bad.wav"), self.files()), (file, files))
        for arguments in (("list", "bad.wav"), ("export", "bad.wav", "--format", "csv"), ("copy", "bad.wav", "good.wav")):
            result = self.annotations(*arguments)
            if can_be_seen:
                self.assert_told(result, f"bad.wav: warning: {reason}")
            else:
                self.assert_failed(result, f"bad.wav: {reason}{REMEDY}")

    def test_a_length_that_was_never_set(self):
        for riff_size in (0, 36, 36 + BYTES, 0xFFFFFFFF):
            self.assert_not_edited(unfinished(0, riff_size), NEVER_SET)
        for riff_size in (4, 8):
            self.assert_not_edited(unfinished(0, riff_size), NEVER_SET, can_be_seen=False)

    def test_a_length_that_was_never_set_before_silence(self):
        self.assert_not_edited(wav_bytes(bytes(BYTES), data_size=0), NEVER_SET)

    def test_the_length_of_a_stream(self):
        for size in (0x7FFFF000, 0x80000000, 0xFFFFFFFF):
            for riff_size in (36, 36 + BYTES // 2, 36 + BYTES, 0xFFFFFFFF):
                self.assert_not_edited(unfinished(size, riff_size), STREAMED.format(size))

    def test_a_length_that_promises_more(self):
        for riff_size in (36 + BYTES // 2, 36 + BYTES, 36 + 2 * BYTES):
            self.assert_not_edited(unfinished(2 * BYTES, riff_size), CUT.format(2 * BYTES, BYTES))
        for cut in (1, 2, BYTES):
            self.assert_not_edited(riff(audio())[:-cut], CUT.format(BYTES, BYTES - cut))

    def test_odd_chunks_without_padding_lead_to_the_header_all_the_same(self):
        odd = chunk(b"odd ", b"abc", padding=b"")
        for before in (odd + fmt_chunk(), fmt_chunk() + odd):
            self.assert_not_edited(riff(before, b"data" + struct.pack("<I", 0), tone(SAMPLES)), NEVER_SET)

    def test_a_recording_without_samples_can_be_edited(self):
        empty = fmt_chunk() + chunk(b"data", b"")
        info = chunk(b"LIST", b"INFO" + chunk(b"ISFT", b"x\0"))
        for name, file in (("nothing", riff(empty)), ("chunks", riff(empty, info, chunk(b"odd ", b"abc"))),
                           ("unpadded", riff(empty, chunk(b"odd ", b"abc", padding=b""))),
                           ("annotated", riff(empty, annotation_chunks((0, 0, b"first")))),
                           ("notes", riff(empty, adtl(labl(1, b"lost", name=b"note"))))):
            self.write("a.wav", file)
            result = self.annotations("add", "a.wav", "--label", "x", "--start", "0", "--stop", "0")
            self.assertEqual(result.returncode, 0, (name, result.stderr))
            self.assertEqual(self.annotations_in("a.wav")[-1], (0, 0, b"x"), name)
            self.assert_told(self.annotations("clear", "a.wav"))
            self.assertIn(empty, self.read("a.wav"))

    def test_bytes_behind_the_audio_that_it_promises_do_no_harm(self):
        self.write("a.wav", wav_bytes(tone(SAMPLES), data_size=BYTES // 2, riff_size=36 + BYTES // 2))
        self.assert_told(self.annotations("add", "a.wav", *ADD))
        file = self.read("a.wav")
        self.assertTrue(file.startswith(riff(audio())[36:40], 36))
        self.assertEqual(struct.unpack_from("<I", file, 40), (BYTES // 2,))
        self.assertEqual(file[44:44 + BYTES // 2], tone(SAMPLES)[:BYTES // 2])
        self.assertTrue(file.endswith(tone(SAMPLES)[BYTES // 2:]))


if __name__ == "__main__":
    unittest.main()
