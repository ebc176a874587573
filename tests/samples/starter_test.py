#!/usr/bin/env python3
"""Checks the starter definitions against real files made on this machine.

    starter_test.py QVRACI_RULES EXAMPLES_DIR WORK_DIR

- examples/common.qrrs is what `build` makes of examples/common.txt;
- every sample is identified as the definition it belongs to, and ended exactly where the
  definition can tell its end (`identify`), as are samples cut short or followed by junk;
- a disk image of all samples, each on a block boundary, scans to every sample at its
  offset, with its exact length where the definition has a size field, a footer or the
  end of text, or where the scanner walks the format's structure, and ending at the next
  file otherwise;
- foremost's, scalpel's and photorec's configurations import;
- random data holds no file.
"""

import json
import os
import random
import re
import shutil
import subprocess
import sys

import make_samples

# sample: (definition path, whether the definition finds the exact end)
EXPECTED = {
    "image.jpg": ("Images/JPEG image", True),
    "image.png": ("Images/PNG image", True),
    "image.gif": ("Images/GIF image", True),
    "image.bmp": ("Images/BMP image", True),
    "image.tif": ("Images/TIFF image", True),
    "image.webp": ("Images/WebP image", True),
    "image.ico": ("Images/Windows icon/Windows icon, one image", True),
    "image.psd": ("Images/Photoshop image", False),
    "paper.pdf": ("Documents/PDF document", True),
    "paper.ps": ("Documents/PostScript document", True),
    "letter.rtf": ("Documents/RTF document", True),
    "page.html": ("Documents/HTML page", True),
    "data.xml": ("Documents/XML document", True),
    "archive.zip": ("Archives/ZIP archive", True),
    "letter.docx": ("Archives/ZIP archive/Office Open XML document", True),
    "letter.odt": ("Archives/ZIP archive/OpenDocument text", True),
    "sheet.ods": ("Archives/ZIP archive/OpenDocument spreadsheet", True),
    "book.epub": ("Archives/ZIP archive/EPUB book", True),
    "archive.gz": ("Archives/gzip archive", True),
    "archive.bz2": ("Archives/bzip2 archive", True),
    "archive.xz": ("Archives/xz archive", True),
    "archive.tar": ("Archives/tar archive", True),
    "sound.wav": ("Audio/WAV audio", True),
    "sound.aiff": ("Audio/AIFF audio", True),
    "sound.au": ("Audio/Sun audio/Sun audio, 44-byte header", True),
    "sound.flac": ("Audio/FLAC audio", False),
    "sound.ogg": ("Audio/Ogg audio", True),
    "sound.mp3": ("Audio/MP3 audio", True),
    "sound.mid": ("Audio/MIDI music/MIDI music, one track", True),
    "movie.avi": ("Video/AVI video", True),
    "movie.mp4": ("Video/MP4 video", True),
    "movie.mov": ("Video/MP4 video/QuickTime movie", True),
    "movie.mkv": ("Video/Matroska video", True),
    "movie.webm": ("Video/Matroska video/WebM video", True),
    "movie.mpg": ("Video/MPEG video", True),
    "movie.flv": ("Video/Flash video", True),
    "movie.wmv": ("Video/Windows Media video/Windows Media video, file properties first", True),
    "program.elf": ("Programs/ELF program", True),
    "program.exe": ("Programs/DOS header/Windows program", False),
    "module.pyc": ("Programs/Python bytecode", False),
    "store.sqlite": ("Databases/SQLite database/SQLite database, 4 KiB pages", True),
    "font.ttf": ("Fonts/TrueType font", True),
    "font.otf": ("Fonts/OpenType font", True),
}
BLOCK = 512
# Passive definitions start a file only when none is open, so in the image each of these
# follows a file that has ended.
PASSIVE = ["module.pyc", "movie.mpg"]

failures = []


def check(condition, message):
    if not condition:
        failures.append(message)


def rules(*args):
    return subprocess.run([TOOL, *args], capture_output=True, text=True)


def test_built_file_is_current():
    built = os.path.join(WORK, "common.qrrs")
    result = rules("build", os.path.join(EXAMPLES, "common.txt"), built, "--force")
    check(result.returncode == 0, "build of common.txt failed: " + result.stderr)
    with open(built, "rb") as a, open(os.path.join(EXAMPLES, "common.qrrs"), "rb") as b:
        check(a.read() == b.read(), "examples/common.qrrs is not what common.txt builds")
    check(len(EXPECTED) >= 25, "fewer than 25 file types are checked")


def identify(*paths):
    result = rules("identify", *paths, "--report", "json")
    return result.returncode, {os.path.basename(r["path"]): r for r in json.loads(result.stdout)}


def test_every_sample_is_identified(samples, qrrs):
    made = sorted(f for f in os.listdir(samples))
    check(made == sorted(EXPECTED), "samples made and expected differ: %s" %
          sorted(set(made) ^ set(EXPECTED)))
    code, found = identify(qrrs, samples)
    for name, (definition, exact) in EXPECTED.items():
        r = found.get(name, {})
        check(r.get("definition") == definition and r.get("extension") == name.rsplit(".", 1)[1],
              "%s was identified as %s" % (name, r))
        check((r.get("verdict") == "exact") == exact, "%s: %s" % (name, r))
    check(code == 1, "identify says all is well though some samples have no end")
    # What a definition's author meets: a sample cut short, one with bytes after its end,
    # a file no definition knows; and a folder of good samples passes.
    good = os.path.join(WORK, "good")
    shutil.rmtree(good, ignore_errors=True)
    os.makedirs(good)
    with open(os.path.join(samples, "image.png"), "rb") as f:
        png = f.read()
    for name, data in [("cut.png", png[:1000]), ("long.png", png + b"junk"),
                       ("image.png", png), ("unknown.bin", random.Random(3).randbytes(4096))]:
        with open(os.path.join(good, name), "wb") as out:
            out.write(data)
    code, found = identify(qrrs, good)
    verdicts = {n: (r["verdict"], r["by"]) for n, r in found.items()}
    check(verdicts == {"cut.png": ("no end", 0), "long.png": ("short", 4),
                       "image.png": ("exact", 0), "unknown.bin": ("unrecognised", 0)},
          "identify: %s" % verdicts)
    check(code == 1, "identify exits %d on bad samples" % code)
    code, _ = identify(qrrs, os.path.join(good, "image.png"))
    check(code == 0, "identify exits %d on a good sample" % code)


