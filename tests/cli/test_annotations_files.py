#!/usr/bin/env python3
"""Files that 'murvane-audio annotations' cannot edit, or only with care: a clear message, and nothing is lost."""

import os
import random
import resource
import signal
import stat
import struct
import subprocess
import unittest

from command import PROGRAM, fmt_chunk, give_up_superuser_rights
from wav_chunks import (AnnotationTest, adtl, annotated, audio, chunk, labl, ltxt, point, riff, stored)

A = (4000, 4000, b"SF_440")
COMPRESSED = "format {} is none whose samples can be counted in bytes (PCM, float, A-law, mu-law)"
ADD = ("--label", "x", "--start", "0", "--stop", "0.0001")


def no_room():
    """As on a disk that is full: no file takes more than 8 KiB."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (8192, 8192))


class Refused(AnnotationTest):
    def assert_refused(self, name, message, **options):
        """All actions refuse the file with this message, and it stays as it was."""
        self.write_annotated("good.wav", A)
        before = self.read(name) if os.path.isfile(self.path(name)) else None
        files = self.files()
        for arguments in (("list", name), ("add", name, *ADD), ("clear", name), ("copy", "good.wav", name),
                          ("append", name, "good.wav"), ("export", name, "--format", "json")):
            result = self.annotations(*arguments, **options)
            self.assert_failed(result, f"{name}: {message}" if name else f"'': {message}")
            self.assertEqual(result.stdout, b"")
        if before is not None:
            self.assertEqual(self.read(name), before)
        self.assertEqual(self.files(), files)

    def test_what_is_not_there_or_no_file(self):
        os.mkdir(self.path("folder.wav"))
        self.write("empty.wav", b"")
        self.assert_refused("missing.wav", "No such file or directory")
        self.assert_refused("", "No such file or directory")
        self.assert_refused("folder.wav", "is a directory")
        self.assert_refused("empty.wav", "is empty")

    def test_what_may_not_be_read(self):
        self.write_annotated("secret.wav", A)
        os.chmod(self.path("secret.wav"), 0)
        self.assert_failed(self.annotations("list", "secret.wav", preexec_fn=give_up_superuser_rights),
                           "secret.wav: Permission denied")

    def test_what_is_no_wav_file(self):
        header = "offset 0: reading the RIFF header: "
        self.write("text.wav", b"This is no recording.")
        self.assert_refused("text.wav", header + '"This" instead of "RIFF"')
        self.write("film.wav", b"RIFF\4\0\0\0AVI ")
        self.assert_refused("film.wav", 'offset 8: reading the form type: "AVI " instead of "WAVE"')
        self.write("long.wav", b"RF64\xff\xff\xff\xffWAVE")
        self.assert_refused("long.wav", header + '"RF64": files with 64-bit sizes are not supported')

    def test_audio_that_cannot_be_annotated(self):
        for name, file, message in (
                ("a.wav", riff(audio(channels=2)), "only mono files can be annotated, this has 2 channels"),
                ("b.wav", riff(fmt_chunk(channels=0), chunk(b"data", b"")),
                 "only mono files can be annotated, this has 0 channels"),
                ("c.wav", riff(fmt_chunk(bits=0), chunk(b"data", b"1234")), "samples of 0 bits are not whole bytes"),
                ("d.wav", riff(fmt_chunk(bits=4), chunk(b"data", b"1234")), "samples of 4 bits are not whole bytes"),
                ("e.wav", riff(fmt_chunk(rate=0), chunk(b"data", b"1234")), "its sample rate is 0"),
                ("f.wav", riff(chunk(b"data", b"1234")), "Invalid WAV file : no chunk fmt"),
                ("g.wav", riff(fmt_chunk()), "Invalid WAV file : no chunk data"),
                ("h.wav", riff(chunk(b"fmt ", b"12"), chunk(b"data", b"")),
                 "only mono files can be annotated, this has 0 channels"),
                ("i.wav", riff(stored(1, 12, 2), chunk(b"data", bytes(16000))),
                 "samples of 12 bits are not whole bytes"),
                ("j.wav", riff(stored(1, 16, 4), chunk(b"data", bytes(16000))),
                 "a sample of all channels takes 2 bytes, the format says 4"),
                ("k.wav", riff(stored(49, 0, 65), chunk(b"data", bytes(16250))), COMPRESSED.format(49)),
                ("l.wav", riff(stored(2, 8, 256), chunk(b"data", bytes(16384))), COMPRESSED.format(2))):
            self.write(name, file)
            self.assert_refused(name, message)
            if name >= "i.wav":
                self.assert_failed(self.annotations("add", "--lenient", name, *ADD), f"{name}: {message}")

    def test_samples_of_bits_that_are_no_bytes_are_counted_for_looking(self):
        self.write("a.wav", riff(stored(1, 12, 2), chunk(b"data", bytes(16000))))
        self.assert_told(self.annotations("list", "--lenient", "a.wav"),
                         output="a.wav: 8000 Hz, 1.000000 s, no annotations\n")

    def test_lists_nested_too_deep(self):
        inner = chunk(b"note", b"")
        for _ in range(100):
            inner = chunk(b"LIST", b"adtl" + inner)
        self.write("deep.wav", riff(audio(), inner))
        result = self.annotations("list", "deep.wav")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"lists are nested more than 64 deep", result.stderr)

    def test_a_million_chunks(self):
        self.write("many.wav", riff(audio(), chunk(b"odd ", b"") * 1000000))
        self.assert_told(self.annotations("add", "many.wav", *ADD))
        self.assertEqual(self.annotations_in("many.wav"), [(0, 1, b"x")])
        self.write("more.wav", riff(audio(), chunk(b"odd ", b"") * (1 << 22)))
        result = self.annotations("list", "more.wav")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"more than 4194304 chunks", result.stderr)

    def test_as_many_annotations_as_can_be_read_again(self):
        count = (1 << 20) - 1
        points = b"".join(point(i, i) for i in range(1, count + 1))
        texts = b"".join(ltxt(i, 1) + labl(i, b"l") for i in range(1, count + 1))
        self.write("a.wav", riff(audio(samples=count + 1), chunk(b"cue ", struct.pack("<I", count) + points), adtl(texts)))
        before = self.read("a.wav")
        self.assert_failed(self.annotations("add", "a.wav", *ADD),
                           "a.wav: would have 1048576 annotations; less than 1048576 can be read again")
        self.assertEqual(self.read("a.wav"), before)
        self.assert_told(self.annotations("clear", "a.wav", "--label", "x"))
        self.assertEqual(self.annotations("list", "a.wav", "--format", "csv").stdout.count(b"\n"), count + 1)

    def test_files_cut_off_anywhere(self):
        whole = annotated((10, 5, b"one"), (20, 5, b"two"))
        chunks = len(whole) - 200
        for size in [*range(1, 60), *range(chunks, len(whole), 3)]:
            self.write("a.wav", whole[:size])
            for arguments in (("list", "a.wav"), ("list", "--lenient", "a.wav"), ("validate", "a.wav")):
                result = self.annotations(*arguments)
                self.assertIn(result.returncode, (0, 1), size)
                self.assertTrue(result.returncode == 0 or result.stdout or result.stderr, size)
            self.assertEqual(result.returncode, 1, size)

    def test_any_byte_may_be_wrong(self):
        generator = random.Random(20240607)
        whole = annotated((10, 5, b"one"), (20, 5, b"two"), rate=8000)
        places = [*range(44), *range(len(whole) - 200, len(whole))]
        for _ in range(100):
            broken = bytearray(whole)
            for place in generator.choices(places, k=generator.randint(1, 3)):
                broken[place] = generator.choice((0, 1, 0x7F, 0xFF, generator.randrange(256)))
            self.write("a.wav", broken)
            result = self.annotations("add", "a.wav", *ADD, "--lenient")
            self.assertIn(result.returncode, (0, 1), broken)
            if result.returncode == 1:
                self.assertEqual(self.read("a.wav"), bytes(broken))
                self.assertTrue(result.stderr.startswith(b"murvane-audio: a.wav: "))
            else:
                rows = self.annotations("list", "a.wav", "--format", "csv").stdout.splitlines()
                self.assertRegex(rows[-1], rb"^a\.wav,0,[^,]+,0,[0-9]+,x,other,,,$")  # the rate may be another one


class OnDisk(AnnotationTest):
    def test_a_read_only_file_is_not_written(self):
        self.write_annotated("a.wav", A)
        before = self.read("a.wav")
        os.chmod(self.path("a.wav"), 0o444)
        for options in ([], ["--backup"], ["--dry-run"]):
            self.assert_failed(self.annotations("add", "a.wav", *ADD, *options, preexec_fn=give_up_superuser_rights),
                               "a.wav: cannot be written: Permission denied")
        self.assertEqual((self.read("a.wav"), self.files()), (before, ["a.wav"]))
        self.assert_told(self.annotations("list", "a.wav", preexec_fn=give_up_superuser_rights))

    def test_in_a_read_only_folder_the_file_is_written_in_place(self):
        self.write_annotated("a.wav", A)
        os.chmod(self.folder, 0o555)
        self.addCleanup(os.chmod, self.folder, 0o755)
        before = self.read("a.wav")
        self.assert_failed(self.annotations("add", "a.wav", *ADD, "--backup", preexec_fn=give_up_superuser_rights),
                           "a.wav: cannot be kept as a.wav.bak: Permission denied")
        self.assertEqual(self.read("a.wav"), before)
        self.assert_told(self.annotations("add", "a.wav", *ADD, preexec_fn=give_up_superuser_rights))
        self.assertEqual(self.annotations_in("a.wav"), [A, (0, 1, b"x")])

    def test_a_full_disk_leaves_the_file_as_it_was(self):
        self.write_annotated("a.wav", A)
        before = self.read("a.wav")
        self.assert_failed(self.annotations("add", "a.wav", *ADD, preexec_fn=no_room),
                           "a.wav: cannot be written: File too large")
        self.assert_failed(self.annotations("add", "a.wav", *ADD, "--backup", preexec_fn=no_room),
                           "a.wav: cannot be kept as a.wav.bak: File too large")
        self.assertEqual((self.read("a.wav"), self.files()), (before, ["a.wav"]))

    def test_a_link_is_followed(self):
        os.mkdir(self.path("deep"))
        self.write_annotated("deep/a.wav", A)
        os.symlink("deep/a.wav", self.path("link.wav"))
        self.assert_told(self.annotations("add", "link.wav", *ADD, "--backup"))
        self.assertTrue(os.path.islink(self.path("link.wav")))
        self.assertEqual(self.annotations_in("deep/a.wav"), [A, (0, 1, b"x")])
        self.assertEqual(self.annotations_in("link.wav.bak"), [A])
        os.symlink("nowhere.wav", self.path("broken.wav"))
        self.assert_failed(self.annotations("add", "broken.wav", *ADD), "broken.wav: No such file or directory")
        self.assertFalse(os.path.exists(self.path("nowhere.wav")))

    def test_mode_and_owner_stay(self):
        self.write_annotated("a.wav", A)
        os.chmod(self.path("a.wav"), 0o604)
        self.assert_told(self.annotations("add", "a.wav", *ADD))
        status = os.stat(self.path("a.wav"))
        self.assertEqual((stat.S_IMODE(status.st_mode), status.st_uid), (0o604, os.getuid()))

    def test_pipes_and_devices_are_looked_at_but_not_edited(self):
        result = subprocess.run([PROGRAM, "annotations", "list", "/dev/stdin"], input=annotated(A), capture_output=True,
                                timeout=300, check=False)
        self.assertEqual((result.returncode, result.stdout.count(b"SF_440"), result.stderr), (0, 1, b""))
        result = subprocess.run([PROGRAM, "annotations", "add", "/dev/stdin", *ADD], input=annotated(A),
                                capture_output=True, timeout=300, check=False)
        self.assertEqual((result.returncode, result.stderr), (1, b"murvane-audio: /dev/stdin: is no regular file, so it "
                                                                 b"cannot be edited\n"))
        self.assertEqual(self.annotations("list", "/dev/zero").returncode, 1)

    def test_odd_names(self):
        for name in ("-", "with space.wav", "café.wav", b"caf\xe9.wav", "new\nline.wav"):
            self.write_annotated(name, A)
            self.assert_told(self.annotations("add", *ADD, "--", name))
            self.assertEqual(self.annotations_in(name), [A, (0, 1, b"x")])

    def test_output_that_nobody_takes_is_told(self):
        self.write_annotated("a.wav", A)
        with open("/dev/full", "wb") as full:
            for action in ("list", "validate"):
                self.assert_failed(self.annotations(action, "a.wav", stdout=full),
                                   "cannot write standard output: No space left on device")
            self.assert_failed(self.annotations("export", "a.wav", "--format", "csv", stdout=full),
                               "a.wav: cannot write standard output: No space left on device")


if __name__ == "__main__":
    unittest.main()
