"""The public names of the C++ library, out of its headers.

A name counts where it stands at the top or in a namespace: a function that is marked ORX_API or ZUL_API, an object that is,
a class, struct or enumeration that is defined there. What lies in a class belongs to it.
"""
from __future__ import annotations

import re
from pathlib import Path

TREE = Path(__file__).resolve().parent.parent.parent
_MARK = re.compile(r"\b(?:ORX_API|ZUL_API)\b")
_TYPE = re.compile(r"^(?:template\s*<[^{]*>\s*)?(?:class|struct|enum(?:\s+(?:class|struct))?)\s+(?:ORX_API\s+|ZUL_API\s+)?"
                   r"([A-Za-z_]\w*)\b(?!.*=)")
_FUNCTION = re.compile(r"([A-Za-z_]\w*)\s*\(")
_OBJECT = re.compile(r"([A-Za-z_]\w*)\s*(?:\[[^\]]*\]\s*)?(?:=|$)")


def without_comments(text: str) -> str:
    text = re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', lambda match: '""' if match[0][0] == '"' else " ", text,
                  flags=re.DOTALL)
    text = re.sub(r"'(?:\\.|[^'\\\n])+'", "0", text)
    return re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", "", text, flags=re.MULTILINE)


def _statements(text: str) -> list[tuple[str, str]]:
    """The statements at the top and in namespaces, each with its namespace; the bodies of others are left out."""
    found: list[tuple[str, str]] = []
    spaces: list[str] = []
    statement, depth = "", 0
    for piece in re.split(r"([{};])", text):
        if piece == "{":
            space = re.search(r"\bnamespace\s*([\w:]*)\s*$", statement)
            if depth == 0 and space:
                spaces.append(space[1])
                statement = ""
            else:
                if depth == 0:
                    found.append(("::".join(spaces), " ".join(statement.split())))
                depth += 1
        elif piece == "}":
            if depth > 0:
                depth -= 1
            elif spaces:
                spaces.pop()
            statement = ""
        elif piece == ";":
            if depth == 0 and statement.strip():
                found.append(("::".join(spaces), " ".join(statement.split())))
            statement = ""
        elif depth == 0:
            statement += piece
    return [(space, statement) for space, statement in found if "detail" not in space.split("::")]


def names_in(text: str) -> set[str]:
    """The public names that a header declares, with their namespaces."""
    names = set()
    parts = re.split(r"([{;])", without_comments(text))
    defined = {" ".join(part.split()) for part, end in zip(parts[::2], parts[1::2]) if end == "{"}
    for space, statement in _statements(without_comments(text)):
        front = f"{space}::" if space else ""
        kind = _TYPE.match(statement)
        if kind and "(" not in statement.split(":")[0]:
            if any(part.endswith(statement) for part in defined):  # not only announced
                names.add(front + kind[1])
        elif _MARK.search(statement):
            rest = _MARK.sub(" ", statement).strip()
            match = _FUNCTION.search(rest) or _OBJECT.search(rest)
            if match and match[1] != "operator" and "operator" not in rest.split("(")[0]:
                names.add(front + match[1])
    return names


def public_headers() -> list[str]:
    """What orxfunctions.h includes, in its order."""
    text = (TREE / "orxFunctions" / "orxfunctions.h").read_text(encoding="utf-8")
    return re.findall(r'^#include "([^"]+)"', text, flags=re.MULTILINE)


def public_names() -> dict[str, str]:
    """Every public name, with the header that declares it."""
    names: dict[str, str] = {}
    for header in public_headers():
        for name in sorted(names_in((TREE / header).read_text(encoding="utf-8"))):
            names.setdefault(name, header)
    return names


def words_of_headers() -> set[str]:
    """Every word of them: what a class has inside is found here."""
    text = "".join((TREE / header).read_text(encoding="utf-8") for header in public_headers())
    return set(re.findall(r"[A-Za-z_]\w*", without_comments(text)))
