#!/usr/bin/env python3
"""Compares `qvraci-rules scan` with the open-source carvers photorec, foremost and scalpel
on a synthetic disk image with a known layout.

    bench/carvers.py [--size-mib 512] [--seed 1] [--work DIR] [--tools a,b,...]
                     [--rules PATH-TO-qvraci-rules]

The image holds random filler, text runs, zero runs and real files of twelve common types
(made here by ImageMagick, Ghostscript, sox, ffmpeg and Python), each starting on a
512-byte sector; the same size and seed give the same image. Every tool looks for the same
twelve types. Its output is judged by content: a carved file that equals a placed file is
exact; one that holds a placed file's first sector but differs is partial; anything else
is a false positive. Prints one table: wall time, MB/s, peak memory, exact, partial, false
positives, and the reading speed of the image from the page cache for scale.
"""

import argparse
import hashlib
import os
import random
import shutil
import struct
import subprocess
import sys
import time
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
SECTOR = 512
TYPES = ["jpg", "png", "gif", "bmp", "pdf", "zip", "wav", "avi", "mp4", "mpg", "wmv", "html"]


def run(*args, cwd=None):
    subprocess.run(args, check=True, cwd=cwd, stdout=subprocess.DEVNULL,
                   stderr=subprocess.PIPE)


# ---- The files placed in the image ------------------------------------------------------

def make_pool(folder):
    """Four files of each type, of different sizes."""
    os.makedirs(folder, exist_ok=True)
    pool = []

    def add(name):
        pool.append(os.path.join(folder, name))

    sizes = ["160x120", "640x480", "1024x768", "1600x1200"]
    for i, size in enumerate(sizes):
        source = os.path.join(folder, "source%d.ppm" % i)
        run("convert", "-seed", str(i + 1), "-size", size, "plasma:", source)
        for ext in ["jpg", "png", "gif", "bmp"]:
            name = "p%d.%s" % (i, ext)
            run("convert", source, "-strip", os.path.join(folder, name))
            add(name)
        os.remove(source)
        pages = 1 + 6 * i
        program = os.path.join(folder, "doc%d.ps" % i)
        with open(program, "w") as f:
            for page in range(pages):
                f.write("/Helvetica findfont 12 scalefont setfont\n" +
                        "".join("72 %d moveto (Page %d line %d of document %d) show\n" %
                                (720 - 14 * n, page, n, i) for n in range(45)) + "showpage\n")
        run("gs", "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-sDEVICE=pdfwrite",
            "-sOutputFile=" + os.path.join(folder, "d%d.pdf" % i), program)
        os.remove(program)
        add("d%d.pdf" % i)
        rng = random.Random(100 + i)
        with zipfile.ZipFile(os.path.join(folder, "a%d.zip" % i), "w", zipfile.ZIP_DEFLATED) as z:
            z.writestr("random.bin", rng.randbytes(20000 << i))
            z.writestr("text.txt", ("line of text %d\n" % i) * (3000 << i))
        add("a%d.zip" % i)
        seconds = str(1 + 4 * i)
        run("sox", "-n", "-r", "22050", "-c", "2", os.path.join(folder, "s%d.wav" % i), "synth",
            seconds, "sine", str(300 + 100 * i))
        add("s%d.wav" % i)
        video = ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
                 "testsrc=size=320x240:rate=15:duration=" + seconds, "-f", "lavfi", "-i",
                 "sine=frequency=440:duration=" + seconds, "-shortest", "-fflags", "+bitexact"]
        for ext, codecs in [("avi", ["-c:v", "mpeg4", "-c:a", "pcm_s16le"]),
                            ("mp4", ["-c:v", "mpeg4", "-c:a", "aac"]),
                            ("mpg", ["-c:v", "mpeg2video", "-c:a", "mp2"]),
                            ("wmv", ["-c:v", "wmv2", "-c:a", "wmav2"])]:
            run(*video, *codecs, os.path.join(folder, "v%d.%s" % (i, ext)))
            add("v%d.%s" % (i, ext))
        body = "".join("<p>Paragraph %d of page %d: recovered text.</p>\n" % (n, i)
                       for n in range(40 << i))
        with open(os.path.join(folder, "h%d.html" % i), "w") as f:
            f.write("<!DOCTYPE html>\n<html><head><title>Page %d</title></head><body>\n%s"
                    "</body></html>\n" % (i, body))
        add("h%d.html" % i)
    return pool


