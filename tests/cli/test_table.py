#!/usr/bin/env python3
"""The tables that murvane-audio features writes: CSV and NPY."""

import ast
import json
import math
import os
import struct
import unittest

from command import CommandTest, digest_of, flac_bytes, read_csv, tone, wav_bytes


def read_npy(data):
    """The shape and the values of a matrix; checks what NumPy demands of its header."""
    assert data[:8] == b"\x93NUMPY\x01\x00"
    size, = struct.unpack("<H", data[8:10])
    assert (10 + size) % 64 == 0 and data[9 + size:10 + size] == b"\n"
    header = ast.literal_eval(data[10:10 + size].decode("latin-1"))
    assert header["descr"] == "<f8" and header["fortran_order"] is False
    rows, columns = header["shape"]
    values = struct.unpack(f"<{rows * columns}d", data[10 + size:])
    return header["shape"], [values[i * columns:(i + 1) * columns] for i in range(rows)]


def bits(value):
    return struct.pack("<d", value) if not math.isnan(value) else b"nan"


def shortest(value):
    """The shortest text of a number as std::to_chars writes it."""
    precision = next(p for p in range(18) if float(f"{value:.{p}e}") == value)
    scientific = f"{value:.{precision}e}"
    fixed = f"{value:.{max(0, precision - int(scientific.split('e')[1]))}f}"
    return fixed if len(fixed) <= len(scientific) else scientific


FEATURES = ["MEAN", "SPECTRUM100HZ", "RANGE(3,2)", "ZEROCROSSINGRATE", "TEMPORALMEAN_MEAN"]


