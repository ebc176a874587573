#!/usr/bin/env python3
"""Compares `qvraci-rules scan` with the open-source carvers photorec, foremost and scalpel
on a synthetic disk image with a known layout.

    bench/carvers.py [--size-mib 512] [--seed 1] [--packages] [--work DIR]
                     [--tools a,b,...] [--rules PATH-TO-qvraci-rules]

The image holds random filler, text runs, zero runs and real files; the same size, seed
and source give the same image. Most files start on a 512-byte sector; one in five starts
at any byte, as files embedded in others do. The files are of twelve common types, made
here by ImageMagick, Ghostscript, sox, ffmpeg and Python, and every tool looks for those
twelve; or, with --packages, files that the machine's packages installed (icons, fonts,
manuals, documentation, libraries, programs, archives), and qvraci-rules, photorec and
foremost look for all they know (scalpel for the twelve).

A tool's output is judged by content: a carved file that equals a placed file is exact;
one that holds a placed file's first sector but differs is partial; one that lies within
a placed file (a thumbnail in a photo, an archive's member) is inner; anything else is a
false positive. Prints one table: wall time, MB/s, peak memory, exact, partial, inner,
false positives, and the reading speed of the image from the page cache for scale. The
qvraci rows are the scan with the report only, with carving, and both again with
--align 1.
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


# Leading bytes of the types that the packages' files are chosen from.
MAGICS = [(b"\x89PNG", "png"), (b"\xff\xd8\xff", "jpg"), (b"GIF8", "gif"), (b"%PDF-", "pdf"),
          (b"PK\x03\x04", "zip"), (b"\x1f\x8b\x08", "gz"), (b"BZh", "bz2"),
          (b"\xfd7zXZ\x00", "xz"), (b"\x7fELF", "elf"), (b"\x00\x01\x00\x00\x00", "ttf"),
          (b"OTTO", "otf"), (b"II*\x00", "tif"), (b"MM\x00*", "tif"), (b"OggS", "ogg"),
          (b"<?xml", "xml"), (b"<!DOCTYPE html", "html"), (b"<!doctype html", "html"),
          (b"<html", "html"), (b"SQLite format 3\x00", "sqlite")]
PACKAGE_ROOTS = ["/usr/share/icons", "/usr/share/fonts", "/usr/share/man", "/usr/share/doc",
                 "/usr/share/pixmaps", "/usr/share/maven-repo", "/usr/share/sounds",
                 "/usr/lib/x86_64-linux-gnu", "/usr/bin"]


def package_pool(size, seed):
    """Real files from the machine's packages, of the types in MAGICS: at most 40 files
    and a tenth of size of one type, none larger than 16 MiB."""
    by_type = {}
    seen = set()
    for root in PACKAGE_ROOTS:
        for folder, dirs, files in os.walk(root):
            dirs.sort()
            for name in sorted(files):
                path = os.path.join(folder, name)
                try:
                    if not os.path.isfile(path) or os.path.islink(path):
                        continue
                    length = os.path.getsize(path)
                    if length < 64 or length > 16 << 20:
                        continue
                    with open(path, "rb") as f:
                        head = f.read(16)
                except OSError:
                    continue
                kind = next((k for m, k in MAGICS if head.startswith(m)), None)
                if kind:
                    by_type.setdefault(kind, []).append((path, length))
    rng = random.Random(seed)
    chosen, total = [], 0
    share = size // 10
    for kind in sorted(by_type):
        files = by_type[kind]
        rng.shuffle(files)
        used, first = 0, len(chosen)
        for path, length in files:
            if used + length > share or len(chosen) - first >= 40:
                continue
            digest = hashlib.sha1(open(path, "rb").read()).digest()
            if digest in seen:
                continue
            seen.add(digest)
            chosen.append(path)
            used += length
        total += used
    return sorted(chosen), total


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
                if out.tell() + len(data) + SECTOR > size:
                    break
                if rng.random() < 0.2:  # embedded: starts at any byte
                    out.write(rng.randbytes(rng.randint(1, SECTOR - 1)))
                placed.append((out.tell(), len(data), sample))
                out.write(data)
                # Whatever follows starts on the next sector.
                out.write(rng.randbytes(-out.tell() % SECTOR))
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


def tool_commands(name, image, out, work, rules, everything):
    qrrs = os.path.join(work, "definitions.qrrs")
    if name.startswith("qvraci-"):
        command = [rules, "scan", qrrs, image, "--report", "csv"]
        if name.endswith("-a1"):
            command += ["--align", "1"]
        if name.startswith("qvraci-rules"):
            command += ["--carve", out]
        return [command]  # qvraci-report: the scan alone, without writing the files
    if everything and name != "scalpel":  # scalpel looks for the twelve types either way
        return everything_commands(name, image, out)
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


def everything_commands(name, image, out):
    """photorec and foremost with every type they know."""
    if name == "photorec":
        return [["photorec", "/log", "/d", os.path.join(out, "f"), "/cmd", image,
                 "fileopt,everything,enable,search"]]
    if name == "foremost":
        return [["foremost", "-Q", "-q", "-t", "all", "-i", image, "-o", os.path.join(out, "f")]]
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


def within(data, bodies):
    """Whether data stands somewhere in bodies: found by its first sector, then compared."""
    head = data[:SECTOR]
    at = bodies.find(head)
    for _ in range(16):  # a head that occurs often (zeros) is not followed further
        if at < 0:
            return False
        if bodies.startswith(data, at):
            return True
        at = bodies.find(head, at + 1)
    return False


def judge(out, placed, contents, bodies):
    """(exact, partial, inner, false positives) of the files under out."""
    wanted = {}
    for _, _, sample in placed:
        wanted[contents[sample][0]] = wanted.get(contents[sample][0], 0) + 1
    heads = {contents[s][1]: s for _, _, s in placed}
    exact = partial = inner = false = 0
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
            elif data and within(data, bodies):
                inner += 1
            else:
                false += 1
    return exact, partial, inner, false


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
    parser.add_argument("--tools", default="qvraci-report,qvraci-rules,qvraci-report-a1,"
                        "qvraci-rules-a1,photorec,foremost,scalpel")
    parser.add_argument("--packages", action="store_true",
                        help="real files from the machine's packages, all types")
    parser.add_argument("--rules", default=os.path.join(
        ROOT, "build", "release", "tools", "qvraci-rules", "qvraci-rules"))
    a = parser.parse_args()

    work = os.path.abspath(a.work)
    os.makedirs(work, exist_ok=True)
    size = a.size_mib << 20
    if a.packages:
        pool, total = package_pool(size * 3 // 5, a.seed)
        print("%d package files, %d MiB" % (len(pool), total >> 20), file=sys.stderr)
    else:
        pool_dir = os.path.join(work, "pool")
        if not os.path.isdir(pool_dir):
            print("making the sample files ...", file=sys.stderr)
            make_pool(pool_dir)
        pool = sorted(os.path.join(pool_dir, n) for n in os.listdir(pool_dir))
    contents, bodies = {}, []
    for p in pool:
        data = open(p, "rb").read()
        contents[p] = (hashlib.sha1(data).digest(), hashlib.sha1(data[:SECTOR]).digest())
        bodies.append(data)
    bodies = b"\0\1\2\3".join(bodies)  # one search finds a part of any placed file

    source = "packages" if a.packages else "seed%d" % a.seed
    image = os.path.join(work, "image-%dMiB-%s.bin" % (a.size_mib, source))
    print("building the image ...", file=sys.stderr)
    # Package files are placed once each, in an order of their own.
    placed = (build_package_image(image, size, a.seed, pool) if a.packages
              else build_image(image, size, a.seed, pool))
    with open(os.path.join(work, "truth-%s.csv" % source), "w") as f:
        f.write("offset,length,file\n")
        for offset, length, sample in placed:
            f.write("%d,%d,%s\n" % (offset, length, sample))

    if a.packages:
        shutil.copy(os.path.join(ROOT, "examples", "common.qrrs"),
                    os.path.join(work, "definitions.qrrs"))
    else:
        text = qvraci_rules_text(os.path.join(ROOT, "examples", "common.txt"), set(TYPES))
        with open(os.path.join(work, "twelve.txt"), "w") as f:
            f.write(text)
        run(a.rules, "build", os.path.join(work, "twelve.txt"),
            os.path.join(work, "definitions.qrrs"), "--force")

    aligned = sum(1 for offset, _, _ in placed if offset % SECTOR == 0)
    print("%d files placed in %d MiB (%s), %d on sector boundaries; reading the image from "
          "the page cache: %.0f MB/s\n" % (len(placed), a.size_mib, source, aligned,
                                            size / read_speed(image) / 1e6))
    print("%-17s %7s %7s %9s %6s %8s %6s %7s" %
          ("tool", "wall s", "MB/s", "peak MiB", "exact", "partial", "inner", "false+"))
    for name in a.tools.split(","):
        out = os.path.join(work, "out-" + name)
        shutil.rmtree(out, ignore_errors=True)
        os.makedirs(out)
        elapsed, peak = 0.0, 0
        for command in tool_commands(name, image, out, work, a.rules, a.packages):
            e, p = timed(command, cwd=out)
            elapsed += e
            peak = max(peak, p)
        if name.startswith("qvraci-report"):
            print("%-17s %7.2f %7.0f %9.1f %6s %8s %6s %7s" %
                  (name, elapsed, size / elapsed / 1e6, peak / 2**20, "", "", "", ""))
            continue
        exact, partial, inner, false = judge(out, placed, contents, bodies)
        print("%-17s %7.2f %7.0f %9.1f %6d %8d %6d %7d" %
              (name, elapsed, size / elapsed / 1e6, peak / 2**20, exact, partial, inner, false))


def build_package_image(path, size, seed, pool):
    """Each file once, in a random order, with filler between; returns the placed files
    as (offset, length, path)."""
    rng = random.Random(seed)
    order = list(pool)
    rng.shuffle(order)
    placed = []
    with open(path, "wb") as out:
        for sample in order:
            data = open(sample, "rb").read()
            if out.tell() + len(data) + 2 * SECTOR > size:
                continue
            filler = rng.random()
            if filler < 0.3:
                out.write(rng.randbytes(SECTOR * rng.randint(1, 8)))
            elif filler < 0.4:
                out.write(bytes(SECTOR * rng.randint(1, 8)))
            if rng.random() < 0.2:
                out.write(rng.randbytes(rng.randint(1, SECTOR - 1)))
            placed.append((out.tell(), len(data), sample))
            out.write(data)
            out.write(rng.randbytes(-out.tell() % SECTOR))
        out.truncate(size)
    return placed


if __name__ == "__main__":
    main()
