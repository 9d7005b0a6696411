"""Makes docs/report.png, the picture of a report that the README shows.

Run it after `make venv`, from anywhere, with .venv/bin/python; it needs Chromium on PATH. Fonts are
those of the machine; the picture in the repository was made with Inter (Debian: fonts-inter).
"""

import shutil
import subprocess
import sys
from pathlib import Path
from tempfile import TemporaryDirectory

from playwright.sync_api import sync_playwright

ROOT = Path(__file__).resolve().parent.parent
REAL = ROOT / "examples" / "respondents.csv"
PICTURE = ROOT / "docs" / "report.png"
WIDTH = 1120


def main() -> None:
    browser = shutil.which("chromium")
    if browser is None:
        sys.exit("There is no chromium on PATH: install it first.")
    with TemporaryDirectory() as folder:
        page = make_report(Path(folder))
        take_picture(page, browser)
    print(f"Wrote {PICTURE} ({PICTURE.stat().st_size // 1000} kB).")


def make_report(folder: Path) -> Path:
    """Fits, samples and reports, as the README does."""
    model, people, page = folder / "model.json", folder / "made-up.csv", folder / "report.html"
    labels = ["--column", "gender=gender", "--column", "country=country"]
    made_up = ["--generate", "firstname,lastname,email"]
    run("fit", REAL, "-o", model, *labels, *made_up)
    run("sample", model, "-n", "10000", "--seed", "7", "-o", people)
    run("report", REAL, people, "-o", page)
    return page


def run(*arguments: object) -> None:
    command = Path(sys.executable).with_name("vantrel")
    subprocess.run([command, *map(str, arguments)], check=True)


def take_picture(page: Path, browser: str) -> None:
    """Shows the page down to the end of the shares."""
    with sync_playwright() as playwright:
        shown = playwright.chromium.launch(executable_path=browser, args=["--no-sandbox"])
        tab = shown.new_page(viewport={"width": WIDTH, "height": 800}, color_scheme="light")
        tab.goto(page.as_uri())
        end = tab.eval_on_selector("#shares", "each => each.getBoundingClientRect().bottom")
        tab.set_viewport_size({"width": WIDTH, "height": round(end) + 24})
        tab.screenshot(path=PICTURE)
        shown.close()


if __name__ == "__main__":
    main()
