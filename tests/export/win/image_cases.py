#!/usr/bin/env python3
"""Images for the export's conversion tests under Wine, and the check of what GDI+ wrote, with Pillow.

make DIR:       writes source images, layouts, cases.txt (one conversion a line) and a study to burn into DIR.
check DIR:      checks every output listed in DIR/results.txt (written by export_image_test) with Pillow, a decoder
                that is not GDI+: the format, the size, the zones black and every other pixel as in the source.
burn-check DIR: the same for the blacked-out JPEG inside DIR/burn.iso (written by uctool export burn), via xorriso.
"""
import os
import shutil
import subprocess
import sys
import tempfile

from PIL import Image


def picture(w, h, colour):
    img = Image.new("RGB", (w, h))
    img.putdata([colour(x, y, w, h) for y in range(h) for x in range(w)])
    return img


# No black pixel and varying everywhere, so a misplaced or missing zone shows.
PATTERN = lambda x, y, w, h: (40 + x * 7 % 200, 40 + y * 5 % 200, 40 + (x + y) * 3 % 200)
# Gentle gradients, what lossy re-encoding keeps close (ultrasound images are mostly like this).
SMOOTH = lambda x, y, w, h: (60 + x * 120 // w, 60 + y * 120 // h, 160 - (x + y) * 80 // (w + h))
# Flat areas of web-safe colours, which every GIF palette holds exactly.
BLOCKS = lambda x, y, w, h: tuple(0x33 * (1 + v % 5) for v in (x // 16, y // 16, x // 16 + y // 16))

LAYOUTS = {
    "plain.xml": "<layout><zones><zone><xpos>10</xpos><ypos>20</ypos><width>100</width><height>30</height></zone>"
                 "<zone xpos='200' ypos='150' width='40' height='40'/></zones></layout>",
    # An 800 x 600 layout on a 1024 x 768 screen: offsets (112, 33).
    "fullscreen.xml": "<layout><fullscreen>1</fullscreen><zones><zone xpos='0' ypos='0' width='800' height='40'/>"
                      "<zone xpos='700' ypos='500' width='100' height='100'/></zones></layout>",
    # One zone sticks out of the 320 x 240 image, one lies wholly outside it.
    "outside.xml": "<layout><zones><zone xpos='-20' ypos='200' width='60' height='100'/>"
                   "<zone xpos='5000' ypos='10' width='10' height='10'/></zones></layout>",
}
PLAIN = [(10, 20, 100, 30), (200, 150, 40, 40)]
# id, source, format code, privatize, layout, screen, output (None: nothing), Pillow format, black zones, lossy
CASES = [
    ("bmp2jpg", "smooth.bmp", 1, 0, "-", "-", "smooth.jpg", "JPEG", [], True),
    ("png2bmp", "photo.png", 2, 0, "-", "-", "photo.bmp", "BMP", [], False),
    ("bmp2gif", "blocks.bmp", 3, 0, "-", "-", "blocks.gif", "GIF", [], False),
    ("png_private", "photo.png", 0, 1, "plain.xml", "-", "photoc.png", "PNG", PLAIN, False),
    ("bmp_private2bmp", "photo.bmp", 2, 1, "plain.xml", "-", "photoc.bmp", "BMP", PLAIN, False),
    ("png_private2jpg", "smooth.png", 1, 1, "plain.xml", "-", "smoothc.jpg", "JPEG", PLAIN, True),
    ("jpg_private", "photo.jpg", 0, 1, "plain.xml", "-", "photoc.jpg", "JPEG", PLAIN, True),
    ("gif_private", "blocks.gif", 0, 1, "plain.xml", "-", "blocksc.gif", "GIF", PLAIN, False),
    ("fullscreen", "screen.bmp", 0, 1, "fullscreen.xml", "1024x768", "screenc.bmp", "BMP",
     [(112, 33, 800, 40), (812, 533, 100, 100)], False),
    ("outside", "photo.png", 0, 1, "outside.xml", "-", "photoc.png", "PNG", [(0, 200, 40, 40)], False),
    ("unreadable", "corrupt.jpg", 2, 0, "-", "-", None, None, [], False),
    ("unreadable_private", "corrupt.jpg", 0, 1, "plain.xml", "-", None, None, [], False),
]


def make(folder):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(os.path.join(folder, "burn", "P1", "S1"))
    at = lambda *p: os.path.join(folder, *p)
    photo, soft, blocks = (picture(320, 240, c) for c in (PATTERN, SMOOTH, BLOCKS))
    for image, name in ((photo, "photo.bmp"), (photo, "photo.png"), (soft, "smooth.bmp"), (soft, "smooth.png"),
                        (blocks, "blocks.bmp"), (soft, "burn/P1/S1/smooth.png")):
        image.save(at(name))
    photo.save(at("photo.jpg"), quality=95)
    blocks.convert("P", palette=Image.ADAPTIVE, colors=64).save(at("blocks.gif"))
    picture(1024, 768, PATTERN).save(at("screen.bmp"))
    files = dict(LAYOUTS, **{"corrupt.jpg": "\xff\xd8\xff\xe0 not really a JPEG" + "".join(map(chr, range(256))), "burn/P1/patient.xml": "<patient/>",
                             "burn/P1/S1/study.xml": "<study/>",
                             "cases.txt": "".join(" ".join(map(str, c[:6])) + "\n" for c in CASES)})
    for name, text in files.items():
        with open(at(name), "w", encoding="latin-1") as f:
            f.write(text)


def check_case(folder, case, result, present):
    cid, source, _, _, _, _, expected, pil_format, rects, lossy = case
    out_dir = os.path.join(folder, "out", cid)
    left = sorted(os.listdir(out_dir)) if os.path.isdir(out_dir) else []
    if expected is None:
        return "a failed conversion left %s behind" % left if present == "1" or left else None
    if os.path.basename(result.replace("\\", "/")) != expected or present != "1" or left != [expected]:
        return "produced %r (present %s, folder holds %s), expected %s" % (result, present, left, expected)
    out = Image.open(os.path.join(out_dir, expected))
    src = Image.open(os.path.join(folder, source)).convert("RGB")
    if (out.format, out.size) != (pil_format, src.size):
        return "%s %s, expected %s %s" % (out.format, out.size, pil_format, src.size)
    got, ref = out.convert("RGB").load(), src.load()
    # JPEG rings near its 8 x 8 block edges: lossy cases skip a margin around each zone and are judged by the
    # mean difference (a misplaced or missing zone moves the mean far more than the encoder does).
    margin = 8 if lossy else 0
    inside = lambda x, y, m: any(rx - m <= x < rx + rw + m and ry - m <= y < ry + rh + m for rx, ry, rw, rh in rects)
    black, other = [], []
    for y in range(src.size[1]):
        for x in range(src.size[0]):
            if inside(x, y, -margin):
                black.append(max(got[x, y]))
            elif not inside(x, y, margin):
                other.append(max(abs(a - b) for a, b in zip(got[x, y], ref[x, y])))
    mean = lambda v: sum(v) / len(v) if v else 0
    if black and (mean(black) > 4 or max(black) > 48) if lossy else any(black):
        return "zones are not black (mean %.1f, max %d)" % (mean(black), max(black))
    if mean(other) > 6 if lossy else any(other):
        return "pixels outside the zones changed (mean %.1f, max %d)" % (mean(other), max(other))
    return None


def report(problems):
    for cid, problem in problems:
        print("%s %s%s" % ("FAIL" if problem else "ok  ", cid, ": " + problem if problem else ""))
    failed = sum(1 for _, p in problems if p)
    print("%d cases, %d failed" % (len(problems), failed))
    return 1 if failed else 0


def check(folder):
    with open(os.path.join(folder, "results.txt"), encoding="utf-8") as f:
        results = {line.split("|")[0]: line.rstrip("\n").split("|")[1:] for line in f}
    return report([(c[0], check_case(folder, c, *results[c[0]]) if c[0] in results else "no result") for c in CASES])


def burn_check(folder):
    image = os.path.join(folder, "burn.iso")
    listing = subprocess.run(["xorriso", "-indev", image, "-find", "/", "-type", "f"], capture_output=True,
                             text=True).stdout.split()
    files = sorted(p.strip("'") for p in listing)
    found = [p for p in files if p.startswith("/Exports/") and p.endswith("/P1/S1/smoothc.jpg")]
    top = found[0][: -len("/P1/S1/smoothc.jpg")] if len(found) == 1 else ""
    if {p[len(top):] for p in files} != {"/P1/patient.xml", "/P1/S1/study.xml", "/P1/S1/smoothc.jpg"}:
        return report([("burn", "the image holds %s" % files)])
    with tempfile.TemporaryDirectory() as work:
        os.makedirs(os.path.join(work, "out", "fromdisc"))
        target = os.path.join(work, "out", "fromdisc", "smoothc.jpg")
        subprocess.run(["xorriso", "-osirrox", "on", "-indev", image, "-extract", found[0], target], capture_output=True)
        shutil.copy(os.path.join(folder, "smooth.png"), work)
        case = ("fromdisc", "smooth.png", 1, 1, "plain.xml", "-", "smoothc.jpg", "JPEG", PLAIN, True)
        return report([("burn " + top, check_case(work, case, target, "1" if os.path.exists(target) else "0"))])


if __name__ == "__main__":
    commands = {"make": make, "check": check, "burn-check": burn_check}
    if len(sys.argv) != 3 or sys.argv[1] not in commands:
        sys.exit(__doc__)
    sys.exit(commands[sys.argv[1]](sys.argv[2]))
