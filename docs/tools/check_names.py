"""Which public names of C++ are shown nowhere: neither in a page of docs/, nor in code of guides, examples or notebooks.

    python3 docs/tools/check_names.py [--update]

Compares with docs/names-without-example.txt, which only shrinks: a new name needs an example (or a sentence in a guide that
names it), and a name that has got one leaves the list. --update takes those out; it adds none.
"""
from __future__ import annotations

import argparse
import json
import re
import sys
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(TREE / "python" / "tools"))

from cpp_names import public_names, without_comments  # noqa: E402

LIST = TREE / "docs" / "names-without-example.txt"
# Pages that list names without showing them.
_LISTS = {"python-names.md", "coverage.md"}
# Programs whose code pages show.
_SHOWN_PROGRAMS = re.compile(r"_guide\.cpp$")


def code_of_page(text: str) -> str:
    """What a page sets as code: in blocks, and in a line."""
    fenced = re.findall(r"^ *```[^\n]*\n(.*?)^ *```", text, flags=re.MULTILINE | re.DOTALL)
    rest = re.sub(r"^ *```[^\n]*\n.*?^ *```", "", text, flags=re.MULTILINE | re.DOTALL)
    # After an empty line: else it goes on with a list.
    indented = re.findall(r"\n[ \t]*\n((?: {4}[^\n]*\n)+)", rest)
    return "\n".join([*fenced, *indented, *re.findall(r"`([^`]+)`", rest)])


def _code_of_notebook(text: str) -> str:
    return "\n".join("".join(cell["source"]) if cell["cell_type"] == "code" else code_of_page("".join(cell["source"]))
                     for cell in json.loads(text)["cells"])


def shown_text() -> str:
    """All code that a user is shown."""
    docs, pieces = TREE / "docs", []
    for file in sorted([*docs.rglob("*.md"), TREE / "README.md"]):
        if file.name not in _LISTS:
            pieces.append(code_of_page(file.read_text(encoding="utf-8")))
    programs = [file for folder in (docs / "guides", TREE / "examples") for file in folder.rglob("*")
                if file.suffix in {".cpp", ".h"}]
    programs += [file for file in (docs / "tools").glob("*.cpp") if _SHOWN_PROGRAMS.search(file.name)]
    pieces += [without_comments(file.read_text(encoding="utf-8")) for file in sorted(programs)]
    pieces += [_code_of_notebook(file.read_text(encoding="utf-8")) for file in sorted(TREE.glob("python/examples/**/*.ipynb"))]
    return "\n".join(pieces)


def is_shown(name: str, text: str) -> bool:
    """Whether a text has the name, with its namespace, with the inner part of it, or alone; not as one of another namespace."""
    parts = name.split("::")
    forms = ["::".join(parts[i:]) for i in range(len(parts))]
    return any(re.search(rf"(?<![\w:.>]){re.escape(form)}\b", text) for form in forms)


def without_example() -> list[str]:
    text = shown_text()
    words = set(re.findall(r"[A-Za-z_]\w*", text))
    return sorted(name for name in public_names() if name.rpartition("::")[2] not in words or not is_shown(name, text))


def listed() -> list[str]:
    lines = LIST.read_text(encoding="utf-8").splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    without, known = without_example(), listed()
    unlisted = [name for name in without if name not in known]
    shown = [name for name in known if name not in without]
    if arguments.update and shown:
        lines = [line for line in LIST.read_text(encoding="utf-8").splitlines() if line not in shown]
        LIST.write_text("\n".join(lines) + "\n", encoding="utf-8")
        shown = []
    for name in unlisted:
        print(f"{name}: no guide, page, example or notebook names it; show it in one")
    for name in shown:
        print(f"{name}: has got an example, or is gone: take it out of docs/names-without-example.txt (--update does)")
    print(f"{len(public_names())} public names, {len(without)} without an example")
    return 1 if unlisted or shown else 0


if __name__ == "__main__":
    sys.exit(main())
