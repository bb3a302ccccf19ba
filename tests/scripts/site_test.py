"""What makes the site: links between pages, flow charts, statements about threads, names without an example."""
import sys
import unittest
from pathlib import Path
from unittest import mock

TREE = Path(__file__).resolve().parent.parent.parent
sys.path[:0] = [str(TREE / "docs" / "site"), str(TREE / "docs" / "tools")]

import check_names  # noqa: E402
import flowcharts  # noqa: E402
import guides  # noqa: E402
import links  # noqa: E402
import thread_words  # noqa: E402


class Links(unittest.TestCase):
    def rewritten(self, text, file="docs/guides/a.md", page="guides/a.md"):
        with mock.patch.object(links, "write") as self.write:
            return links.rewrite(text, file, page)

    def test_a_page_outside_docs_is_one_of_the_site(self):
        self.assertEqual(self.rewritten("[x](../../README.md#use-it)"), "[x](../README.md#use-it)")
        self.assertEqual(self.rewritten("![a](docs/images/viewer.png)", "README.md", "README.md"), "![a](images/viewer.png)")

    def test_a_source_becomes_a_page_that_shows_it(self):
        self.assertEqual(self.rewritten("[x](../../orxFunctions/api.h)"), "[x](../code/orxFunctions/api-h.md)")
        name, text = self.write.call_args[0]
        self.assertEqual(name, "code/orxFunctions/api-h.md")
        self.assertIn("#define ORX_VERSION_MAJOR", text)

    def test_a_notebook_becomes_the_page_of_its_run(self):
        self.assertEqual(self.rewritten("[`x`](../../python/examples/notebooks/coins.ipynb)"),
                         '<a href="../notebooks/coins.html">`x`</a>')

    def test_addresses_anchors_and_code_stay(self):
        for text in ("[x](https://example.org/a.md)", "[x](#here)", "`[x](y.h)`", "```\n[x](y.h)\n```\n", "text\n\n    [x](y.h)\n"):
            self.assertEqual(self.rewritten(text), text)

    def test_a_link_to_no_file_is_refused(self):
        with self.assertRaises(SystemExit):
            self.rewritten("[x](../../orxFunctions/none.h)")


class Charts(unittest.TestCase):
    def test_nodes_edges_frames_and_classes(self):
        dot = flowcharts._Chart('flowchart TD\n  subgraph s["a frame"]\n    a([start]) --> b["one<br>two"]\n  end\n'
                                "  b -- says --> c[[end]] --> a\n  class b own\n  classDef own fill:#abcdef,color:#123\n").dot()
        for part in ('label="a frame"', "a -> b;", 'b -> c [label="says"];', "c -> a;", 'shape=ellipse, label="start"',
                     'label="one\\ntwo", fillcolor="#abcdef"'):
            self.assertIn(part, dot)

    def test_what_is_not_understood_is_refused(self):
        with self.assertRaises(SystemExit):
            flowcharts._Chart("flowchart TD\n  a ==> b\n")


class ThreadWords(unittest.TestCase):
    def statements(self, text):
        with mock.patch.object(Path, "read_text", return_value=text):
            return {s.name: s for s in thread_words.statements_of("orxFunctions/files/a.h")}

    def test_what_stands_above_a_class_goes_before_what_the_header_says(self):
        found = self.statements("// Things. All functions are reentrant.\n#ifndef A\n\n// A box. Thread-safe, but for its end.\n"
                                "class ORX_API TBox {\n  public:\n    void show();\n};\n\nstruct TOther {\n    int f();\n};\n"
                                "ORX_API int f(int a);\n")
        self.assertEqual(found["TBox"].words, ["thread-safe"])
        self.assertEqual(found["TBox"].text, "Thread-safe, but for its end.")
        self.assertEqual(found["TOther"].words, ["reentrant"])
        self.assertEqual(found[""].words, ["reentrant"])

    def test_silence_is_told_and_data_need_no_statement(self):
        found = self.statements("// Things.\n#ifndef A\nstruct TData {\n    double a = 0.0;  // length\n};\nclass TBox {\n    void f();\n};\n")
        self.assertEqual((found["TData"].kind, found["TBox"].kind, found["TBox"].text), ("record", "class", ""))
        self.assertNotIn("", found)


class Names(unittest.TestCase):
    def test_a_name_is_shown_with_its_namespace_or_alone_but_not_as_another_ones(self):
        for text in ("orx::fit(a)", "using fit;", "x = fit(y)"):
            self.assertTrue(check_names.is_shown("orx::fit", text), text)
        for text in ("zul::fit(a)", "box.fit(a)", "box->fit(a)", "fitted(a)", "refit(a)"):
            self.assertFalse(check_names.is_shown("orx::fit", text), text)

    def test_no_name_wants_an_example_any_more(self):
        self.assertEqual(check_names.listed(), [])

    def test_of_a_page_code_counts_alone(self):
        code = check_names.code_of_page("a word `inline` and\n```cpp\nblock();\n```\n- an item\n    goes on\n\n    rows();\n")
        for word, there in (("inline", True), ("block", True), ("rows", True), ("word", False), ("goes", False)):
            self.assertEqual(word in code, there, word)


class Guides(unittest.TestCase):
    def test_first_things_come_first_and_unknown_ones_last(self):
        names = ["zebra", "from-opencv", "fits", "first-measurement", "thresholds"]
        self.assertEqual(sorted(names, key=guides._place), ["first-measurement", "thresholds", "fits", "from-opencv", "zebra"])


if __name__ == "__main__":
    unittest.main()
