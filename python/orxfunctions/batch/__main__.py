"""``python3 -m orxfunctions.batch``"""
import sys

from ._command_line import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
