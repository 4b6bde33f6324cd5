#!/usr/bin/env python3
"""murvane-audio annotations validate: each defect on a line, with its place."""

import struct
import unittest

from command import fmt_chunk
from wav_chunks import (AnnotationTest, adtl, annotated, audio, chunk, cue, labl, ltxt, note, point, riff, smpl, stored)

A = (4000, 4000, b"SF_440")
END = ", beyond the end of the audio at 24000"
CUE = 48044  # where the chunk behind the audio begins
LIST = CUE + 8 + 4 + 24  # and the one behind a single point
FIRST = LIST + 12  # the first chunk in that list
SECOND = FIRST + 28  # the one behind an "ltxt"


class Validate(AnnotationTest):
    def assert_defects(self, file, *lines):
        """Exactly these lines, each for a defect; nothing is repaired."""
        self.write("a.wav", file)
        result = self.annotations("validate", "a.wav")
        expected = [f"a.wav: {line}" for line in lines] or ["a.wav: no defects"]
        self.assertEqual(result.stdout.decode().splitlines(), expected)
        self.assertEqual((result.stderr, result.returncode), (b"", 1 if lines else 0))
        self.assertEqual(self.read("a.wav"), file)

    def one(self, *texts, at=100):
        return riff(audio(), cue(point(1, at)), adtl(*texts))

    def test_good_files_have_none(self):
        self.assert_defects(annotated(A, (0, 24000, "Grün".encode()), (24000, 0, b"")))
        self.assert_defects(annotated())
        for tag, bits in ((1, 8), (1, 24), (3, 32), (3, 64), (6, 8), (7, 8)):
            self.assert_defects(riff(audio(tag=tag, bits=bits)))
        self.assert_defects(riff(audio(), smpl((1, 0, 23999)), cue(point(0, 1)), adtl(ltxt(0, 1), labl(0, b"x"))))
        self.assert_defects(riff(audio(), adtl()))

    def test_what_is_no_wav_file(self):
        header = "offset 0: reading the RIFF header: "
        self.assert_defects(b"This is text.", header + '"This" instead of "RIFF"')
        self.assert_defects(b"RIFF\4\0\0\0AVI ", 'offset 8: reading the form type: "AVI " instead of "WAVE"')
        self.assert_defects(b"RIFF\4\0\0", header + "7 bytes present, 12 needed")
        self.assert_defects(b"RF64\xff\xff\xff\xffWAVE", header + '"RF64": files with 64-bit sizes are not supported')
        self.assert_defects(b"RIFX\0\0\0\4WAVE", header + '"RIFX": files with big-endian sizes are not supported')

    def test_sizes_that_lie(self):
        whole = riff(audio())
        self.assert_defects(whole[:-100], "offset 4: the RIFF chunk says 48036 bytes, 47936 are there",
                            'offset 36: chunk "data" says 48000 bytes, 47900 are there')
        self.assert_defects(riff(audio(), size=10), "offset 4: the RIFF chunk says 10 bytes, its chunks take 48036")
        self.assert_defects(riff(audio(), tail=b"more"), "offset 48044: 4 bytes follow the RIFF chunk")
        self.assert_defects(riff(audio(), cue(point(1, 1), count=9), adtl(ltxt(1, 1), labl(1, b"x"))),
                            f"offset {CUE}: the cue chunk says 9 points, 1 are there")

    def test_padding(self):
        self.assert_defects(self.one(ltxt(1, 1), labl(1, b"odd!", padding=b"!"), ltxt(1, 1))[:-28],
                            "offset 4: the RIFF chunk says 48158 bytes, 48130 are there",
                            f'offset {LIST}: chunk "LIST" says 78 bytes, 50 are there',
                            f'offset {SECOND + 17}: the padding byte after chunk "labl" is 33 instead of 0')
        self.assert_defects(self.one(labl(1, b"odd!", padding=b""), ltxt(1, 1)),
                            f'offset {FIRST}: chunk "labl" of 9 bytes lacks its padding byte')

    def test_missing_pairs(self):
        self.assert_defects(self.one(ltxt(1, 1)), f'offset {CUE + 12}: cue point 1 has no label ("labl" chunk)')
        self.assert_defects(self.one(labl(1, b"x")), f'offset {CUE + 12}: cue point 1 has no length ("ltxt" chunk)')
        self.assert_defects(riff(audio(), adtl(ltxt(1, 1), labl(2, b"x"), note(3, b"y"))),
                            f'offset {CUE + 12}: chunk "ltxt" belongs to cue point 1, which is not there',
                            f'offset {CUE + 40}: chunk "labl" belongs to cue point 2, which is not there',
                            f'offset {CUE + 54}: chunk "note" belongs to cue point 3, which is not there')

    def test_numbers_that_come_twice(self):
        self.assert_defects(riff(audio(), cue(point(1, 1), point(1, 2)),
                                 adtl(ltxt(1, 1), labl(1, b"x"), ltxt(1, 1), labl(1, b"x"), note(1, b"x"), note(1, b"y"))),
                            f"offset {CUE + 36}: cue point 1 is there again; the last one counts",
                            f'offset {CUE + 114}: another "ltxt" chunk of cue point 1; the last one counts',
                            f'offset {CUE + 142}: another "labl" chunk of cue point 1; the last one counts')

    def test_a_number_too_large(self):
        number = 1 << 20
        self.assert_defects(riff(audio(), cue(point(number, 1)), adtl(ltxt(number, 1), labl(number, b"x"))),
                            f"offset {CUE + 12}: cue point 1048576 has too large an identifier, 1048575 is the largest")

    def test_positions_past_the_end(self):
        self.assert_defects(self.one(ltxt(1, 1), labl(1, b"x"), at=24001),
                            f"offset {CUE + 12}: cue point 1 at sample 24001{END}")
        self.assert_defects(self.one(ltxt(1, 1), labl(1, b"x"), at=24000),
                            f"offset {FIRST}: the interval of cue point 1 ends at sample 24001{END}")
        self.assert_defects(self.one(ltxt(1, 4294967295), labl(1, b"x"), at=24000),
                            f"offset {FIRST}: the interval of cue point 1 ends at sample 4294991295{END}")
        self.assert_defects(riff(audio(), smpl((1, 5, 24000), (2, 5, 4))),
                            f"offset {CUE + 44}: the loop ends with sample 24000{END}",
                            f"offset {CUE + 68}: the loop ends at sample 4, before its start at 5")

    def test_texts(self):
        self.assert_defects(self.one(ltxt(1, 1), labl(1, b"abcd", end=b"")),
                            f'offset {SECOND}: the text of chunk "labl" lacks the zero byte at its end')
        self.assert_defects(self.one(ltxt(1, 1), labl(1, b"caf\xe9")),
                            f'offset {SECOND}: the text of chunk "labl" is not UTF-8')
        self.assert_defects(self.one(ltxt(1, 1), labl(1, b"x"), note(1, b"\xff")),
                            f'offset {SECOND + 14}: the text of chunk "note" is not UTF-8')

    def test_chunks_that_are_too_short(self):
        self.assert_defects(self.one(ltxt(1, 1), labl(1, b"x"), chunk(b"ltxt", b"12"), chunk(b"labl", b""),
                                     chunk(b"note", b"123")),
                            f'offset {SECOND + 14}: chunk "ltxt" of 2 bytes is too short, 20 are needed',
                            f'offset {SECOND + 24}: chunk "labl" of 0 bytes is too short, 4 are needed',
                            f'offset {SECOND + 32}: chunk "note" of 3 bytes is too short, 4 are needed')
        self.assert_defects(riff(audio(), chunk(b"cue ", b"12"), chunk(b"smpl", b"1234"), smpl((1, 2, 3), count=2)),
                            f"offset {CUE}: the cue chunk of 2 bytes has no count of its points",
                            f'offset {CUE + 10}: chunk "smpl" of 4 bytes is too short, 36 are needed',
                            f'offset {CUE + 22}: chunk "smpl" of 60 bytes is too short, 84 are needed')

    def test_lists(self):
        self.assert_defects(riff(audio(), cue(point(1, 1)), adtl(ltxt(1, 1), name=b"list"), adtl(labl(1, b"x"))),
                            f'offset {LIST}: the list of annotations is called "list" instead of "LIST"; many programs do '
                            "not see it",
                            f"offset {LIST + 40}: another list of annotations; the chunks of all count")
        self.assert_defects(riff(audio(), cue(point(1, 1)), cue(), ltxt(1, 1), labl(1, b"x")),
                            f'offset {LIST}: another "cue " chunk; the points of all count',
                            f'offset {LIST + 12}: chunk "ltxt" is outside a list of annotations',
                            f'offset {LIST + 40}: chunk "labl" is outside a list of annotations')

    def test_audio(self):
        data = chunk(b"data", bytes(100))
        self.assert_defects(riff(data), 'offset 0: there is no "fmt " chunk')
        self.assert_defects(riff(fmt_chunk()), 'offset 0: there is no "data" chunk')
        self.assert_defects(riff(data, fmt_chunk()), 'offset 120: the "fmt " chunk stands behind the "data" chunk')
        self.assert_defects(riff(fmt_chunk(), fmt_chunk(), data, data),
                            'offset 36: another "fmt " chunk; the first one counts',
                            'offset 168: another "data" chunk; the first one counts')
        self.assert_defects(riff(chunk(b"fmt ", bytes(14)), data),
                            'offset 12: chunk "fmt " of 14 bytes is too short, 16 are needed')
        self.assert_defects(riff(fmt_chunk(rate=0), data), "offset 12: the sample rate is 0")
        self.assert_defects(riff(fmt_chunk(), chunk(b"data", bytes(101))),
                            "offset 36: the last 1 bytes of the audio are no whole sample")

    def test_formats(self):
        def form(tag, bits, align, second):
            return riff(stored(tag, bits, align, second=second), chunk(b"data", bytes(100)))
        self.assert_defects(form(1, 0, 0, 0), "offset 12: samples of 0 bits are not whole bytes")
        self.assert_defects(form(1, 16, 4, 32000), "offset 12: a sample of all channels takes 2 bytes, the format says 4")
        self.assert_defects(form(1, 16, 2, 1), "offset 12: a second takes 16000 bytes, the format says 1")
        self.assert_defects(form(1, 12, 3, 16000), "offset 12: samples of 12 bits are not whole bytes")
        self.assert_defects(form(0xFFFE, 16, 2, 16000))

    def test_audio_that_cannot_be_annotated_is_no_defect(self):
        def form(tag, channels, bits, align, second):
            return stored(tag, bits, align, channels, second) + chunk(b"data", bytes(128))
        plain = "format {} is none whose samples can be counted in bytes (PCM, float, A-law, mu-law)"
        for reason, audio_chunks in (("the audio has 2 channels, not one", form(1, 2, 16, 4, 32000)),
                                     ("the audio has 65535 channels, not one", form(49, 65535, 0, 65, 1625)),
                                     (plain.format(2), form(2, 1, 4, 256, 4055)),
                                     (plain.format(49), form(49, 1, 0, 65, 1625)),
                                     ("samples of 12 bits are not whole bytes", form(1, 1, 12, 2, 16000))):
            self.write("a.wav", riff(audio_chunks))
            self.assert_told(self.annotations("validate", "a.wav"),
                             output=f"a.wav: no defects; cannot be annotated: {reason}\n")
            self.assert_defects(riff(audio_chunks, chunk(b"labl", b"")),
                                'offset 172: chunk "labl" of 0 bytes is too short, 4 are needed',
                                'offset 172: chunk "labl" is outside a list of annotations',
                                f"cannot be annotated: {reason}")
        self.assert_defects(riff(form(1, 0, 16, 0, 0)), "offset 12: the audio has 0 channels")

    def test_many_defects_are_counted(self):
        file = riff(audio(), cue(*(point(i, 1) for i in range(1500))))
        self.write("a.wav", file)
        lines = self.annotations("validate", "a.wav").stdout.decode().splitlines()
        self.assertEqual((len(lines), lines[-1]), (1001, "a.wav: and 2000 more"))

    def test_several_files(self):
        self.write_annotated("a.wav", A)
        self.write("b.wav", self.one(ltxt(1, 1)))
        self.write("set.txt", b"a.wav\n")
        result = self.annotations("validate", "a.wav", "missing.wav", "b.wav", "--audioset", "set.txt")
        self.assert_failed(result, "missing.wav: No such file or directory")
        lines = result.stdout.decode().splitlines()
        self.assertEqual((len(lines), lines[0], lines[2][-18:]), (3, "a.wav: no defects", "/a.wav: no defects"))
        self.assertTrue(lines[1].startswith("b.wav: offset "))
        self.assertEqual(self.annotations("validate", "a.wav", "a.wav").returncode, 0)
        self.assert_usage_error(self.annotations("validate"), "no file given")

    def test_names_come_from_standard_input(self):
        self.write_annotated("a.wav", A)
        self.assert_told(self.annotations("validate", "-", input=b"a.wav\n#b.wav\n"), output="a.wav: no defects\n")

    def test_a_list_without_names_is_no_file(self):
        self.write("set.txt", b"# none\n")
        self.assert_failed(self.annotations("validate", "--audioset", "set.txt"), "no file to process")


if __name__ == "__main__":
    unittest.main()
