"""Puts the site's source together in build/docs/source: the pages of this tree, and those that are made out of it.

    python3 docs/site/assemble.py PICTURES_OF_GUIDES
"""
from __future__ import annotations

import re
import shutil
import sys
from pathlib import Path

import accuracy
import doxygen_text
import flowcharts
import gallery
import guides
import numbers_pages
import reference
import theme
from links import OUTSIDE, rewrite, site_name
from tree import SOURCE, TREE, write


def with_charts(text: str, page: str) -> str:
    """The page with pictures for its flow charts."""
    titles: list[str] = []

    def drawn(match: re.Match[str]) -> str:
        titles.append(re.findall(r"^#+ (.*)", text[:match.start()], flags=re.MULTILINE)[-1])
        name = f"plots/{page}-{len(titles)}.svg"
        write(name, flowcharts.svg_of(match[1]))
        return f"![Flow chart: {titles[-1]}]({name})\n"

    return re.sub(r"^```mermaid\n(.*?)^```\n", drawn, text, flags=re.MULTILINE | re.DOTALL)


def copy_pages() -> None:
    docs = TREE / "docs"
    for file in [*sorted(docs.rglob("*.md")), *(TREE / name for name in OUTSIDE)]:
        name = str(file.relative_to(TREE))
        page = site_name(name)
        assert page is not None
        text = rewrite(file.read_text(encoding="utf-8"), name, page)
        if file.name.startswith("accuracy-"):
            text = accuracy.with_plots(text, file.stem)
        write(page, with_charts(text, file.stem))


def copy_beside_pages(pictures: Path) -> None:
    """Pictures, and the code that pages show parts of."""
    shutil.copytree(TREE / "docs" / "images", SOURCE / "images")
    shutil.copytree(pictures, SOURCE / "guides" / "pictures")
    for file in (TREE / "docs" / "guides").iterdir():
        if file.suffix in {".cpp", ".h", ".py", ".txt"}:
            shutil.copy(file, SOURCE / "guides" / file.name)


def main() -> None:
    if len(sys.argv) != 2 or not Path(sys.argv[1]).is_dir():
        raise SystemExit(__doc__)
    pictures = Path(sys.argv[1])
    shutil.rmtree(SOURCE, ignore_errors=True)
    SOURCE.mkdir(parents=True)
    copy_beside_pages(pictures)
    copy_pages()
    guides.write_index()
    gallery.write_page()
    numbers_pages.write_pages()
    reference.write_cpp_pages()
    reference.write_python_pages()
    doxygen_text.join_lines()
    theme.write_static()


if __name__ == "__main__":
    main()
