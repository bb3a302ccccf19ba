"""Looks at every page of the site in a browser, from a server of its own on this machine.

    check_site.py SITE_FOLDER SCREENSHOTS_FOLDER

Ends with 1 and a line for each thing that is wrong: an error in the console, a picture that does not load, a link or an anchor
that leads nowhere, a word that the search does not find, a page wider than a telephone, text that is hard to read in dark mode.
"""
from __future__ import annotations

import functools
import http.server
import shutil
import sys
import threading
from pathlib import Path
from typing import Any
from urllib.parse import unquote, urldefrag, urlsplit

from selenium import webdriver
from selenium.common.exceptions import TimeoutException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

# What a visitor may look for, and a page that must be among the results.
WORDS = {
    "fitCircleGeometric": "reference/fitting-geometric_fit", "uncertainty": "guides/fits", "edgesSubPixMetric": "guides/edges",
    "calibration": "guides/calibration", "roundness": "reference/measuring-form", "verdict": "guides/recipes",
    "TPictureBox": "picture-box", "lastRefusal": "reference/foundation-refusal", "frames": "guides/cameras",
    "threshold": "guides/thresholds",
}
# A page, the width it is shown in, whether dark.
SCREENSHOTS = [("index", 1200, False), ("gallery", 1200, False), ("accuracy-edges", 1200, True),
               ("reference/fitting-geometric_fit", 390, False), ("numbers/thread-safety", 390, True)]
TELEPHONE = 390
LEAST_CONTRAST = 3.0  # of the WCAG, for large text; what most text reaches is far above

_SCRIPT = (Path(__file__).parent / "check_site.js").read_text(encoding="utf-8")


class _Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *arguments: Any) -> None:
        pass


class Check:
    def __init__(self, site: Path, address: str) -> None:
        self.site, self.address = site, address
        self.wrong: list[str] = []
        self.links: dict[str, set[str]] = {}
        self.anchors: dict[str, set[str]] = {}
        options = Options()
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        options.binary_location = shutil.which("chromium") or ""
        self.browser = webdriver.Chrome(service=Service(shutil.which("chromedriver") or ""), options=options)
        self.browser.set_page_load_timeout(60)
        self.browser.set_script_timeout(60)

    def _ask(self, call: str, *arguments: Any) -> Any:
        """What a function of check_site.js answers."""
        return self.browser.execute_script(f"{_SCRIPT}\nreturn {call}(...arguments);", *arguments)

    def _command(self, name: str, **parameters: Any) -> Any:
        return self.browser.execute_cdp_cmd(name, parameters)

    def show(self, width: int, dark: bool) -> None:
        self._command("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=1, mobile=width < 600)
        scheme = {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}
        self._command("Emulation.setEmulatedMedia", features=[scheme])

    def say(self, page: str, what: str) -> None:
        self.wrong.append(f"{page}: {what}")

    def look_at(self, page: str) -> None:
        self.show(1200, False)
        try:
            self.browser.get(self.address + page)
            seen = self.browser.execute_async_script(f"{_SCRIPT}\nlook(arguments[0]);")
        except TimeoutException:
            self.say(page, "it, or a picture on it, is not there after a minute")
            return
        for picture in seen["pictures"]:
            self.say(page, f"a picture does not load: {picture}")
        self.links[page] = set(seen["links"])
        self.anchors[page] = set(seen["anchors"])
        self.show(TELEPHONE, True)
        wide = self._ask("tooWide", TELEPHONE)
        if wide:
            self.say(page, f"wider than a telephone: {wide}")
        for faint in self._ask("faint", LEAST_CONTRAST, not page.startswith("notebooks/")):
            self.say(page, f"hard to read in dark mode: {faint}")
        for entry in self.browser.get_log("browser"):
            if entry["level"] in ("SEVERE", "WARNING") and "/favicon.ico " not in entry["message"]:  # asked for unasked
                self.say(page, f"the console says: {entry['message']}")

    def follow_links(self) -> None:
        for page, links in self.links.items():
            for link in sorted(links):
                where, anchor = urldefrag(link)
                if not where.startswith(self.address):
                    continue
                name = unquote(urlsplit(where).path).lstrip("/") or "index.html"
                if not (self.site / name).is_file():
                    self.say(page, f"a link leads nowhere: {link}")
                elif anchor and name in self.anchors and unquote(anchor) not in self.anchors[name]:
                    self.say(page, f"no such place: {name}#{anchor}")

    def search(self) -> None:
        self.show(1200, False)
        for word, page in WORDS.items():
            self.browser.get(f"{self.address}search.html?q={word}")
            try:
                found = WebDriverWait(self.browser, 20).until(lambda _: self._ask("found") or False)
            except TimeoutException:
                self.say("search.html", f"'{word}': nothing found")
                continue
            if not any(urlsplit(address).path == f"/{page}.html" for address in found):
                self.say("search.html", f"'{word}' is not found in {page}, among {len(found)} results")

    def screenshots(self, folder: Path) -> None:
        folder.mkdir(parents=True, exist_ok=True)
        for page, width, dark in SCREENSHOTS:
            self.show(width, dark)
            self.browser.get(f"{self.address}{page}.html")
            name = f"{page.replace('/', '-')}-{width}{'-dark' if dark else ''}.png"
            if not self.browser.save_screenshot(str(folder / name)):
                self.say(page, "no screenshot can be written")


def main() -> int:
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    site, folder = Path(sys.argv[1]), Path(sys.argv[2])
    handler = functools.partial(_Quiet, directory=str(site))
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    pages = sorted(str(file.relative_to(site)) for file in site.rglob("*.html") if "_static" not in file.parts)
    check = Check(site, f"http://127.0.0.1:{server.server_port}/")
    try:
        for i, page in enumerate(pages, 1):
            check.look_at(page)
            print(f"[{i}/{len(pages)}] {page}", flush=True)
        check.follow_links()
        check.search()
        check.screenshots(folder)
    finally:
        check.browser.quit()
        server.shutdown()
    for line in check.wrong:
        print(line)
    links = sum(len(links) for links in check.links.values())
    print(f"{len(pages)} pages, {links} links, {len(WORDS)} words: {len(check.wrong)} things wrong")
    return 1 if check.wrong else 0


if __name__ == "__main__":
    sys.exit(main())
