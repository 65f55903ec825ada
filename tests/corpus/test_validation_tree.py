"""Unit tests for tools/eval/validation_tree.py: it must hold out what the tools hold out."""

import importlib.util
import os
import tempfile
import unittest

_ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
_spec = importlib.util.spec_from_file_location(
    "validation_tree", os.path.join(_ROOT, "tools/eval/validation_tree.py"))
tree = importlib.util.module_from_spec(_spec)
_spec.loader.exec_module(tree)


class ValidationTreeTest(unittest.TestCase):
    def test_hash_is_fnv1a_64(self):
        # Published test vectors of 64-bit FNV-1a, as the tools' split uses.
        self.assertEqual(tree.fnv1a_64(b""), 0xCBF29CE484222325)
        self.assertEqual(tree.fnv1a_64(b"a"), 0xAF63DC4C8601EC8C)
        self.assertEqual(tree.fnv1a_64(b"foobar"), 0x85944171F73967E8)

    def test_every_third_project_by_hash_is_held_out(self):
        projects = ["p%d" % i for i in range(7)]
        by_hash = sorted(projects, key=lambda name: tree.fnv1a_64(name.encode()))
        self.assertEqual(tree.test_projects(projects, 3, 0), {by_hash[0], by_hash[3], by_hash[6]})
        self.assertEqual(tree.test_projects(projects, 3, 2), {by_hash[2], by_hash[5]})
        self.assertEqual(tree.test_projects(["only"], 3, 0), set())

    def test_links_only_the_training_side(self):
        with tempfile.TemporaryDirectory() as root:
            samples = os.path.join(root, "samples")
            for language, projects in {"Go": ["a", "b", "c", "d"], "Zig": ["solo"]}.items():
                for project in projects:
                    os.makedirs(os.path.join(samples, language, project))
                    with open(os.path.join(samples, language, project, "f.txt"), "w") as out:
                        out.write("x")
            output = os.path.join(root, "val")
            self.assertEqual(tree.build(samples, output, 3, 0), 3)
            held_out = tree.test_projects(["a", "b", "c", "d"], 3, 0)
            self.assertEqual(set(os.listdir(os.path.join(output, "Go"))),
                             {"a", "b", "c", "d"} - held_out)
            self.assertEqual(os.listdir(os.path.join(output, "Zig")), ["solo"])
            self.assertTrue(os.path.isfile(os.path.join(output, "Zig", "solo", "f.txt")))


if __name__ == "__main__":
    unittest.main()
