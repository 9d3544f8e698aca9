"""The generator refuses what departs from the form, and what moves a published entry.

Each case changes one place of a copy of the frameworks and runs the copy's generator."""
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

FRAMEWORKS = Path(__file__).resolve().parents[3] / "frameworks"
HEADER = "kelvar.framework/source/tables/t_basefile.h"

CLOSE = """  /* Closes the file; null is allowed.
   * owner   the host
   * thread  any
   * waits   disk
   * since   23100
   * fails   nothing */
  void (*Close)(BaseFile* self);
"""
ADDED = """
  /* Whether the end of the file is reached.
   * owner   -
   * thread  any
   * waits   no
   * since   23100
   * fails   0 */
  int32_t (*IsAtEnd)(BaseFile* self);
"""

# What is changed in the entry `Close`, and what the message names besides file, line and entry.
MALFORMED = {
    "a note is missing": ("   * waits   disk\n", "", "waits"),
    "a note has no text": ("   * waits   disk\n", "   * waits\n", "waits"),
    "two notes are swapped": ("   * thread  any\n   * waits   disk\n", "   * waits   disk\n   * thread  any\n", "waits"),
    "a note is there twice": ("   * waits   disk\n", "   * waits   disk\n   * waits   no\n", "waits"),
    "text stands behind the notes": ("   * fails   nothing */", "   * fails   nothing\n   * At once. */", "At once."),
    "there is no comment": (CLOSE[: CLOSE.index("  void")], "", "comment"),
    "a parameter has no name": ("BaseFile* self", "BaseFile*", "BaseFile*"),
    "the failure is no value": ("fails   nothing", "fails   badly", "badly"),
}


class GeneratorTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.frameworks = Path(folder.name) / "frameworks"
        self.output = Path(folder.name) / "generated"
        shutil.copytree(FRAMEWORKS, self.frameworks)

    def change(self, old, new):
        path = self.frameworks / HEADER
        text = path.read_text()
        self.assertEqual(text.count(old), 1, f"{old!r} in {HEADER}")
        path.write_text(text.replace(old, new))

    def generate(self, *arguments):
        command = [sys.executable, "-B", self.frameworks / "generate/boundary.py", *(arguments or [self.output])]
        return subprocess.run(command, capture_output=True, text=True)

    def assertRefused(self, *words):
        shutil.rmtree(self.output, ignore_errors=True)
        run = self.generate()
        self.assertNotEqual(run.returncode, 0, "accepted")
        self.assertNotIn("Traceback", run.stderr)
        for word in words:
            self.assertIn(word, run.stderr)
        self.assertFalse(self.output.exists(), "sources were written all the same")

    def line_of(self, text):
        lines = (self.frameworks / HEADER).read_text().splitlines()
        return next(number for number, line in enumerate(lines, 1) if text in line)

    def test_unchanged_tree(self):
        run = self.generate()
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        written = {path.name: path.stat().st_mtime_ns for path in self.output.rglob("*") if path.is_file()}
        self.assertIn("layout.h", written)
        self.generate()
        again = {path.name: path.stat().st_mtime_ns for path in self.output.rglob("*") if path.is_file()}
        self.assertEqual(written, again, "what has not changed is written again")

    def test_malformed_entry(self):
        original = (self.frameworks / HEADER).read_text()
        for name, (old, new, word) in MALFORMED.items():
            with self.subTest(name):
                (self.frameworks / HEADER).write_text(original)
                self.change(CLOSE, CLOSE.replace(old, new))
                self.assertRefused(f"t_basefile.h:{self.line_of('(*Close)')}: Close: ", word)

    def test_pinned_entries_neither_move_nor_change(self):
        original = (self.frameworks / HEADER).read_text()
        cases = {
            "changed parameter": ("int64_t (*GetLength)(BaseFile* self);", "int64_t (*GetLength)(const BaseFile* self);"),
            "changed result": ("int64_t (*GetLength)(", "int32_t (*GetLength)("),
            "renamed": ("(*GetLength)", "(*GetSize)"),
            "removed": (CLOSE, ""),
            "moved by an entry ahead": (CLOSE, ADDED + CLOSE),
            "moved by a data word": ("  uint32_t reserved;\n", "  uint32_t reserved;\n\n  void* cache;\n"),
        }
        for name, (old, new) in cases.items():
            with self.subTest(name):
                (self.frameworks / HEADER).write_text(original)
                self.change(old, new)
                self.assertRefused("basefile.", "is pinned as word")
                pinned = self.generate("--pin")
                self.assertNotEqual(pinned.returncode, 0, "--pin accepts it")

    def test_new_entry_waits_for_its_pin(self):
        self.change(CLOSE, CLOSE + ADDED)
        self.assertRefused("--pin")
        self.assertEqual(self.generate("--pin").returncode, 0)
        self.assertEqual(self.generate().returncode, 0)
        self.assertIn("PINNED(HostBaseFileGroup, IsAtEnd, 5);", (self.output / "boundary/layout.h").read_text())
        self.assertIn("IsAtEnd", (self.output / "boundary/host.h").read_text())


if __name__ == "__main__":
    unittest.main()
