"""Which class and which header of functions may be used from which thread, out of the headers' own comments.

    python3 docs/site/thread_words.py    prints what has no statement
"""
from __future__ import annotations

import re
from dataclasses import dataclass

from tree import ROOMS, TREE, documented_headers, room_of

_WORDS = ["reentrant", "thread-safe", "one thread at a time"]
_SAYS = re.compile(r"\b(reentrant|thread-safe|one thread at a time|"
                   r"(?:any|one|several|other|every|its own|grab|display|same) threads?)\b", re.IGNORECASE)
_TYPE = re.compile(r"^(?:template <[^>]*>\n)?(class|struct) (?:ORX_API |ZUL_API )?([A-Za-z_]\w*)[^;{]*\{", re.MULTILINE)
_FUNCTION = re.compile(r"^(?:ORX_API|ZUL_API|VD_EXPORT|inline|template)[^;{]*\(", re.MULTILINE)


@dataclass
class Statement:
    header: str
    name: str  # empty: the functions of the header
    kind: str  # class, functions, record
    text: str  # what is said, empty where nothing is

    @property
    def words(self) -> list[str]:
        said = self.text.lower()
        return [word for word in _WORDS if word in said]


def _said(comment: str) -> str:
    """The sentences of a comment that tell of threads."""
    text = " ".join(re.sub(r"^\s*(?://|/?\*+/?)", " ", line) for line in comment.splitlines())
    sentences = re.split(r"(?<=[.!?])\s+", " ".join(text.split()))
    return " ".join(sentence for sentence in sentences if _SAYS.search(sentence)).removesuffix("*/").strip()


def _comment_above(text: str, place: int) -> str:
    lines = text[:place].splitlines()
    above: list[str] = []
    while lines and lines[-1].lstrip().startswith("//"):
        above.insert(0, lines.pop())
    return "\n".join(above)


def _comments(text: str) -> str:
    return "\n".join(line[line.index("//"):] for line in text.splitlines() if "//" in line)


def _body(text: str, place: int) -> str:
    """From a class's brace to its end, which stands at the beginning of a line."""
    end = re.compile(r"^\}", re.MULTILINE).search(text, place)
    return text[place:end.start() if end else len(text)]


def _first_comment(text: str) -> str:
    if text.startswith("/*"):
        return text[:text.index("*/")]
    return re.match(r"(?://[^\n]*\n)*", text)[0]  # type: ignore[index]


def _is_record(body: str) -> bool:
    """Whether it holds data alone."""
    code = re.sub(r"//[^\n]*", "", body)
    return "(" not in re.sub(r"=[^;]*;|\{[^{}]*\};", ";", code[1:])


def statements_of(header: str) -> list[Statement]:
    text = (TREE / header).read_text(encoding="utf-8")
    of_header = _said(_first_comment(text))
    found, rest = [], text
    for match in _TYPE.finditer(text):
        body = _body(text, match.end() - 1)
        rest = rest.replace(body, "")
        own = _said(_comment_above(text, match.start())) or _said(_comments(body)) or of_header
        found.append(Statement(header, match[2], "record" if _is_record(body) and not own else "class", own))
    if _FUNCTION.search(rest):
        others = _said(_comments(rest))
        found.append(Statement(header, "", "functions", of_header or others))
    return found


def all_statements() -> list[Statement]:
    return [statement for header in documented_headers() for statement in statements_of(header)]


def page() -> str:
    lines = ["# Which class on which thread", "",
             "Out of the headers, which use three words. **Reentrant**: may run on several threads at once on different data.",
             "**Thread-safe**: may run on several threads at once on the same object. **One thread at a time**: the caller",
             "serialises. A class without a statement of its own has that of its header. [Threads](../threads.md) shows a host with",
             "two cameras.", ""]
    statements = all_statements()
    for room, title in ROOMS.items():
        own = [s for s in statements if room_of(s.header) == room and s.kind != "record"]
        if not own:
            continue
        lines += [f"## {title}", "", "| class or header | word | what the header says |", "|---|---|---|"]
        for s in own:
            name = f"`{s.name}` ({s.header.rpartition('/')[2]})" if s.name else f"functions of {s.header.rpartition('/')[2]}"
            said = re.sub(r"([|*_<\\])", r"\\\1", s.text) if s.text else "*no statement*"
            lines.append(f"| {name} | {', '.join(s.words)} | {said} |")
        lines.append("")
    records = sorted(f"`{s.name}`" for s in statements if s.kind == "record")
    lines += ["## Records", "",
              "Data without functions, for which nothing is stated: each thread uses its own, or the caller serialises.", "",
              ", ".join(records) + ".", ""]
    return "\n".join(lines)


if __name__ == "__main__":
    for statement in all_statements():
        if not statement.text and statement.kind != "record":
            print(f"{statement.header}: {statement.name or 'functions'}")
