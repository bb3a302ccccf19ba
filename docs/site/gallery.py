"""The gallery: every picture of the guides and of the other pages, with its page and the code that made it."""
from __future__ import annotations

import base64
import html
import os
import re
from pathlib import Path

import guides
from links import code_page
from tree import BUILT, SOURCE, TREE, write

# What made the pictures that are checked in.
_MADE_BY = {
    "benchmarks.svg": "bench/report/svg.py",
    "calibration-*.png": "docs/tools/calibration_guide.cpp",
    "measured-scene.png": "docs/tools/measured_scene.cpp",
    "measuring-*.png": "docs/tools/measuring_guide.cpp",
    "parts-*.png": "docs/tools/matching_guide.cpp",
    "picture-overlay.png": "docs/tools/picture_box_guide.cpp",
    "plate-verdict.jpg": "examples/plates/main.cpp",
    "python-*.png": "python/examples/parts_picture.py",
    "threads.svg": "examples/line_host/main.cpp",
    "viewer.png": "examples/viewer/main.cpp",
}
_PICTURE = re.compile(r"!\[([^\]]*)\]\(([^)\s]+)\)")


def _code_of(picture: str, page: Path) -> str:
    if picture.startswith("guides/pictures/"):
        name = page.stem.replace("-", "_")
        for suffix in (".cpp", ".py"):
            if (TREE / "docs" / "guides" / (name + suffix)).is_file():
                return f"docs/guides/{name}{suffix}"
    for pattern, source in _MADE_BY.items():
        if Path(picture).match(pattern):
            return source
    raise SystemExit(f"{page}: nothing tells what made {picture}")


def _figure(picture: str, caption: str, links: list[tuple[str, str]]) -> str:
    shown = " · ".join(f'<a href="{address}">{html.escape(text)}</a>' for text, address in links)
    return (f'<figure><a href="{links[0][1]}"><img src="{picture}" alt="{html.escape(caption)}" loading="lazy"></a>'
            f"<figcaption>{html.escape(caption)}<br>{shown}</figcaption></figure>")


def _figures_of(pages: list[Path], seen: set[str]) -> list[str]:
    figures = []
    for page in pages:
        text = page.read_text(encoding="utf-8")
        where = page.relative_to(SOURCE)
        for caption, address in _PICTURE.findall(text):
            picture = os.path.normpath(where.parent / address)
            if picture in seen or picture.startswith("plots/"):
                continue
            seen.add(picture)
            code = code_page(_code_of(picture, where)).removesuffix(".md") + ".html"
            figures.append(_figure(f"_pictures/{picture}", caption,
                                   [(guides.title_of(text), str(where.with_suffix(".html"))), ("code", code)]))
    return figures


def _notebook_figures() -> list[str]:
    """The first picture of each notebook."""
    figures = []
    for page in sorted((BUILT / "extra" / "notebooks").glob("*.html")):
        text = page.read_text(encoding="utf-8")
        title = re.search(r"<h1[^>]*>(.*?)<", text)
        name = html.unescape(title[1]).strip() if title else page.stem
        data = re.search(r"data:image/png;base64,([A-Za-z0-9+/=\s]+)", text)
        if data:
            file = BUILT / "extra" / "_pictures" / "notebooks" / f"{page.stem}.png"
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(base64.b64decode(data[1]))
            figures.append(_figure(f"_pictures/notebooks/{page.stem}.png", f"Notebook: {name}",
                                   [("the notebook, as it ran", f"notebooks/{page.stem}.html")]))
        else:
            link = f'<a href="notebooks/{page.stem}.html">Notebook: {html.escape(name)}</a>'
            figures.append(f"<figure><figcaption>{link}</figcaption></figure>")
    return figures


def write_page() -> None:
    seen: set[str] = set()
    parts = ["# Gallery", "",
             "Every picture of the guides and pages. A picture leads to its page, below it is the code that made it."]
    groups = [("Guides", _figures_of([SOURCE / "guides" / f"{name}.md" for name in guides.names()], seen)),
              ("Pages", _figures_of(sorted(SOURCE.glob("*.md")), seen)), ("Python notebooks", _notebook_figures())]
    for title, figures in groups:
        if figures:
            parts += ["", f"## {title}", "", '<div class="gallery">', *figures, "</div>"]
    # Sphinx copies what its own directives name; these are named by HTML.
    for picture in seen:
        if not (SOURCE / picture).is_file():
            raise SystemExit(f"a page shows {picture}, which no program made")
        target = BUILT / "extra" / "_pictures" / picture
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes((SOURCE / picture).read_bytes())
    write("gallery.md", "\n".join(parts) + "\n")
