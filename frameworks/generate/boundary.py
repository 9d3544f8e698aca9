#!/usr/bin/env python3
"""Reads the table headers of the boundary and writes everything that follows from them.

    boundary.py OUTPUT_FOLDER     write the generated sources (what has not changed is left alone)
    boundary.py --pin             accept new entries: append them to layout.pin
    boundary.py --reference FILE  write the reference page for host authors

A table header names its kind in its first comment:

    group NUMBER                 a group of HostTables
    service NAMESPACE IDENTITY   a table that g_tavor resolves
    interface CLASS IDENTITY     the table in the first word of an object
    functions NAMESPACE          the entries become free functions
    value CLASS WORD             the entries become methods of a one-word value
    class CLASS [: BASE]         the entries become methods of a handle

Each entry has a comment of fixed form: what it does, then one line each for owner, thread,
waits, since and fails. Any departure from that form stops the build with file and line.
"""
import argparse
import sys
from pathlib import Path

import boundary_sources
from boundary_form import FRAMEWORKS, FormError, load_tables

PIN_FILE = Path(__file__).resolve().parent / "layout.pin"


def read_pins():
    pins = {}
    for line in PIN_FILE.read_text().splitlines() if PIN_FILE.exists() else []:
        if line and not line.startswith("#"):
            stem, word, name, signature = line.split(" ", 3)
            pins.setdefault(stem, []).append((name, int(word), signature))
    return pins


def current_pins(tables):
    return {t.stem: [(e.name, t.words + i, e.signature) for i, e in enumerate(t.entries)] for t in tables}


def check_pins(tables, accept):
    pins, now = read_pins(), current_pins(tables)
    for stem, pinned in pins.items():
        for index, pin in enumerate(pinned):
            if stem not in now or index >= len(now[stem]) or now[stem][index] != pin:
                raise FormError(f"{stem}.{pin[0]} is pinned as word {pin[1]}, '{pin[2]}': a published entry "
                                "neither moves nor changes; add a new one at the end")
    if accept:
        text = "# The published entries: table, word, name, signature. Written by boundary.py --pin.\n"
        text += "".join(f"{stem} {word} {name} {signature}\n" for stem in sorted(now)
                        for name, word, signature in now[stem])
        PIN_FILE.write_text(text)
    elif pins != now:
        raise FormError("new entries are not pinned yet: run frameworks/generate/boundary.py --pin")
    return now


def write_reference(tables):
    lines = ["# Reference of the boundary", "",
             "For authors of hosts. Written by `frameworks/generate/boundary.py` from the table headers; how the",
             "tables work together is told in [boundary.md](boundary.md). Every entry is there since the version",
             "that its row names; one that a host lacks answers with its failure.", ""]
    for t in tables:
        place = f"group {t.group}" if t.group else f"identity `{t.identity}`"
        lines += [f"## `{t.struct}`", "", f"{t.title} {place[0].upper() + place[1:]}, "
                  f"in `{t.header.relative_to(FRAMEWORKS.parent).as_posix()}`.", ""]
        for i, e in enumerate(t.entries):
            lines.append(f"**`{e.name}`**, word {t.words + i}{', required' if e.required else ''}{', quick' if e.quick else ''}:"
                         f" `{e.declaration('(*)')}`".replace(" (*)(", " (*)("))
            lines += ["", e.text, "", "Owner: {owner}. Thread: {thread}. Waits: {waits}. Since: {since}. "
                      "On failure: {fails}.".format(**e.notes), ""]
    return "\n".join(lines)


def write_if_changed(path, text):
    if not path.exists() or path.read_text() != text:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


def main():
    options = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    options.add_argument("output", nargs="?", type=Path)
    options.add_argument("--pin", action="store_true")
    options.add_argument("--reference", type=Path)
    chosen = options.parse_args()
    tables = load_tables()
    pins = check_pins(tables, chosen.pin)
    if chosen.reference:
        write_if_changed(chosen.reference, write_reference(tables))
    if chosen.output:
        out = chosen.output
        for table in tables:
            write_if_changed(out / table.thin, boundary_sources.write_thin(table, tables))
        write_if_changed(out / "boundary/tables.h", boundary_sources.write_tables_header(tables))
        write_if_changed(out / "boundary/tables.cpp", boundary_sources.write_tables_source(tables))
        write_if_changed(out / "boundary/host.h", boundary_sources.write_host_header(tables))
        write_if_changed(out / "boundary/host.cpp", boundary_sources.write_host_source(tables))
        write_if_changed(out / "boundary/fake_host.h", boundary_sources.write_fake_header(tables))
        write_if_changed(out / "boundary/fake_host.cpp", boundary_sources.write_fake_source(tables))
        write_if_changed(out / "boundary/layout.h", boundary_sources.write_layout_header(tables, pins))


if __name__ == "__main__":
    try:
        main()
    except FormError as error:
        sys.exit(f"boundary: {error}")
