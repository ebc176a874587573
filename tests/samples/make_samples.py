#!/usr/bin/env python3
"""Makes one sample file of each type in the starter definitions, with the tools a Debian
machine has: ImageMagick, Ghostscript, sox, ffmpeg, Python's standard library and the files of
installed packages. Nothing is downloaded.

    make_samples.py OUTDIR

Writes OUTDIR/<name>.<ext> and prints nothing on success; a tool that fails stops the
script with its message.
"""

import bz2
import gzip
import io
import lzma
import os
import py_compile
import random
import shutil
import sqlite3
import struct
import subprocess
import sys
import tarfile
import zipfile

OUT = sys.argv[1] if len(sys.argv) > 1 else "samples"


def path(name):
    return os.path.join(OUT, name)


def run(*args):
    subprocess.run(args, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)


def write(name, data):
    with open(path(name), "wb") as f:
        f.write(data)


def images():
    # A picture with some structure, so that compressed data is not trivial.
    source = path("source.ppm")
    run("convert", "-seed", "7", "-size", "96x64", "plasma:red-blue", "+noise", "Gaussian",
        source)
    for name in ["image.jpg", "image.png", "image.gif", "image.bmp", "image.tif", "image.webp",
                 "image.psd"]:
        run("convert", source, "-strip", path(name))
    run("convert", source, "-resize", "32x32!", path("image.ico"))
    os.remove(source)


def postscript():
    # Ghostscript turns a small program into the PostScript and PDF that it writes.
    program = path("source.ps")
    with open(program, "w") as f:
        f.write("%!PS\n/Helvetica findfont 14 scalefont setfont\n" +
                "".join("72 %d moveto (Line %d of a recovered page) show\n" % (720 - 16 * i, i)
                        for i in range(30)) + "showpage\n")
    for device, name in [("pdfwrite", "paper.pdf"), ("ps2write", "paper.ps")]:
        run("gs", "-q", "-dBATCH", "-dNOPAUSE", "-dSAFER", "-sDEVICE=" + device,
            "-sOutputFile=" + path(name), program)
    os.remove(program)


def audio_and_video():
    run("sox", "-n", "-r", "8000", "-c", "1", path("sound.wav"), "synth", "0.5", "sine", "440")
    for name in ["sound.aiff", "sound.au", "sound.flac", "sound.ogg"]:
        run("sox", path("sound.wav"), path(name))
    ffmpeg = ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
              "testsrc=size=64x48:rate=10:duration=1", "-f", "lavfi", "-i",
              "sine=frequency=440:duration=1", "-shortest", "-fflags", "+bitexact"]
    for name, codecs in [("movie.avi", ["-c:v", "mpeg4", "-c:a", "pcm_s16le"]),
                         ("movie.mp4", ["-c:v", "mpeg4", "-c:a", "aac"]),
                         ("movie.mov", ["-c:v", "mpeg4", "-c:a", "aac"]),
                         ("movie.mkv", ["-c:v", "mpeg4", "-c:a", "flac"]),
                         ("movie.webm", ["-c:v", "libvpx", "-c:a", "libvorbis"]),
                         ("movie.mpg", ["-c:v", "mpeg2video", "-c:a", "mp2"]),
                         ("movie.flv", ["-c:v", "flv", "-c:a", "mp3", "-ar", "44100"]),
                         ("movie.wmv", ["-c:v", "wmv2", "-c:a", "wmav2"])]:
        run(*ffmpeg, *codecs, path(name))
    run("ffmpeg", "-v", "error", "-y", "-i", path("sound.wav"), "-c:a", "libmp3lame",
        "-id3v2_version", "3", "-metadata", "title=Sample", path("sound.mp3"))


def midi():
    # One track: tempo, a note on and off, end of track.
    events = bytes([0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20, 0x00, 0x90, 0x3C, 0x40,
                    0x60, 0x80, 0x3C, 0x40, 0x00, 0xFF, 0x2F, 0x00])
    write("sound.mid", b"MThd" + struct.pack(">IHHH", 6, 0, 1, 96) + b"MTrk" +
          struct.pack(">I", len(events)) + events)


def documents():
    text = "Recovered text, line %d: the quick brown fox jumps over the lazy dog.\n"
    body = "".join(text % i for i in range(40))
    write("page.html", ("<!DOCTYPE html>\n<html><head><title>Sample</title></head><body>\n"
                        "<pre>" + body + "</pre>\n</body></html>\n").encode())
    write("data.xml", ('<?xml version="1.0" encoding="UTF-8"?>\n<items>\n' +
                       "".join('  <item n="%d">caf\u00e9 %d</item>\n' % (i, i)
                               for i in range(60)) + "</items>\n").encode())
    write("letter.rtf", ("{\\rtf1\\ansi\\deff0 {\\fonttbl {\\f0 Times;}}\n" +
                         "".join("\\par " + line for line in body.splitlines(True)) +
                         "}\n").encode())
    office("letter.docx", "[Content_Types].xml",
           b'<?xml version="1.0"?><Types xmlns="http://schemas.openxmlformats.org/package/'
           b'2006/content-types"/>', [("word/document.xml", body.encode())])
    opendocument("letter.odt", "application/vnd.oasis.opendocument.text", body)
    opendocument("sheet.ods", "application/vnd.oasis.opendocument.spreadsheet", body)
    opendocument("book.epub", "application/epub+zip", body)


