"""Flow charts that pages write as Mermaid, which Git hosts draw: as SVG, by Graphviz. Takes the part of Mermaid in use here."""
from __future__ import annotations

import re
import subprocess

_SHAPES = [(r"\(\[(.*?)\]\)", "ellipse"), (r"\[\[(.*?)\]\]", "component"), (r"\[(.*?)\]", "box"), (r"\((.*?)\)", "box")]
_NODE = re.compile(r"^(\w+)\s*(?:(\(\[.*?\]\)|\[\[.*?\]\]|\[.*?\]|\(.*?\)))?\s*")
_EDGE = re.compile(r"^(?:--\s+(.*?)\s+-->|-->)\s*")


def _text(text: str) -> str:
    return text.strip('"').replace('"', '\\"').replace("<br>", "\\n")


class _Chart:
    def __init__(self, source: str) -> None:
        self.lines: list[str] = []
        self.shaped: dict[str, tuple[str, str]] = {}
        self.classes: dict[str, list[str]] = {}
        self.styles: dict[str, str] = {}
        for line in source.splitlines():
            self._take(line.strip())

    def _take(self, line: str) -> None:
        if not line or line.startswith(("flowchart", "%%")):
            return
        if line.startswith("subgraph"):
            match = re.match(r'subgraph (\w+)\["?(.*?)"?\]$', line)
            if not match:
                raise SystemExit(f"a flow chart has a line that is not understood: {line}")
            self.lines.append(f'subgraph cluster_{match[1]} {{ label="{_text(match[2])}";')
        elif line == "end":
            self.lines.append("}")
        elif line.startswith("classDef"):
            _, name, style = line.split(None, 2)
            self.styles[name] = style
        elif line.startswith("class "):
            _, members, name = line.split()
            self.classes[name] = members.split(",")
        else:
            self._take_edges(line)

    def _take_edges(self, line: str) -> None:
        rest, before, label = line, "", ""
        while rest:
            match = _NODE.match(rest)
            if not match:
                raise SystemExit(f"a flow chart has a line that is not understood: {line}")
            name, rest = match[1], rest[match.end():]
            if match[2]:
                shape, text = next((shape, found[1]) for pattern, shape in _SHAPES
                                   if (found := re.fullmatch(pattern, match[2])))
                self.shaped[name] = shape, _text(text)
                self.lines.append(f"{name};")
            if before:
                self.lines.append(f"{before} -> {name}" + (f' [label="{_text(label)}"];' if label else ";"))
            before = name
            edge = _EDGE.match(rest)
            if not edge and rest:
                raise SystemExit(f"a flow chart has a line that is not understood: {line}")
            label, rest = (edge[1] or "", rest[edge.end():]) if edge else ("", "")

    def dot(self) -> str:
        nodes = []
        for name, (shape, text) in self.shaped.items():
            fill = "#eef2f6"
            for style, members in self.classes.items():
                if name in members and (found := re.search(r"fill:(#\w+)", self.styles.get(style, ""))):
                    fill = found[1]
            nodes.append(f'{name} [shape={shape}, label="{text}", fillcolor="{fill}"];')
        return ('digraph { graph [bgcolor="transparent", fontname="sans-serif", fontcolor="#7a828b", color="#7a828b",'
                ' fontsize=11];'
                ' node [style=filled, fontname="sans-serif", fontsize=11, color="#7a828b", fontcolor="#112233"];'
                ' edge [fontname="sans-serif", fontsize=10, color="#7a828b", fontcolor="#7a828b"];\n'
                + "\n".join([*self.lines, *nodes]) + "\n}\n")


def svg_of(source: str) -> str:
    return subprocess.run(["dot", "-Tsvg"], input=_Chart(source).dot(), capture_output=True, text=True, check=True).stdout