def build_image(path, size, seed, pool):
    """Files and filler until the image has `size` bytes; returns the placed files as
    (offset, length, sample path)."""
    rng = random.Random(seed)
    contents = {p: open(p, "rb").read() for p in pool}
    words = b"the quick brown fox jumps over a lazy dog while data waits to be found ".split()
    placed = []
    with open(path, "wb") as out:
        while out.tell() < size:
            kind = rng.random()
            if kind < 0.5:
                sample = rng.choice(pool)
                data = contents[sample]
                if out.tell() + len(data) > size:
                    break
                placed.append((out.tell(), len(data), sample))
                out.write(data)
                # Whatever follows starts on the next sector.
                out.write(rng.randbytes(-len(data) % SECTOR))
            elif kind < 0.75:
                out.write(rng.randbytes(SECTOR * rng.randint(1, 256)))
            elif kind < 0.9:
                n = SECTOR * rng.randint(1, 64)
                text = b""
                while len(text) < n:
                    text += b" ".join(rng.choice(words) for _ in range(12)) + b"\n"
                out.write(text[:n])
            else:
                out.write(bytes(SECTOR * rng.randint(1, 512)))
        out.truncate(size)
    return placed


# ---- The tools --------------------------------------------------------------------------

def qvraci_rules_text(common, keep):
    """The definitions of common.txt whose extension is in keep, in their containers."""
    lines = open(common).read().splitlines()
    out, stack = [], []  # stack: for each open definition, whether it is kept
    for line in lines:
        stripped = line.strip()
        if stripped.startswith("definition "):
            ext = stripped.split(' ext "', 1)[1].split('"', 1)[0] if ' ext "' in stripped else ""
            container = not stack and " mode never" in stripped  # a top-level group
            parent_kept = all(stack)
            kept = parent_kept and (container or ext in keep)
            stack.append(kept)
            if kept:
                out.append(line)
        elif stripped == "}":
            if stack.pop():
                out.append(line)
        elif all(stack) and (stack or not stripped.startswith("#")):
            out.append(line)
    return "\n".join(out) + "\n"


SCALPEL_CONF = r"""
jpg y 20000000 \xff\xd8\xff \xff\xd9
png y 20000000 \x89PNG\x0d\x0a\x1a\x0a IEND\xae\x42\x60\x82
gif y 20000000 GIF8?a \x00\x3b
bmp y 20000000 BM????\x00\x00\x00\x00
pdf y 50000000 %PDF- %%EOF\x0a
zip y 100000000 PK\x03\x04 PK\x05\x06
wav y 200000000 RIFF????WAVE
avi y 200000000 RIFF????AVI
mp4 y 200000000 \x00\x00\x00?ftyp
mpg y 200000000 \x00\x00\x01\xba \x00\x00\x01\xb9
wmv y 200000000 \x30\x26\xb2\x75\x8e\x66\xcf\x11\xa6\xd9\x00\xaa\x00\x62\xce\x6c
html n 5000000 <!DOCTYPE\x20html </html>\x0a
"""


def tool_commands(name, image, out, work, rules):
    qrrs = os.path.join(work, "twelve.qrrs")
    if name == "qvraci-rules":
        return [[rules, "scan", qrrs, image, "--carve", out, "--report", "csv"]]
    if name == "qvraci-report":  # the scan alone: the report, without writing the files
        return [[rules, "scan", qrrs, image, "--report", "csv"]]
    if name == "photorec":
        # photorec names its file families: riff covers AVI and WAV, mov covers MP4, and
        # txt covers HTML.
        families = ["jpg", "png", "gif", "bmp", "pdf", "zip", "riff", "mov", "mpg", "asf",
                    "txt"]
        options = "fileopt,everything,disable," + ",".join(f + ",enable" for f in families)
        return [["photorec", "/log", "/d", os.path.join(out, "f"), "/cmd", image,
                 options + ",search"]]
    if name == "foremost":
        return [["foremost", "-Q", "-q", "-t", "jpg,png,gif,bmp,pdf,zip,wav,avi,mov,mpg,wmv,htm",
                 "-i", image, "-o", os.path.join(out, "f")]]
    if name == "scalpel":
        conf = os.path.join(work, "scalpel.conf")
        with open(conf, "w") as f:
            f.write(SCALPEL_CONF)
        return [["scalpel", "-c", conf, "-o", os.path.join(out, "f"), image]]
    raise SystemExit("unknown tool " + name)


