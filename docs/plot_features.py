#!/usr/bin/env python3
"""Draws what every feature gives for the sample call, and the call itself, as SVG files.

    plot_features.py --command murvane-audio --unnamed unnamed_features --call sample-call.wav --phases sample-call.csv
                     --output docs/images

The values come from the command, those of features that it cannot name from the example `unnamed_features`. The same values give the same bytes: numbers are rounded, and the images within the
SVG files are stored without compression, so that no version of a compressor has a say.
"""

import argparse
import base64
import csv
import math
import os
import struct
import subprocess
import sys
import zlib

WIDTH, LEFT, RIGHT, TOP = 900, 64, 88, 24  # pixels; the plot lies between LEFT and WIDTH - RIGHT
PLOT_WIDTH = WIDTH - LEFT - RIGHT
COLUMNS = 300  # of heat maps
BLUE, ORANGE, GREEN, GREY = "#1f5fa8", "#c8641b", "#2d8a57", "#a9adb3"
AREA_COLOURS = ["#1f4e8c", "#5b93c7", "#a9cbe3", "#e6e9ec"]
BIN_COLOURS = ["#e6e9ec", "#cbdceb", "#a9cbe3", "#82b0d5", "#5b93c7", "#3d71aa", "#1f4e8c", ORANGE]
PHASE_COLOURS = {
    "dial tone": "#6f9fd8", "digits": "#e3a33b", "ringback": "#62b487", "speech": "#b08bd0", "busy": "#dd7b72"
}  # fmt: skip
HEAT_ENDS = [(16, 12, 48), (84, 24, 110), (170, 45, 100), (230, 95, 50), (250, 175, 60), (252, 250, 200)]
HERTZ_PER_BIN = 31.25  # of 256 samples at 8000 Hz


# How features are drawn. Each of these takes the call and gives the inside of the plot, its scale and its legend.


def lines(*features, top=None, bottom=0.0, unit=""):
    """One curve for each (feature, colour, label), or for each value of a feature that has several colours."""

    def draw(call):
        curves, legend = [], []
        for feature, *styles in features:
            rows = call.compute(feature)
            for index, (colour, label) in enumerate(styles):
                curves.append((colour, means([row[index] for row in rows], PLOT_WIDTH - 6)))
                legend.append((colour, label))
        highest = top if top is not None else nice(max(max(curve) for _, curve in curves))
        scale = Scale(bottom, highest, 150, unit)
        parts = [
            path([(at(i, len(curve)), scale.y(value)) for i, value in enumerate(curve)], stroke(colour))
            for colour, curve in curves
        ]
        return parts, scale, legend if len(legend) > 1 else []

    return draw


