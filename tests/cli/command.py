"""Runs the command, and makes the audio files that it is run on."""

import array
import csv
import ctypes
import io
import math
import os
import shutil
import struct
import subprocess
import tempfile
import time
import unittest

PROGRAM = os.environ["MURVANE_AUDIO"]
PREFIX = "murvane-audio: "


def run(*arguments, cwd=None, **options):
    """Runs the command to its end; outputs are bytes."""
    if "input" not in options:
        options["stdin"] = subprocess.DEVNULL
    return subprocess.run([PROGRAM, *arguments], cwd=cwd, timeout=300,
                          stdout=options.pop("stdout", subprocess.PIPE),
                          stderr=options.pop("stderr", subprocess.PIPE), **options)


def measured_environment():
    """For runs whose memory is measured: a sanitizer's own hoard of freed memory is not the command's."""
    options = os.environ.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1:thread_local_quarantine_size_kb=16"
    return os.environ | {"ASAN_OPTIONS": options}


def read_csv(data):
    """The head of a table and its rows."""
    header, *rows = csv.reader(io.StringIO(data.decode(), newline=""), strict=True)
    return header, rows


def digest_of(data):
    """What a manifest says of rows, in place of their bytes."""
    size = len(data) // 7 * 7
    words = [data[i:i + 7] for i in range(0, size, 7)] + [data[size:], len(data).to_bytes(8, "big")]
    value = 0
    for word in words:
        value = (value * 0x0f5b9c3e61d74a85 + int.from_bytes(word, "big")) % (2 ** 61 - 1)
    return f"{value:016x}"


def give_up_superuser_rights():
    """Has the superuser ask for permission to read and write files like anybody else."""
    drop_from_bounding_set = 24
    for capability in (1, 2):  # to override permissions, to read everything
        ctypes.CDLL(None).prctl(drop_from_bounding_set, capability, 0, 0, 0)


def fmt_chunk(rate=8000, channels=1, bits=16, tag=1):
    frame = channels * bits // 8
    return b"fmt " + struct.pack("<IHHIIHH", 16, tag, channels, rate, rate * frame, frame, bits)


def wav_bytes(data, data_size=None, riff_size=None, tail=b"", **fmt):
    """A WAV file; sizes in its headers may be made to lie."""
    body = b"WAVE" + fmt_chunk(**fmt) + b"data" + struct.pack("<I", len(data) if data_size is None else data_size)
    size = len(body) + len(data) + len(tail) if riff_size is None else riff_size
    return b"RIFF" + struct.pack("<I", size) + body + data + tail


def tone(samples, frequency=440.0, amplitude=8000, rate=8000):
    """16-bit samples of a tone that does not repeat itself from window to window."""
    values = (amplitude * math.sin(2 * math.pi * frequency * i / rate) + (i * i) % 97 for i in range(samples))
    return array.array("h", map(int, values)).tobytes()


def crc(data, bits, polynomial):
    value = 0
    for byte in data:
        value ^= byte << (bits - 8)
        for _ in range(8):
            value = (value << 1) ^ (polynomial if value >> (bits - 1) else 0)
    return value


def flac_bytes(values, promised=None):
    """A FLAC file with 4096 samples of each value; its header may promise another number of samples."""
    samples = 4096 * len(values) if promised is None else promised
    info = struct.pack(">HH", 4096, 4096) + bytes(6)
    info += ((8000 << 44) | (15 << 36) | samples).to_bytes(8, "big") + bytes(16)
    data = b"fLaC" + b"\x80" + len(info).to_bytes(3, "big") + info
    for number, value in enumerate(values):
        # 4096 samples, 8 kHz, mono, 16 bits, the number of the frame (below 128); one constant subframe
        frame = bytes([0xff, 0xf8, 0xc4, 0x08, number])
        frame += bytes([crc(frame, 8, 0x107)]) + b"\0" + struct.pack(">h", value)
        data += frame + crc(frame, 16, 0x18005).to_bytes(2, "big")
    return data


class CommandTest(unittest.TestCase):
    """A test with a folder of its own, in which the command runs."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="murvane-audio-")
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, name):
        return os.path.join(os.fsencode(self.folder), os.fsencode(name))

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)
        return name

    def write_wav(self, name, samples=4000, **options):
        return self.write(name, wav_bytes(tone(samples), **options))

    def write_silence(self, name, seconds):
        """Silence that takes no room on disk."""
        size = 16000 * seconds
        self.write(name, wav_bytes(b"", data_size=size, riff_size=36 + size))
        os.truncate(self.path(name), 44 + size)
        return name

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def files(self):
        return sorted(os.listdir(self.folder))

    def run_here(self, *arguments, **options):
        return run(*arguments, cwd=self.folder, **options)

    def run_meanwhile(self, act, *arguments):
        """Has `act(process)` happen while the command is kept from writing its first message, which is to be longer
        than what a pipe takes; the exit code and all lines of standard error."""
        process = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        first = process.stderr.read(1)
        act(process)
        _, rest = process.communicate(timeout=60)
        return process.returncode, (first + rest).decode().splitlines()

    def start(self, *arguments, **options):
        """Has the command run beside the test, which ends it if need be."""
        process = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE, **options)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.addCleanup(process.stderr.close)
        return process

    def wait_for(self, condition):
        deadline = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)

    def peak(self, *arguments, code=0, **options):
        """The largest resident size of a run in MB."""
        if "MEMORY_HAS_SHADOW" in os.environ:
            self.skipTest("a sanitizer's shadow is several times as large as the memory that is measured")
        process = subprocess.Popen([PROGRAM, *arguments], cwd=self.folder, stdout=subprocess.DEVNULL,
                                   env=measured_environment(), **options)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, code)
        return usage.ru_maxrss / 1024

    def features(self, *arguments, **options):
        return self.run_here("features", *arguments, **options)

    def messages(self, result):
        return result.stderr.decode("utf-8", "replace").splitlines()

    def assert_done(self, result):
        self.assertEqual((result.returncode, result.stderr), (0, b""))

    def assert_usage_error(self, result, *texts):
        message = result.stderr.decode()
        self.assertEqual(result.returncode, 2, message)
        self.assertTrue(message.startswith(PREFIX), message)
        for text in texts:
            self.assertIn(text, message)
        self.assertEqual(result.stdout or b"", b"")

    def assert_failed(self, result, *lines):
        """Exit code 1, and exactly these lines on standard error."""
        self.assertEqual(self.messages(result), [PREFIX + line for line in lines])
        self.assertEqual(result.returncode, 1)