def timed(command, cwd):
    """Wall time and peak resident memory (bytes) of one command, by GNU time."""
    report = os.path.join(cwd, "..", "time-" + os.path.basename(cwd) + ".txt")
    started = time.perf_counter()
    status = subprocess.run(["/usr/bin/time", "-f", "%M", "-o", report, *command], cwd=cwd,
                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                            stdin=subprocess.DEVNULL).returncode
    elapsed = time.perf_counter() - started
    if status != 0:
        raise SystemExit("%s failed with status %d" % (command[0], status))
    with open(report) as f:
        peak_kib = int(f.read().split()[-1])
    return elapsed, peak_kib * 1024


def judge(out, placed, contents):
    """(exact, partial, false positives) of the files under out."""
    wanted = {}
    for _, _, sample in placed:
        wanted[contents[sample][0]] = wanted.get(contents[sample][0], 0) + 1
    heads = {contents[s][1]: s for _, _, s in placed}
    exact = partial = false = 0
    for folder, _, files in os.walk(out):
        for name in files:
            path = os.path.join(folder, name)
            if name in ("audit.txt", "report.xml") or name.endswith(".log"):
                continue
            with open(path, "rb") as f:
                data = f.read()
            digest = hashlib.sha1(data).digest()
            if wanted.get(digest, 0) > 0:
                wanted[digest] -= 1
                exact += 1
            elif hashlib.sha1(data[:SECTOR]).digest() in heads:
                partial += 1
            else:
                false += 1
    return exact, partial, false


def read_speed(image):
    with open(image, "rb") as f:  # once to fill the page cache
        while f.read(8 << 20):
            pass
    started = time.perf_counter()
    with open(image, "rb") as f:
        while f.read(8 << 20):
            pass
    return time.perf_counter() - started


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--size-mib", type=int, default=512)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--work", default=os.path.join(ROOT, "build", "carvers"))
    parser.add_argument("--tools",
                        default="qvraci-report,qvraci-rules,photorec,foremost,scalpel")
    parser.add_argument("--rules", default=os.path.join(
        ROOT, "build", "release", "tools", "qvraci-rules", "qvraci-rules"))
    a = parser.parse_args()

    work = os.path.abspath(a.work)
    os.makedirs(work, exist_ok=True)
    pool_dir = os.path.join(work, "pool")
    if not os.path.isdir(pool_dir):
        print("making the sample files ...", file=sys.stderr)
        make_pool(pool_dir)
    pool = sorted(os.path.join(pool_dir, n) for n in os.listdir(pool_dir))
    contents = {}
    for p in pool:
        data = open(p, "rb").read()
        contents[p] = (hashlib.sha1(data).digest(), hashlib.sha1(data[:SECTOR]).digest())

    image = os.path.join(work, "image-%dMiB-seed%d.bin" % (a.size_mib, a.seed))
    print("building the image ...", file=sys.stderr)
    placed = build_image(image, a.size_mib << 20, a.seed, pool)
    with open(os.path.join(work, "truth.csv"), "w") as f:
        f.write("offset,length,file\n")
        for offset, length, sample in placed:
            f.write("%d,%d,%s\n" % (offset, length, os.path.basename(sample)))

    text = qvraci_rules_text(os.path.join(ROOT, "examples", "common.txt"), set(TYPES))
    with open(os.path.join(work, "twelve.txt"), "w") as f:
        f.write(text)
    run(a.rules, "build", os.path.join(work, "twelve.txt"), os.path.join(work, "twelve.qrrs"),
        "--force")

    size = a.size_mib << 20
    print("%d files placed in %d MiB; reading the image from the page cache: %.0f MB/s\n" %
          (len(placed), a.size_mib, size / read_speed(image) / 1e6))
    print("%-13s %9s %9s %10s %7s %8s %8s" %
          ("tool", "wall s", "MB/s", "peak MiB", "exact", "partial", "false+"))
    for name in a.tools.split(","):
        out = os.path.join(work, "out-" + name)
        shutil.rmtree(out, ignore_errors=True)
        os.makedirs(out)
        elapsed, peak = 0.0, 0
        for command in tool_commands(name, image, out, work, a.rules):
            e, p = timed(command, cwd=out)
            elapsed += e
            peak = max(peak, p)
        exact, partial, false = judge(out, placed, contents)
        print("%-13s %9.2f %9.0f %10.1f %7d %8d %8d" %
              (name, elapsed, size / elapsed / 1e6, peak / 2**20, exact, partial, false))


if __name__ == "__main__":
    main()