def test_scan_finds_every_sample(samples, qrrs):
    image = os.path.join(WORK, "image.bin")
    placed = []  # (offset, name, size, padded size)
    with open(image, "wb") as out:
        out.write(bytes(BLOCK))
        others = sorted(set(EXPECTED) - set(PASSIVE) - {"sound.wav"})
        for name in [PASSIVE[0], "sound.wav", PASSIVE[1]] + others:
            with open(os.path.join(samples, name), "rb") as f:
                data = f.read()
            padded = -(-len(data) // BLOCK) * BLOCK
            placed.append((out.tell(), name, len(data), padded))
            out.write(data + bytes(padded - len(data)))
        out.write(bytes(8 * BLOCK))
    result = rules("scan", qrrs, image, "--report", "json")
    check(result.returncode == 0, "scan failed: " + result.stderr)
    found = {f["offset"]: (f["length"], f["definition"], f["ended"])
             for f in json.loads(result.stdout)}
    check(len(found) == len(placed), "scan found %d files, not %d:\n%s" %
          (len(found), len(placed), result.stdout))
    for offset, name, size, padded in placed:
        definition, exact = EXPECTED[name]
        if offset not in found:
            check(False, "%s at %d was not found" % (name, offset))
            continue
        length, got, how = found[offset]
        check(got == definition, "%s was found as %s" % (name, got))
        if exact:
            check(length == size, "%s: length %d, not %d (%s)" % (name, length, size, how))
        else:
            check(length == padded and how == "next start",
                  "%s: length %d (%s), not %d up to the next file" % (name, length, how, padded))


def test_import_other_carvers(samples):
    """The packaged foremost.conf and scalpel.conf, and a photorec signature file: every
    definition line is converted or named as left out, the text builds, and the imported
    JPEG, PNG and ZIP definitions recognise their samples."""
    sig = os.path.join(WORK, "photorec.sig")
    with open(sig, "w") as out:
        out.write('png 0 0x89504e47 0x0d0a1a0a\nzip 0 "PK", 0x0304\nbad 0 0x123\n')
    configs = [("foremost", "/etc/foremost.conf"), ("scalpel", "/etc/scalpel/scalpel.conf"),
               ("photorec", sig)]
    entry = re.compile(r"^\s*#?\s*\S+\s+[yYnN]\s+\d+\s+\S")
    found = {}
    for kind, config in configs:
        text = os.path.join(WORK, kind + ".txt")
        result = rules("import", kind, config, text, "--commented", "--force")
        check(result.returncode == 0, "import %s: %s" % (kind, result.stderr))
        with open(text) as f:
            converted = f.read().count('\n  definition "')
        left = result.stderr.count(": left out\n")
        with open(config) as f:
            lines = f.read().splitlines()
        wanted = 3 if kind == "photorec" else sum(1 for l in lines if entry.match(l))
        check(converted + left == wanted and converted > 0,
              "import %s: %d converted + %d left out, not %d lines" %
              (kind, converted, left, wanted))
        built = os.path.join(WORK, kind + ".qrrs")
        result = rules("build", text, built, "--force")
        check(result.returncode == 0, "build of imported %s: %s" % (kind, result.stderr))
        _, found[kind] = identify(built, samples)
    for kind, name in [("foremost", "image.jpg"), ("foremost", "archive.zip"),
                       ("scalpel", "archive.zip"), ("photorec", "image.png"),
                       ("photorec", "archive.zip")]:
        r = found[kind].get(name, {})
        check(r.get("definition", "").startswith(kind) and r.get("verdict") == "exact",
              "imported %s: %s: %s" % (kind, name, r))


def test_random_data_holds_no_file(qrrs):
    noise = os.path.join(WORK, "noise.bin")
    with open(noise, "wb") as out:
        out.write(random.Random(5).randbytes(8 << 20))
    result = rules("scan", qrrs, noise, "--report", "json")
    check(result.returncode == 0 and json.loads(result.stdout) == [],
          "random data: " + result.stdout + result.stderr)


def main():
    samples = os.path.join(WORK, "samples")
    shutil.rmtree(samples, ignore_errors=True)
    make_samples.OUT = samples
    make_samples.main()
    qrrs = os.path.join(EXAMPLES, "common.qrrs")
    test_built_file_is_current()
    test_every_sample_is_identified(samples, qrrs)
    test_scan_finds_every_sample(samples, qrrs)
    test_import_other_carvers(samples)
    test_random_data_holds_no_file(qrrs)
    for f in failures:
        print("FAIL:", f)
    print("%d samples, %d failures" % (len(EXPECTED), len(failures)))
    return 1 if failures else 0


if __name__ == "__main__":
    TOOL, EXAMPLES, WORK = sys.argv[1:4]
    os.makedirs(WORK, exist_ok=True)
    sys.exit(main())
