#!/usr/bin/env python3
"""Images for the export's conversion tests under Wine, and the check of what GDI+ wrote, with Pillow.

make DIR:  writes source images, layout files and cases.txt (one conversion per line) into DIR.
check DIR: reads DIR/results.txt written by export_image_test and checks every output with Pillow, a decoder
           that is not GDI+: the format, the size, the zones black and every other pixel as in the source.
"""
import os
import shutil
import subprocess
import sys
import tempfile

from PIL import Image

W, H = 320, 240


def pattern(w, h):
    """A picture with no black pixel, varying everywhere, so a misplaced or missing zone shows."""
    img = Image.new("RGB", (w, h))
    img.putdata([(40 + (x * 7) % 200, 40 + (y * 5) % 200, 40 + ((x + y) * 3) % 200) for y in range(h) for x in range(w)])
    return img


def smooth(w, h):
    """Gentle gradients, what lossy re-encoding keeps close (ultrasound images are mostly like this)."""
    img = Image.new("RGB", (w, h))
    img.putdata([(60 + x * 120 // w, 60 + y * 120 // h, 160 - (x + y) * 80 // (w + h)) for y in range(h) for x in range(w)])
    return img


def blocks(w, h):
    """Flat areas of colours every GIF palette holds exactly (web-safe steps), for lossless GIF round trips."""
    steps = [0x33, 0x66, 0x99, 0xCC, 0xFF]
    img = Image.new("RGB", (w, h))
    img.putdata([(steps[(x // 16) % 5], steps[(y // 16) % 5], steps[((x // 16) + (y // 16)) % 5])
                 for y in range(h) for x in range(w)])
    return img


LAYOUTS = {
    # Zones given in screen coordinates (not full screen).
    "plain.xml": "<layout><zones>"
                 "<zone><xpos>10</xpos><ypos>20</ypos><width>100</width><height>30</height></zone>"
                 "<zone xpos='200' ypos='150' width='40' height='40'/>"
                 "</zones></layout>",
    # An 800 x 600 layout centred on a 1024 x 768 screen: offsets (112, 33).
    "fullscreen.xml": "<layout><fullscreen>1</fullscreen><zones>"
                      "<zone xpos='0' ypos='0' width='800' height='40'/>"
                      "<zone xpos='700' ypos='500' width='100' height='100'/>"
                      "</zones></layout>",
    # One zone sticks out of a 320 x 240 image, one lies wholly outside it.
    "outside.xml": "<layout><zones>"
                   "<zone xpos='-20' ypos='200' width='60' height='100'/>"
                   "<zone xpos='5000' ypos='10' width='10' height='10'/>"
                   "</zones></layout>",
}

# id, source, format code, privatize, layout, screen, expected output name (None: nothing produced),
# Pillow format, black rectangles (x, y, w, h) in the output, lossy (compare with a tolerance)
PLAIN_ZONES = [(10, 20, 100, 30), (200, 150, 40, 40)]
CASES = [
    ("bmp2jpg", "smooth.bmp", 1, 0, "", "", "smooth.jpg", "JPEG", [], True),
    ("png2bmp", "photo.png", 2, 0, "", "", "photo.bmp", "BMP", [], False),
    ("bmp2gif", "blocks.bmp", 3, 0, "", "", "blocks.gif", "GIF", [], False),
    ("png_private", "photo.png", 0, 1, "plain.xml", "", "photoc.png", "PNG", PLAIN_ZONES, False),
    ("bmp_private2bmp", "photo.bmp", 2, 1, "plain.xml", "", "photoc.bmp", "BMP", PLAIN_ZONES, False),
    ("png_private2jpg", "smooth.png", 1, 1, "plain.xml", "", "smoothc.jpg", "JPEG", PLAIN_ZONES, True),
    ("jpg_private", "photo.jpg", 0, 1, "plain.xml", "", "photoc.jpg", "JPEG", PLAIN_ZONES, True),
    ("gif_private", "blocks.gif", 0, 1, "plain.xml", "", "blocksc.gif", "GIF", PLAIN_ZONES, False),
    ("fullscreen", "screen.bmp", 0, 1, "fullscreen.xml", "1024x768", "screenc.bmp", "BMP",
     [(112, 33, 800, 40), (812, 533, 100, 100)], False),
    ("outside", "photo.png", 0, 1, "outside.xml", "", "photoc.png", "PNG", [(0, 200, 40, 40)], False),
    ("unreadable", "corrupt.jpg", 2, 0, "", "", None, None, [], False),
    ("unreadable_private", "corrupt.jpg", 0, 1, "plain.xml", "", None, None, [], False),
]


def make(folder):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    photo = pattern(W, H)
    photo.save(os.path.join(folder, "photo.bmp"))
    photo.save(os.path.join(folder, "photo.png"))
    photo.save(os.path.join(folder, "photo.jpg"), quality=95)
    soft = smooth(W, H)
    soft.save(os.path.join(folder, "smooth.bmp"))
    soft.save(os.path.join(folder, "smooth.png"))
    b = blocks(W, H)
    b.save(os.path.join(folder, "blocks.bmp"))
    b.convert("P", palette=Image.ADAPTIVE, colors=64).save(os.path.join(folder, "blocks.gif"))
    pattern(1024, 768).save(os.path.join(folder, "screen.bmp"))
    with open(os.path.join(folder, "corrupt.jpg"), "wb") as f:
        f.write(b"\xff\xd8\xff\xe0 not really a JPEG" + bytes(range(256)))
    for name, text in LAYOUTS.items():
        with open(os.path.join(folder, name), "w") as f:
            f.write(text)
    with open(os.path.join(folder, "cases.txt"), "w") as f:
        for case in CASES:
            f.write("|".join(str(v) for v in case[:6]) + "\n")
    study = os.path.join(folder, "burn", "P1", "S1")
    os.makedirs(study)
    with open(os.path.join(folder, "burn", "P1", "patient.xml"), "w") as f:
        f.write("<patient/>")
    with open(os.path.join(study, "study.xml"), "w") as f:
        f.write("<study/>")
    soft.save(os.path.join(study, "smooth.png"))


def inside(rects, x, y, margin=0):
    return any(rx - margin <= x < rx + rw + margin and ry - margin <= y < ry + rh + margin
               for rx, ry, rw, rh in rects)


def check_case(folder, case, result, present):
    cid, source, _fmt, _priv, _layout, _screen, expected, pil_format, rects, lossy = case
    if expected is None:
        if present == "1" or os.listdir(os.path.join(folder, "out", cid)):
            return "%s: a failed conversion left %s behind" % (cid, os.listdir(os.path.join(folder, "out", cid)))
        return None
    if os.path.basename(result.replace("\\", "/")) != expected or present != "1":
        return "%s: produced %r (present %s), expected %s" % (cid, result, present, expected)
    leftovers = sorted(set(os.listdir(os.path.join(folder, "out", cid))) - {expected})
    if leftovers:
        return "%s: intermediate files left: %s" % (cid, leftovers)
    out = Image.open(os.path.join(folder, "out", cid, expected))
    if out.format != pil_format:
        return "%s: format %s, expected %s" % (cid, out.format, pil_format)
    src = Image.open(os.path.join(folder, source)).convert("RGB")
    if out.size != src.size:
        return "%s: size %s, expected %s" % (cid, out.size, src.size)
    got = out.convert("RGB").load()
    ref = src.load()
    w, h = src.size
    # JPEG re-encoding rings near edges of its 8 x 8 blocks: lossy cases skip a margin around each zone and are
    # judged by the mean difference (a misplaced or missing zone moves the mean far more than the encoder does).
    margin = 8 if lossy else 0
    black_sum = black_n = black_max = 0
    diff_sum = diff_n = diff_max = 0
    for y in range(h):
        for x in range(w):
            if inside(rects, x, y, -margin):
                v = max(got[x, y])
                black_sum, black_n, black_max = black_sum + v, black_n + 1, max(black_max, v)
            elif not inside(rects, x, y, margin):
                d = max(abs(a - b) for a, b in zip(got[x, y], ref[x, y]))
                diff_sum, diff_n, diff_max = diff_sum + d, diff_n + 1, max(diff_max, d)
    black_mean = black_sum / black_n if black_n else 0
    diff_mean = diff_sum / diff_n if diff_n else 0
    if lossy:
        if black_mean > 4 or black_max > 48:
            return "%s: zones are not black (mean %.1f, max %d)" % (cid, black_mean, black_max)
        if diff_mean > 6:
            return "%s: pixels outside the zones changed (mean %.1f)" % (cid, diff_mean)
    else:
        if black_max:
            return "%s: a zone pixel is not black (channel up to %d)" % (cid, black_max)
        if diff_max:
            return "%s: pixels outside the zones changed (by up to %d)" % (cid, diff_max)
    return None


def check(folder):
    results = {}
    with open(os.path.join(folder, "results.txt"), encoding="utf-8") as f:
        for line in f:
            cid, result, present = line.rstrip("\n").split("|")
            results[cid] = (result, present)
    failures = []
    for case in CASES:
        if case[0] not in results:
            failures.append("%s: no result" % case[0])
            continue
        problem = check_case(folder, case, *results[case[0]])
        if problem:
            failures.append(problem)
        else:
            print("ok   %s" % case[0])
    for problem in failures:
        print("FAIL " + problem)
    print("%d cases, %d failed" % (len(CASES), len(failures)))
    return 1 if failures else 0


def burn_check(folder):
    image = os.path.join(folder, "burn.iso")
    listing = subprocess.run(["xorriso", "-indev", image, "-find", "/", "-type", "f"], capture_output=True,
                             text=True).stdout.split()
    files = sorted(p.strip("'") for p in listing)
    stamp = [p for p in files if p.endswith("/P1/S1/smoothc.jpg")]
    expected = {"/P1/patient.xml", "/P1/S1/study.xml", "/P1/S1/smoothc.jpg"}
    if len(stamp) != 1 or not stamp[0].startswith("/Exports/"):
        print("FAIL the image's files are %s" % files)
        return 1
    top = stamp[0][: -len("/P1/S1/smoothc.jpg")]
    if {p[len(top):] for p in files} != expected:
        print("FAIL the image holds %s, expected %s below %s" % (files, sorted(expected), top))
        return 1
    with tempfile.TemporaryDirectory() as out:
        os.makedirs(os.path.join(out, "burn", "out", "fromdisc"))
        target = os.path.join(out, "burn", "out", "fromdisc", "smoothc.jpg")
        subprocess.run(["xorriso", "-osirrox", "on", "-indev", image, "-extract", stamp[0], target],
                       capture_output=True)
        shutil.copy(os.path.join(folder, "burn", "P1", "S1", "smooth.png"), os.path.join(out, "burn", "smooth.png"))
        case = ("fromdisc", "smooth.png", 1, 1, "plain.xml", "", "smoothc.jpg", "JPEG", PLAIN_ZONES, True)
        problem = check_case(os.path.join(out, "burn"), case, target, "1") if os.path.exists(target) else "not extracted"
        if problem:
            print("FAIL " + problem)
            return 1
    print("ok   %s holds the converted, blacked-out study below %s" % (image, top))
    return 0


if __name__ == "__main__":
    commands = {"make": make, "check": check, "burn-check": burn_check}
    if len(sys.argv) != 3 or sys.argv[1] not in commands:
        sys.exit(__doc__)
    sys.exit(commands[sys.argv[1]](sys.argv[2]))
