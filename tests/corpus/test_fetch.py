"""Unit tests for the pure logic of corpus/fetch.py (no network, no apt, no npm)."""

import contextlib
import gzip
import importlib.util
import io
import os
import tempfile
import unittest
import zipfile

_SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "corpus", "fetch.py")
_spec = importlib.util.spec_from_file_location("corpus_fetch", _SCRIPT)
fetch = importlib.util.module_from_spec(_spec)
_spec.loader.exec_module(fetch)


class TempDirTest(unittest.TestCase):
    def setUp(self):
        self._tmp = tempfile.TemporaryDirectory()
        self.dir = self._tmp.name

    def tearDown(self):
        self._tmp.cleanup()

    def write(self, rel, data):
        path = os.path.join(self.dir, rel)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as handle:
            handle.write(data)
        return path


class RecipeParsingTest(TempDirTest):
    def parse(self, text):
        path = self.write("t.recipe", text.encode("utf-8"))
        stderr = io.StringIO()
        with contextlib.redirect_stderr(stderr):
            sources = fetch.parse_recipe(path)
        return sources, stderr.getvalue()

    def test_sections_kinds_and_versions(self):
        sources, warnings = self.parse(
            "# comment\n\n[Python]\n"
            "deb python3-requests=2.28.1+dfsg-1 usr/lib/**/*.py\n"
            "[Tcl]\n"
            "debsrc tcl8.6=8.6.13+dfsg-2 **/*.tcl generic/*.c max=20\n"
            "npm @babel/core@7.22.5 package/**/*.js project=babel\n")
        self.assertEqual(warnings, "")
        self.assertEqual([(s.language, s.kind, s.package, s.version) for s in sources], [
            ("Python", "deb", "python3-requests", "2.28.1+dfsg-1"),
            ("Tcl", "debsrc", "tcl8.6", "8.6.13+dfsg-2"),
            ("Tcl", "npm", "@babel/core", "7.22.5"),
        ])
        self.assertEqual(sources[0].limit, fetch.DEFAULT_MAX)
        self.assertEqual(sources[1].limit, 20)
        self.assertEqual(sources[1].globs, ["**/*.tcl", "generic/*.c"])
        self.assertEqual(sources[2].project, "babel")
        self.assertEqual(sources[1].origin, "t.recipe:6")

    def test_default_project_names(self):
        sources, _ = self.parse("[JavaScript]\n"
                                "npm @types/node@18.0.0 package/*.ts\n"
                                "npm lodash@4.17.21 package/*.js\n"
                                "deb libfoo-perl=1.0-1 usr/*.pm\n")
        self.assertEqual([s.project for s in sources], ["types__node", "lodash", "libfoo-perl"])

    def test_unpinned_packages_warn_but_are_kept(self):
        sources, warnings = self.parse("[X]\nnpm @scope/pkg package/*.js\ndeb bare usr/*.c\n")
        self.assertEqual([(s.package, s.version) for s in sources], [("@scope/pkg", ""), ("bare", "")])
        self.assertIn("t.recipe:2: @scope/pkg is not pinned", warnings)
        self.assertIn("t.recipe:3: bare is not pinned", warnings)

    def test_bad_lines_are_skipped_with_a_warning(self):
        sources, warnings = self.parse(
            "deb early=1 *.c\n"          # before any [Language]
            "[C]\n"
            "rpm foo=1 *.c\n"            # unknown kind
            "deb foo=1\n"                # no glob
            "deb foo=1 max=3\n"          # options only, still no glob
            "deb good=1 src/*.c max=lots\n"
            "deb none=1 src/*.c max=0 project=\n")
        self.assertEqual([s.package for s in sources], ["good", "none"])
        self.assertEqual([s.limit for s in sources], [fetch.DEFAULT_MAX] * 2)
        self.assertEqual(sources[1].project, "none")
        for origin in ("t.recipe:1", "t.recipe:3", "t.recipe:4", "t.recipe:5"):
            self.assertIn(origin + ":", warnings)
        self.assertIn("t.recipe:6: bad max=lots", warnings)
        self.assertIn("t.recipe:7: bad max=0", warnings)
        self.assertIn("t.recipe:7: bad project=", warnings)

    def test_archive_globs_are_split_from_plain_ones(self):
        sources, _ = self.parse("[Clojure]\ndeb libx-clojure=1 usr/share/java/*.jar!/**/*.clj src/*.clj\n")
        source = sources[0]
        self.assertEqual(len(source.patterns), 1)
        self.assertEqual(len(source.archive_patterns), 1)
        archive, member = source.archive_patterns[0]
        self.assertTrue(archive.match("usr/share/java/x.jar"))
        self.assertFalse(archive.match("usr/share/java/sub/x.jar"))
        self.assertTrue(member.match("clojure/core/x.clj"))
        self.assertFalse(member.match("clojure/core/x.class"))


