#!/usr/bin/env python3
"""What 'murvane-audio annotations' tells of what a file holds beside annotations, and loses when it is edited."""

import struct
import unittest

from wav_chunks import AnnotationTest, adtl, audio, chunk, cue, labl, ltxt, note, point, riff


class Losses(AnnotationTest):
    def add(self, *arguments):
        return self.annotations("add", "a.wav", *arguments)

    def test_what_cannot_be_kept_is_told(self):
        self.write("a.wav", riff(audio(), cue(point(1, 10)), adtl(ltxt(1, 5), labl(1, b"x"), note(1, b"hello"),
                                                                 labl(9, b"lost"))))
        self.assert_told(self.add("--label", "y", "--start", "1", "--stop", "2"),
                         'a.wav: warning: 1 note ("note" chunks) cannot be kept',
                         'a.wav: warning: 1 label ("labl" chunks) without a cue point cannot be kept')
        self.assertEqual(self.annotations_in("a.wav"), [(10, 5, b"x"), (8000, 8000, b"y")])

    def assert_lost(self, file, *messages, options=()):
        """What is told when an annotation is added."""
        self.write("a.wav", file)
        self.assert_told(self.add("--label", "y", "--start", "1", "--stop", "2", *options),
                         *(f"a.wav: warning: {message} cannot be kept" for message in messages))

    def test_what_annotations_have_beside_start_stop_and_label_is_told(self):
        def language(place):
            return chunk(b"ltxt", struct.pack("<II4s", 1, 5, b"rgn ") + bytes(2 * place) + b"\1" + bytes(7 - 2 * place))
        def one(*texts):
            return riff(audio(), cue(point(1, 10)), adtl(*texts))
        label = labl(1, b"x")
        self.assert_lost(one(ltxt(1, 5, text=b"hi"), label), 'the text of 1 length ("ltxt" chunks)')
        self.assert_lost(one(ltxt(1, 5, text=b"\0\0"), label))
        self.assert_lost(one(ltxt(1, 5, b"beat"), label), 'the purpose of 1 length ("ltxt" chunks)')
        for purpose in (b"rgn ", b"    ", bytes(4)):
            self.assert_lost(one(ltxt(1, 5, purpose), label))
        for place in range(4):
            self.assert_lost(one(language(place), label), 'the language of 1 length ("ltxt" chunks)')
        self.assert_lost(one(ltxt(1, 4), ltxt(1, 5), label, labl(1, b"y"), labl(1, b"z")),
                         '1 length ("ltxt" chunks) of a cue point that has another',
                         '2 labels ("labl" chunks) of a cue point that has another')
        self.assertEqual(self.annotations_in("a.wav")[0], (10, 5, b"z"))
        self.assert_lost(one(ltxt(1, 5), labl(1, b"x", end=b"\0rest")),
                         'what follows the zero byte in 1 label ("labl" chunks)')
        for end in (b"", b"\0", b"\0\0\0"):
            self.assert_lost(one(ltxt(1, 5), labl(1, b"x", end=end)))
        self.assert_lost(riff(audio(), cue(point(1, 10), point(1, 20)), adtl(ltxt(1, 5), label)),
                         "1 cue point with the number of another")

    def test_kinds_of_losses_are_counted(self):
        texts = [labl(1, b"first"), *(ltxt(i, 5, b"beat", b"text") for i in (1, 2, 3)),
                 *(labl(i, b"x", end=b"\0y") for i in (1, 2, 3))]
        self.assert_lost(riff(audio(), cue(*(point(i, i) for i in (1, 2, 3))), adtl(*texts)),
                         'the text of 3 lengths ("ltxt" chunks)', 'the purpose of 3 lengths ("ltxt" chunks)',
                         '1 label ("labl" chunks) of a cue point that has another',
                         'what follows the zero byte in 3 labels ("labl" chunks)')

    def test_chunks_that_are_no_annotations_are_told(self):
        bare = cue(point(1, 10))[8:]
        self.assert_lost(riff(audio(), chunk(b"cue ", bare + b"more"), adtl(ltxt(1, 5), labl(1, b"x"))),
                         '4 bytes of "cue " chunks that belong to no cue point')
        self.assert_lost(riff(audio(), chunk(b"cue ", b"xyz")), '3 bytes of "cue " chunks that belong to no cue point')
        self.assert_lost(riff(audio(), cue(point(1, 10)), adtl(ltxt(1, 5), labl(1, b"x"), chunk(b"labl", b"12"),
                                                              ltxt(9, 5))),
                         '1 length ("ltxt" chunks) without a cue point', '1 chunk ("ltxt", "labl", "note") too short to be read')

    def test_lenient_edits_tell_the_same(self):
        self.assert_lost(riff(audio(), cue(point(1, 10), point(1, 20), point(2, 30)),
                              adtl(ltxt(1, 5, b"beat"), labl(1, b"x"), labl(1, b"y"))),
                         'the purpose of 1 length ("ltxt" chunks)',
                         '1 label ("labl" chunks) of a cue point that has another', options=["--lenient"])

    def test_what_is_cleared_is_not_told_of_in_detail(self):
        self.write("a.wav", riff(audio(), cue(point(1, 10)), adtl(ltxt(1, 5, b"beat", b"text"), labl(1, b"x"), note(1, b"n"))))
        self.assert_told(self.annotations("clear", "a.wav"), 'a.wav: warning: 1 note ("note" chunks) cannot be kept')


if __name__ == "__main__":
    unittest.main()
