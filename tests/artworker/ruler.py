#!/usr/bin/env python3
"""A ruler on the printed page: layouts are printed into PDF files, the pages measured at 300 dots to the inch.

  ruler.py TS5-BATCH

Needs pdftoppm. Status 0 when every place and size is met within 0.1 mm and every text fills its field within 2 %, 77 without it.
"""
import math
import os
import shutil
import subprocess
import sys
import tempfile

DPI = 300
MM = DPI / 25.4
LABEL, INLAY, BOOKLET = 16001, 16002, 16003
faults = 0


def check(name, found, wanted, slack=0.1):
    global faults
    good = found is not None and abs(found - wanted) <= slack
    faults += not good
    print("%-58s %9s  should be %7.2f  %s" % (name, "none" if found is None else "%.3f" % found, wanted,
                                             "" if good else "<-- WRONG"))


class Page:
    def __init__(self, ppm):
        data = open(ppm, "rb").read()
        magic, width, height, most = data.split(None, 4)[:4]
        assert magic == b"P6" and most == b"255"
        self.width, self.height = int(width), int(height)
        self.pixels = data[-self.width * self.height * 3:]

    def at(self, x, y):
        i = (y * self.width + x) * 3
        return self.pixels[i:i + 3]

    def dark(self, x, y):
        """How dark a dot is, 0 to 1; beside the page 0."""
        if not (0 <= x < self.width and 0 <= y < self.height):
            return 0
        return 1 - sum(self.at(x, y)) / 765

    def line(self, x0, y0, x1, y1, at_least=0.35):
        """Where on the way from one place to another, in millimetres, the first line lies: the middle of its ink."""
        length = math.hypot(x1 - x0, y1 - y0)
        steps = int(length * MM * 4)
        ink, moment = 0, 0
        for i in range(steps + 1):
            t = i / steps
            d = self.dark(int((x0 + (x1 - x0) * t) * MM), int((y0 + (y1 - y0) * t) * MM))
            if d >= at_least:
                ink += d
                moment += d * t * length
            elif ink:
                break
        return moment / ink if ink else None

    def ink(self, left, top, right, bottom):
        """The box of all ink in a part of the page, in millimetres."""
        xs, ys = [], []
        for y in range(int(top * MM), int(bottom * MM)):
            for x in range(int(left * MM), int(right * MM)):
                if self.dark(x, y) > 0.5:
                    xs.append(x)
                    ys.append(y)
        if not xs:
            return None
        return min(xs) / MM, min(ys) / MM, (max(xs) + 1) / MM, (max(ys) + 1) / MM


def section(name, rows):
    return "[%s]\r\n" % name + "".join("%s=%s\r\n" % row for row in rows)


