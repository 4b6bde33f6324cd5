"""Runs murvane-audio evaluate, and takes its outputs apart."""

import array
import math
import os
import wave

from command import CommandTest, read_csv
from wav_chunks import annotations_of

BLOCK = 128  # samples: 16 ms at 8000 Hz


def samples_of(data):
    return list(array.array("h", data))


def bytes_of(samples):
    return array.array("h", samples).tobytes()


def stored(value):
    """A value as it stands in the output."""
    return 0 if math.isnan(value) else int(max(-1.0, min(1.0, value)) * 32767.0)


def labels_of(file):
    """The annotations of a WAV file: (label, first sample, number of samples), in the order of their cue points."""
    return [(label.decode(), start, length) for start, length, label in annotations_of(file)]


class EvaluateTest(CommandTest):
    def evaluate(self, *arguments, **options):
        return self.run_here("evaluate", *arguments, **options)

    def channels_of(self, name):
        """The parameters of a WAV file, and the samples of each of its channels."""
        with wave.open(os.fsdecode(self.path(name))) as file:
            samples = samples_of(file.readframes(file.getnframes()))
            return file.getparams(), [samples[i::file.getnchannels()] for i in range(file.getnchannels())]

    def curves(self, *arguments, name="a"):
        """What becomes of NAME.wav: the channels beside the audio, which is checked."""
        self.assert_done(self.evaluate(f"{name}.wav", *arguments))
        params, (audio, *curves) = self.channels_of(f"{name}.prob.wav")
        self.assertEqual((params.sampwidth, params.comptype), (2, "NONE"))
        with wave.open(os.fsdecode(self.path(f"{name}.wav"))) as file:
            self.assertEqual(params.framerate, file.getframerate())
            self.assertEqual(audio, samples_of(file.readframes(file.getnframes())))
        return curves

    def column(self, name, formula, *options):
        """The values that 'features' gives for each window of a file."""
        result = self.features(name, f"--expr=v={formula}", *options)
        self.assertEqual(result.returncode, 0)
        return [float(row[2]) for row in read_csv(result.stdout)[1]]
