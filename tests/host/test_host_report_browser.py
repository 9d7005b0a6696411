"""The page of a report, as a browser shows it."""

import re
from collections.abc import Iterator
from dataclasses import dataclass, field
from itertools import pairwise
from pathlib import Path
from typing import Any

import pandas as pd
import pytest
from playwright.sync_api import Browser, Page, sync_playwright

from support.browser import VARIABLE, find_browser
from support.report_tables import COLUMNS, both, odd, ordinary, page, record
from support.sanitizing import SANITIZED
from vantrel.reporting.figures import compare_labelled
from vantrel.reporting.page import Sources, bars, render

BROWSER = find_browser()

pytestmark = [
    pytest.mark.skipif(BROWSER is None, reason=f"no Chromium is on PATH or named by {VARIABLE}"),
    pytest.mark.skipif(SANITIZED, reason="the browser does not start under a sanitizer"),
]

THEMES = ("light", "dark")
WIDTHS = (400, 1280)

ORDINARY = (ordinary(400, 1), ordinary(300, 2))
ODD = (odd(3000, 1), odd(3000, 2))
EMPTY = (ORDINARY[0].head(1), ORDINARY[1].head(0))
TABLES = {"ordinary": ORDINARY, "odd": ODD, "empty": EMPTY}

# The lowest ratio of luminances that the WCAG 2.2 ask of text (success criterion 1.4.3).
LEAST_CONTRAST = 4.5


@dataclass
class Shown:
    """A page in the browser, and what happened since it was opened."""

    page: Page
    requests: list[str] = field(default_factory=list)
    troubles: list[str] = field(default_factory=list)


@pytest.fixture(scope="module")
def browser() -> Iterator[Browser]:
    # Ended with the module: until then an event loop runs that other tests would stumble over.
    with sync_playwright() as playwright:
        browser = playwright.chromium.launch(executable_path=BROWSER, args=["--no-sandbox"])
        yield browser
        browser.close()


@pytest.fixture(scope="module")
def files(tmp_path_factory: pytest.TempPathFactory) -> dict[str, Path]:
    """A file of each page."""
    folder = tmp_path_factory.mktemp("pages")
    for name, (real, sampled) in TABLES.items():
        made = record(len(sampled), Faker="1.2")
        (folder / f"{name}.html").write_text(page(real, sampled, made), encoding="utf-8")
    return {name: folder / f"{name}.html" for name in TABLES}


@pytest.fixture(scope="module", params=TABLES)
def name(request: pytest.FixtureRequest) -> str:
    return str(request.param)


@pytest.fixture(scope="module", params=THEMES)
def theme(request: pytest.FixtureRequest) -> Any:
    return request.param


@pytest.fixture(scope="module")
def opened(browser: Browser, files: dict[str, Path], name: str, theme: Any) -> Iterator[Shown]:
    """A page, opened from its file in a theme."""
    context = browser.new_context(color_scheme=theme)
    found = Shown(context.new_page())
    found.page.on("request", lambda request: found.requests.append(request.url))
    found.page.on("console", lambda message: found.troubles.append(message.text))
    found.page.on("pageerror", lambda error: found.troubles.append(str(error)))
    found.page.on("dialog", lambda dialog: found.troubles.append(dialog.message))
    found.page.goto(files[name].as_uri())
    yield found
    context.close()


@pytest.fixture
def shown(opened: Shown, theme: Any) -> Shown:
    """The page as it is at first, but with all that folds unfolded."""
    opened.page.set_viewport_size({"width": 1280, "height": 720})
    opened.page.emulate_media(media="screen", color_scheme=theme)
    opened.page.eval_on_selector_all("details", "all => all.forEach(each => each.open = true)")
    return opened


