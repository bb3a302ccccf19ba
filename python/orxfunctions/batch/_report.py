"""A page of the results: one file of HTML that needs nothing else."""
from __future__ import annotations

import base64
import importlib
import importlib.util
import itertools
import json
import math
import os
from collections.abc import Iterable, Iterator
from html import escape
from typing import Any

from ._charts import histogram, run_chart
from ._errors import StoreError
from ._inspections import Inspection, packed
from ._measure import Bounds
from ._pictures import Picture
from ._quarantine import Quarantine
from ._results import BadPart, Results, ValueRun
from ._store import Kept, ReadableStore, Store

_THUMBNAIL_WIDTH = 200
_MOST_BYTES_OF_THUMBNAILS = 8 << 20
_INSPECTIONS = 10
_CARDS = 200
_LONGEST_TEXT = 500
_STYLE = """
:root { color-scheme: light dark; --paper: #fff; --ink: #1f2328; --faint: #59636e; --line: #d1d9e0; --card: #f6f8fa;
  --bar: #0969da; --good: #1a7f37; --bad: #cf222e; --unsure: #9a6700; }
@media (prefers-color-scheme: dark) { :root { --paper: #0d1117; --ink: #f0f6fc; --faint: #9198a1; --line: #3d444d;
  --card: #151b23; --bar: #4493f8; --good: #3fb950; --bad: #f85149; --unsure: #d29922; } }
body { margin: 0 auto; padding: 1rem; max-width: 75rem; background: var(--paper); color: var(--ink);
  font: 16px/1.45 system-ui, sans-serif; overflow-wrap: anywhere; }
h1 { font-size: 1.5rem; } h2 { font-size: 1.25rem; border-top: 1px solid var(--line); padding-top: 1rem; margin-top: 2rem; }
h3 { font-size: 1rem; margin: 1rem 0 .5rem; } .cards h3 { margin: 0 0 .25rem; } p { margin: .25rem 0; }
.faint { color: var(--faint); } .good { color: var(--good); } .bad { color: var(--bad); } .unsure { color: var(--unsure); }
.counts { display: flex; flex-wrap: wrap; gap: .75rem; padding: 0; list-style: none; }
.counts li { background: var(--card); border: 1px solid var(--line); border-radius: .5rem; padding: .5rem .9rem; }
.counts b { display: block; font-size: 1.4rem; font-variant-numeric: tabular-nums; }
.cards { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 20rem), 1fr)); gap: .75rem; }
.cards > div, figure { background: var(--card); border: 1px solid var(--line); border-radius: .5rem; padding: .75rem; }
.pictures { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 9.5rem), 1fr)); gap: .75rem; }
figure { margin: 0; font-size: .875rem; } figure img { width: 100%; border-radius: .25rem; }
svg { width: 100%; fill: var(--bar); } svg text { font-size: 13px; fill: var(--faint); }
.axis { stroke: var(--line); } .limit { stroke: var(--bad); stroke-dasharray: 4 3; } .out { fill: var(--bad); }
.band { opacity: .3; } polyline { fill: none; stroke: var(--bar); stroke-width: 1.5; }
"""
_CLASSES = {"pass": "good", "ok": "good", "fail": "bad", "could not be measured": "bad", "undecided": "unsure",
            "not measured": "unsure"}


def write_page(store: Store, path: str, *, thumbnails: bool = True) -> None:
    """Writes the page, below 20 MB whatever the store holds; a file that is there is replaced once the new one is whole."""
    if not isinstance(store, ReadableStore):
        raise TypeError(f"store: {type(store).__name__} has no methods inspections and rows to be shown by")
    inspections = store.inspections()
    if not inspections:
        raise StoreError("the store holds no results yet")
    partial = f"{path}.part"
    try:
        with open(partial, "w", encoding="utf-8", errors="backslashreplace") as file:
            file.writelines(_page(store, inspections[-_INSPECTIONS:][::-1], thumbnails))
        os.replace(partial, path)
    finally:
        if os.path.exists(partial):
            os.remove(partial)


def _page(store: ReadableStore, inspections: list[Kept], thumbnails: bool) -> Iterator[str]:
    yield ('<!doctype html><html lang="en"><head><meta charset="utf-8">'
           '<meta name="viewport" content="width=device-width, initial-scale=1">'
           f"<title>Results</title><style>{_STYLE}</style></head><body><h1>Results</h1>")
    room, cards = _MOST_BYTES_OF_THUMBNAILS if thumbnails else 0, _CARDS
    for inspection in inspections:
        results = Results(store.rows(inspection), inspection.limits)
        yield from _inspection(inspection, results, cards)
        cards = max(0, cards - len(results.values))
        for heading, parts in (("Parts that did not pass", results.worst), ("Pictures that could not be measured",
                                                                           results.unmeasured)):
            for figure in _figures(heading, parts, room):
                room -= len(figure)
                yield figure
    yield "</body></html>\n"


