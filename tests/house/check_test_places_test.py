"""check_test_places_test.py CHECK: the check of the tests' places accepts a sound tree and catches wrong ones."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = sys.argv.pop(1)


class TestPlaces(unittest.TestCase):
    def findings(self, *files):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("orvane/audio/reader.h", "orvane/audio/kernel.simd.cpp",
                         "cli/options/option.cpp", *files):
                path = Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.touch()
            done = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True)
            return done.returncode, done.stdout + done.stderr

    def test_accepts_mirrored_paths_and_tests_of_a_folder(self):
        code, _ = self.findings("tests/audio/reader_test.cpp", "tests/audio/kernel_test.cpp",
                                "tests/audio/damage_test.cpp", "tests/cli/options/option_test.cpp",
                                "tests/support/helper_test.cpp")
        self.assertEqual(code, 0)

    def test_catches_a_test_that_lies_elsewhere(self):
        code, text = self.findings("tests/cli/options/reader_test.cpp")
        self.assertEqual(code, 1)
        self.assertIn("tests a file of audio", text)

    def test_catches_a_folder_that_mirrors_nothing(self):
        code, text = self.findings("tests/misc/damage_test.cpp")
        self.assertEqual(code, 1)
        self.assertIn("no such folder", text)


if __name__ == "__main__":
    unittest.main()