def layout(path, elements, wide=(260, 297), label=(117, 40)):
    text = section("sd4 Layout File", [("======", "=" * 46), ("Stop!!", "x"), ("Papierformat", 3),
                                       ("ElementNum", len(elements))])
    paper = (210, 297)
    for name, size, sheet in (("Label", label, paper), ("Inlay", (150, 118), paper), ("Booklet", (242, 120), wide)):
        text += section(name, [("Papersize", "%i %i" % sheet), ("Portrait", 1), ("Position", "%i 148" % (sheet[0] // 2)),
                               ("Size", "%i %i" % size)])
    for i, rows in enumerate(elements):
        text += section("Element %i" % (i + 1), rows)
    open(path, "wb").write(text.encode("cp1252"))


def element(owner, kind, box, rows, border=0):
    return [("ElemObjID", owner), ("ElemID", kind), ("ElemFixed", 0), ("ElemBorderColor", 0), ("ElemBorderWidth", border),
            ("ElemBorderGap", 0), ("ElemBorderRound?", 0), ("ElemDimension", "%i %i %i %i" % box)] + rows


def text(owner, box, words, mode, turn=0, index=0, transparency=100):
    return element(owner, 1, box, [
        ("ElemTextLength", len(words) and len(words) + 1), ("ElemTextText", words), ("ElemTextColor", 0), ("ElemTextLinefeed", 50),
        ("ElemTextSpaceMode", mode), ("ElemTextFixedFont", 0), ("ElemTextOrientation", turn), ("ElemTextPlacement", 1),
        ("ElemTextVPosition", 1), ("ElemTextFontName", "Arial"), ("ElemTextFontWeight", 400),
        ("ElemTextFontHeight", -16), ("ElemTextBGTransparency", transparency), ("ElemTextBGIndex", index)])


class Bench:
    def __init__(self, program, directory):
        self.program, self.directory = program, directory
        self.environment = dict(os.environ, STAVORA_REGISTRY=self.file("r.sqlite"), HOME=directory)

    def file(self, name):
        return os.path.join(self.directory, name)

    def run(self, *arguments):
        subprocess.run([self.program, *arguments], cwd=self.directory, env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)

    def pages(self, *options):
        self.run("run", "Artworker", "--layout", "l.awl", "--dest", "l.pdf", "--overwrite", "yes", "--quiet", *options)
        subprocess.run(["pdftoppm", "-r", str(DPI), self.file("l.pdf"), self.file("p")], check=True)
        names = sorted(n for n in os.listdir(self.directory) if n.startswith("p-"))
        pages = [Page(self.file(n)) for n in names]
        for name in names:
            os.remove(self.file(name))
        return pages


def lines_to_cut_and_fold(bench):
    layout(bench.file("l.awl"), [])
    label, inlay, booklet = bench.pages("--set", "ArtPrintBorder=7")
    check("inlay: left edge", inlay.line(10, 148, 60, 148), 20)
    check("inlay: right edge", inlay.line(200, 148, 150, 148), 20)
    check("inlay: top edge", inlay.line(105, 70, 105, 120), 19)
    check("inlay: spine from the left edge", inlay.line(31, 148, 60, 148), 5.3)
    check("inlay: spine from the right edge", inlay.line(179, 148, 150, 148), 5.3)
    check("booklet: left edge", booklet.line(2, 100, 60, 100), 7)
    check("booklet: right edge", booklet.line(258, 100, 200, 100), 7)
    check("booklet: fold", booklet.line(110, 148, 150, 148), 20)
    for name, radius in (("disc", 58.5), ("hole", 20)):
        radii = []
        for degree in range(0, 360, 3):
            c, s = math.cos(math.radians(degree)), math.sin(math.radians(degree))
            at = label.line(105 + (radius - 4) * c, 148 + (radius - 4) * s, 105 + (radius + 4) * c,
                            148 + (radius + 4) * s)
            radii.append(None if at is None else at + radius - 4)
        known = [r for r in radii if r is not None]
        check("label: %s, found all around" % name, len(known), 120, 0)
        if known:
            check("label: %s, smallest radius" % name, min(known), radius)
            check("label: %s, largest radius" % name, max(known), radius)


def texts_and_colours(bench):
    bench.run("registry", "set", "Backgrounds", "Anzahl", "3")
    for i, kind in enumerate((1, 2, 3)):
        for name, value in (("Farbe 1", 0x000080 + 0x20), ("Farbe 2", 0xC06000), ("Verlauf", kind), ("Name", "g%i" % i)):
            bench.run("registry", "set", "Backgrounds\\Background %04i" % (i + 1), name, str(value))
    boxes = [(100, 100, 1400, 200), (100, 250, 800, 350), (100, 400, 500, 1100), (600, 400, 700, 1100)]
    words = "H" * 20  # the space that a letter has to its sides is small beside so many
    elements = [text(INLAY, boxes[0], words, 2), text(INLAY, boxes[1], words, 0), text(INLAY, boxes[2], words, 0, 1),
                text(INLAY, boxes[3], words, 2, 3)]
    layout(bench.file("l.awl"), elements)
    (page,) = bench.pages("--set", "ArtPrintWhat=2")
    left, top = 105 - 75, 148 - 59
    for name, box, along in (("whole field", boxes[0], 0), ("across", boxes[1], 0), ("across, turned", boxes[2], 1),
                             ("whole field, turned", boxes[3], 1)):
        ink = page.ink(left + box[0] / 10 - 3, top + box[1] / 10 - 2, left + box[2] / 10 + 3, top + box[3] / 10 + 3)
        size = (box[2 + along] - box[along]) / 10
        check("text, %s: per cent of its field" % name, ink and (ink[2 + along] - ink[along]) / size * 100, 100, 2)
    layout(bench.file("l.awl"), [text(INLAY, (100 + 450 * i, 300, 500 + 450 * i, 900), "", 1, 0, i, 0) for i in range(3)])
    (page,) = bench.pages("--set", "ArtPrintWhat=2")
    ends = (((0.1, 30), (39.9, 30)), ((20, 0.1), (20, 59.9)), ((0.1, 0.1), (39.9, 59.9)))
    for i, name in enumerate(("horizontal", "vertical", "diagonal")):
        for (x, y), colour, end in zip(ends[i], ((0xA0, 0, 0), (0, 0x60, 0xC0)), ("first", "last")):
            rgb = page.at(int((left + 10 + 45 * i + x) * MM), int((top + 30 + y) * MM))
            for channel in range(3):
                check("gradient, %s: %s colour, channel %i" % (name, end, channel), rgb[channel], colour[channel], 3)


def sheets(bench):
    layout(bench.file("l.awl"), [], (210, 297))
    (page,) = bench.pages("--set", "ArtPrintWhat=1", "--set", "ArtPrintBorder=1", "--set", "ArtLabelGrid=1 2")
    for i, y in enumerate((74.25, 222.75)):
        check("two labels: left edge of number %i" % (i + 1), page.line(40, y, 60, y), 6.5)
        check("two labels: top edge of number %i" % (i + 1), page.line(105, y - 66, 105, y - 50), 7.5)
    (page,) = bench.pages("--set", "ArtPrintWhat=6", "--set", "ArtPrintBorder=6", "--set", "ArtShareSheet=1",
                          "--set", "ArtPrintMarks=6")
    gap = (297 - 120 - 118) / 3
    middle = page.width / MM / 2
    check("front: left edge", page.line(middle - 70, gap + 60, middle - 40, gap + 60), 9.5)
    check("front: right edge", page.line(middle + 70, gap + 60, middle + 40, gap + 60), 9.5)
    check("front: top edge", page.line(middle, 2, middle, 40), gap - 2)
    check("inlay below it: top edge", page.line(middle, 2 * gap + 110, middle, 2 * gap + 130), 10)
    check("cut mark of the front", page.line(middle - 65, gap - 4, middle - 55, gap - 4), 4.5)


def marks(bench):
    layout(bench.file("l.awl"), [])
    label, inlay = bench.pages("--set", "ArtPrintWhat=3", "--set", "ArtPrintMarks=3")
    check("cut mark of the inlay: left", inlay.line(25, 85, 35, 85), 5)
    check("cut mark of the inlay: right", inlay.line(185, 85, 175, 85), 5)
    check("cut mark of the inlay: bottom", inlay.line(26, 200, 26, 212), 7)
    check("fold mark of the inlay: left", inlay.line(33, 87.2, 40, 87.2), 3.3)
    check("fold mark of the inlay: right", inlay.line(177, 87.2, 170, 87.2), 3.3)
    check("mark above the disc", label.line(100, 86, 110, 86), 5)
    check("mark in the hole: down", label.line(100, 147, 110, 147), 5)
    check("mark in the hole: across", label.line(104, 140, 104, 155), 8)


def small_disc(bench):
    words = "H" * 20
    layout(bench.file("l.awl"), [text(LABEL, (285, 150, 885, 200), words, 2)], label=(80, 20))
    (page,) = bench.pages("--set", "ArtPrintWhat=1", "--set", "ArtPrintBorder=1")
    check("disc of 80 mm: left edge", page.line(50, 148, 75, 148), 15)
    (page,) = bench.pages("--set", "ArtPrintWhat=1")
    ink = page.ink(75, 148 - 40 + 9, 135, 148 - 40 + 15)
    check("disc of 80 mm: text in its middle", ink and (ink[0] + ink[2]) / 2, 105)
    check("disc of 80 mm: width of the text", ink and ink[2] - ink[0], 60 * 80 / 117, 60 * 0.02)


def fitted(bench):
    layout(bench.file("l.awl"), [])
    bench.run("layout", "fit", "PDF-Datei", "--offset", "2.5,-1.5", "--scale", "101,99")
    (page,) = bench.pages("--set", "ArtPrintWhat=2", "--set", "ArtPrintBorder=2")
    check("fitted: left edge", page.line(10, 148, 60, 148), 30 * 1.01 + 2.5 - 10)
    check("fitted: right edge", page.line(205, 148, 150, 148), 205 - (180 * 1.01 + 2.5))
    check("fitted: top edge", page.line(105, 70, 105, 120), 89 * 0.99 - 1.5 - 70)
    bench.run("layout", "fit", "PDF-Datei", "--offset", "0,0", "--scale", "100,100")
    (page,) = bench.pages("--set", "ArtPrintWhat=0", "--set", "ArtCalibration=1")
    check("calibration page: line down", page.line(12, 30, 25, 30), 8)
    check("calibration page: line across", page.line(45, 12, 45, 25), 8)
    check("calibration page: end of the line across", page.line(130, 18.8, 118, 18.8), 10)
    check("calibration page: end of the line down", page.line(18.8, 130, 18.8, 118), 10)
    check("calibration page: five centimetres from the left", page.line(48, 9, 52, 9), 2)
    check("calibration page: ten centimetres from the top", page.line(9, 98, 9, 102), 2)


if len(sys.argv) != 2:
    sys.exit(__doc__)
if shutil.which("pdftoppm") is None:
    sys.exit(77)
with tempfile.TemporaryDirectory() as directory:
    bench = Bench(os.path.abspath(sys.argv[1]), directory)
    for part in (lines_to_cut_and_fold, texts_and_colours, sheets, marks, small_disc, fitted):
        part(bench)
print("%i faults" % faults)
sys.exit(faults != 0)
