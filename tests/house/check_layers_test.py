"""check_layers_test.py CHECK_LAYERS: the layer check accepts a sound tree and catches each wrong one."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = sys.argv.pop(1)

ARCHITECTURE = """
<!-- layers -->
| Folder | Holds | Includes |
|---|---|---|
| `cli` | | `audio` `platform` |
| `audio` | | `platform` |
| `report` | | `audio` `platform` |
| `platform` | | |
<!-- /layers -->
"""


class LayerCheck(unittest.TestCase):
    def findings(self, files):
        """Exit code and output of the check over a tree of {path: included paths}."""
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            (root / "docs").mkdir()
            (root / "docs/architecture.md").write_text(ARCHITECTURE)
            for name, includes in files.items():
                path = root / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text("".join(f'#include "{target}"\n' for target in includes))
            done = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
            return done.returncode, done.stdout + done.stderr

    def test_accepts_includes_that_point_down(self):
        code, _ = self.findings({
            "cli/main.cpp": ["orvane/audio/reader.h"],
            "orvane/audio/reader.h": ["orvane/platform/buffer.h", "orvane/audio/limits.h"],
            "orvane/audio/reader.cpp": ["orvane/audio/reader.h"],
            "orvane/audio/limits.h": [],
            "orvane/platform/buffer.h": []})
        self.assertEqual(code, 0)

    def test_catches_an_upward_include(self):
        code, text = self.findings({
            "orvane/platform/buffer.h": ["orvane/audio/reader.h"],
            "orvane/audio/reader.h": []})
        self.assertEqual(code, 1)
        self.assertIn("'platform' may not include 'audio'", text)

    def test_catches_an_upward_include_in_a_folder_within_a_folder(self):
        code, text = self.findings({
            "orvane/platform/files/wave.cpp": ["orvane/audio/reader.h"],
            "orvane/audio/reader.h": []})
        self.assertEqual(code, 1)
        self.assertIn("'platform' may not include 'audio'", text)

    def test_catches_a_library_that_includes_the_program(self):
        code, text = self.findings({
            "orvane/audio/reader.h": ["cli/table.h"], "cli/table.h": []})
        self.assertEqual(code, 1)
        self.assertIn("'audio' may not include 'cli'", text)

    def test_catches_a_lower_folder_that_includes_an_upper_one(self):
        code, text = self.findings({
            "orvane/audio/reader.h": ["orvane/report/builder.h"], "orvane/report/builder.h": []})
        self.assertEqual(code, 1)
        self.assertIn("'audio' may not include 'report'", text)

    def test_catches_a_circle_of_headers(self):
        code, text = self.findings({
            "orvane/audio/a.h": ["orvane/audio/b.h"],
            "orvane/audio/b.h": ["orvane/audio/c.h"],
            "orvane/audio/c.h": ["orvane/audio/a.h"]})
        self.assertEqual(code, 1)
        self.assertIn("circle: orvane/audio/a.h -> orvane/audio/b.h -> orvane/audio/c.h", text)

    def test_accepts_a_source_that_uses_what_builds_on_its_header(self):
        code, _ = self.findings({
            "orvane/audio/a.h": [], "orvane/audio/a.cpp": ["orvane/audio/a.h", "orvane/audio/b.h"],
            "orvane/audio/b.h": ["orvane/audio/a.h"]})
        self.assertEqual(code, 0)

    def test_catches_a_folder_that_is_not_in_the_table(self):
        code, text = self.findings({"orvane/misc/thing.h": []})
        self.assertEqual(code, 1)
        self.assertIn("'misc' is not in the layer table", text)


if __name__ == "__main__":
    unittest.main()