def heat(
    feature, decibel_range, low_hz=0.0, hertz_per_value=HERTZ_PER_BIN, values=None, height=170, rows=64, level=False
):
    """Values over time as colours, in decibels; they begin at low_hz, each one hertz_per_value wide. With `level`,
    shares become powers, those of full scale 1."""

    def draw(call):
        table = [row[:values] for row in call.compute(feature)]
        if level:
            powers = [mean([sample * sample for sample in row]) for row in call.compute("AMPLITUDE")]
            table = [[power * value for value in row] for power, row in zip(powers, table)]
        step = max(1, len(table[0]) // rows)
        bands = [means([mean(row[k : k + step]) for row in table], COLUMNS) for k in range(0, len(table[0]), step)]
        low, high = decibel_range
        scale = Scale(low_hz, low_hz + hertz_per_value * len(table[0]), height, "Hz")
        pixels = [[shade(value, low, high) for value in band] for band in reversed(bands)]
        image = (
            f'<image x="{LEFT}" y="{TOP}" width="{PLOT_WIDTH}" height="{height}" preserveAspectRatio="none" '
            f'style="image-rendering:pixelated" href="data:image/png;base64,{png(pixels)}"/>'
        )
        return [image], scale, [(heat_colour(n), f"{low + (high - low) * n // 15} dB") for n in (15, 10, 5, 0)]

    return draw


def areas(feature, labels, colours=AREA_COLOURS, top=1.0):
    """Shares or counts that sum to top, one upon the other."""

    def draw(call):
        table = call.compute(feature)
        scale = Scale(0.0, top, 150, "")
        columns = [means([row[index] for row in table], COLUMNS) for index in range(len(labels))]
        below, parts = [0.0] * COLUMNS, []
        for colour, column in zip(colours, columns):
            above = [a + b for a, b in zip(below, column)]
            edge = [(at(i, COLUMNS), scale.y(value)) for i, value in enumerate(above)]
            back = [(at(i, COLUMNS), scale.y(value)) for i, value in enumerate(below)]
            parts.append(path(edge + back[::-1], f'fill="{colour}"'))
            below = above
        return parts, scale, list(zip(colours, labels))[::-1]

    return draw


def envelope(feature):
    """From the smallest to the largest value."""

    def draw(call):
        table = call.compute(feature)
        scale = Scale(-1.0, 1.0, 150, "")
        size = -(-len(table) // PLOT_WIDTH)
        groups = [table[i : i + size] for i in range(0, len(table), size)]
        above = [(at(i, len(groups)), scale.y(max(map(max, group)))) for i, group in enumerate(groups)]
        below = [(at(i, len(groups)), scale.y(min(map(min, group)))) for i, group in enumerate(groups)]
        return [path(above + below[::-1], f'fill="{BLUE}" stroke="{BLUE}" stroke-width="0.5"')], scale, []

    return draw


def marks(feature, points, colours, top, labels, unit="Hz"):
    """A mark wherever points(row) gives [(which colour, height)]; equal ones of successive windows are one stroke."""

    def draw(call):
        table = call.compute(feature)
        scale, strokes, opened = Scale(0.0, top, 150, unit), {}, {}
        for i, row in enumerate(table + [None]):
            now = set(points(row)) if row is not None else set()
            for point in sorted(set(opened) - now):
                begin = opened.pop(point)
                x, y = at(begin, len(table)), scale.y(point[1])
                strokes.setdefault(point[0], []).append(f"M{number(x)} {number(y)}h{number(at(i, len(table)) - x)}")
            for point in now - set(opened):
                opened[point] = i
        parts = [
            f'<path d="{"".join(strokes.get(which, []))}" stroke="{colour}" stroke-width="2.5"/>'
            for which, colour in reversed(list(enumerate(colours)))
        ]
        return parts, scale, list(zip(colours, labels)) if len(labels) > 1 else []

    return draw


def strongest_peaks(row):
    """Of the values of PEAKS, those peaks that hold at least a twentieth of the power."""
    return [(rank, round(math.exp(row[3 + rank])) * HERTZ_PER_BIN) for rank in range(3) if row[rank] >= 0.05]


def winning_range(row):
    """The frequency that the relative position gives away, where its range holds a tenth of the power."""
    positions = {0.2: 350, 0.08: 440, 0.36: 480, -0.16: 620}
    nearest = min(positions, key=lambda position: abs(position - row[-1]))
    return [(0, positions[nearest])] if max(row[:-1]) >= 0.1 else []


def first_positions(row):
    """The two highest peaks of nonLogPeaks; 0 stands for none."""
    return [(rank, row[rank] * HERTZ_PER_BIN) for rank in range(2) if row[rank] > 0.0]


def one(feature, **scale):
    return lines((feature, (BLUE, "")), **scale)


SHARES = ["above 1/5", "above 1/10", "above 1/50", "the rest"]
BIN_LABELS = [f"to {step * 0.05 / 8:.3f}" for step in range(1, 8)] + ["above"]
PLOTS = {
    "AMPLITUDE": envelope("AMPLITUDE"),
    "MEAN": one("MEAN", bottom=-0.02, top=0.02),
    "TEMPORALMEAN": lines(
        ("ZEROCROSSINGRATE", (GREY, "input")), ("TEMPORALMEAN_ZEROCROSSINGRATE", (BLUE, "mean")), top=0.8
    ),
    "SLIDINGWINDOW": lines(
        ("ZEROCROSSINGRATE", (GREY, "input")),
        ("MEAN_SLIDINGWINDOW(25)_ZEROCROSSINGRATE", (BLUE, "mean of 25")),
        top=0.8,
    ),
    "RANGE": heat("RANGE(8,16)_SPECTRUM", (-40, 0), low_hz=7.5 * HERTZ_PER_BIN, height=110),
    "SPECTRUM": heat("SPECTRUM", (-50, -5)),
    "SPECTRUM100HZ": heat("SPECTRUM100HZ", (-40, -2), hertz_per_value=100.0),
    "SPECTRUM200HZ": heat("SPECTRUM200HZ", (-40, -2), hertz_per_value=200.0),
    "SPECTRUM500HZ": heat("SPECTRUM500HZ", (-40, -2), hertz_per_value=500.0, height=120),
    "FLATNESS": one("FLATNESS_SPECTRUM", top=1.0),
    "SPECTRALWEIGHTEDAREA": one("SPECTRALWEIGHTEDAREA_SPECTRUM", unit="Hz"),
    "HARMONICPRODUCT": heat("HARMONICPRODUCT_SPECTRUM", (-80, 10), height=130),
    "ROBUSTHARMONICPRODUCT": heat("ROBUSTHARMONICPRODUCT_SPECTRUM", (-80, 10), height=130),
    "OLDHARMONICPRODUCT": heat("OLDHARMONICPRODUCT_SPECTRUM", (-80, 10), values=32, height=130),
    "ANTIHARMONICPRODUCT": heat(
        "ANTIHARMONICPRODUCT_SPECTRUM", (-10, 80), low_hz=1.5 * HERTZ_PER_BIN, height=130
    ),
    "PEAKS": marks("PEAKS_SPECTRUM", strongest_peaks, [BLUE, ORANGE, GREEN], 4000, ["highest", "second", "third"]),
    "nonLogPeaks": marks("nonLogPeaks(spectrum(x))", first_positions, [BLUE, ORANGE], 4000, ["highest", "second"]),
    "ponderatedPeaks": lines(
        ("ponderatedPeaks(spectrum(x))", (BLUE, "highest"), (ORANGE, "second"), (GREEN, "third")), top=60
    ),
    "SPECTRALRANGE": heat("SPECTRALRANGE(440,40)_SPECTRUM", (-40, 0), 11.5 * HERTZ_PER_BIN, values=5, height=80),
    "MAXSPECTRALRANGES": marks("MAXSPECTRALRANGES(350,440,480,620)_SPECTRUM", winning_range, [BLUE], 800, [""]),
    "LOWFREQENERGYRATIO": one("LOWFREQENERGYRATIO_SPECTRUM", top=1.0),
    "LOWFREQENERGYRATIOS": lines(
        ("LOWFREQENERGYRATIOS_SPECTRUM", (ORANGE, "to 100 Hz"), (BLUE, "100-1000 Hz")), top=1.0
    ),
    "ZEROCROSSINGRATE": one("ZEROCROSSINGRATE", top=0.8),
    "SILENCERATIO": one("SILENCERATIO", top=0.4),
    "NOISERATIO": one("NOISERATIO", top=0.8),
    "AMPLITUDEDISTRIBUTION": areas("AMPLITUDEDISTRIBUTION", SHARES),
    "TEMPORALAMPLITUDEDISTRIBUTION": areas("TEMPORALAMPLITUDEDISTRIBUTION", SHARES),
    "NEIGHBOURHOODOFMAX": lines(
        ("NEIGHBOURHOODOFMAX_SPECTRUM", (GREEN, "below"), (BLUE, "maximum"), (ORANGE, "above")), top=1.0
    ),
    "CLIPPINGRATE": one("CLIPPINGRATE(100)", top=0.8),
    "ENERGYHISTOGRAM": areas("ENERGYHISTOGRAM(50,8)", BIN_LABELS, BIN_COLOURS, top=256),
    "MEANENERGYABOVETHRESH": one("MEANENERGYABOVETHRESH(10)", top=0.06),
    "MEANMAX": lines(("MEANMAX(64,2)", (BLUE, "mean"), (ORANGE, "smallest"))),
    "DELTATOSLIDINGMEAN": one("DELTATOSLIDINGMEAN_FLATNESS_SPECTRUM", bottom=-0.6, top=0.6),
}
CALL_PICTURE = heat("SPECTRUM", (-90, -15), rows=128, height=220, level=True)


# The call, the scales and the words of SVG.


class Call:
    def __init__(self, command, unnamed, recording, phases):
        self.command, self.recording = command, recording
        header, *rows = table([unnamed, recording])
        names = [title.partition("[")[0] for title in header]
        self.unnamed = {name: [[x for x, n in zip(row, names) if n == name] for row in rows] for name in names}
        with open(phases, newline="", encoding="utf-8") as file:
            rows = [(row["phase"], float(row["start"]), float(row["stop"])) for row in csv.DictReader(file)]
        self.duration = rows[-1][2]
        self.phases = [
            ("digits" if name.startswith("dtmf ") else name, start, stop)
            for name, start, stop in rows
            if name != "silence"
        ]

    def compute(self, feature):
        """The values of every window, of a feature's name or of a formula."""
        if feature in self.unnamed:
            return self.unnamed[feature]
        option = "--expr" if "(x)" in feature else "--feature"
        return table([self.command, "features", self.recording, option, feature])[1:]

    def captions(self):
        """The phases, those of one name with less than a second between them as one."""
        result = []
        for name, start, stop in self.phases:
            if result and result[-1][0] == name and start - result[-1][2] < 1.0:
                start = result.pop()[1]
            result.append((name, start, stop))
        return result


def table(call):
    """The columns' titles that a program prints, and rows of values, both without file and time."""
    text = subprocess.run(call, check=True, stdout=subprocess.PIPE, encoding="utf-8").stdout
    header, *rows = csv.reader(text.splitlines())
    return [header[2:]] + [[float(value) for value in row[2:]] for row in rows]


class Scale:
    def __init__(self, low, high, height, unit):
        self.low, self.high, self.height, self.unit = low, high, height, unit

    def y(self, value):
        share = (min(max(value, self.low), self.high) - self.low) / (self.high - self.low)
        return TOP + self.height * (1.0 - share)

    def ticks(self):
        step = nice((self.high - self.low) / (4.0 if self.height > 100 else 2.5))
        first, last = math.ceil(self.low / step - 1e-9), math.floor(self.high / step + 1e-9)
        return [k * step for k in range(first, last + 1)]


def nice(value):
    """The first of 1, 2, 2.5, 5 times a power of ten that is not below a positive value."""
    power = 10.0 ** math.floor(math.log10(value))
    return next(factor * power for factor in (1.0, 2.0, 2.5, 5.0, 10.0) if factor * power >= value * (1.0 - 1e-9))


def mean(values):
    return sum(values) / len(values)


def means(values, count):
    """At most `count` means of as many values each, as far as they go."""
    count = min(count, len(values))
    return [mean(values[i * len(values) // count : (i + 1) * len(values) // count]) for i in range(count)]


def at(index, count):
    return LEFT + PLOT_WIDTH * index / max(1, count - 1)


def number(value):
    text = f"{value:.1f}"
    return text[:-2] if text.endswith(".0") else text


def path(points, style):
    return f'<path d="M{"L".join(f"{number(x)} {number(y)}" for x, y in points)}" {style}/>'


def stroke(colour):
    return f'fill="none" stroke="{colour}" stroke-linejoin="round"'


def words(x, y, content, anchor="middle", style=""):
    return f'<text x="{number(x)}" y="{number(y)}" text-anchor="{anchor}"{style}>{content}</text>'


def shade(value, low, high):
    decibels = 10.0 * math.log10(value) if value > 0.0 else low
    return max(0, min(15, int(16.0 * (decibels - low) / (high - low))))


def heat_rgb(level):
    position = level / 15.0 * (len(HEAT_ENDS) - 1)
    first = min(int(position), len(HEAT_ENDS) - 2)
    return [round(a + (b - a) * (position - first)) for a, b in zip(HEAT_ENDS[first], HEAT_ENDS[first + 1])]


def heat_colour(level):
    return "#" + bytes(heat_rgb(level)).hex()


def png(rows):
    """A PNG image of 16 colours in base64, its lines in one block of deflate that is stored as it is."""
    raw = b""
    for row in rows:
        row = row + [0] * (len(row) % 2)
        raw += b"\0" + bytes(a << 4 | b for a, b in zip(row[::2], row[1::2]))
    stored = b"\x78\x01\x01" + struct.pack("<HH", len(raw), len(raw) ^ 0xFFFF) + raw
    image = b"\x89PNG\r\n\x1a\n"
    for name, content in (
        (b"IHDR", struct.pack(">IIBBBBB", len(rows[0]), len(rows), 4, 3, 0, 0, 0)),
        (b"PLTE", bytes(part for level in range(16) for part in heat_rgb(level))),
        (b"IDAT", stored + struct.pack(">I", zlib.adler32(raw))),
        (b"IEND", b""),
    ):
        image += struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))
    return base64.b64encode(image).decode("ascii")


def picture(call, draw, title):
    parts, scale, legend = draw(call)
    bottom, second = TOP + scale.height, PLOT_WIDTH / call.duration
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{bottom + 32}" '
        f'viewBox="0 0 {WIDTH} {bottom + 32}" font-family="sans-serif" font-size="11" fill="#333">',
        f"<title>{title}</title>",
        f'<rect width="{WIDTH}" height="{bottom + 32}" fill="#fff"/>',
    ]
    for name, start, stop in call.phases:
        x, width, colour = number(LEFT + start * second), number((stop - start) * second), PHASE_COLOURS[name]
        out.append(f'<rect x="{x}" y="{TOP - 6}" width="{width}" height="5" fill="{colour}"/>')
        out.append(f'<rect x="{x}" y="{TOP}" width="{width}" height="{scale.height}" fill="{colour}" opacity="0.13"/>')
    out += [words(LEFT + (a + b) / 2 * second, TOP - 10, name) for name, a, b in call.captions()]
    for tick in scale.ticks():
        y = scale.y(tick)
        out.append(f'<path d="M{LEFT} {number(y)}h{PLOT_WIDTH}" stroke="#ccc" stroke-width="0.5"/>')
        out.append(words(LEFT - 6, y + 4, f"{tick:.6g}" + (" " + scale.unit if scale.unit else ""), "end"))
    out += parts
    out.append(f'<rect x="{LEFT}" y="{TOP}" width="{PLOT_WIDTH}" height="{scale.height}" fill="none" stroke="#888"/>')
    for time in range(0, int(call.duration) + 1, 5):
        x = LEFT + time * second
        out.append(f'<path d="M{number(x)} {bottom}v4" stroke="#888"/>')
        out.append(words(x, bottom + 16, time))
    out.append(words(WIDTH - RIGHT + 6, bottom + 16, "seconds", "start"))
    for i, (colour, label) in enumerate(legend):
        y = TOP + 4 + 15 * i
        out.append(f'<rect x="{WIDTH - RIGHT + 6}" y="{y}" width="8" height="8" fill="{colour}" stroke="#bbb"/>')
        out.append(words(WIDTH - RIGHT + 17, y + 8, label, "start", ' font-size="10"'))
    return "\n".join(out + ["</svg>", ""])


def main():
    parser = argparse.ArgumentParser(description="Draws the features of the sample call.")
    for option in ("command", "unnamed", "call", "phases", "output"):
        parser.add_argument("--" + option, required=True)
    arguments = parser.parse_args()
    call = Call(arguments.command, arguments.unnamed, arguments.call, arguments.phases)
    os.makedirs(os.path.join(arguments.output, "features"), exist_ok=True)
    pictures = {f"features/{name.lower()}.svg": (draw, f"{name} of the sample call") for name, draw in PLOTS.items()}
    pictures["sample-call.svg"] = (CALL_PICTURE, "The sample call: spectrum over time, and its phases")
    for name, (draw, title) in pictures.items():
        with open(os.path.join(arguments.output, name), "w", encoding="utf-8", newline="\n") as file:
            file.write(picture(call, draw, title))
    return 0


if __name__ == "__main__":
    sys.exit(main())
