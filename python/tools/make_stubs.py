"""Writes what the compiled core offers into a stub, orxfunctions/_core.pyi, out of the signatures in the core itself.

    PYTHONPATH=BUILD/python python3 python/tools/make_stubs.py [--output FILE]

Run it after a change of python/src; a test compares.
"""
import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

HEAD = '"""The compiled core. Written by tools/make_stubs.py."""\n'
TARGET = Path(__file__).resolve().parent.parent / "orxfunctions" / "_core.pyi"


def stub_text() -> str:
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([sys.executable, "-c", "from mypy.stubgen import main; main()", "-q", "-m", "orxfunctions._core",
                        "-o", folder], check=True, stdout=subprocess.DEVNULL)
        text = (Path(folder) / "orxfunctions" / "_core.pyi").read_text(encoding="utf-8")
    # A class without a constructor of its own has an untyped one.
    text = re.sub(r"def __init__\(self, \*args, \*\*kwargs\) -> None", "def __init__(self) -> None", text)
    named = "" if "__version__" in text else "__version__: str\n"
    return HEAD + text.replace("\n\n", "\n\n" + named, 1)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--output", type=Path, default=TARGET)
    parser.parse_args().output.write_text(stub_text(), encoding="utf-8")


if __name__ == "__main__":
    main()