def luminance(color: list[float]) -> float:
    """The relative luminance of an sRGB colour, as the WCAG define it."""
    parts = [part / 255 for part in color[:3]]
    red, green, blue = (
        part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts
    )
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one: list[float], other: list[float]) -> float:
    darker, lighter = sorted((luminance(one), luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


# Each text with its colour and that of the nearest background behind it.
TEXTS = """
() => {
  const numbers = color => color.match(/[\\d.]+/g).map(Number);
  const behind = element => {
    for (let each = element; each; each = each.parentElement) {
      const color = numbers(getComputedStyle(each).backgroundColor);
      if (color.length === 3 || color[3] === 1) return color;
      if (color[3] !== 0) throw new Error('a background that is half seen through');
    }
    throw new Error('no background');
  };
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  const found = [];
  while (walker.nextNode()) {
    const text = walker.currentNode.textContent.trim();
    const element = walker.currentNode.parentElement;
    if (text && element.checkVisibility())
      found.push([text, numbers(getComputedStyle(element).color), behind(element)]);
  }
  return found;
}
"""

WIDTHS_OF_BARS = """
panels => panels.map(panel => [...panel.querySelectorAll('.track')].map(track =>
  track.firstElementChild.getBoundingClientRect().width / track.getBoundingClientRect().width))
"""

HEIGHTS_OF_BARS = """
charts => charts.map(chart => [...chart.querySelectorAll('.bin')].map(bin =>
  [...bin.children].map(bar =>
    bar.getBoundingClientRect().height / bin.getBoundingClientRect().height)))
"""


def test_the_contrast_of_known_colours() -> None:
    assert contrast([0, 0, 0], [255, 255, 255]) == pytest.approx(21)
    assert contrast([119, 119, 119], [255, 255, 255]) == pytest.approx(4.48, abs=0.01)


def test_nothing_is_requested_and_nothing_goes_wrong(
    shown: Shown, files: dict[str, Path], name: str
) -> None:
    shown.page.wait_for_load_state("networkidle")
    assert shown.requests == [files[name].as_uri()]
    assert shown.troubles == []
    assert shown.page.evaluate("document.scripts.length") == 0


@pytest.mark.parametrize("width", WIDTHS)
def test_the_page_is_as_wide_as_the_window(shown: Shown, width: int) -> None:
    shown.page.set_viewport_size({"width": width, "height": 800})
    assert shown.page.evaluate("document.documentElement.scrollWidth") == width
    outside = """all => all.filter(each => each.checkVisibility() && !each.closest('.unseen')
        && each.getBoundingClientRect().right > innerWidth + 0.5).map(each => each.outerHTML)"""
    assert shown.page.eval_on_selector_all("body *", outside) == []


def test_all_text_stands_out(shown: Shown) -> None:
    texts = shown.page.evaluate(TEXTS)
    assert len(texts) > 50
    faint = [text for text, color, back in texts if contrast(color, back) < LEAST_CONTRAST]
    assert faint == []


def test_the_theme_is_followed(shown: Shown, theme: str) -> None:
    color = shown.page.evaluate(TEXTS)[0][2]
    assert (luminance(color) < 0.1) == (theme == "dark")


@pytest.mark.parametrize("theme", ["light"], indirect=True)
@pytest.mark.parametrize("width", WIDTHS)
def test_bars_are_as_wide_as_the_figures(shown: Shown, name: str, width: int) -> None:
    shown.page.set_viewport_size({"width": width, "height": 800})
    panels = shown.page.eval_on_selector_all("#shares .panel", WIDTHS_OF_BARS)
    compared = compare_labelled(*both(*TABLES[name])).frequencies
    assert len(panels) == len(compared) == 3
    for widths, shares in zip(panels, compared, strict=True):
        wanted = [side or 0 for each in bars(shares) for side in (each.real, each.sampled)]
        assert widths == pytest.approx([each / max(wanted) for each in wanted], abs=0.01)


@pytest.mark.parametrize("theme", ["light"], indirect=True)
def test_bars_of_lengths_are_as_high_as_the_figures(shown: Shown, name: str) -> None:
    charts = shown.page.eval_on_selector_all(".histogram", HEIGHTS_OF_BARS)
    compared = compare_labelled(*both(*TABLES[name])).lengths
    assert len(charts) == len(compared) == 2
    for heights, lengths in zip(charts, compared, strict=True):
        sides = ("real", "sampled") if lengths.sampled else ("real",)
        wanted = [[getattr(each, side) for side in sides] for each in lengths.bins]
        most = max(map(max, wanted))
        for found, shares in zip(heights, wanted, strict=True):
            assert found == pytest.approx([each / most for each in shares], abs=0.01)


@pytest.mark.parametrize("theme", ["light"], indirect=True)
def test_real_and_sampled_bars_differ_in_pattern_too(shown: Shown) -> None:
    image = "each => getComputedStyle(each).backgroundImage"
    assert shown.page.eval_on_selector(".bar.real", image) == "none"
    assert "repeating-linear-gradient" in shown.page.eval_on_selector(".bar.sampled", image)


@pytest.mark.parametrize("theme", ["light"], indirect=True)
@pytest.mark.parametrize("name", ["odd"], indirect=True)
def test_the_bars_of_a_value_stay_together_beside_a_long_one(shown: Shown) -> None:
    shown.page.set_viewport_size({"width": 400, "height": 800})
    between = """pairs => pairs.map(pair => {
      const [real, sampled] = [...pair.querySelectorAll('.track')].map(
        track => track.getBoundingClientRect());
      return [pair.getBoundingClientRect().height, sampled.top - real.bottom];
    })"""
    pairs = shown.page.eval_on_selector_all(".pair", between)
    assert max(height for height, _ in pairs) > 3 * min(height for height, _ in pairs)
    assert max(gap for _, gap in pairs) < min(gap for _, gap in pairs) + 1


@pytest.mark.parametrize("theme", ["light"], indirect=True)
@pytest.mark.parametrize("name", ["ordinary"], indirect=True)
def test_each_section_of_bars_has_a_legend(shown: Shown) -> None:
    for section in ("shares", "lengths"):
        legend = shown.page.locator(f"#{section} .legend")
        assert legend.inner_text().split() == ["Real", "Sampled"]


def test_long_names_of_columns_leave_room_for_what_is_not_there(
    browser: Browser, tmp_path: Path
) -> None:
    columns = {each: f"{each}_" * 30 for each in ("gender", "lastname", "email")}
    real = pd.DataFrame({columns["gender"]: ["m"], columns["email"]: ["a@b.c"]})
    sampled = pd.DataFrame({columns["gender"]: ["m"], columns["lastname"]: ["Lee"]})
    file = tmp_path / "long.html"
    figures = compare_labelled(*both(real, sampled, columns))
    file.write_text(render(figures, Sources("r.csv", "s.csv"), None), encoding="utf-8")
    with browser.new_page(viewport={"width": 1200, "height": 800}) as shown:
        shown.goto(file.as_uri())
        lines = "all => all.map(each => [each.textContent, each.getClientRects().length])"
        found = shown.eval_on_selector_all("#missing .none", lines)
        assert found == [[words, 1] for words in ("no column", "not compared") * 2]


def test_many_countries_print_on_few_pages(browser: Browser, tmp_path: Path) -> None:
    real, sampled = (
        ordinary(1500, seed).assign(land=[f"Country {n % 30}" for n in range(1500)])
        for seed in (1, 2)
    )
    file = tmp_path / "many.html"
    file.write_text(page(real, sampled, record(1500)), encoding="utf-8")
    with browser.new_page() as shown:
        shown.goto(file.as_uri())
        pages = re.findall(rb"/Type\s*/Page\b", shown.pdf(format="A4"))
    assert 5 <= len(pages) <= 12


@pytest.mark.parametrize("theme", ["light"], indirect=True)
def test_the_page_can_be_read_without_being_seen(shown: Shown) -> None:
    for wrong in (
        "table:not(:has(> caption))",
        "th:not([scope])",
        "section:not([aria-labelledby])",
        "[role=img]:not([aria-label])",
        "main ~ main, h1 ~ h1",
    ):
        assert shown.page.locator(wrong).count() == 0, wrong
    assert shown.page.locator("h1").count() == 1
    ids = shown.page.eval_on_selector_all("[id]", "all => all.map(each => each.id)")
    assert len(ids) == len(set(ids))
    for attribute, mark in (("href", "#"), ("aria-labelledby", "")):
        get = f"all => all.map(each => each.getAttribute('{attribute}'))"
        for target in shown.page.eval_on_selector_all(f"body [{attribute}]", get):
            assert target.removeprefix(mark) in ids
    levels = shown.page.eval_on_selector_all(
        "h1, h2, h3, h4", "all => all.map(each => Number(each.tagName[1]))"
    )
    assert all(after <= before + 1 for before, after in pairwise(levels))


def test_the_page_prints_on_white_with_all_that_folds(shown: Shown) -> None:
    shown.page.eval_on_selector_all("details", "all => all.forEach(each => each.open = false)")
    shown.page.emulate_media(media="print")
    assert {tuple(back) for _, _, back in shown.page.evaluate(TEXTS)} & {(255, 255, 255)}
    for text, color, back in shown.page.evaluate(TEXTS):
        assert luminance(back) > 0.5, text
        assert contrast(color, back) >= LEAST_CONTRAST, text
    assert shown.page.eval_on_selector_all(
        "details table", "all => all.every(each => each.checkVisibility())"
    )
    assert shown.page.pdf(format="A4").startswith(b"%PDF-")


@pytest.mark.parametrize("theme", ["light"], indirect=True)
@pytest.mark.parametrize("name", ["odd"], indirect=True)
def test_many_values_can_be_unfolded(shown: Shown) -> None:
    shown.page.eval_on_selector_all("details", "all => all.forEach(each => each.open = false)")
    details = shown.page.locator("details").first
    assert not details.locator("table").is_visible()
    details.locator("summary").click()
    assert details.locator("table").is_visible()


# Each piece of a column's name between blanks and hyphens, with the number of lines it takes.
LINES_OF_WORDS = """
all => all.flatMap(each => {
  const walker = document.createTreeWalker(each, NodeFilter.SHOW_TEXT);
  const found = [];
  while (walker.nextNode()) {
    const node = walker.currentNode;
    for (const match of node.textContent.matchAll(/[\\p{L}\\p{N}]+/gu)) {
      const range = document.createRange();
      range.setStart(node, match.index);
      range.setEnd(node, match.index + match[0].length);
      const tops = [...range.getClientRects()].map(rect => Math.round(rect.top));
      found.push([match[0], new Set(tops).size]);
    }
  }
  return found;
})
"""

NAMES_OF_COLUMNS = {
    "gender": "customer_gender",
    "title": "anrede",
    "fullname": "Name des Kontoinhabers",
    "email": "customer_email_address",
    "username": "registration_username",
    "home_number": "HomeTelephone_Number",
    "country": "country_of_residence",
}


def test_no_word_of_a_name_of_a_column_is_broken_on_a_telephone(
    browser: Browser, tmp_path: Path
) -> None:
    real, sampled = (
        ordinary(60, seed)
        .assign(home=[f"0151{number:07}" for number in range(60)])
        .rename(
            columns={
                **{
                    COLUMNS[each]: NAMES_OF_COLUMNS[each]
                    for each in NAMES_OF_COLUMNS
                    if each in COLUMNS
                },
                "home": "HomeTelephone_Number",
            }
        )
        for seed in (1, 2)
    )  # fmt: skip - one name for another
    sampled.loc[:40] = None
    figures = compare_labelled(*both(real, sampled, NAMES_OF_COLUMNS))
    file = tmp_path / "telephone.html"
    file.write_text(render(figures, Sources("r.csv", "s.csv"), None), encoding="utf-8")
    with browser.new_page(viewport={"width": 375, "height": 800}) as shown:
        shown.goto(file.as_uri())
        words = shown.eval_on_selector_all(".column, th[scope=row], th[scope=col]", LINES_OF_WORDS)
        assert len(words) > 60
        assert [word for word, lines in words if lines > 1] == []
        assert shown.evaluate("document.documentElement.scrollWidth") == 375
