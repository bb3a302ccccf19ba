"""Links of pages: in this tree they lead from file to file, on the site from page to page."""
from __future__ import annotations

import os
import re
import shutil
from pathlib import Path
from typing import Callable, Optional

from tree import SOURCE, TREE, write

# Pages that lie outside docs/, and where they are on the site.
OUTSIDE = {"README.md": "README.md", "CHANGELOG.md": "CHANGELOG.md", "CONTRIBUTING.md": "CONTRIBUTING.md",
           "drivers/README.md": "drivers/README.md"}
_LANGUAGES = {".cpp": "cpp", ".h": "cpp", ".py": "python", ".json": "json", ".txt": "cmake", ".cmake": "cmake", ".ini": "ini",
              "": "text"}
_PICTURES = {".png", ".jpg", ".svg"}
_LINK = re.compile(r"(!?\[(?:[^\[\]]|\[[^\]]*\])*\])\(([^()\s]+)\)")


def site_name(file: str) -> Optional[str]:
    """Where the site has a file of the tree, page or picture; None for what is no part of it."""
    if file in OUTSIDE:
        return OUTSIDE[file]
    if file.startswith("docs/") and Path(file).suffix in {".md", *_PICTURES}:
        return file.removeprefix("docs/")
    return None


def code_page(file: str) -> str:
    """The page that shows a source file of the tree whole; it is made here."""
    suffix = Path(file).suffix
    name = "code/" + file.replace(".", "-") + ".md"
    language = _LANGUAGES.get(suffix, "text")
    fence = "`" * 6
    text = (TREE / file).read_text(encoding="utf-8")
    write(name, f"---\norphan: true\n---\n\n# {file}\n\n{fence}{language}\n{text.rstrip()}\n{fence}\n")
    return name


def relative(target: str, page: str) -> str:
    return os.path.relpath(target, os.path.dirname(page) or ".")


def _rewritten(link: str, file: str, page: str) -> tuple[str, bool]:
    """A link of `file`, which becomes `page`: what it is there, and whether that is an address of HTML."""
    path, mark, anchor = link.partition("#")
    target = os.path.normpath(os.path.join(os.path.dirname(file), path))
    known = site_name(target)
    if known is None and target.endswith(".ipynb") and (TREE / target).is_file():
        return relative("notebooks/" + Path(target).stem + ".html", page), True
    if known is None:
        if not (TREE / target).is_file():
            raise SystemExit(f"{file}: the link '{link}' leads to no file")
        known, anchor = code_page(target), ""
    return relative(known, page) + (mark + anchor if anchor else ""), False


def _outside_code(text: str, change: Callable[[str], str]) -> str:
    """The text with `change` done to all that is neither in a block of code nor in code of a line."""
    pieces = re.split(r"(^[ ]*(?P<fence>`{3,})[^\n]*\n.*?^[ ]*(?P=fence)[ ]*$|^(?: {4}[^\n]*\n)+)", text,
                      flags=re.MULTILINE | re.DOTALL)
    changed = []
    for i in range(0, len(pieces), 3):
        parts = re.split(r"(`+[^`]+`+)", pieces[i])
        # A link's text may hold code: whole links come first.
        changed.append(change(pieces[i]) if len(parts) == 1 else _with_links(pieces[i], change))
        if i + 1 < len(pieces):
            changed.append(pieces[i + 1])
    return "".join(changed)


def _with_links(text: str, change: Callable[[str], str]) -> str:
    """As change(text), but for brackets inside code of a line."""
    kept: list[str] = []

    def keep(match: re.Match[str]) -> str:
        kept.append(match[0])
        return f"\0{len(kept) - 1}\0"

    return re.sub(r"\0(\d+)\0", lambda match: kept[int(match[1])], change(re.sub(r"(`+)(?!`).+?(?<!`)\1(?!`)", keep, text,
                                                                                 flags=re.DOTALL)))


def _included(match: re.Match[str], file: str) -> str:
    """A directive that shows a part of a file: what lies outside docs/ is brought along."""
    target = os.path.normpath(os.path.join(os.path.dirname(file), match[2]))
    if target.startswith("docs/"):
        return match[0]
    if not (TREE / target).is_file():
        raise SystemExit(f"{file}: there is no {target} to show code of")
    (SOURCE / "included" / target).parent.mkdir(parents=True, exist_ok=True)
    shutil.copy(TREE / target, SOURCE / "included" / target)
    return f"{match[1]}/included/{target}"


def rewrite(text: str, file: str, page: str) -> str:
    text = re.sub(r"^( *`{3,}\{literalinclude\} +)(\S+)", lambda match: _included(match, file), text, flags=re.MULTILINE)

    def change(match: re.Match[str]) -> str:
        shown, link = match[1], match[2]
        if re.match(r"[a-z]+:|#", link):
            return match[0]
        address, html = _rewritten(link, file, page)
        if html:
            return f'<a href="{address}">{shown[1:-1]}</a>'
        return f"{shown}({address})"

    return _outside_code(text, lambda piece: _LINK.sub(change, piece))
