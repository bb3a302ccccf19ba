"""The command line: ``python3 -m orxfunctions.batch RECIPE|FILE.py PICTURES STORE``, and what shows and exports results."""
from __future__ import annotations

import argparse
import logging
import os
import sys
from collections.abc import Sequence

from ..measuring import RecipeError
from ._errors import BatchError
from ._run import run
from ._store import open_store

_PROGRAM = "python3 -m orxfunctions.batch"
_ALL_MEASURED, _SOME_FAILED, _REFUSED, _INTERRUPTED = 0, 1, 2, 130


def main(arguments: Sequence[str]) -> int:
    """The program: 0 all measured, 1 some failed or the run could not go on, 2 refused, 130 interrupted."""
    commands = {"show": _show, "export": _export}
    try:
        if arguments and arguments[0] in commands:
            return commands[arguments[0]](arguments[1:])
        return _run(arguments)
    except KeyboardInterrupt:
        return _INTERRUPTED
    except BatchError as error:
        return _refused(error, _SOME_FAILED)
    except (ImportError, OSError, RecipeError, SyntaxError, TypeError, ValueError) as error:
        return _refused(error, _REFUSED)


def _refused(error: BaseException, code: int) -> int:
    print(f"{_PROGRAM}: {error}", file=sys.stderr)
    return code


def _run(arguments: Sequence[str]) -> int:
    given = _run_parser().parse_args(arguments)
    # Traces on connections that have ended, which are told in a line. A program of others keeps its loggers as they are.
    for logger in ("asyncio", "tornado.application"):
        logging.getLogger(logger).setLevel(logging.CRITICAL)
    summary = run(given.inspection, given.pictures, given.store, workers=given.workers, cluster=given.cluster,
                  version=given.version, mode=given.mode, seconds=given.seconds or None,
                  memory=int(given.memory * (1 << 20)) or None, retry_failed=given.retry_failed,
                  batch_seconds=given.batch_seconds, patience=given.patience, progress=False if given.quiet else True)
    if not given.quiet:
        print(summary)
        print(f"show them: {_PROGRAM} show {given.store}")
    if summary.interrupted:
        return _INTERRUPTED
    return _SOME_FAILED if summary.failed else _ALL_MEASURED


def _run_parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog=_PROGRAM, description="Measures many pictures, each once. The same command goes on where the last one stopped.",
        epilog=f"{_PROGRAM} show STORE [-o PAGE.html]    a page of the results\n"
               f"{_PROGRAM} export STORE TABLE.csv       the results as a table (.parquet where pyarrow is installed)",
        formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("inspection", metavar="RECIPE|FILE.py", help="a recipe, or a Python file with a function "
                        "inspect(image) that gives a dict (FILE.py:NAME: another function)")
    parser.add_argument("pictures", metavar="PICTURES", help="a folder, a pattern in quotes, a text file with a name a line, "
                        "or - for names on standard input")
    parser.add_argument("store", metavar="STORE", help="a file of SQLite, or postgresql://...")
    where = parser.add_mutually_exclusive_group()
    where.add_argument("--workers", type=int, metavar="N", help="processes on this machine (1); more than 1 need Dask")
    where.add_argument("--cluster", metavar="ADDRESS", help="of a scheduler of Dask, tcp://host:8786")
    parser.add_argument("--version", default="", help="of the function: another one measures again")
    parser.add_argument("--mode", choices=("grey", "colour", "unchanged"), default="grey",
                        help="how pictures are read (grey)")
    parser.add_argument("--seconds", type=float, default=60.0, metavar="S", help="that a picture may take (60; 0: any)")
    parser.add_argument("--memory", type=float, default=2048.0, metavar="MIB", help="that a picture may take (2048; 0: any)")
    parser.add_argument("--retry-failed", action="store_true", help="measure pictures again that failed")
    parser.add_argument("--batch-seconds", type=float, default=2.0, metavar="S", help="how long a batch lasts (2)")
    parser.add_argument("--patience", type=float, default=600.0, metavar="S",
                        help="to wait for a scheduler that is gone (600)")
    parser.add_argument("--quiet", action="store_true", help="no progress, no summary")
    return parser


def _show(arguments: Sequence[str]) -> int:
    from ._report import write_page
    parser = argparse.ArgumentParser(prog=f"{_PROGRAM} show", description="Writes a page of the results: one file of HTML.")
    parser.add_argument("store", metavar="STORE")
    parser.add_argument("-o", "--output", default="results.html", metavar="PAGE.html")
    parser.add_argument("--no-thumbnails", action="store_true", help="don't read the pictures")
    given = parser.parse_args(arguments)
    store = open_store(given.store, writing=False)
    try:
        write_page(store, given.output, thumbnails=not given.no_thumbnails)
    finally:
        store.close()
    print(f"{given.output} ({os.path.getsize(given.output) / 1e6:.1f} MB)")
    return _ALL_MEASURED


def _export(arguments: Sequence[str]) -> int:
    parser = argparse.ArgumentParser(prog=f"{_PROGRAM} export", description="Writes the results as a table.")
    parser.add_argument("store", metavar="STORE")
    parser.add_argument("table", metavar="TABLE.csv")
    given = parser.parse_args(arguments)
    store = open_store(given.store, writing=False)
    try:
        store.export(given.table)
    finally:
        store.close()
    return _ALL_MEASURED