class GlobTest(unittest.TestCase):
    def matches(self, pattern, path):
        return any(fetch.glob_to_regex(p).match(path) for p in fetch.expand_braces(pattern))

    def test_star_and_question_mark_stay_in_one_directory(self):
        self.assertTrue(self.matches("src/*.c", "src/main.c"))
        self.assertFalse(self.matches("src/*.c", "src/sub/main.c"))
        self.assertFalse(self.matches("src/*.c", "src/main.cc"))
        self.assertTrue(self.matches("a?.h", "ab.h"))
        self.assertFalse(self.matches("a?.h", "a/.h"))
        self.assertFalse(self.matches("a?.h", "abc.h"))

    def test_double_star_crosses_directories(self):
        self.assertTrue(self.matches("lib/**/*.rb", "lib/a.rb"))
        self.assertTrue(self.matches("lib/**/*.rb", "lib/a/b/c.rb"))
        self.assertFalse(self.matches("lib/**/*.rb", "other/lib/a.rb"))
        self.assertTrue(self.matches("doc/**", "doc/x/y.txt"))
        self.assertTrue(self.matches("**/*.tcl", "deep/er/x.tcl"))

    def test_character_classes(self):
        self.assertTrue(self.matches("x.[ch]", "x.h"))
        self.assertFalse(self.matches("x.[ch]", "x.o"))
        self.assertTrue(self.matches("x.[!ch]", "x.o"))
        self.assertFalse(self.matches("x.[!ch]", "x.c"))
        self.assertTrue(self.matches("x[.c", "x[.c"))  # unclosed bracket is literal

    def test_brace_alternatives(self):
        self.assertEqual(fetch.expand_braces("a/*.{h,hpp}"), ["a/*.h", "a/*.hpp"])
        self.assertEqual(sorted(fetch.expand_braces("{a,b{c,d}}.x")), ["a.x", "bc.x", "bd.x"])
        self.assertEqual(fetch.expand_braces("a{b,c"), ["a{b,c"])
        self.assertTrue(self.matches("inc/*.{h,hpp}", "inc/x.hpp"))
        self.assertFalse(self.matches("inc/*.{h,hpp}", "inc/x.hp"))

    def test_dots_and_leading_slash_are_not_special(self):
        self.assertFalse(self.matches("*.c", "xac"))
        self.assertTrue(self.matches("/usr/*.c", "usr/a.c"))
        self.assertTrue(self.matches("./usr/*.c", "usr/a.c"))


class SpreadTest(unittest.TestCase):
    def test_short_lists_and_no_limit_are_kept_whole(self):
        items = list(range(5))
        self.assertEqual(fetch.spread(items, 5), items)
        self.assertEqual(fetch.spread(items, 40), items)

    def test_choice_is_evenly_spread_and_deterministic(self):
        items = ["f%02d" % i for i in range(10)]
        self.assertEqual(fetch.spread(items, 5), ["f00", "f02", "f04", "f06", "f08"])
        self.assertEqual(fetch.spread(items, 3), ["f00", "f03", "f06"])
        chosen = fetch.spread(list(range(1000)), 40)
        self.assertEqual(len(set(chosen)), 40)
        self.assertEqual(chosen, sorted(chosen))
        self.assertGreaterEqual(chosen[-1], 950)
        self.assertEqual(chosen, fetch.spread(list(range(1000)), 40))


