#!/usr/bin/env python3
"""What is exported and imported again is the same, to the sample and the byte, whatever it is."""

import random
import unittest

from wav_chunks import AnnotationTest, annotated, annotations_of, audio, riff

RATES = (1, 3, 7, 8000, 11025, 16000, 22050, 44100, 48000, 96000, 192000, 999983, 2000000000)

PLAIN = list("aZ09_-") + ["SF_440", "AM_1000x50", "é", "😀", " ", '"', "\\", ",", "'", ";", "!", "<", "[1]:", "#"]
CONTROL = ["\n", "\r", "\t", "\r\n", "\x01", "\x7f", "\x1b"]
NOT_TEXT = [b"\xff", b"\xc3", b"caf\xe9"]


def random_label(generator, pieces):
    parts = generator.choices(pieces, k=generator.randint(0, 6))
    return b"".join(part if isinstance(part, bytes) else part.encode() for part in parts)


class RoundTrip(AnnotationTest):
    """Each trial is one random list of annotations, at a random rate."""

    trials = 40

    def random_annotations(self, generator, pieces, samples):
        annotations = []
        for _ in range(generator.choice((0, 1, 2, 5, 20, 60))):
            start = generator.choice((0, samples, generator.randint(0, samples), generator.randint(0, samples)))
            length = generator.choice((0, 1, generator.randint(0, samples), generator.randint(0, 50)))
            annotations.append((start, min(length, samples - start), random_label(generator, pieces)))
        return annotations

    def check(self, form, pieces, may_be_empty=True, keeps_order=True):
        generator = random.Random(form)
        for trial in range(self.trials):
            rate = generator.choice(RATES)
            samples = generator.choice((1, 7, 3000))
            meant = [a for a in self.random_annotations(generator, pieces, samples)
                     if may_be_empty or a[1] == 0 or a[2] != b""]
            self.write("a.wav", annotated(*meant, rate=rate, samples=samples))
            self.write("b.wav", riff(audio(rate=rate, samples=samples)))
            self.assert_done(self.annotations("export", "a.wav", "--format", form, "--output", "labels"))
            self.assert_told(self.annotations("import", "b.wav", "labels", "--format", form))
            result = annotations_of(self.read("b.wav"))
            if keeps_order:
                self.assertEqual(result, meant, (form, trial))
            else:
                self.assertEqual(sorted(result), sorted(meant), (form, trial))
                self.assertEqual([a[0] for a in result], sorted(a[0] for a in meant), (form, trial))
            self.assert_done(self.annotations("export", "b.wav", "--format", form, "--output", "again"))
            if keeps_order:
                self.assertEqual(self.read("again"), self.read("labels"), (form, trial))

    def test_audacity(self):
        self.check("audacity", PLAIN + NOT_TEXT + ["\x01", "\x1b"])

    def test_csv(self):
        self.check("csv", PLAIN + CONTROL + NOT_TEXT)

    def test_json(self):
        self.check("json", PLAIN + CONTROL + NOT_TEXT)

    def test_textgrid(self):
        self.check("textgrid", PLAIN + CONTROL, may_be_empty=False, keeps_order=False)

    def test_samples_far_out(self):
        """Times lead back to the samples up to the end of 32 bits, however start and length are rounded."""
        generator = random.Random(32)
        for rate in RATES:
            meant = [(generator.randrange(1 << 32), generator.randint(1, 100), b"l%d" % i) for i in range(100)]
            self.write("a.wav", annotated(*meant, rate=rate, samples=1))
            lines = self.annotations("export", "a.wav", "--format", "audacity").stdout.decode().splitlines()
            for (start, length, _), line in zip(meant, lines, strict=True):
                begin, end = map(float, line.split("\t")[:2])
                self.assertEqual([int(seconds * rate + 0.5) for seconds in (begin, end, end - begin)],
                                 [start, start + length, length], (rate, line))

    def test_label_files_with_any_byte_wrong(self):
        """A mistake is told, or it makes other annotations; either way nothing else happens."""
        generator = random.Random(7)
        file = riff(audio(samples=100))
        self.write("b.wav", file)
        for form in ("audacity", "csv", "json", "textgrid"):
            self.write("a.wav", annotated((0, 10, b"one"), (5, 0, b'"two"'), (50, 50, b"SF_440"), samples=100))
            labels = self.annotations("export", "a.wav", "--format", form).stdout
            for _ in range(self.trials):
                broken = bytearray(labels)
                for _ in range(generator.randint(1, 3)):
                    place = generator.randrange(len(broken))
                    broken[place:place + generator.randint(0, 3)] = generator.choice(
                        (b"", b'"', b"\t", b"\n", b",", b"{", b"]", b"9", b"-", b"e", b"\xff", b"\0", b"\\u", b" "))
                self.write("labels", broken)
                result = self.annotations("import", "b.wav", "labels", "--format", form, "--dry-run")
                self.assertIn(result.returncode, (0, 1), broken)
                self.assertEqual(result.returncode == 0, result.stdout != b"", broken)
                self.assertTrue(result.returncode == 0 or result.stderr.startswith(b"murvane-audio: "), broken)
        self.assertEqual(self.read("b.wav"), file)


if __name__ == "__main__":
    unittest.main()
