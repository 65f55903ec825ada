"""Unit tests for corpus/noncode.py's file choice and for tools/eval/calibration_sweep.py's replay."""

import gzip
import importlib.util
import math
import os
import tempfile
import unittest

_ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


def _load(name, relative):
    spec = importlib.util.spec_from_file_location(name, os.path.join(_ROOT, relative))
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


noncode = _load("corpus_noncode", "corpus/noncode.py")
sweep = _load("calibration_sweep", "tools/eval/calibration_sweep.py")


class NonCodeChoiceTest(unittest.TestCase):
    def setUp(self):
        self._tmp = tempfile.TemporaryDirectory()
        self.dir = self._tmp.name

    def tearDown(self):
        self._tmp.cleanup()

    def write(self, rel, data, compress=False):
        path = os.path.join(self.dir, rel)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with (gzip.open if compress else open)(path, "wb") as handle:
            handle.write(data)
        return path

    def test_doc_kinds_only_under_usr_share_doc_and_data_kinds_anywhere(self):
        self.write("root/usr/share/doc/p/copyright", b"Format: x\n")
        self.write("root/usr/share/doc/p/changelog.Debian.gz", b"p (1.0) unstable\n", True)
        self.write("root/usr/share/p/copyright", b"not a doc folder\n")
        self.write("root/usr/share/p/data/table.csv", b"a,b\n1,2\n")
        self.write("root/usr/share/p/main.c", b"int main;\n")
        found = sorted((kind, os.path.relpath(path, self.dir))
                       for kind, path in noncode.candidates(self.dir))
        self.assertEqual(found, [
            ("changelog", "root/usr/share/doc/p/changelog.Debian.gz"),
            ("copyright", "root/usr/share/doc/p/copyright"),
            ("csv", "root/usr/share/p/data/table.csv"),
        ])

    def test_reads_gzip_and_refuses_binary_empty_or_corrupt_files(self):
        self.assertEqual(noncode.read_text(self.write("a.gz", b"text\n", True)), b"text\n")
        self.assertIsNone(noncode.read_text(self.write("b", b"\x00\x01binary")))
        self.assertIsNone(noncode.read_text(self.write("c", b"  \n")))
        self.assertIsNone(noncode.read_text(self.write("d.gz", b"not gzip")))
        self.assertIsNone(noncode.read_text(os.path.join(self.dir, "missing")))

    def test_markup_readmes_are_recognised(self):
        self.assertTrue(noncode.is_markup(b"# Title\n\nText\n"))
        self.assertTrue(noncode.is_markup(b"Title\n=====\n"))
        self.assertFalse(noncode.is_markup(b"This package provides a library.\n"))


class CalibrationReplayTest(unittest.TestCase):
    # Two candidates over 50 tokens: A scores -300 - 10 ln U, B -320 with everything seen.
    FILE = ("content", "A", "", 50, [("A", -300.0, 10), ("B", -320.0, 0)])

    def test_unseen_cost_changes_the_ranking(self):
        self.assertEqual(sweep.answer(self.FILE, math.log(2), 0, 40, 0), "A")
        self.assertEqual(sweep.answer(self.FILE, math.log(100), 0, 40, 0), "B")

    def test_floor_and_scale_decide_whether_the_best_survives(self):
        # A: (-300 - 10 ln 2) / 50 = -6.14 per token.
        self.assertEqual(sweep.answer(self.FILE, math.log(2), 0, 40, -6.0), "")
        self.assertEqual(sweep.answer(self.FILE, math.log(2), math.log(2), 40, -6.0), "A")

    def test_too_few_tokens_fall_back_to_the_first_name_candidate(self):
        named = ("filename", "B", "B", 50, self.FILE[4])
        self.assertEqual(sweep.answer(named, math.log(2), 0, 51, 0), "B")
        self.assertEqual(sweep.answer(named, math.log(2), 0, 50, 0), "A")


if __name__ == "__main__":
    unittest.main()
