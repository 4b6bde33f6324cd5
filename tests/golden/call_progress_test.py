#!/usr/bin/env python3
"""The detectors of examples/call-progress find every phase of the sample call, tell signals apart by their cadence, and
take neither voices nor noise for a signal."""

import array
import itertools
import math
import os
import pathlib
import random
import re
import struct
import subprocess
import tempfile
import unittest
import wave

PROGRAM = os.environ["MURVANE_CALL_PROGRESS"]
COMMAND = os.environ["MURVANE_AUDIO"]
CALL = pathlib.Path(os.environ["MURVANE_SAMPLE_CALL_FOLDER"], "sample-call.wav")
PHASES = CALL.with_suffix(".csv")
README = pathlib.Path(os.environ["MURVANE_SOURCE"], "examples", "call-progress", "README.md")
RATE = 8000
WINDOW = 0.064
STEP = 0.016


def phases_of(text):
    """(phase, start, stop) for each row of a list."""
    rows = (line.split(",") for line in text.splitlines()[1:])
    return [(name, float(start), float(stop)) for name, start, stop in rows]


def tone(seconds, *frequencies, amplitude=0.1):
    return [sum(amplitude * math.sin(2 * math.pi * hz * i / RATE) for hz in frequencies)
            for i in range(round(seconds * RATE))]


def silence(seconds):
    return [0.0] * round(seconds * RATE)


def bursts(count, on, off, *frequencies):
    return (tone(on, *frequencies) + silence(off)) * count


def noise(seconds, amplitude, seed, smoothing=0.0):
    """White noise, or with smoothing up to 1, lower and lower."""
    draw, value, samples = random.Random(seed), 0.0, []
    for _ in range(round(seconds * RATE)):
        value += (1.0 - smoothing) * (draw.uniform(-amplitude, amplitude) - value)
        samples.append(value)
    return samples


def at_level(samples, dbfs):
    """The samples at this level, without an offset."""
    mean = sum(samples) / len(samples)
    factor = 10 ** (dbfs / 20) / math.sqrt(sum((sample - mean) ** 2 for sample in samples) / len(samples))
    return [factor * (sample - mean) for sample in samples]


def white(seconds, dbfs, seed):
    return at_level(noise(seconds, 1.0, seed), dbfs)


def brown(seconds, dbfs, seed):
    """Falls by 6 dB an octave from 6 Hz on."""
    return at_level(noise(seconds, 1.0, seed, smoothing=0.995), dbfs)


def pink(seconds, dbfs, seed):
    """Falls by about 3 dB an octave: low-pass noises an octave apart, each of the same power."""
    layers = (white(seconds, 0, seed), *(at_level(noise(seconds, 1.0, seed + octave, 1.0 - 0.5 ** octave), 0)
                                         for octave in range(1, 9)))
    return at_level(mixed(*layers), dbfs)


def mixed(*sounds):
    return [sum(samples) for samples in zip(*sounds, strict=True)]


def offset(samples, value):
    return [sample + value for sample in samples]


def buzz(seconds, hertz):
    """A steady sound with harmonics."""
    return [0.1 * ((hertz * i / RATE) % 1.0 - 0.5) for i in range(round(seconds * RATE))]


def voices(paces=tuple(0.6 + 0.1 * step for step in range(15))):
    """The phrases of the sample call, spoken by many: at other paces their pitches and formants are others, too."""
    with wave.open(str(CALL)) as file:
        call = array.array("h", file.readframes(file.getnframes()))
    samples = []
    for pace in paces:
        for name, start, stop in phases_of(PHASES.read_text(encoding="utf-8")):
            if name == "speech":
                phrase = call[round(start * RATE):round(stop * RATE)]
                for i in range(int((len(phrase) - 1) / pace)):
                    k, rest = divmod(i * pace, 1.0)
                    samples.append((phrase[int(k)] * (1 - rest) + phrase[int(k) + 1] * rest) / 32768)
                samples += silence(0.4)
    return samples