class Csv(CommandTest):
    def table(self, *arguments):
        result = self.features(*arguments)
        self.assert_done(result)
        return read_csv(result.stdout)

    def test_columns_are_named_after_the_features_as_they_were_written(self):
        self.write_wav("a.wav")
        header, rows = self.table("a.wav", "--feature", "mean", "range(0, 2)", "ZeroCrossingRate_Amplitude")
        self.assertEqual(header, ["file", "time", "mean", "range(0, 2)[0]", "range(0, 2)[1]",
                                  "ZeroCrossingRate_Amplitude"])
        self.assertEqual({len(row) for row in rows}, {6})

    def test_fields_with_commas_quotes_and_line_ends_are_quoted(self):
        name = "a, \"b\"\nc.wav"
        self.write_wav(name, 256)
        result = self.features(name, "--feature", "RANGE(0,1)")
        self.assertEqual(result.stdout.split(b"\n")[0], b'file,time,"RANGE(0,1)"')
        self.assertIn(b'\n"a, ""b""\nc.wav",0.032,', result.stdout)
        self.assertEqual(read_csv(result.stdout)[1][0][0], name)

    def test_lines_end_in_line_feeds_and_the_last_one_is_whole(self):
        self.write_wav("a.wav")
        output = self.features("a.wav", "--feature", "MEAN").stdout
        self.assertNotIn(b"\r", output)
        self.assertTrue(output.endswith(b"\n"))

    def test_windows_and_times_follow_the_options(self):
        data = tone(1000)
        self.write("a.wav", wav_bytes(data))
        samples = struct.unpack("<1000h", data)
        for window, overlap in ((32, 16), (16, 6), (10, 0), (1, 0)):
            header, rows = self.table("a.wav", "--feature", "MEAN", "RANGE(0,1)", "--window-ms", str(window),
                                      "--overlap-ms", str(overlap))
            size, hop = 8 * window, 8 * (window - overlap)
            starts = range(0, 1000 - size + 1, hop)
            self.assertEqual(len(rows), len(starts))
            time = window / 1000
            for row, start in zip(rows, starts, strict=True):
                self.assertEqual(float(row[1]), time)
                self.assertEqual(float(row[3]), samples[start] / 32768)
                self.assertAlmostEqual(float(row[2]), sum(samples[start:start + size]) / size / 32768, 15)
                time += (window - overlap) / 1000

    def test_dc_is_suppressed_on_demand(self):
        self.write("a.wav", wav_bytes(struct.pack("<h", 8192) * 1000))
        values = [row[2] for row in self.table("a.wav", "--feature", "MEAN", "--suppress-dc")[1]]
        self.assertEqual(set(values), {"0"})
        values = [row[2] for row in self.table("a.wav", "--feature", "MEAN")[1]]
        self.assertEqual(set(values), {"0.25"})

    def test_numbers_are_the_shortest_that_give_back_the_same(self):
        self.write_wav("a.wav", 20000)
        header, rows = self.table("a.wav", "--feature", *FEATURES)
        for row in rows:
            for text in row[1:]:
                self.assertEqual(text, shortest(float(text)))

    def test_numbers_that_are_none_have_names(self):
        samples = [math.inf, -math.inf, math.nan, 0.25]
        self.write("a.wav", wav_bytes(struct.pack("<4f", *samples) * 64, bits=32, tag=3))
        header, rows = self.table("a.wav", "--feature", "RANGE(0,4)")
        self.assertEqual(rows[0][2:], ["inf", "-inf", "nan", "0.25"])

    def test_many_files_go_into_one_table_in_their_order(self):
        names = [f"call-{i}.wav" for i in range(300)]
        for i, name in enumerate(names):
            self.write(name, wav_bytes(struct.pack("<h", i) * 600))
        header, rows = self.table(*names, "--feature", "MEAN")
        self.assertEqual([row[0] for row in rows], [name for name in names for _ in range(3)])
        self.assertEqual([float(row[2]) for row in rows], [i / 32768 for i in range(300) for _ in range(3)])
        self.assertEqual([row[1] for row in rows[:3]], ["0.032", "0.048", "0.064"])

    def test_a_file_gives_the_same_rows_wherever_it_stands(self):
        self.write_wav("a.wav", 3000)
        self.write("b.wav", wav_bytes(tone(5000, 333.0, 20000)))
        features = ["--feature", "ZEROCROSSINGRATE", "TEMPORALMEAN_MEAN", "SLIDINGWINDOW(4)_MEAN", "--suppress-dc"]
        alone = self.table("b.wav", *features)[1]
        self.assertEqual(self.table("a.wav", "b.wav", *features)[1][-len(alone):], alone)

    def test_a_window_that_slides_is_padded_with_nan_at_the_start_of_each_file(self):
        self.write_wav("a.wav", 1000)
        header, rows = self.table("a.wav", "a.wav", "--feature", "SLIDINGWINDOW(3)_RANGE(0,1)", "MEAN", "RANGE(0,1)")
        self.assertEqual(len(header), 7)
        self.assertEqual(len(rows), 12)
        for first in (0, 6):
            firsts = [row[6] for row in rows[first:first + 6]]
            self.assertEqual([row[2:5] for row in rows[first:first + 6]],
                             [["nan", "nan", firsts[0]], ["nan", *firsts[:2]], firsts[0:3], firsts[1:4], firsts[2:5], firsts[3:6]])

    def test_large_tables_are_the_same_every_time(self):
        self.write_wav("a.wav", 60000)
        self.write_wav("b.wav", 50000)
        outputs = {self.features("a.wav", "b.wav", "--feature", "AMPLITUDE").stdout for _ in range(5)}
        self.assertEqual(len(outputs), 1)
        header, rows = read_csv(outputs.pop())
        self.assertEqual(len(rows), 467 + 389)
        self.assertEqual({len(row) for row in rows}, {258})

    def test_a_file_shorter_than_a_window_draws_a_warning_and_the_header_stands(self):
        self.write_wav("short.wav", 255)
        result = self.features("short.wav", "--feature", "MEAN", "RANGE(0,2)")
        self.assertEqual((result.returncode, result.stdout), (0, b'file,time,MEAN,"RANGE(0,2)[0]","RANGE(0,2)[1]"\n'))
        self.assertEqual(self.messages(result), ["murvane-audio: short.wav: warning: is shorter than one window of 256 "
                                                 "samples: no rows"])

    def test_the_window_is_cut_at_the_rate_of_the_file_with_a_warning(self):
        self.write_wav("a.wav", 16000, rate=16000)
        result = self.features("a.wav", "--feature", "MEAN")
        self.assertEqual(result.returncode, 0)
        self.assertEqual(len(read_csv(result.stdout)[1]), (16000 - 512) // 256 + 1)
        message, = self.messages(result)
        self.assertTrue(message.startswith("murvane-audio: a.wav: warning: has 16000 Hz: "), message)
        self.assertEqual(self.features("a.wav", "--feature", "MEAN", "--log-level", "ERROR").stderr, b"")

    def test_a_file_whose_rate_gives_other_columns_fails_alone(self):
        self.write_wav("a.wav")
        self.write_wav("b.wav", rate=16000)
        result = self.features("a.wav", "b.wav", "a.wav", "--feature", "AMPLITUDE", "--log-level", "ERROR")
        self.assert_failed(result, "b.wav: does not fit into the table: AMPLITUDE gives 512 values at 16000 Hz, but "
                           "AMPLITUDE gives 256 values for the inputs before")
        self.assertEqual({row[0] for row in read_csv(result.stdout)[1]}, {"a.wav"})

    def test_files_of_other_rates_fit_when_the_columns_do(self):
        self.write_wav("a.wav")
        self.write_wav("b.wav", rate=16000)
        result = self.features("a.wav", "b.wav", "a.wav", "--feature", "MEAN", "--log-level", "ERROR")
        self.assert_done(result)
        self.assertEqual([row[0] for row in read_csv(result.stdout)[1]], ["a.wav"] * 30 + ["b.wav"] * 14 + ["a.wav"] * 30)


class Npy(CommandTest):
    def test_matrix_and_csv_agree_to_the_bit(self):
        self.write_wav("a.wav", 20000)
        self.write("b, c.wav", wav_bytes(struct.pack("<f", math.nan) * 999, bits=32, tag=3))
        self.write_wav("short.wav", 10)
        arguments = ["a.wav", "short.wav", "b, c.wav", "--feature", *FEATURES, "--log-level", "ERROR"]
        self.assert_done(self.features(*arguments, "--format", "npy", "--output", "table.npy"))
        header, rows = read_csv(self.features(*arguments).stdout)
        shape, values = read_npy(self.read("table.npy"))
        description = json.loads(self.read("table.npy.json"))
        self.assertEqual(shape, (len(rows), len(header) - 2))
        self.assertEqual(description["columns"], header[2:])
        for row, numbers in zip(rows, values, strict=True):
            self.assertEqual([bits(float(text)) for text in row[2:]], [bits(number) for number in numbers])

    def test_the_description_tells_what_the_matrix_leaves_out(self):
        self.write_wav("a.wav", 1000)
        self.write_wav("b.wav", 2000)
        self.write_wav("c.wav", 10)
        self.assertEqual(self.features("a.wav", "missing.wav", "b.wav", "c.wav", "--feature", "MEAN", "--window-ms",
                                       "20", "--overlap-ms", "5", "--suppress-dc", "--format", "npy", "-o",
                                       "t.npy").returncode, 1)
        description = json.loads(self.read("t.npy.json"))
        matrix = self.read("t.npy")[128:]
        self.assertEqual(description["window"], {"size_ms": 20, "overlap_ms": 5, "suppress_dc": True})
        self.assertEqual(description["inputs"], [
            {"name": "a.wav", "rate_hz": 8000, "first_row": 0, "row_count": 8, "first_time_s": 0.02,
             "rows_digest": digest_of(matrix[:64])},
            {"name": "b.wav", "rate_hz": 8000, "first_row": 8, "row_count": 16, "first_time_s": 0.02,
             "rows_digest": digest_of(matrix[64:])},
            {"name": "c.wav", "rate_hz": 8000, "first_row": 24, "row_count": 0, "first_time_s": None}])
        header, rows = read_csv(self.features("a.wav", "b.wav", "--feature", "MEAN", "--window-ms", "20",
                                              "--overlap-ms", "5").stdout)
        time = 0.02
        for row in rows[:8]:
            self.assertEqual(float(row[1]), time)
            time += (20 - 5) / 1000

    def test_names_are_escaped_and_keep_their_bytes(self):
        for name in ("q\"uo\\te\n\t.wav", "stra\u00dfe \u20ac \U0001f4de.wav"):
            self.write_wav(name, 256)
            self.assert_done(self.features(name, "--feature", "MEAN", "--format", "npy", "-o", "t.npy"))
            item, = json.loads(self.read("t.npy.json"))["inputs"]
            self.assertEqual(item["name"], name)
            self.assertNotIn("name_bytes_hex", item)
        name = b"caf\xe9 \xed\xa0\x80.wav"
        self.write_wav(name, 256)
        self.assert_done(self.features(name, "--feature", "MEAN", "--format", "npy", "-o", "t.npy"))
        item, = json.loads(self.read("t.npy.json"))["inputs"]
        self.assertEqual(item["name"], "caf\ufffd \ufffd\ufffd\ufffd.wav")
        self.assertEqual(bytes.fromhex(item["name_bytes_hex"]), name)

    def test_a_table_without_rows_has_its_columns(self):
        self.write_wav("a.wav", 10)
        self.features("a.wav", "--feature", "SPECTRUM500HZ", "--format", "npy", "-o", "t.npy")
        self.assertEqual(read_npy(self.read("t.npy")), ((0, 8), []))


class OutputFile(CommandTest):
    def test_it_holds_what_standard_output_would(self):
        self.write_wav("a.wav", 50000)
        self.assert_done(self.features("a.wav", "--feature", "SPECTRUM", "--output", "t.csv"))
        self.assertEqual(self.read("t.csv"), self.features("a.wav", "--feature", "SPECTRUM").stdout)
        self.assertEqual(self.files(), ["a.wav", "t.csv"])

    def test_it_replaces_an_older_one_and_keeps_its_mode(self):
        self.write_wav("a.wav")
        self.write("t.csv", b"old")
        os.chmod(self.path("t.csv"), 0o640)
        self.assert_done(self.features("a.wav", "--feature", "MEAN", "--output", "t.csv"))
        self.assertTrue(self.read("t.csv").startswith(b"file,time,MEAN\n"))
        self.assertEqual(os.stat(self.path("t.csv")).st_mode & 0o777, 0o640)

    def test_an_input_that_fails_half_way_leaves_no_rows_in_it(self):
        self.write_wav("a.wav", 50000)
        self.write("bad.flac", flac_bytes([1, 2, 3] * 20, promised=1000000))
        message = "bad.flac: cannot be read to its end: 1919 windows instead of 7811"
        for options in (["--format", "csv"], ["--format", "npy"]):
            for inputs in (["bad.flac", "a.wav", "a.wav"], ["a.wav", "bad.flac", "a.wav"]):
                self.assert_failed(self.features(*inputs, "--feature", "SPECTRUM", "-o", "some", *options), message)
                self.assert_done(self.features("a.wav", "a.wav", "--feature", "SPECTRUM", "-o", "all", *options))
                self.assertEqual(self.read("some"), self.read("all"))
            self.assert_failed(self.features("bad.flac", "--feature", "SPECTRUM", "-o", "none", *options), message)
            self.assertNotIn("none", self.files())
        description = json.loads(self.read("some.json"))
        self.assertEqual([item["name"] for item in description["inputs"]], ["a.wav", "a.wav"])

    def test_rows_that_have_left_for_standard_output_stay_and_that_is_told(self):
        self.write_wav("a.wav")
        self.write("bad.flac", flac_bytes([1, 2, 3] * 20, promised=1000000))
        result = self.features("bad.flac", "a.wav", "--feature", "AMPLITUDE")
        self.assert_failed(result, "bad.flac: cannot be read to its end: 1919 windows instead of 7811",
                           "bad.flac: rows that it gave before stand in the output")
        rows = read_csv(result.stdout)[1]
        self.assertEqual([row[0] for row in rows if row[0] != "bad.flac"], ["a.wav"] * 30)
        self.assertEqual({len(row) for row in rows}, {258})

    def test_rows_that_have_not_left_yet_are_withdrawn_from_standard_output(self):
        self.write_wav("a.wav")
        self.write("bad.flac", flac_bytes([1, 2, 3], promised=20000))
        for inputs in (["bad.flac", "a.wav"], ["a.wav", "bad.flac"]):
            result = self.features(*inputs, "--feature", "MEAN")
            self.assert_failed(result, "bad.flac: cannot be read to its end: 95 windows instead of 155")
            self.assertEqual(result.stdout, self.features("a.wav", "--feature", "MEAN").stdout)

    def test_when_all_inputs_fail_nothing_appears_and_an_older_one_stays(self):
        self.write("t.csv", b"old")
        self.write("t.npy", b"old")
        for options in (["-o", "t.csv"], ["-o", "new.csv"], ["--format", "npy", "-o", "t.npy"],
                        ["--format", "npy", "-o", "new.npy"]):
            self.assert_failed(self.features("missing.wav", "--feature", "MEAN", *options),
                               "missing.wav: No such file or directory")
        self.assertEqual(self.files(), ["t.csv", "t.npy"])
        self.assertEqual((self.read("t.csv"), self.read("t.npy")), (b"old", b"old"))

    def test_a_folder_that_does_not_exist_is_told_before_anything_is_done(self):
        self.write_wav("a.wav")
        self.assert_failed(self.features("a.wav", "--feature", "MEAN", "-o", "none/t.csv"),
                           "cannot write none/t.csv: No such file or directory")
        self.assert_failed(self.features("a.wav", "--feature", "MEAN", "-o", "."), "cannot write .: Is a directory")
        self.assertEqual(self.files(), ["a.wav"])

    def test_a_full_disk_is_told(self):
        self.write_wav("a.wav", 50000)
        for options in ([], ["--window-ms", "1000"]):
            self.assert_failed(self.features("a.wav", "--feature", "AMPLITUDE", "-o", "/dev/full", *options),
                               "cannot write /dev/full: No space left on device")
        with open("/dev/full", "wb") as full:
            self.assert_failed(self.features("a.wav", "--feature", "AMPLITUDE", stdout=full),
                               "cannot write standard output: No space left on device")
            for arguments in (["list"], ["--help"], ["list", "--help"]):
                self.assert_failed(self.run_here(*arguments, stdout=full), "cannot write standard output")


class Oddities(CommandTest):
    """What is odd about a table as a whole is told once, at the end of a run."""

    def setUp(self):
        super().setUp()
        self.write_wav("a.wav")
        self.write_wav("b.wav")

    def warnings(self, *arguments):
        result = self.features(*arguments)
        self.assertEqual(result.returncode, 0)
        return [line.removeprefix("murvane-audio: warning: ") for line in self.messages(result)]

    def test_what_gives_no_column_is_named(self):
        for option, name in (("--feature", "SLIDINGWINDOW(0)"), ("--feature", "RANGE(0,0)"),
                             ("--feature", "SPECTRUM_MEAN"), ("--expr", "spectrum(1)")):
            kind = "feature" if option == "--feature" else "formula"
            for jobs in ("1", "2"):
                self.assertEqual(self.warnings("a.wav", "b.wav", option, name, "--feature", "MEAN", "--jobs", jobs),
                                 [f"the {kind} {name} gives no values: the table has no column of it"])
        self.assertEqual(self.warnings("a.wav", "--feature", "MEAN"), [])

    def test_windows_that_are_no_whole_number_of_samples_draw_one_warning(self):
        self.write_wav("c.wav", 44100, rate=11025)
        self.write_wav("d.wav", 44100, rate=11025)
        told = self.warnings("a.wav", "c.wav", "d.wav", "--feature", "MEAN", "--jobs", "2")
        self.assertEqual([line for line in told if "drift" in line],
                         ["at 11025 Hz, as of c.wav, windows are cut to whole samples, but times count in milliseconds: "
                          "they drift"])
        self.assertEqual(told[-1], told[2])
        for exact in (["--window-ms", "80", "--overlap-ms", "40"], ["--window-ms", "50", "--overlap-ms", "10"]):
            self.assertFalse([line for line in self.warnings("c.wav", "--feature", "MEAN", *exact) if "drift" in line])


if __name__ == "__main__":
    unittest.main()
