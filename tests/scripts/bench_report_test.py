"""The arithmetic of the benchmark reports, and the page that shows it."""

import html.parser
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "bench"))

from report import figures, svg  # noqa: E402: found by the line above


def run_of(name, us, **counters):
    return {"run_name": name, "run_type": "iteration", "time_unit": "us", "cpu_time": us, "real_time": 2 * us, **counters}


class Figures(unittest.TestCase):
    def test_exponent_is_that_of_a_power(self):
        for power in (0.0, 1.0, 1.5, 2.0):
            times = {size: 7.0 * size ** power for size in (1000, 10000, 100000, 1000000)}
            self.assertAlmostEqual(power, figures.exponent(times), 12)

    def test_exponent_is_the_least_squares_slope(self):
        # Logarithms to base 10: 0, 0, 0, 4 over 0, 1, 2, 3, whose mean is 1.5: 1.5 * 4 over 2 (0.5^2 + 1.5^2).
        self.assertAlmostEqual(1.2, figures.exponent({1: 1.0, 10: 1.0, 100: 1.0, 1000: 10000.0}), 12)
        self.assertIsNone(figures.exponent({100: 5.0}))

    def test_judged_by_the_median_of_the_ratios_of_each_run(self):
        goal = {"program": "a", "ours": "x", "peer": "y", "goal": 0.5, "excellent": 0.2}
        runs = [{("a", "x", "cpu"): ours, ("a", "y", "cpu"): 10.0} for ours in (3.0, 9.0, 4.0)]
        judged, = figures.judge([goal], runs)
        self.assertAlmostEqual(0.4, judged.reached)
        self.assertEqual("yes", judged.verdict)
        self.assertEqual("MISSED", figures.judge([goal], runs[1:2])[0].verdict)
        self.assertEqual("yes, best", figures.judge([dict(goal, excellent=0.3)], runs[:1])[0].verdict)
        self.assertEqual("not run", figures.judge([dict(goal, peer="z")], runs)[0].verdict)

    def test_median_times_of_what_some_runs_left_out(self):
        self.assertEqual({"a": 2.0, "b": 5.0}, figures.median_times([{"a": 1.0}, {"a": 2.0, "b": 5.0}, {"a": 9.0}]))

    def test_growths_are_the_processor_times_by_size(self):
        times = {("growth_bench", "growth/one/100", "cpu"): 5.0, ("growth_bench", "growth/one/100", "real"): 9.0,
                 ("growth_bench", "growth/one/20", "cpu"): 1.0, ("other_bench", "growth/one/3", "cpu"): 1.0}
        self.assertEqual({"one": {20: 1.0, 100: 5.0}}, figures.growths(times))

    def test_texts_have_three_digits(self):
        self.assertEqual(["1.5 ns", "12.3 µs", "1 ms", "2.5 s"],
                         [figures.time_text(ns) for ns in (1.5, 12345, 999900, 2.5e9)])
        self.assertEqual(["0", "12", "5.04 M", "1 k"], [figures.count_text(n) for n in (0, 12, 5038848, 999.9)])


class Bars(unittest.TestCase):
    def widths(self, ours, peer):
        goal = {"program": "a", "ours": "x", "peer": "y", "goal": 0.5}
        judged, = figures.judge([goal], [{("a", "x", "cpu"): ours, ("a", "y", "cpu"): peer}])
        drawing = xml.etree.ElementTree.fromstring(svg.bars(judged, width=102))
        return [(bar.get("class"), float(bar.get("width"))) for bar in drawing.iter("rect")]

    def test_widths_are_as_the_times(self):
        self.assertEqual([("ours", 26), ("peer", 101)], self.widths(1.0, 4.0))
        self.assertEqual([("missed", 101), ("peer", 26)], self.widths(4.0, 1.0))


class Page(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, program, *runs):
        context = {"date": "2031-02-03T04:05:06+00:00", "num_cpus": 6}
        text = json.dumps({"context": context, "benchmarks": list(runs)})
        (self.folder / f"{program}.json").write_text(text)
        (self.folder / "python_bench.json").write_text('{"benchmarks": []}')  # has no context

    def run_script(self, script, *arguments):
        command = [sys.executable, PROJECT / "bench" / script, *arguments]
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout

    def test_growth_is_told_with_its_goal_and_reason(self):
        rows = []
        for size in (1000, 10000, 100000):
            heap = {"heap_blocks": 3.0, "heap_bytes": 8.0 * size, "heap_peak": 4.0 * size}
            rows += [run_of(f"growth/plain/{size}", size, **heap), run_of(f"growth/slow/{size}", size ** 1.5),
                     run_of(f"growth/known/{size}", size ** 1.5)]
        self.write("growth_bench", *rows)
        notes = self.folder / "notes"
        notes.write_text(json.dumps({"known": {"exponent": 1.5, "reason": "each looks at all"}}))
        lines = self.run_script("report_growth.py", notes, self.folder).splitlines()
        words = {line.split()[0]: line.split() for line in lines if not line.startswith(" ")}
        self.assertEqual(["plain", "1.00", "1.1", "100", "k", "100", "ms", "3", "800", "k", "400", "k"], words["plain"])
        self.assertEqual(["slow", "1.50", "1.1", "MISSED"], words["slow"][:4])
        self.assertEqual(["known", "1.50", "1.5", "100", "k"], words["known"][:5])
        self.assertIn("    each looks at all", lines)
        self.assertEqual("3 operators: the exponents of 2 within their goal, of 1 beyond", lines[-1])

    def test_page_stands_alone(self):
        self.write("operators_bench", run_of("fill_holes/2000", 0.5), run_of("fill_holes_opencv_flood/2000", 4.0))
        self.write("growth_bench", run_of("growth/plain/10", 1.0, heap_blocks=0.0, heap_bytes=0.0, heap_peak=0.0),
                   run_of("growth/plain/1000", 100.0, heap_blocks=0.0, heap_bytes=0.0, heap_peak=0.0))
        target = self.folder / "report" / "index.html"
        self.run_script("report_page.py", target, self.folder)
        text = target.read_text()
        self.assertIn("<b>0.125</b>", text)
        self.assertIn("<b>1.00</b>", text)
        self.assertIn("6 cores", text)
        self.assertIn("2031-02-03", text)
        references = []

        class Parser(html.parser.HTMLParser):
            def handle_starttag(self, tag, attributes):
                references.extend(name for name, _ in attributes if name in ("src", "href"))
                if tag in ("script", "link", "img"):
                    references.append(tag)

        Parser().feed(text)
        self.assertEqual([], references)

    def test_picture_is_svg_that_names_machine_and_date(self):
        self.write("edges_bench", run_of("edgesSubPix/5MP", 3.0), run_of("opencvCallsRefined/5MP", 6.0))
        picture = self.folder / "picture.svg"
        self.run_script("report_page.py", "--picture", picture, self.folder / "index.html", self.folder)
        drawing = xml.etree.ElementTree.parse(picture)
        texts = [element.text for element in drawing.iter("{http://www.w3.org/2000/svg}text")]
        self.assertIn("0.50", texts)
        self.assertTrue(any("2031-02-03" in text and "6 cores" in text for text in texts))


if __name__ == "__main__":
    unittest.main()