class CallProgress(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="call-progress-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_program(self, *arguments):
        return subprocess.run([PROGRAM, *map(str, arguments)], capture_output=True, text=True, timeout=300)

    def write(self, samples, rate=RATE):
        path = self.folder / "made.wav"
        with wave.open(str(path), "wb") as file:
            file.setparams((1, 2, rate, 0, "NONE", ""))
            file.writeframes(array.array("h", (round(32767 * sample) for sample in samples)).tobytes())
        return path

    def found(self, samples):
        result = self.run_program(self.write(samples))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        rows = [line.split(None, 2) for line in result.stdout.splitlines()[1:]]
        phases = [(name, float(start), float(stop)) for start, stop, name in rows]
        self.assertEqual(phases[0][1], 0.0)
        for before, after in itertools.pairwise(phases):
            self.assertEqual(before[2], after[1], "phases follow each other without a gap")
        return phases

    def names(self, samples):
        return [name for name, _, _ in self.found(samples)]

    def test_every_phase_of_the_sample_call_is_found_within_a_window(self):
        result = self.run_program(CALL, "--phases", PHASES)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        lines = result.stdout.splitlines()
        truth = phases_of(PHASES.read_text(encoding="utf-8"))
        self.assertEqual(len(lines), len(truth) + 2, "nothing else is found")
        for (name, start, stop), line in zip(truth, lines[1:]):
            true_start, found_start, off, true_stop, found_stop, found_name = line.split(None, 5)
            self.assertEqual((found_name, float(true_start), float(true_stop)), (name, start, stop))
            self.assertAlmostEqual(float(found_start) - start, float(off), delta=0.0011)
            # What tones begin is known to a step; a voice begins and ends in silence.
            self.assertLessEqual(abs(float(off)), WINDOW if "speech" in (name, previous(truth, start)) else STEP)
            self.assertLessEqual(abs(float(found_stop) - stop), WINDOW)
        self.assertRegex(lines[-1], r"^45 of 45 phases found, 0 others; starts at most 0\.0\d\d s off$")

    def test_what_is_not_found_is_told(self):
        phases = self.folder / "phases.csv"
        phases.write_text("phase,start,stop\nsilence,0,0.5\nbusy,0.5,4\n", encoding="utf-8")
        lines = self.run_program(CALL, "--phases", phases).stdout.splitlines()
        self.assertEqual(lines[2].split(), ["0.500", "-", "-", "4.000", "-", "busy"])
        self.assertTrue(lines[-1].startswith("1 of 2 phases found, 44 others;"), lines[-1])

    def test_voices_raise_no_signal(self):
        samples = voices()
        phases = self.found(samples)
        self.assertEqual({name for name, _, _ in phases} - {"speech", "silence", "noise"}, set())
        spoken = sum(stop - start for name, start, stop in phases if name == "speech")
        self.assertGreater(spoken, 0.7 * len(samples) / RATE)

    def test_noise_raises_no_signal(self):
        for amplitude, smoothing in itertools.product((0.01, 0.1, 0.9), (0.0, 0.5)):
            with self.subTest(amplitude=amplitude, smoothing=smoothing):
                self.assertEqual(set(self.names(noise(30, amplitude, 1, smoothing))), {"noise"})

    def test_noise_of_any_colour_raises_no_signal(self):
        for colour, dbfs, value in itertools.product((white, pink, brown), (-30, -22, -14), (0.0, 0.02)):
            with self.subTest(colour=colour.__name__, dbfs=dbfs, offset=value):
                self.assertEqual(set(self.names(offset(colour(10, dbfs, 4), value))), {"noise"})
        for colour in (white, pink, brown):
            with self.subTest(colour=colour.__name__, dbfs=-45):
                self.assertLessEqual(set(self.names(colour(10, -45, 5))), {"noise", "silence"})

    def test_noise_that_comes_and_goes_like_syllables_is_no_voice(self):
        for colour, rate in itertools.product((white, pink, brown), (2, 4, 8)):
            samples = [sample * (0.52 - 0.48 * math.cos(2 * math.pi * rate * i / RATE))
                       for i, sample in enumerate(colour(10, -15, 6))]
            with self.subTest(colour=colour.__name__, rate=rate):
                self.assertLessEqual(set(self.names(samples)), {"noise", "silence"})

    def test_a_steady_sound_is_no_voice(self):
        self.assertEqual(self.names(buzz(3, 120)), ["noise"])
        self.assertEqual(self.names(tone(3, 1000)), ["noise"])

    def test_silence_is_one_phase(self):
        self.assertEqual(self.found(silence(2)), [("silence", 0.0, 2.0)])

    def test_an_idle_line_is_silent(self):
        for value in (0.008, -0.03):
            self.assertEqual(self.names(offset(silence(3), value)), ["silence"])
            self.assertEqual(self.names(offset(white(3, -70, 7), value)), ["silence"])
        for colour in (white, pink, brown):
            with self.subTest(colour=colour.__name__):
                self.assertEqual(self.names(offset(colour(5, -60, 8), 0.01)), ["silence"])
        self.assertEqual(self.names(mixed(tone(3, 60, amplitude=0.02), pink(3, -60, 9))), ["silence"])

    def test_the_noise_of_a_line_is_silence_beside_what_is_louder(self):
        line = offset(mixed(brown(8, -34, 10), pink(8, -48, 11)), 0.014)
        busy = [3 * sample for sample in silence(0.25) + bursts(8, 0.5, 0.5, 480, 620)][:len(line)]
        self.assertEqual(self.names(mixed(busy, line)), ["silence"] + ["busy", "silence"] * 8)
        ringback = [3 * sample for sample in silence(1) + bursts(2, 2, 4, 440, 480)][:len(line)]
        self.assertEqual(self.names(mixed(ringback, line)), ["silence", "ringback", "silence", "ringback"])

    def test_voices_are_told_on_a_line_with_offset_and_noise(self):
        samples = voices(paces=(0.7, 1.0, 1.4))
        seconds = len(samples) / RATE
        for dbfs in (-60, -50, -42):
            phases = self.found(offset(mixed(samples, pink(seconds, dbfs, 12)), 0.01))
            with self.subTest(dbfs=dbfs):
                self.assertEqual({name for name, _, _ in phases}, {"speech", "silence"})
                self.assertGreater(sum(stop - start for name, start, stop in phases if name == "speech"), 0.7 * seconds)
                self.assertEqual(sum(name == "speech" for name, _, _ in phases), 9, "three phrases at each pace")

    def test_samples_that_are_no_numbers_are_silence(self):
        samples = [math.nan if 1.0 <= i / RATE < 2.0 else sample for i, sample in enumerate(tone(3, 350, 440))]
        data = array.array("f", samples).tobytes()
        path = self.folder / "float.wav"
        path.write_bytes(b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " +
                         struct.pack("<IHHIIHH", 16, 3, 1, RATE, 4 * RATE, 4, 32) +
                         b"data" + struct.pack("<I", len(data)) + data)
        result = self.run_program(path)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual([line.split(None, 2)[2] for line in result.stdout.splitlines()[1:]],
                         ["dial tone", "silence", "dial tone"])

    def test_cadence_tells_signals_of_the_same_tones_apart(self):
        self.assertEqual(self.names(bursts(3, 0.5, 0.5, 480, 620)), ["busy", "silence"] * 3)
        self.assertEqual(self.names(bursts(3, 0.25, 0.25, 480, 620)), ["reorder", "silence"] * 3)
        self.assertEqual(self.names(silence(0.5) + bursts(3, 1.0, 0.5, 480, 620)),
                         ["silence"] + ["unknown tone", "silence"] * 3)
        self.assertEqual(self.names(silence(0.5) + bursts(1, 0.5, 1.0, 480, 620)), ["silence", "unknown tone", "silence"])

    def test_a_recording_may_begin_and_end_inside_a_cadence(self):
        cut = tone(0.3, 480, 620) + silence(0.5) + bursts(2, 0.5, 0.5, 480, 620) + tone(0.3, 480, 620)
        self.assertEqual(self.names(cut), ["busy", "silence"] * 3 + ["busy"])

    def test_ringback_is_two_seconds_in_six(self):
        self.assertEqual(self.names(silence(1) + bursts(2, 2, 4, 440, 480)), ["silence"] + ["ringback", "silence"] * 2)
        self.assertEqual(self.names(silence(1) + bursts(1, 1, 4, 440, 480)), ["silence", "unknown tone", "silence"])

    def test_a_call_waits_for_a_third_of_a_second(self):
        self.assertEqual(self.names(silence(1) + bursts(2, 0.3, 2, 440)),
                         ["silence"] + ["call waiting tone", "silence"] * 2)
        self.assertEqual(self.names(silence(1) + bursts(1, 0.5, 2, 440)), ["silence", "unknown tone", "silence"])

    def test_special_information_tones_are_three_in_order(self):
        for low, middle in itertools.product((914, 985), (1371, 1429)):
            for seconds in (0.276, 0.380):
                parts = [tone(seconds, hz) for hz in (low, middle, 1777)]
                with self.subTest(low=low, middle=middle, seconds=seconds):
                    self.assertEqual(self.names(silence(0.5) + sum(parts, []) + silence(0.5)),
                                     ["silence", "special information tones", "silence"])
        backwards = tone(0.38, 1777) + tone(0.38, 1371) + tone(0.38, 914)
        self.assertNotIn("special information tones", self.names(backwards))

    def test_a_calling_fax_may_be_off_in_frequency(self):
        for hz in (1062, 1100, 1138):
            with self.subTest(hz=hz):
                self.assertEqual(self.names(silence(0.5) + bursts(2, 0.5, 3, hz)),
                                 ["silence"] + ["fax calling tone", "silence"] * 2)

    def test_all_sixteen_keys(self):
        rows, columns = (697, 770, 852, 941), (1209, 1336, 1477, 1633)
        for key, (row, column) in zip("123A456B789C*0#D", itertools.product(rows, columns)):
            for seconds in (0.05, 0.09):
                with self.subTest(key=key, seconds=seconds):
                    self.assertEqual(self.names(silence(0.3) + bursts(2, seconds, 0.08, row, column)),
                                     ["silence"] + [f"dtmf {key}", "silence"] * 2)

    def test_signals_are_found_in_noise(self):
        samples = silence(0.5) + tone(2, 350, 440) + silence(0.5)
        samples = [a + b for a, b in zip(samples, noise(3, 0.05, 2))]
        self.assertEqual(self.names(samples), ["noise", "dial tone", "noise"])
        samples = silence(0.5) + bursts(3, 0.5, 0.5, 480, 620)
        samples = [a + b for a, b in zip(samples, noise(4, 0.02, 3))]
        self.assertEqual(self.names(samples), ["noise"] + ["busy", "noise"] * 3)

    def test_the_copy_carries_the_phases(self):
        copy = self.folder / "copy.wav"
        before = CALL.read_bytes()
        self.assertEqual(self.run_program(CALL, "--annotated", copy).returncode, 0)
        self.assertEqual(CALL.read_bytes(), before)
        listed = subprocess.run([COMMAND, "annotations", "list", copy, "--format", "csv"], check=True,
                                capture_output=True, text=True).stdout
        names = [name for name, _, _ in phases_of(PHASES.read_text(encoding="utf-8")) if name != "silence"]
        self.assertEqual(re.findall(r"(?:" + "|".join(map(re.escape, sorted(set(names)))) + r")", listed), names)

    def test_bad_input_is_refused(self):
        for arguments in ([], ["--phases"], [CALL, "--other"], [CALL, CALL], [CALL, "--annotated"]):
            self.assertEqual(self.run_program(*arguments).returncode, 2, arguments)
        for arguments, message in (
                ([self.folder / "absent.wav"], "cannot be read as a mono recording"),
                ([self.write(silence(1), rate=16000)], "has 16000 samples per second"),
                ([CALL, "--phases", CALL], "is no list of phases"),
                ([CALL, "--annotated", CALL], "is the call itself")):
            result = self.run_program(*arguments)
            self.assertEqual(result.returncode, 1, arguments)
            self.assertIn(message, result.stderr)
        self.assertIn("is shorter than a window", self.run_program(self.write(silence(0.05))).stderr)

    def test_the_readme_shows_what_is_printed(self):
        printed = self.run_program(CALL, "--phases", PHASES).stdout
        shown = re.search(r"```\n( +start .*?)```", README.read_text(encoding="utf-8"), re.DOTALL).group(1)
        head, tail = shown.split("...\n")
        self.assertTrue(printed.startswith(head) and printed.endswith(tail), printed)


def previous(phases, start):
    return next((name for name, _, stop in phases if stop == start), "")


if __name__ == "__main__":
    unittest.main()