def _inspection(inspection: Kept, results: Results, cards: int) -> Iterator[str]:
    version = f" {escape(inspection.version)}" if inspection.version else ""
    yield (f'<h2>{escape(inspection.name)}{version} <span class="faint">{escape(inspection.fingerprint[:8])}</span></h2>'
           '<ul class="counts">')
    yield _count("pictures", sum(results.status.values()))
    yield from (_count(verdict, count) for verdict, count in sorted(results.verdicts.items()))
    yield _count("could not be measured", results.status["failed"])
    mean = results.seconds.summary().mean
    yield "</ul>" if mean is None else f'</ul><p class="faint">{1e3 * mean:.3g} ms a picture</p>'
    if results.reasons:
        yield "<h3>Why pictures could not be measured</h3><ul>"
        yield from (f"<li>{count:,} × {escape(reason)}</li>" for reason, count in results.reasons.most_common())
        yield "</ul>"
    yield '<div class="cards">'
    yield from (_card(name, value) for name, value in itertools.islice(results.values.items(), cards))
    yield "</div>"
    if len(results.values) > cards:
        yield f'<p class="faint">{len(results.values) - cards:,} more values are not shown</p>'


def _count(name: str, count: int) -> str:
    return f'<li class="{_CLASSES.get(name, "") if count else ""}"><b>{count:,}</b>{escape(name)}</li>'


def _card(name: str, value: ValueRun) -> str:
    told, unit = value.run.summary(), escape(value.unit)
    limits = [f"{sign} {bound:.6g}" for sign, bound in (("≥", value.lower), ("≤", value.upper)) if math.isfinite(bound)]
    lines = [f'<h3>{escape(name)}{f" ({unit})" if unit else ""}</h3>']
    if told.mean is not None:
        lines.append(f"<p>mean {told.mean:.6g}" + ("" if told.deviation is None else f", deviation {told.deviation:.3g}")
                     + ("" if told.cpk is None or not math.isfinite(told.cpk) else f", Cpk {told.cpk:.3g}") + "</p>")
    counts = ", ".join(f'<span class="{_CLASSES.get(verdict, "")}">{count:,} {verdict}</span>'
                       for verdict, count in told.verdicts.items() if count)
    lines.append(f'<p class="faint">{" and ".join(limits)}{": " if limits else ""}{counts}</p>')
    chart = value.run.chart()
    if chart:
        lines += [histogram(value.run.histogram(), value.lower, value.upper),
                  run_chart(chart, told.parts, value.lower, value.upper)]
    return f"<div>{''.join(lines)}</div>"


def _figures(heading: str, parts: list[BadPart], room: int) -> Iterator[str]:
    """Pictures with what is told of them; without a thumbnail where the picture can't be shown or there is no room."""
    if not parts:
        return
    yield f'<h3>{heading}</h3><div class="pictures">'
    for part, image in zip(parts, _thumbnails((part.path for part in parts), room)):
        shown = f'<img loading="lazy" alt="" src="data:image/jpeg;base64,{image}">' if image else ""
        yield f"<figure>{shown}<b>{escape(os.path.basename(part.path))}</b><br>{escape(part.told[:_LONGEST_TEXT])}" \
              f'<br><span class="faint">{escape(os.path.dirname(part.path))}</span></figure>'
    yield "</div>"


def _thumbnails(paths: Iterable[str], room: int) -> Iterator[str]:
    """Small JPEGs in base64, read in a process of its own: these pictures have done harm before."""
    if importlib.util.find_spec("cv2") is None:
        room = 0
    small = Inspection(_thumbnail, "thumbnail", "", b"", mode="colour")
    with Quarantine(packed(small), Bounds(10.0, 2 << 30)) as quarantine:
        for path in paths:
            if room <= 0 or not os.path.isfile(path):
                yield ""
                continue
            row = next(quarantine.measure([Picture(path)]))
            image = str(json.loads(row.record)["jpeg"]) if row.status == "ok" else ""
            room -= len(image)
            yield image


def _thumbnail(image: Any) -> dict[str, str]:
    cv2: Any = importlib.import_module("cv2")
    rows, columns = image.shape[:2]
    scale = min(1.0, _THUMBNAIL_WIDTH / max(rows, columns))
    small = cv2.resize(image, (max(1, round(columns * scale)), max(1, round(rows * scale))), interpolation=cv2.INTER_AREA)
    return {"jpeg": base64.b64encode(cv2.imencode(".jpg", small)[1]).decode()}
