#!/usr/bin/env python3
"""murvane-audio evaluate over many files: threads, lists, failures, parts, and what an earlier run left."""

import os
import unittest

from command import tone, wav_bytes
from evaluation import EvaluateTest

CHANNELS = ("--channel", "zcr=zeroCrossingRate(x)", "--channel", "flat=flatness(spectrum(x))")


class ManyFiles(EvaluateTest):
    def setUp(self):
        super().setUp()
        self.names = [f"call {i}.wav" for i in range(12)]
        for i, name in enumerate(self.names):
            self.write(name, wav_bytes(tone(3000 + 517 * i, frequency=300.0 + 40 * i)))
            os.utime(self.path(name), (1e9, 1e9))

    def outputs(self):
        """The bytes of all outputs, which are removed."""
        made = {}
        for name in self.files():
            if name.endswith((".prob.wav", ".annotated.wav")):
                made[name] = self.read(name)
                os.remove(self.path(name))
        return made

    def test_any_number_of_threads_gives_the_same_files_and_messages(self):
        self.write("call 5.wav", b"no audio")
        runs = []
        for jobs in ("1", "2", "7"):
            result = self.evaluate(*self.names, *CHANNELS, "--annotate", "0", "--jobs", jobs)
            self.assertEqual(result.returncode, 1)
            runs.append((result.stderr, self.outputs()))
        self.assertEqual(len(runs[0][1]), 22)
        self.assertIn(b"call 5.wav: ", runs[0][0])
        self.assertEqual(runs[0], runs[1])
        self.assertEqual(runs[0], runs[2])

    def test_each_file_has_its_own_reason_whatever_the_others_do(self):
        names = []
        for i in range(60):
            names += [self.write(f"text {i}.wav", b"no audio, but some text"), self.names[i % 12],
                      self.write(f"short {i}.wav", b"RIFF\x1c\0\0\0WAVEfmt \x02\0\0\0\1\0"),
                      self.write(f"rate {i}.wav", wav_bytes(tone(100), rate=0))]
        lists = []
        for jobs in ("1", "4"):
            self.evaluate(*names, *CHANNELS, "--jobs", jobs, "--failures", "failed.txt", "--resume")
            lists.append([line.split(b"\t") for line in self.read("failed.txt").splitlines() if b"call" not in line])
        self.assertEqual(lists[0], lists[1])
        self.assertEqual(len(lists[0]), 180)
        self.assertEqual(len({(name.split()[0], why) for name, why in lists[0]}), 3)

    def test_the_parts_of_a_list_make_up_the_whole(self):
        self.assert_done(self.evaluate(*self.names, *CHANNELS))
        whole = self.outputs()
        parts = {}
        for part in ("1/3", "2/3", "3/3"):
            self.assert_done(self.evaluate(*self.names, *CHANNELS, "--shard", part))
            made = self.outputs()
            self.assertEqual(len(made), 4)
            self.assertFalse(parts.keys() & made.keys())
            parts.update(made)
        self.assertEqual(parts, whole)

    def test_names_come_from_standard_input_and_from_an_audio_set(self):
        self.write("set.txt", b"# two\ncall 2.wav\r\ncall 3.wav\n")
        result = self.evaluate("-", "--audioset", "set.txt", *CHANNELS, input=b"call 0.wav\ncall 1.wav\n")
        self.assert_done(result)
        self.assertEqual(sorted(self.outputs()), [f"call {i}.prob.wav" for i in range(4)])

    def test_links_in_a_list_that_lead_to_one_recording_have_one_output(self):
        os.symlink(self.names[0], self.path("link.wav"))
        self.write("list.txt", os.fsencode(self.names[0]) + b"\nlink.wav\n")
        result = self.evaluate("--audioset", "list.txt", *CHANNELS)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b", which stands before it", result.stderr)

    def test_failures_are_listed(self):
        self.write("call 1.wav", b"no audio")
        result = self.evaluate(*self.names[:3], "gone.wav", *CHANNELS, "--failures", "failed.txt")
        self.assertEqual(result.returncode, 1)
        lines = self.read("failed.txt").decode().splitlines()
        self.assertEqual([line.split("\t")[0] for line in lines], ["call 1.wav", "gone.wav"])
        self.assertEqual(lines[1].split("\t")[1], "No such file or directory")
        self.assertEqual(len(self.outputs()), 2)

    def test_a_recording_that_is_named_twice_is_done_once_whatever_the_parts_and_threads(self):
        names = [*self.names[:4], self.names[2], *self.names[4:6], "./call 0.wav", self.names[2]]
        refused = [(name, f"its output ./{first[:-4]}.prob.wav is that of {first}, which stands before it")
                   for name, first in ((self.names[2], self.names[2]), ("./call 0.wav", self.names[0]),
                                       (self.names[2], self.names[2]))]
        lines = "".join(f"{name}\t{why}\n" for name, why in refused)
        self.assert_done(self.evaluate(*self.names[:6], *CHANNELS))
        expected = self.outputs()
        for jobs in ("1", "3"):
            result = self.evaluate(*names, *CHANNELS, "--jobs", jobs, "--failures", "failed.txt")
            self.assert_failed(result, *(f"{name}: {why}" for name, why in refused))
            self.assertEqual((self.outputs(), self.read("failed.txt").decode()), (expected, lines))
        told = ""
        for part in ("1/4", "2/4", "3/4", "4/4"):
            self.evaluate(*names, *CHANNELS, "--shard", part, "--failures", "failed.txt")
            told += self.read("failed.txt").decode()
        self.assertEqual((self.outputs(), told), (expected, lines))

    def test_outputs_that_are_there_are_not_made_again(self):
        self.assert_done(self.evaluate(*self.names, *CHANNELS))
        old = self.versions()
        first = self.outputs_kept()
        later = os.stat(self.path("call 4.prob.wav")).st_mtime + 0.02
        os.utime(self.path("call 4.wav"), (later, later))  # modified since
        os.remove(self.path("call 6.prob.wav"))
        self.write("call 7.prob.wav", first["call 7.prob.wav"][:-100])  # cut off by somebody
        self.assert_done(self.evaluate(*self.names, *CHANNELS, "--resume"))
        self.assertEqual(self.outputs_kept(), first)
        now = self.versions()
        self.assertEqual(sorted(name for name in now if now[name] != old[name]),
                         ["call 4.prob.wav", "call 6.prob.wav", "call 7.prob.wav"])

    def test_outputs_with_other_channels_or_without_annotations_are_made_again(self):
        self.assert_done(self.evaluate(*self.names[:1], *CHANNELS))
        two = self.read("call 0.prob.wav")
        self.assert_done(self.evaluate(*self.names[:1], *CHANNELS[:2], "--resume"))
        self.assertNotEqual(self.read("call 0.prob.wav"), two)
        self.assert_done(self.evaluate(*self.names[:1], *CHANNELS[:2], "--resume", "--annotate", "0"))
        self.assertIn("call 0.annotated.wav", self.files())

    def versions(self):
        """Which file stands under each output's name; a new one may well be where an old one was."""
        states = {name: os.stat(self.path(name)) for name in self.files() if name.endswith(".prob.wav")}
        return {name: (state.st_ino, state.st_mtime_ns) for name, state in states.items()}

    def outputs_kept(self):
        return {name: self.read(name) for name in self.files() if name.endswith(".prob.wav")}


if __name__ == "__main__":
    unittest.main()