def office(name, first, content, rest):
    with zipfile.ZipFile(path(name), "w", zipfile.ZIP_DEFLATED) as z:
        z.writestr(first, content)
        for entry, data in rest:
            z.writestr(entry, data)


def opendocument(name, mimetype, body):
    # The mimetype entry comes first and is stored, so its text is at offset 38.
    with zipfile.ZipFile(path(name), "w") as z:
        z.writestr(zipfile.ZipInfo("mimetype"), mimetype, zipfile.ZIP_STORED)
        z.writestr("content.xml", "<office:document>" + body + "</office:document>",
                   zipfile.ZIP_DEFLATED)


def archives():
    rng = random.Random(11)
    payload = bytes(rng.getrandbits(8) for _ in range(3000)) + b"text " * 2000
    with zipfile.ZipFile(path("archive.zip"), "w", zipfile.ZIP_DEFLATED) as z:
        z.writestr("a.bin", payload)
        z.writestr("b.txt", b"hello\n" * 100)
    write("archive.gz", gzip.compress(payload, mtime=0))
    write("archive.bz2", bz2.compress(payload))
    write("archive.xz", lzma.compress(payload))
    with tarfile.open(path("archive.tar"), "w", format=tarfile.USTAR_FORMAT) as t:
        info = tarfile.TarInfo("payload.bin")
        info.size = len(payload)
        t.addfile(info, io.BytesIO(payload))


def programs():
    shutil.copyfile("/bin/true", path("program.elf"))
    with open(path("module.py"), "w") as f:
        f.write("def answer():\n    return 42\n")
    py_compile.compile(path("module.py"), cfile=path("module.pyc"), doraise=True)
    os.remove(path("module.py"))
    write("program.exe", portable_executable())


def portable_executable():
    """A minimal 64-bit Windows console program: the DOS stub, PE headers and one code
    section whose only instruction returns."""
    dos = bytearray(128)
    dos[0:2] = b"MZ"
    struct.pack_into("<H", dos, 2, 0x90)
    struct.pack_into("<I", dos, 0x3C, 128)  # where the PE header begins
    file_header = struct.pack("<HHIIIHH", 0x8664, 1, 0, 0, 0, 240, 0x22)
    optional = bytearray(240)
    struct.pack_into("<HBB", optional, 0, 0x20B, 14, 0)
    struct.pack_into("<IIII", optional, 4, 512, 0, 0, 0x1000)  # code size, entry point
    struct.pack_into("<Q", optional, 24, 0x140000000)  # image base
    struct.pack_into("<II", optional, 32, 0x1000, 512)  # section and file alignment
    struct.pack_into("<HH", optional, 48, 6, 0)  # subsystem version
    struct.pack_into("<II", optional, 56, 0x2000, 512)  # image and header sizes
    struct.pack_into("<HH", optional, 68, 3, 0x8160)  # console; NX, ASLR
    struct.pack_into("<QQQQ", optional, 72, 0x100000, 0x1000, 0x100000, 0x1000)
    struct.pack_into("<I", optional, 108, 16)  # data directories
    section = struct.pack("<8sIIIIIIHHI", b".text", 1, 0x1000, 512, 512, 0, 0, 0, 0,
                          0x60000020)
    headers = bytes(dos) + b"PE\0\0" + file_header + bytes(optional) + section
    code = b"\xC3".ljust(512, b"\0")
    return headers.ljust(512, b"\0") + code


def databases():
    if os.path.exists(path("store.sqlite")):
        os.remove(path("store.sqlite"))
    db = sqlite3.connect(path("store.sqlite"))
    db.execute("create table notes (id integer primary key, text)")
    db.executemany("insert into notes (text) values (?)",
                   [("note %d " % i * 20,) for i in range(300)])
    db.commit()
    db.close()


def fonts():
    shutil.copyfile("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", path("font.ttf"))
    # CFF outlines (OTTO), from the fonts Ghostscript uses.
    shutil.copyfile("/usr/share/fonts/opentype/urw-base35/NimbusSans-Regular.otf",
                    path("font.otf"))


def main():
    os.makedirs(OUT, exist_ok=True)
    try:
        images()
        postscript()
        audio_and_video()
        midi()
        documents()
        archives()
        programs()
        databases()
        fonts()
    except subprocess.CalledProcessError as e:
        sys.exit("make_samples: %s failed: %s" % (" ".join(e.cmd), e.stderr.decode().strip()))


if __name__ == "__main__":
    main()