class UsableFileTest(TempDirTest):
    def sample(self, rel, data):
        return fetch.read_sample(self.write(rel, data), rel)

    def test_plain_text_is_taken(self):
        self.assertEqual(self.sample("a.py", b"print(1)\n"), b"print(1)\n")

    def test_empty_blank_and_binary_files_are_refused(self):
        self.assertIsNone(self.sample("e.c", b""))
        self.assertIsNone(self.sample("w.c", b" \n\t\n"))
        self.assertIsNone(self.sample("b.c", b"int x;\0\n"))

    def test_size_and_line_length_limits(self):
        at_limit = (b"x" * 99 + b"\n") * (fetch.MAX_BYTES // 100) + b"y" * (fetch.MAX_BYTES % 100)
        self.assertEqual(len(at_limit), fetch.MAX_BYTES)
        self.assertIsNotNone(self.sample("ok.txt", at_limit))
        self.assertIsNone(self.sample("big.txt", at_limit + b"\n"))
        self.assertIsNotNone(self.sample("l1.txt", b"a" * fetch.MAX_LINE + b"\nb\n"))
        self.assertIsNone(self.sample("l2.txt", b"a\n" + b"a" * (fetch.MAX_LINE + 1) + b"\n"))

    def test_minified_and_generated_files_are_refused(self):
        self.assertIsNone(self.sample("lib/x.min.js", b"var a=1;\n"))
        self.assertIsNone(self.sample("lib/x-min.css", b"a{}\n"))
        self.assertIsNotNone(self.sample("lib/admin.js", b"var a=1;\n"))
        self.assertIsNone(self.sample("g.go", b"// Code generated by stringer. DO NOT EDIT.\npackage x\n"))
        self.assertIsNone(self.sample("g.c", b"/*\n * Automatically Generated\n */\n"))
        # The marker only counts near the top: a late mention is ordinary text.
        late = b"line\n" * 10 + b"# generated by hand, not really\n"
        self.assertEqual(self.sample("late.sh", late), late)

    def test_gz_files_are_unpacked_and_checked(self):
        self.assertEqual(self.sample("man/x.1.gz", gzip.compress(b".TH X 1\n")), b".TH X 1\n")
        self.assertIsNone(self.sample("z.gz", gzip.compress(b"a\0b")))
        # Compressed size is small, unpacked size counts.
        self.assertIsNone(self.sample("huge.gz", gzip.compress((b"a" * 80 + b"\n") * 4000)))
        self.assertIsNone(self.sample("notgz.gz", b"plain text\n"))
        self.assertIsNone(self.sample("cut.gz", gzip.compress(b"hello\n" * 100)[:-12]))
        packed = gzip.compress(b"hello world\n" * 200)
        corrupt = packed[:10] + bytes(b ^ 0xFF for b in packed[10:30]) + packed[30:]
        self.assertIsNone(self.sample("corrupt.gz", corrupt))

    def test_output_path_drops_npm_wrapper_and_gz(self):
        npm = fetch.Unit("npm", "lodash", "4.17.21")
        deb = fetch.Unit("deb", "foo", "1")
        self.assertEqual(fetch.output_path(npm, "package/lib/a.js"), "lib/a.js")
        self.assertEqual(fetch.output_path(deb, "usr/share/man/man1/x.1.gz"), "usr/share/man/man1/x.1")
        self.assertEqual(fetch.output_path(deb, "package/a.js"), "package/a.js")

    def test_archive_members_are_filtered_and_named_after_the_archive(self):
        jar = self.write("usr/share/java/lib.jar", b"")
        with zipfile.ZipFile(jar, "w") as archive:
            archive.writestr("x/core.clj", "(ns x.core)\n")
            archive.writestr("x/core.class", "\xca\xfe")
            archive.writestr("x/empty.clj", "")
            archive.writestr("x/bin.clj", "a\0b")
        self.write("usr/share/java/broken.jar", b"not a zip")
        unit = fetch.Unit("deb", "libx-clojure", "1", root=self.dir, files=fetch.list_tree(self.dir))
        source = fetch.Source("Clojure", "deb", "libx-clojure", "1", [], 40, "x", "t:1", [],
                              [(fetch.glob_to_regex("usr/share/java/*.jar"), fetch.glob_to_regex("**/*.clj"))])
        stderr = io.StringIO()
        with contextlib.redirect_stderr(stderr):
            found = fetch.archive_members(unit, source)
        self.assertEqual(found, [("usr/share/java/lib.jar/x/core.clj", b"(ns x.core)\n")])
        self.assertIn("cannot read usr/share/java/broken.jar", stderr.getvalue())


class GitSourceTest(TempDirTest):
    def test_git_lines_parse_repo_commit_and_project(self):
        path = self.write("g.recipe", b"[Zig]\ngit owner/repo@" + b"a" * 40 + b" src/a.zig src/b.zig max=2\n")
        with contextlib.redirect_stderr(io.StringIO()):
            (source,) = fetch.parse_recipe(path)
        self.assertEqual((source.kind, source.package, source.version), ("git", "owner/repo", "a" * 40))
        self.assertEqual(source.project, "owner+repo")
        self.assertTrue(source.patterns[0].match("src/a.zig"))
        self.assertFalse(source.patterns[0].match("src/c.zig"))

    def test_local_copy_is_used_and_unpinned_clone_is_refused(self):
        self.write("mirror/owner+repo/src/a.zig", b"const std = @import(\"std\");\n")
        saved = fetch.GIT_MIRROR
        fetch.GIT_MIRROR = os.path.join(self.dir, "mirror")
        try:
            fetcher = fetch.Fetcher()
            unit = fetch.Unit("git", "owner/repo", "b" * 40)
            fetcher.fetch_git(unit)
            self.assertEqual(fetch.list_tree(unit.root), ["src/a.zig"])
            missing = fetch.Unit("git", "other/repo", "not-a-commit")
            with self.assertRaises(fetch.FetchError):
                fetcher.fetch_git(missing)
        finally:
            fetch.GIT_MIRROR = saved


if __name__ == "__main__":
    unittest.main()
