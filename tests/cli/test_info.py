#!/usr/bin/env python3
"""murvane-audio info."""

import array
import csv
import io
import json
import unittest

from command import CommandTest, wav_bytes


class Info(CommandTest):
    def info(self, *arguments):
        return self.run_here("info", *arguments)

    def write_clipped(self, name):
        samples = array.array("h", [0] * 20000)
        for i in range(0, 20000, 16):
            samples[i] = 32767 if i % 32 == 0 else -32768
        return self.write(name, wav_bytes(samples.tobytes()))

    def test_text_tells_all_about_a_file(self):
        self.write_clipped("a.wav")
        result = self.info("a.wav")
        self.assert_done(result)
        self.assertEqual(result.stdout.decode(), "a.wav\n"
                         "  format          WAV (Microsoft) (.wav) Signed 16 bit PCM\n"
                         "  rate            8000 Hz\n"
                         "  duration        2.500 s\n"
                         "  samples         20000\n"
                         "  clipping value  0.999969\n"
                         "  clipped         6.2500 % (1250 samples)\n")

    def test_csv_and_json_tell_the_same(self):
        self.write_clipped("a.wav")
        self.write_wav("b, \"2\".wav", samples=100, rate=16000)
        rows = list(csv.DictReader(io.StringIO(self.info("a.wav", "b, \"2\".wav", "--format", "csv").stdout.decode())))
        objects = json.loads(self.info("a.wav", "b, \"2\".wav", "--format", "json").stdout)
        self.assertEqual([row["file"] for row in rows], ["a.wav", "b, \"2\".wav"])
        self.assertEqual(objects[0], {"name": "a.wav", "format": "WAV (Microsoft) (.wav) Signed 16 bit PCM",
                                      "rate_hz": 8000, "duration_s": 2.5, "samples": 20000,
                                      "clipping_value": 0.999969, "clipped_samples": 1250, "clipped_share": 0.0625})
        for row, item in zip(rows, objects, strict=True):
            self.assertEqual(row.pop("file"), item.pop("name"))
            self.assertEqual(row.pop("format"), item.pop("format"))
            self.assertEqual({key: float(value) for key, value in row.items()}, item)

    def test_the_clipping_value_is_that_of_the_encoding(self):
        self.write("u.wav", wav_bytes(bytes([0xff, 0x80, 0x00, 0x01] * 100), bits=8, tag=7))
        self.write("a.wav", wav_bytes(bytes([0xd5, 0x2b, 0x2a, 0xaa] * 100), bits=8, tag=6))
        u, a = json.loads(self.info("u.wav", "a.wav", "--format", "json").stdout)
        self.assertEqual((u["clipping_value"], u["clipped_share"]), (0.980347, 0.5))
        self.assertEqual((a["clipping_value"], a["clipped_share"]), (0.984375, 0.5))

    def test_a_file_that_fails_leaves_the_others(self):
        self.write_clipped("a.wav")
        result = self.info("missing.wav", "a.wav", "--format", "json")
        self.assert_failed(result, "missing.wav: No such file or directory")
        self.assertEqual([item["name"] for item in json.loads(result.stdout)], ["a.wav"])

    def test_json_of_no_file_is_an_empty_list(self):
        self.assertEqual(json.loads(self.info("missing.wav", "--format", "json").stdout), [])

    def test_an_output_file_appears_when_it_is_whole(self):
        self.write_clipped("a.wav")
        self.assert_done(self.info("a.wav", "-o", "info.txt"))
        self.assertEqual(self.read("info.txt"), self.info("a.wav").stdout)
        self.assertEqual(self.info("missing.wav", "-o", "none.txt").returncode, 1)
        self.assertEqual(self.files(), ["a.wav", "info.txt"])

    def test_a_name_that_is_not_utf8_keeps_its_bytes(self):
        name = b"caf\xe9.wav"
        self.write_wav(name)
        item, = json.loads(self.info(name, "--format", "json").stdout)
        self.assertEqual(item["name"], "caf\ufffd.wav")
        self.assertEqual(bytes.fromhex(item["name_bytes_hex"]), name)


if __name__ == "__main__":
    unittest.main()
