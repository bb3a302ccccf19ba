"""The page of all guides, in the order in which a newcomer reads them."""
from __future__ import annotations

import fnmatch
import re

from tree import TREE, write

# A guide that fits none stands at the end.
_ORDER = ["install*", "first-*", "enhance*", "*threshold*", "*edge*", "*caliper*", "*fit*", "*contour*", "geometry*",
          "*calibration*", "*part*", "*recipe*", "*camera*", "*picture-box*", "*driver*", "host*", "*windows*", "*python*", "*many*",
          "*opencv*", "overview*"]


def _place(name: str) -> tuple[int, str]:
    fits = [i for i, pattern in enumerate(_ORDER) if fnmatch.fnmatch(name, pattern)]
    return (fits[0] if fits else len(_ORDER), name)


def names() -> list[str]:
    """Of all guides that are there."""
    return sorted((file.stem for file in (TREE / "docs" / "guides").glob("*.md")), key=_place)


def title_of(text: str) -> str:
    match = re.search(r"^# (.*)", text, flags=re.MULTILINE)
    if not match:
        raise SystemExit(f"a page has no title: {text[:60]!r}")
    return match[1]


def write_index() -> None:
    lines = ["# Guides", "",
             "Concepts first, then code, then what comes out and what goes wrong. The code of each page is compiled and",
             "run with the tests, which check what the page says of it; its pictures are made while the site is built.", ""]
    for name in names():
        text = (TREE / "docs" / "guides" / f"{name}.md").read_text(encoding="utf-8")
        paragraph = " ".join(text.split("\n\n")[1].split())
        first = re.split(r"(?<=[.:]) ", re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", paragraph))[0].rstrip(":")
        lines.append(f"- [{title_of(text)}]({name}.md): {first}{'' if first.endswith('.') else '.'}")
    lines += ["", "```{toctree}", ":hidden:", "", *names(), "```", ""]
    write("guides/index.md", "\n".join(lines))
